/* Gamma block: the register file through converters, exporters and module, the crossed dither
 * words, and the curve read in pairs, high before low, with its last point alone. */
#include <gtest/gtest.h>

#include "isp_json_modules.h"
#include "tests/support/block_case.h"

namespace {

TEST(Gamma, CaseConvertsExportsAndReplays) {
    /* point i of the curve is 31 i; the 16-bit dither word "val16" is element 0 */
    isp_test::check_block(
        {"gamma",
         {"gamma/rtl_gamma_p0.json"},
         R"({"_isp_gamma_user_setup_t": {"range_adjust_enable": 1, "dither_enable": 1,
                 "dither_pmask": [50115, 23130], "offset_out": 6, "offset_in": 40},
             "_isp_gamma_user_dither_t": {"dither_seed_enable": 1, "dither_seed": [48879, 4660]},
             "_isp_gamma_user_lut_t": {"gam_lut": [0, 31, "..."]}})",
         // the offsets over 2^2 and 2^4, the curve over 2^4; the 15-bit word first
         R"({"_isp_gamma_user_setup_t": {"dither_enable": 1, "dither_pmask": [23130, 50115],
                 "mode": 0, "offset_in": 2.5, "offset_out": 1.5, "range_adjust_enable": 1},
             "_isp_gamma_user_dither_t": {"dither_seed": [4660, 48879], "dither_seed_enable": 1},
             "_isp_gamma_user_lut_t": {"lut": [0, 1.9375, "...", 248]}})",
         {{"gamma", qv_isp_module_gamma_json_register, {0, 1, 2, 3}}}});
}

TEST(Gamma, FieldsReportInReadOrderHighBeforeLow) {
    picojson::object root = isp_test::data_object("gamma/rtl_gamma_p0.json");
    picojson::object &top = root["isp_gamma"].get<picojson::object>();
    top["grp0"].get<picojson::array>().pop_back();
    top["gam_lut_65"] = picojson::value(isp_test::parse_object(R"({"high": 4095})"));
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_gamma_user_lut", root),
              isp_test::failed({{"gam_lut", {"high", "low"}}, {"gam_lut_65", {"low"}}}));
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_gamma_user_setup", {}),
              isp_test::failed({{"gamma", {"range_adjust_enable", "mode"}},
                                {"dither", {"enable"}},
                                {"dither_pmask", {"val15", "val16"}},
                                {"gamma_offset", {"out", "in"}}}));
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_gamma_user_dither", {}),
              isp_test::failed({{"dither", {"seed_enable"}}, {"dither_seed", {"val15", "val16"}}}));
}

}  // namespace
