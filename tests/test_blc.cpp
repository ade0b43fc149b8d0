/* Black level and linearisation block: the register file through converters, exporters and both
 * modules, the misspelt bayer key, a short group and the read order of the tables. */
#include <gtest/gtest.h>

#include "isp_json_modules.h"
#include "tests/support/block_case.h"

namespace {

TEST(Blc, CaseConvertsExportsAndReplays) {
    /* knot k at 1000 k; channel c of knot k at 1000 k + 10 c; of segment s at 256 + 16 s + c */
    std::map<std::string, picojson::object> exports = isp_test::check_block(
        {"blc",
         {"blc/rtl_blc_p0_chn0.json"},
         R"({"_isp_blc_user_lin_t": {"lin_lut_x": [0, 1000, "..."], "lin_lut_y": [0, 10, 20, 30,
                 1000, 1010, 1020, 1030, 2000, 2010, 2020, 2030, 3000, 3010, 3020, 3030, 4000,
                 4010, 4020, 4030, 5000, 5010, 5020, 5030, 6000, 6010, 6020, 6030, 7000, 7010,
                 7020, 7030, 8000, 8010, 8020, 8030, 9000, 9010, 9020, 9030, 10000, 10010, 10020,
                 10030, 11000, 11010, 11020, 11030, 12000, 12010, 12020, 12030, 13000, 13010,
                 13020, 13030, 14000, 14010, 14020, 14030],
                 "lin_lut_slope": [256, 257, 258, 259, 272, 273, 274, 275, 288, 289, 290, 291, 304,
                 305, 306, 307, 320, 321, 322, 323, 336, 337, 338, 339, 352, 353, 354, 355, 368,
                 369, 370, 371, 384, 385, 386, 387, 400, 401, 402, 403, 416, 417, 418, 419, 432,
                 433, 434, 435, 448, 449, 450, 451, 464, 465, 466, 467, 480, 481, 482, 483, 496,
                 497, 498, 499]},
             "_isp_blc_user_common_t": {"dgain": 320, "dither_enable": 1},
             "_isp_blc_user_dither_t": {"dither_seed_enable": 1, "dither_seed": [52719, 4660]},
             "_isp_blc_user_setup_t": {"dither_pmask": [43690, 21845]},
             "_isp_blc_user_init_t": {"bayer_patten": 1},
             "_isp_blc_kernel_gbl_t": {"gbl_val": [65536, 65792, "..."]},
             "_isp_blc_kernel_sbl_t": {"sbl_val": [1024, 1040, "..."]},
             "_isp_blc_kernel_ctrl_t": {"gbl_corr_enable": 1, "lin_enable": 1, "offset_out": 4096}})",
         // the dither words as integers, the 15-bit word first; the user levels write nothing
         R"({"_isp_blc_user_lin_t": {"lin_lut_slope": "*", "lin_lut_x": [0, 15.625, "..."],
                 "lin_lut_y": "*"},
             "_isp_blc_user_common_t": {"dgain": 1.25, "dither_enable": 1},
             "_isp_blc_user_dither_t": {"dither_seed": [4660, 52719], "dither_seed_enable": 1},
             "_isp_blc_user_setup_t": {"dither_pmask": [21845, 43690]},
             "_isp_blc_kernel_gbl_t": {"gbl_val": [64, 64.25, 64.5, 64.75]},
             "_isp_blc_kernel_sbl_t": {"sbl_val": [1, 1.015625, 1.03125, 1.046875]},
             "_isp_blc_kernel_ctrl_t": {"gbl_corr_enable": 1, "lin_enable": 1, "offset_out": 64,
                 "sbl_corr_enable": 0},
             "_isp_blc_user_gbl_t": {}, "_isp_blc_user_sbl_t": {}})",
         {{"blc", qv_isp_module_blc_json_register, {0, 3, 4, 5, 6, 7, 8, 9, 10}},
          {"lin", qv_isp_module_lin_json_register, {0, 3}}}});
    /* knots over 2^6 in one row per knot, slopes over 2^8 in one row per segment */
    const picojson::array &y = exports["_isp_blc_user_lin_t"]["lin_lut_y"].get<picojson::array>();
    const picojson::array &slope =
        exports["_isp_blc_user_lin_t"]["lin_lut_slope"].get<picojson::array>();
    ASSERT_EQ(y.size(), 15u);
    ASSERT_EQ(slope.size(), 16u);
    EXPECT_EQ(y[1].serialize(), "[15.625,15.78125,15.9375,16.09375]");
    EXPECT_EQ(y[14].serialize(), "[218.75,218.90625,219.0625,219.21875]");
    EXPECT_EQ(slope[0].serialize(), "[1,1.00390625,1.0078125,1.01171875]");
    EXPECT_EQ(slope[15].serialize(), "[1.9375,1.94140625,1.9453125,1.94921875]");
}

TEST(Blc, MisspeltKeysAndShortGroupsFailAlone) {
    /* the field is "patten": a file's "pattern" is not read */
    EXPECT_EQ(
        isp_test::failures_of("rtl_to_drv_blc_user_init",
                              isp_test::parse_object(R"({"isp_blc": {"bayer": {"pattern": 3}}})")),
        isp_test::failed({{"bayer", {"patten"}}}));
    const isp_test::conversion c = isp_test::convert_named(
        "rtl_to_drv_blc_kernel_gbl", isp_test::parse_object(R"({"isp_blc": {"grp10": [
        {"gbl_val": {"value": 100}}, {"gbl_val": {"value": 101}}, {"gbl_val": {"value": 102}}]}})"));
    EXPECT_EQ(c.lines, isp_test::failed({{"gbl_val", {"value"}}}));
    EXPECT_EQ(c.bytes,
              (std::vector<uint8_t>{100, 0, 0, 0, 101, 0, 0, 0, 102, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(Blc, FieldsReportInReadOrder) {
    const std::vector<std::string> lines = isp_test::failures_of("rtl_to_drv_blc_user_lin", {});
    ASSERT_EQ(lines.size(), 139u);
    /* "high" before "low", knot 14 in its own register, the groups named by register only */
    std::vector<std::string> head;
    isp_test::add_failed(head, "lin_lut_x", {"high", "low"}, 7);
    isp_test::add_failed(head, "lin_lut_x_14", {"low"});
    isp_test::add_failed(head, "lin_lut_y0", {"high", "low"});
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 17), head);
    EXPECT_EQ(lines[74], "read json_obj failed: lin_lut_y3_14.low");
    EXPECT_EQ(lines[75], "read json_obj failed: lin_lut_slope0.value");
    EXPECT_EQ(lines[138], "read json_obj failed: lin_lut_slope3.value");
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_blc_user_dither", {}),
              isp_test::failed({{"dither", {"seed_enable"}}, {"dither_seed", {"val15", "val16"}}}));
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_blc_kernel_ctrl", {}),
              isp_test::failed({{"blc", {"sbl_corr_enable", "gbl_corr_enable", "lin_enable"}},
                                {"offset", {"out"}}}));
}

}  // namespace
