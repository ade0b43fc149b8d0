/* Colour space conversion block: a BT.601-like file through converters, exporters and module,
 * signed and unsigned taps kept unclipped, and the crossed read order of the packed registers. */
#include <gtest/gtest.h>

#include "blocks/csc.h"
#include "isp_json_modules.h"
#include "tests/support/block_case.h"

namespace {

TEST(Csc, CaseConvertsExportsAndReplays) {
    /* the BT.601 coefficients times 1024 and negative values in two's complement */
    isp_test::check_block(
        {"csc",
         {"csc/rtl_csc_p0.json"},
         R"({"_isp_csc_user_core_t": {"matrix": [306, 601, 117, 8019, 7853, 512, 512, 7763, 8109]},
             "_isp_csc_user_setup_t": {"decimation_h": [126, 0, 10, 16, 10, 0, 126],
                 "decimation_v": [1, 1], "output_type": 1, "offset_out": [64, 512, 512],
                 "offset_in": [2032, 2040, 2044]},
             "_isp_csc_user_init_t": {"uv_seq_sel": 1}})",
         R"({"_isp_csc_user_core_t": {"matrix": [0.298828125, 0.5869140625, 0.1142578125,
                 -0.1689453125, -0.3310546875, 0.5, 0.5, -0.4189453125, -0.0810546875]},
             "_isp_csc_user_setup_t": {"decimation_h": [-0.0625, 0, 0.3125, 0.5, 0.3125, 0, -0.0625],
                 "decimation_v": [0.5, 0.5], "input_type": 0, "offset_in": [-4, -2, -1],
                 "offset_out": [16, 128, 128], "output_type": 1}})",
         {{"csc", qv_isp_module_csc_json_register, {0, 1, 2, 3}}}});
}

TEST(Csc, TapsKeepSignedAndUnsignedEncodingsWithoutClipping) {
    const isp_test::conversion c =
        isp_test::convert_named("rtl_to_drv_csc_user_setup", isp_test::parse_object(R"({"isp_csc": {
        "reg_csc_decimation_h23": {"val2": 31, "val3": -4},
        "reg_csc_decimation_v": {"val0": -1, "val1": 5}}})"));
    _isp_csc_user_setup_t setup;
    isp_test::copy_bytes(c.bytes, setup);
    EXPECT_EQ(setup.decimation_h[2], 31);
    EXPECT_EQ(setup.decimation_h[3], 0x7C);  // -4 in 7-bit two's complement
    EXPECT_EQ(setup.decimation_v[0], 1);     // unsigned: the magnitude
    EXPECT_EQ(setup.decimation_v[1], 5);     // wider than the 2-bit field, kept whole
    picojson::object out;
    drv_to_cmodel_csc_user_setup(&setup, out, 0);
    EXPECT_EQ(out["decimation_h"].serialize(), "[0,0,0.96875,-0.125,0,0,0]");
    EXPECT_EQ(out["decimation_v"].serialize(), "[0.5,2.5]");
}

TEST(Csc, FieldsReportInReadOrder) {
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_csc_user_core", {}),
              isp_test::failed({{"reg_csc_matrix_gp0", {"m01", "m00"}},
                                {"reg_csc_matrix_gp1", {"m10", "m02"}},
                                {"reg_csc_matrix_gp2", {"m12", "m11"}},
                                {"reg_csc_matrix_gp3", {"m21", "m20"}},
                                {"reg_csc_matrix_gp4", {"m22"}}}));
    EXPECT_EQ(isp_test::failures_of(
                  "rtl_to_drv_csc_user_setup",
                  isp_test::parse_object(R"({"isp_csc": {"reg_csc_mode": {"in": 1}}})")),
              isp_test::failed({{"reg_csc_decimation_h01", {"val1", "val0"}},
                                {"reg_csc_decimation_h23", {"val3", "val2"}},
                                {"reg_csc_decimation_h45", {"val5", "val4"}},
                                {"reg_csc_decimation_h6", {"val6"}},
                                {"reg_csc_decimation_v", {"val1", "val0"}},
                                {"reg_csc_mode", {"out"}},
                                {"reg_csc_offset_gp0", {"out", "in"}},
                                {"reg_csc_offset_gp1", {"out", "in"}},
                                {"reg_csc_offset_gp2", {"out", "in"}}}));
}

}  // namespace
