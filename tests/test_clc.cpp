/* Colour correction block: the register file through converters, exporters and module, a short
 * matrix list, signed fields and the partition sizes, and the crossed read order. */
#include <gtest/gtest.h>

#include "isp_json.h"
#include "isp_json_modules.h"
#include "tests/support/block_case.h"

namespace {

TEST(Clc, CaseConvertsExportsAndReplays) {
    /* matrix n: 256 + 16 n on the diagonal, -8 n off it (s3.8); curves in s8.4 wrap below 0 */
    std::map<std::string, picojson::object> exports = isp_test::check_block(
        {"clc",
         {"clc/rtl_clc_p0.json"},
         R"({"_isp_clc_user_init_t": {"manual_clk_en": 1},
             "_isp_clc_user_clc_setup_t": {"offset_out": 256, "offset_in": 64, "mode": 1,
                 "hr_lpf": [480, 64, 128, 64, 480]},
             "_isp_clc_user_clc_t": {"sat_mit_enable": 1, "matrix_list": [
                 256, 0, 0, 0, 0, 256, 0, 0, 0, 0, 256, 0,
                 272, 4088, 4088, 0, 4088, 272, 4088, 0, 4088, 4088, 272, 0,
                 288, 4080, 4080, 0, 4080, 288, 4080, 0, 4080, 4080, 288, 0,
                 304, 4072, 4072, 0, 4072, 304, 4072, 0, 4072, 4072, 304, 0,
                 320, 4064, 4064, 0, 4064, 320, 4064, 0, 4064, 4064, 320, 0,
                 336, 4056, 4056, 0, 4056, 336, 4056, 0, 4056, 4056, 336, 0,
                 352, 4048, 4048, 0, 4048, 352, 4048, 0, 4048, 4048, 352, 0,
                 368, 4040, 4040, 0, 4040, 368, 4040, 0, 4040, 4040, 368, 0],
                 "sat_mit_ratio_lower_lut": [0, 16, 32, 48, 64, 80, 96, 128],
                 "sat_mit_ratio_upper_lut": [128, 112, "..."],
                 "sat_mit_lower_lut_x": [8064, 8096, 8128, 8160, 0, 32, 64, 96],
                 "sat_mit_lower_lut_y": [8128, 8136, "..."], "sat_mit_upper_lut_x": [100, 612, "..."],
                 "sat_mit_upper_lut_y": [3, 259, "..."], "sat_mit_lower_lut_slope": [1, 2, "..."],
                 "sat_mit_upper_lut_slope": [11, 12, "..."]}})",
         R"({"_isp_clc_user_clc_setup_t": {"hr_lpf": [-0.25, 0.5, 1, 0.5, -0.25], "mode": 1,
                 "offset_in": 4, "offset_out": 16},
             "_isp_clc_user_clc_t": {"matrix_list": "*", "sat_mit_enable": 1,
                 "sat_mit_lower_lut_slope": [0.0078125, 0.015625, "..."],
                 "sat_mit_lower_lut_x": [-8, -6, "..."], "sat_mit_lower_lut_y": [-4, -3.5, "..."],
                 "sat_mit_ratio_lower_lut": [0, 0.125, 0.25, 0.375, 0.5, 0.625, 0.75, 1],
                 "sat_mit_ratio_upper_lut": [1, 0.875, "..."],
                 "sat_mit_upper_lut_slope": [0.0859375, 0.09375, "..."],
                 "sat_mit_upper_lut_x": [6.25, 38.25, "..."],
                 "sat_mit_upper_lut_y": [0.1875, 16.1875, "..."]}})",
         {{"cc", qv_isp_module_cc_json_register, {0, 3, 1, 2}}}});
    /* the matrices flattened, matrix 7's first coefficients 368 / 256 and -56 / 256 */
    const picojson::array &list =
        exports["_isp_clc_user_clc_t"]["matrix_list"].get<picojson::array>();
    ASSERT_EQ(list.size(), 96u);
    EXPECT_EQ(picojson::value(picojson::array(list.begin(), list.begin() + 12)).serialize(),
              "[1,0,0,0,0,1,0,0,0,0,1,0]");
    EXPECT_EQ(list[84].serialize(), "1.4375");
    EXPECT_EQ(list[85].serialize(), "-0.21875");
}

TEST(Clc, ShortMatrixListZeroesOnlyTheMissingPasses) {
    picojson::object root = isp_test::data_object("clc/rtl_clc_p0.json");
    root["isp_clc"].get<picojson::object>()["matrix_list"].get<picojson::array>().resize(4);
    const isp_test::conversion c = isp_test::convert_named("rtl_to_drv_clc_user_clc", root);
    std::vector<std::string> lines;  // two passes, eight matrices, "val1" then "val0"
    for (int pass = 0; pass < 2; ++pass)
        for (int n = 0; n < 8; ++n)
            isp_test::add_failed(lines, "matrix_list" + std::to_string(n), {"val1", "val0"});
    EXPECT_EQ(c.lines, lines);
    _isp_clc_user_clc_t clc;
    isp_test::copy_bytes(c.bytes, clc);
    EXPECT_EQ(clc.matrix_list[7][0], 368);  // the passes read keep their elements
    EXPECT_EQ(clc.matrix_list[7][4], 0);
    EXPECT_EQ(clc.matrix_list[7][11], 0);
}

TEST(Clc, SignedFieldsAndPartitionSizes) {
    picojson::object root = isp_test::parse_object(R"({"isp_clc": {
        "lower_lut": [{"sat_mit_lower_lut": -1.0}], "upper_lut": [{"sat_mit_upper_lut": -1.0}],
        "part_size": {"h": 640.9, "v": 480}, "hr_lpf0": {"val2": -1.0}}})");
    _isp_clc_user_clc_t clc{};
    uint16_t size_h[4] = {11, 12, 13, 14}, size_v[4] = {21, 22, 23, 24};
    _isp_clc_user_init_t init{0, size_h, size_v};
    _isp_clc_user_clc_setup_t setup{};
    isp_test::stderr_of([&] {
        rtl_to_drv_clc_user_clc(root, &clc, 0);
        rtl_to_drv_clc_user_clc_setup(root, &setup, 0);
        rtl_to_drv_clc_user_init(root, &init, 2);
    });
    /* -1 is the 13-bit two's complement in s8.4, and its magnitude in the unsigned u9.4 */
    EXPECT_EQ(clc.sat_mit_lower_lut_x[0], 0x1FFF);
    EXPECT_EQ(clc.sat_mit_upper_lut_x[0], 1);
    EXPECT_EQ(setup.hr_lpf[2], 0x1FF);  // the low-pass taps are s1.7
    EXPECT_EQ(isp_test::codes(size_h), (std::vector<uint32_t>{11, 12, 640, 14}));  // truncated
    EXPECT_EQ(isp_test::codes(size_v), (std::vector<uint32_t>{21, 22, 480, 24}));
}

TEST(Clc, FieldsReportInCrossedReadOrder) {
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_clc_user_clc_setup", {}),
              isp_test::failed({{"offset", {"val0", "val1"}},
                                {"clc_ctrl1", {"mode"}},
                                {"hr_lpf0", {"val2", "val1", "val0"}},
                                {"hr_lpf1", {"val1", "val0"}}}));
}

}  // namespace
