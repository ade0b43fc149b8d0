/* Dynamic range compression block: a logarithmic curve packed two entries to a word, the setup
 * and global control groups, the unmasked packing, the uncaught curve errors, the setup export
 * and the module replaying a case. */
#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/hdrc.h"
#include "isp_json_modules.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::clear;

picojson::object fixture() {
    return isp_test::data_object("hdrc/rtl_hdrc_p0.json");
}

picojson::array &curve_of(picojson::object &root) {
    return root["isp_hdrc"].get<picojson::object>()["hdrc_lut"].get<picojson::array>();
}

/* What the fixture's scalar groups hold, written out by hand. */
void fill_expected(_isp_hdrc_user_setup_t &setup) {
    setup.dither_seed_enable = 1;
    setup.dither_enable      = 1;
    setup.affine_k           = 640;
    setup.clip_level         = 65472;
    isp_test::fill(setup.offset_in, {262144, 266240, 270336, 274432});  // beyond 16 bits
    setup.offset_out         = 1024;
    setup.dither_seed[0]     = 4951;
    setup.dither_seed[1]     = 9320;
    setup.dither_pmask_16bit = 46080;
    setup.dither_pmask_15bit = 24576;
    setup.lut_max            = 65535;
}

void fill_expected(_isp_hdrc_user_glb_ctrl_t &glb) {
    glb.manual_clk_en = 1;
    glb.bayer_pat     = 2;
}

/* The bytes of the expected structure, padding included. */
template <typename T>
std::vector<uint8_t> expected() {
    return isp_test::bytes_filled<T>(fill_expected);
}

/* Words of the fixture's curve: 65535 * log2(1 + 15 i / 256) / 4, two entries per word. */
void expect_fixture_curve(const _isp_hdrc_user_hdrc_lut_t &lut) {
    EXPECT_EQ(lut.hdrc_lut[0], 88211456u);      // 0 | 1346 << 16
    EXPECT_EQ(lut.hdrc_lut[1], 250874427u);     // 2619 | 3828 << 16
    EXPECT_EQ(lut.hdrc_lut[63], 3304440912u);   // 50256 | 50421 << 16
    EXPECT_EQ(lut.hdrc_lut[127], 4289265489u);  // 65361 | 65448 << 16
    EXPECT_EQ(lut.hdrc_lut[128], 65535u);       // entry 256 alone
}

TEST(hdrc_convert, register_file_fills_every_group) {
    picojson::object root = fixture();
    _isp_hdrc_user_setup_t setup;
    _isp_hdrc_user_glb_ctrl_t glb;
    _isp_hdrc_user_hdrc_lut_t lut;
    clear(setup), clear(glb), clear(lut);
    EXPECT_EQ(isp_test::stderr_of([&] {
                  EXPECT_EQ(rtl_to_drv_hdrc_user_setup(root, &setup, 0), 0);
                  EXPECT_EQ(rtl_to_drv_hdrc_user_hdrc_lut(root, &lut, 0), 0);
                  EXPECT_EQ(rtl_to_drv_hdrc_glb_ctl(root, &glb, 0), 0);
              }),
              "");
    EXPECT_EQ(bytes_of(setup), expected<_isp_hdrc_user_setup_t>());
    EXPECT_EQ(bytes_of(glb), expected<_isp_hdrc_user_glb_ctrl_t>());
    expect_fixture_curve(lut);
}

TEST(hdrc_convert, missing_block_reports_scalars_in_conversion_order) {
    picojson::object root;
    _isp_hdrc_user_setup_t setup;
    _isp_hdrc_user_glb_ctrl_t glb;
    memset(&setup, 0xAB, sizeof setup);
    memset(&glb, 0xAB, sizeof glb);
    EXPECT_EQ(
        isp_test::stderr_lines_of([&] {
            rtl_to_drv_hdrc_user_setup(root, &setup, 0);
            rtl_to_drv_hdrc_glb_ctl(root, &glb, 0);
        }),
        (std::vector<std::string>{
            "read json_obj failed: hdrc_ctrl.dither_seed_en",
            "read json_obj failed: hdrc_ctrl.dither_en", "read json_obj failed: glb_val.affine_k",
            "read json_obj failed: glb_val.clip_level", "read json_obj failed: offset_in3.val",
            "read json_obj failed: offset_in2.val", "read json_obj failed: offset_in1.val",
            "read json_obj failed: offset_in0.val", "read json_obj failed: offset_out.val",
            "read json_obj failed: dither_seed.val1", "read json_obj failed: dither_seed.val0",
            "read json_obj failed: dither_pmask.val_16bit",
            "read json_obj failed: dither_pmask.val_15bit", "read json_obj failed: lut_max.val",
            "read json_obj failed: glb_ctrl.manual_clk_en",
            "read json_obj failed: glb_ctrl.bayer_pat"}));
    EXPECT_EQ(setup.offset_in[3], 0u);
    EXPECT_EQ(setup.lut_max, 0);
    EXPECT_EQ(glb.bayer_pat, 0);
    EXPECT_TRUE(root.at("isp_hdrc").is<picojson::null>());
}

