/* Gamma block: a real 2.2 curve and dither settings converted and exported, the crossed dither
 * words, the split curve keys and the module replaying a case. */
#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/gamma.h"
#include "isp_json_modules.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::clear;
using isp_test::stderr_lines_of;
using isp_test::stderr_of;

/* 4095 * (i / 128)^(1 / 2.2), as written into the fixture. */
const uint16_t curve_2_2[GAMMA_LUT_POINTS] = {
    0,    451,  618,  744,  847,  938,  1019, 1093, 1161, 1225, 1285, 1342, 1396, 1448, 1498,
    1545, 1591, 1636, 1679, 1721, 1761, 1801, 1839, 1877, 1913, 1949, 1984, 2019, 2052, 2085,
    2118, 2149, 2181, 2211, 2242, 2271, 2301, 2329, 2358, 2386, 2413, 2441, 2468, 2494, 2520,
    2546, 2572, 2597, 2622, 2647, 2671, 2695, 2719, 2743, 2766, 2789, 2812, 2835, 2858, 2880,
    2902, 2924, 2945, 2967, 2988, 3009, 3030, 3051, 3072, 3092, 3113, 3133, 3153, 3172, 3192,
    3212, 3231, 3250, 3269, 3288, 3307, 3326, 3345, 3363, 3381, 3400, 3418, 3436, 3454, 3472,
    3489, 3507, 3524, 3542, 3559, 3576, 3593, 3610, 3627, 3644, 3660, 3677, 3693, 3710, 3726,
    3742, 3759, 3775, 3791, 3807, 3822, 3838, 3854, 3869, 3885, 3900, 3916, 3931, 3946, 3962,
    3977, 3992, 4007, 4021, 4036, 4051, 4066, 4080, 4095};

picojson::object fixture() {
    return isp_test::data_object("gamma/rtl_gamma_p0.json");
}

/* What the fixture holds, written out by hand. */
void fill_expected(_isp_gamma_user_setup_t &setup) {
    setup.range_adjust_enable = 1;
    setup.dither_enable       = 1;
    setup.dither_pmask[0]     = 50115;  // "val16" first in memory
    setup.dither_pmask[1]     = 23130;  // "val15"
    setup.offset_out          = 6;
    setup.offset_in           = 40;
}

void fill_expected(_isp_gamma_user_dither_t &dither) {
    dither.dither_seed_enable = 1;
    dither.dither_seed[0]     = 48879;
    dither.dither_seed[1]     = 4660;
}

void fill_expected(_isp_gamma_user_lut_t &lut) {
    memcpy(lut.gam_lut, curve_2_2, sizeof curve_2_2);
}

/* The bytes of the expected structure, padding included. */
template <typename T>
std::vector<uint8_t> expected() {
    return isp_test::bytes_filled<T>(fill_expected);
}

