/* Inverse dynamic range compression block: the register file through converters, exporters and
 * module, raw curve entries truncated and saturated into 32 bits, and the read order. */
#include <gtest/gtest.h>

#include "blocks/hidrc.h"
#include "isp_json_modules.h"
#include "tests/support/block_case.h"

namespace {

TEST(Hidrc, CaseConvertsExportsAndReplays) {
    /* entry i of the curve is 2048 i */
    isp_test::check_block(
        {"hidrc",
         {"hidrc/rtl_hidrc_p0.json"},
         R"({"_isp_hidrc_user_setup_t": {"affine_k": 1536, "lut_inv_mode": 1, "offset_in": 1024,
                 "offset_out": [262144, 264192, 266240, 268288]},
             "_isp_hidrc_user_hidrc_lut_t": {"hidrc_lut": [0, 2048, "..."]}})",
         R"({"_isp_hidrc_user_setup_t": {"affine_k": 0.75, "lut_inv_mode": 1, "offset_in": 16,
                 "offset_out": [4096, 4128, 4160, 4192]}})",
         {{"hidrc", qv_isp_module_hidrc_json_register, {0, 1, 2}}}});
}

TEST(Hidrc, CurveEntriesTruncateAndSaturateIntoThirtyTwoBits) {
    picojson::object root = isp_test::data_object("hidrc/rtl_hidrc_p0.json");
    picojson::array &curve =
        root["isp_hidrc"].get<picojson::object>()["hidrc_lut"].get<picojson::array>();
    const double entries[] = {-5.0, 70000.7, 1e12, 4294967295.0};
    for (size_t i = 0; i < 4; ++i) curve[i] = picojson::value(entries[i]);
    _isp_hidrc_user_hidrc_lut_t lut;
    isp_test::copy_bytes(isp_test::convert_named("rtl_to_drv_hidrc_user_hidrc_lut", root).bytes,
                         lut);
    EXPECT_EQ(lut.hidrc_lut[0], 0u);
    EXPECT_EQ(lut.hidrc_lut[1], 70000u);
    EXPECT_EQ(lut.hidrc_lut[2], 0xFFFFFFFFu);
    EXPECT_EQ(lut.hidrc_lut[3], 0xFFFFFFFFu);
}

TEST(Hidrc, FieldsReportInReadOrder) {
    EXPECT_EQ(isp_test::failures_of(
                  "rtl_to_drv_hidrc_user_setup",
                  isp_test::parse_object(R"({"isp_hidrc": {"affine_k": {"val": 2048}}})")),
              isp_test::failed({{"lut_inv_mode", {"val"}},
                                {"offset_in", {"val"}},
                                {"offset_out3", {"val"}},
                                {"offset_out2", {"val"}},
                                {"offset_out1", {"val"}},
                                {"offset_out0", {"val"}}}));
}

}  // namespace