TEST(hdrc_curve, entries_are_raw_saturated_and_not_masked) {
    picojson::object root  = fixture();
    picojson::array &curve = curve_of(root);
    const double entries[] = {1.0, 2.9, static_cast<double>(0x1FFFF), 0.0, -5.0, 1.0};
    for (size_t i = 0; i < 6; ++i) curve[i] = picojson::value(entries[i]);
    curve[256] = picojson::value(1e12);
    _isp_hdrc_user_hdrc_lut_t lut{};
    rtl_to_drv_hdrc_user_hdrc_lut(root, &lut, 0);
    EXPECT_EQ(lut.hdrc_lut[0], 0x00020001u);
    EXPECT_EQ(lut.hdrc_lut[1], 0x0001FFFFu);  // entry 2 spills into entry 3's half
    EXPECT_EQ(lut.hdrc_lut[2], 0x00010000u);
    EXPECT_EQ(lut.hdrc_lut[128], 0xFFFFFFFFu);
}

TEST(hdrc_curve, missing_or_malformed_curve_raises_without_a_message) {
    const struct {
        const char *name;
        void (*spoil)(picojson::object &root);
        const char *type;
    } rows[] = {
        {"no block", [](picojson::object &root) { root.erase("isp_hdrc"); }, "object"},
        {"no curve",
         [](picojson::object &root) { root["isp_hdrc"].get<picojson::object>().erase("hdrc_lut"); },
         "array"},
        {"short curve", [](picojson::object &root) { curve_of(root).pop_back(); }, "double"},
        {"string entry", [](picojson::object &root) { curve_of(root)[100] = picojson::value("x"); },
         "double"},
    };
    for (const auto &row : rows) {
        picojson::object root = fixture();
        row.spoil(root);
        _isp_hdrc_user_hdrc_lut_t lut;
        memset(&lut, 0xAB, sizeof lut);
        EXPECT_EQ(isp_test::stderr_of([&] {
                      EXPECT_EQ(isp_test::runtime_error_of(
                                    [&] { rtl_to_drv_hdrc_user_hdrc_lut(root, &lut, 0); }),
                                isp_test::type_error(row.type))
                          << row.name;
                  }),
                  "")
            << row.name;
        // The curve is read whole before any word is packed.
        EXPECT_EQ(lut.hdrc_lut[0], 0xABABABABu) << row.name;
    }
}

TEST(hdrc_export, setup_writes_no_lut_max_and_a_zero_curve) {
    picojson::object root = fixture();
    _isp_hdrc_user_setup_t setup{};
    rtl_to_drv_hdrc_user_setup(root, &setup, 0);
    picojson::object out = isp_test::parse_object(R"({"lut_max": 7, "hdrc_lut": [1]})");
    EXPECT_EQ(drv_to_cmodel_hdrc_user_setup(&setup, out, 0), 0);
    EXPECT_EQ(out["hdrc_lut"].serialize(),
              picojson::value(picojson::array(257, picojson::value(0.0))).serialize());
    out.erase("hdrc_lut");
    EXPECT_EQ(isp_test::serialized(out),
              R"({"affine_k":1.25,"clip_level":1023,"dither_enable":1,"dither_pmask_15bit":24576,)"
              R"("dither_pmask_16bit":46080,"dither_seed":[4951,9320],"dither_seed_enable":1,)"
              R"("lut_max":7,"offset_in":[4096,4160,4224,4288],"offset_out":16})");
}

TEST(hdrc_module, replays_setup_curve_and_global_control_in_command_order) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_hdrc_p0.json", isp_test::data_text("hdrc/rtl_hdrc_p0.json"));
    const std::vector<isp_sim::call> pushes =
        isp_test::replay(qv_isp_module_hdrc_json_register, dir);
    // the default parameters, then setup, curve, global control
    ASSERT_EQ(isp_test::commands_of(pushes), (std::vector<uint32_t>{0, 1, 3, 4}));
    EXPECT_EQ(pushes[1].payload, expected<_isp_hdrc_user_setup_t>());
    _isp_hdrc_user_hdrc_lut_t lut;
    isp_test::copy_bytes(pushes[2].payload, lut);
    expect_fixture_curve(lut);
    EXPECT_EQ(pushes[3].payload, expected<_isp_hdrc_user_glb_ctrl_t>());
}

}  // namespace