TEST(gamma_convert, register_file_fills_every_group_and_exports_file_values_over_their_scale) {
    picojson::object root = fixture();
    _isp_gamma_user_setup_t setup;
    _isp_gamma_user_dither_t dither;
    _isp_gamma_user_lut_t lut;
    clear(setup), clear(dither), clear(lut);
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(rtl_to_drv_gamma_user_setup(root, &setup, 0), 0);
                  EXPECT_EQ(rtl_to_drv_gamma_user_dither(root, &dither, 0), 0);
                  EXPECT_EQ(rtl_to_drv_gamma_user_lut(root, &lut, 3), 0);
              }),
              "");
    EXPECT_EQ(bytes_of(setup), expected<_isp_gamma_user_setup_t>());
    EXPECT_EQ(bytes_of(dither), expected<_isp_gamma_user_dither_t>());
    EXPECT_EQ(bytes_of(lut), expected<_isp_gamma_user_lut_t>());

    picojson::object out = isp_test::parse_object(R"({"offset_in": "stale", "kept": true})");
    EXPECT_EQ(drv_to_cmodel_gamma_user_setup(&setup, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_gamma_user_dither(&dither, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_gamma_user_lut(&lut, out, 0), 0);
    const picojson::array &curve = out["lut"].get<picojson::array>();
    ASSERT_EQ(curve.size(), 129u);
    EXPECT_EQ(curve[1].get<double>(), 28.1875);  // 451 / 16
    EXPECT_EQ(curve[2].get<double>(), 38.625);
    EXPECT_EQ(curve[64].get<double>(), 186.75);
    EXPECT_EQ(curve[128].get<double>(), 255.9375);
    out.erase("lut");
    // 6 / 2^2 and 40 / 2^4: the two offsets have their own precision; the 15-bit word first
    EXPECT_EQ(isp_test::serialized(out),
              R"({"dither_enable":1,"dither_pmask":[23130,50115],"dither_seed":[4660,48879],)"
              R"("dither_seed_enable":1,"kept":true,"mode":0,"offset_in":2.5,"offset_out":1.5,)"
              R"("range_adjust_enable":1})");
}

/* The curve is read "high" before "low" from "grp0"; point 128 from "gam_lut_65"."low" alone. */
TEST(gamma_convert, curve_pairs_read_high_before_low_and_the_last_point_alone) {
    picojson::object root = fixture();
    root["isp_gamma"].get<picojson::object>()["grp0"].get<picojson::array>().pop_back();
    root["isp_gamma"].get<picojson::object>()["gam_lut_65"] =
        picojson::value(isp_test::parse_object(R"({"high": 4095})"));
    _isp_gamma_user_lut_t lut;
    memset(&lut, 0xAB, sizeof lut);
    EXPECT_EQ(stderr_lines_of([&] { rtl_to_drv_gamma_user_lut(root, &lut, 0); }),
              (std::vector<std::string>{"read json_obj failed: gam_lut.high",
                                        "read json_obj failed: gam_lut.low",
                                        "read json_obj failed: gam_lut_65.low"}));
    EXPECT_EQ(lut.gam_lut[125], 4051);
    EXPECT_EQ(lut.gam_lut[126], 0);
    EXPECT_EQ(lut.gam_lut[127], 0);
    EXPECT_EQ(lut.gam_lut[128], 0);
}

TEST(gamma_convert, missing_block_reports_each_field_in_conversion_order) {
    picojson::object root = isp_test::parse_object(R"({"isp_csc": {}})");
    _isp_gamma_user_setup_t setup;
    _isp_gamma_user_dither_t dither;
    memset(&setup, 0xAB, sizeof setup);
    memset(&dither, 0xAB, sizeof dither);
    EXPECT_EQ(
        stderr_lines_of([&] {
            EXPECT_EQ(rtl_to_drv_gamma_user_setup(root, &setup, 0), 0);
            EXPECT_EQ(rtl_to_drv_gamma_user_dither(root, &dither, 0), 0);
        }),
        (std::vector<std::string>{
            "read json_obj failed: gamma.range_adjust_enable", "read json_obj failed: gamma.mode",
            "read json_obj failed: dither.enable", "read json_obj failed: dither_pmask.val15",
            "read json_obj failed: dither_pmask.val16", "read json_obj failed: gamma_offset.out",
            "read json_obj failed: gamma_offset.in", "read json_obj failed: dither.seed_enable",
            "read json_obj failed: dither_seed.val15", "read json_obj failed: dither_seed.val16"}));
    EXPECT_EQ(setup.dither_pmask[1], 0);
    EXPECT_EQ(setup.offset_in, 0);
    EXPECT_EQ(dither.dither_seed[0], 0);
    EXPECT_TRUE(root.at("isp_gamma").is<picojson::null>());
}

TEST(gamma_module, replays_setup_dither_and_curve_in_command_order) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_gamma_p0.json", isp_test::data_text("gamma/rtl_gamma_p0.json"));
    const std::vector<isp_sim::call> pushes =
        isp_test::replay(qv_isp_module_gamma_json_register, dir);
    ASSERT_EQ(isp_test::commands_of(pushes), (std::vector<uint32_t>{0, 1, 2, 3}));
    EXPECT_EQ(pushes[1].payload, expected<_isp_gamma_user_setup_t>());
    EXPECT_EQ(pushes[2].payload, expected<_isp_gamma_user_dither_t>());
    EXPECT_EQ(pushes[3].payload, expected<_isp_gamma_user_lut_t>());
}

}  // namespace
