/* Dynamic range compression block: a logarithmic curve packed two entries to a word, the setup
 * and global control groups, the unmasked packing, the uncaught curve errors, the setup export
 * and the module replaying a case. */
#include <stdint.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/hdrc.h"
#include "isp_json_utils.h"
#include "isp_json_modules.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::parse_object;
using isp_test::split_lines;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

picojson::object fixture() {
    return read_json_file(ISP_TEST_DATA_DIR "/hdrc/rtl_hdrc_p0.json").get<picojson::object>();
}

picojson::array &curve_of(picojson::object &root) {
    return root["isp_hdrc"].get<picojson::object>()["hdrc_lut"].get<picojson::array>();
}

/* Structures are compared byte for byte, padding included, so each starts from zeros in place:
 * a small one returned by value can come back through registers and lose its padding. */
template <typename T>
void clear(T *value) {
    std::memset(value, 0, sizeof *value);
}

template <typename T>
std::vector<uint8_t> bytes_of(const T &value) {
    const uint8_t *bytes = reinterpret_cast<const uint8_t *>(&value);
    return std::vector<uint8_t>(bytes, bytes + sizeof value);
}

/* The bytes of the fixture's scalar groups as the converters must fill them. */
std::vector<uint8_t> expected_setup_bytes() {
    _isp_hdrc_user_setup_t setup;
    clear(&setup);
    setup.dither_seed_enable = 1;
    setup.dither_enable      = 1;
    setup.affine_k           = 640;
    setup.clip_level         = 65472;
    setup.offset_in[0]       = 262144;  // beyond 16 bits
    setup.offset_in[1]       = 266240;
    setup.offset_in[2]       = 270336;
    setup.offset_in[3]       = 274432;
    setup.offset_out         = 1024;
    setup.dither_seed[0]     = 4951;
    setup.dither_seed[1]     = 9320;
    setup.dither_pmask_16bit = 46080;
    setup.dither_pmask_15bit = 24576;
    setup.lut_max            = 65535;
    return bytes_of(setup);
}

std::vector<uint8_t> expected_glb_ctrl_bytes() {
    _isp_hdrc_user_glb_ctrl_t glb;
    clear(&glb);
    glb.manual_clk_en = 1;
    glb.bayer_pat     = 2;
    return bytes_of(glb);
}

/* Words of the fixture's curve: 65535 * log2(1 + 15 i / 256) / 4, two entries per word. */
void expect_fixture_curve(const _isp_hdrc_user_hdrc_lut_t &lut) {
    EXPECT_EQ(lut.hdrc_lut[0], 88211456u);      // 0 | 1346 << 16
    EXPECT_EQ(lut.hdrc_lut[1], 250874427u);     // 2619 | 3828 << 16
    EXPECT_EQ(lut.hdrc_lut[63], 3304440912u);   // 50256 | 50421 << 16
    EXPECT_EQ(lut.hdrc_lut[127], 4289265489u);  // 65361 | 65448 << 16
    EXPECT_EQ(lut.hdrc_lut[128], 65535u);       // entry 256 alone
}

/* The text picojson raises when a checked access finds another type. */
std::string type_error(const char *type) {
    return std::string("\"type mismatch! call is<type>() before get<type>()\" && is<") + type +
           ">()";
}

TEST(hdrc_convert, register_file_fills_every_group) {
    picojson::object root = fixture();
    _isp_hdrc_user_setup_t setup;
    clear(&setup);
    _isp_hdrc_user_glb_ctrl_t glb;
    clear(&glb);
    _isp_hdrc_user_hdrc_lut_t lut;
    clear(&lut);
    CaptureStderr();
    EXPECT_EQ(rtl_to_drv_hdrc_user_setup(root, &setup, 0), 0);
    EXPECT_EQ(rtl_to_drv_hdrc_user_hdrc_lut(root, &lut, 0), 0);
    EXPECT_EQ(rtl_to_drv_hdrc_glb_ctl(root, &glb, 0), 0);
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(bytes_of(setup), expected_setup_bytes());
    EXPECT_EQ(bytes_of(glb), expected_glb_ctrl_bytes());
    expect_fixture_curve(lut);
}

TEST(hdrc_convert, missing_block_reports_scalars_in_conversion_order) {
    picojson::object root;
    _isp_hdrc_user_setup_t setup;
    _isp_hdrc_user_glb_ctrl_t glb;
    std::memset(&setup, 0xAB, sizeof setup);
    std::memset(&glb, 0xAB, sizeof glb);
    CaptureStderr();
    rtl_to_drv_hdrc_user_setup(root, &setup, 0);
    rtl_to_drv_hdrc_glb_ctl(root, &glb, 0);
    EXPECT_EQ(
        split_lines(GetCapturedStderr()),
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
    EXPECT_TRUE(root["isp_hdrc"].is<picojson::null>());
}

TEST(hdrc_curve, entries_are_raw_saturated_and_not_masked) {
    picojson::object root  = fixture();
    picojson::array &curve = curve_of(root);
    curve[0]               = picojson::value(1.0);
    curve[1]               = picojson::value(2.9);
    curve[2]               = picojson::value(static_cast<double>(0x1FFFF));
    curve[3]               = picojson::value(0.0);
    curve[4]               = picojson::value(-5.0);
    curve[5]               = picojson::value(1.0);
    curve[256]             = picojson::value(1e12);
    _isp_hdrc_user_hdrc_lut_t lut{};
    rtl_to_drv_hdrc_user_hdrc_lut(root, &lut, 0);
    EXPECT_EQ(lut.hdrc_lut[0], 0x00020001u);
    EXPECT_EQ(lut.hdrc_lut[1], 0x0001FFFFu);  // entry 2 spills into entry 3's half
    EXPECT_EQ(lut.hdrc_lut[2], 0x00010000u);
    EXPECT_EQ(lut.hdrc_lut[128], 0xFFFFFFFFu);
}

TEST(hdrc_curve, missing_or_malformed_curve_raises_without_a_message) {
    struct case_row {
        const char *name;
        void (*spoil)(picojson::object &root);
        const char *type;
    };
    const case_row rows[] = {
        {"no block", [](picojson::object &root) { root.erase("isp_hdrc"); }, "object"},
        {"no curve",
         [](picojson::object &root) { root["isp_hdrc"].get<picojson::object>().erase("hdrc_lut"); },
         "array"},
        {"short curve", [](picojson::object &root) { curve_of(root).pop_back(); }, "double"},
        {"string entry", [](picojson::object &root) { curve_of(root)[100] = picojson::value("x"); },
         "double"},
    };
    for (const case_row &row : rows) {
        picojson::object root = fixture();
        row.spoil(root);
        _isp_hdrc_user_hdrc_lut_t lut;
        std::memset(&lut, 0xAB, sizeof lut);
        CaptureStderr();
        try {
            rtl_to_drv_hdrc_user_hdrc_lut(root, &lut, 0);
            ADD_FAILURE() << row.name << ": no error raised";
        } catch (const std::runtime_error &error) {
            EXPECT_EQ(error.what(), type_error(row.type)) << row.name;
        }
        EXPECT_EQ(GetCapturedStderr(), "") << row.name;
        // The curve is read whole before any word is packed.
        EXPECT_EQ(lut.hdrc_lut[0], 0xABABABABu) << row.name;
    }
}

TEST(hdrc_export, setup_writes_no_lut_max_and_a_zero_curve) {
    picojson::object root = fixture();
    _isp_hdrc_user_setup_t setup{};
    rtl_to_drv_hdrc_user_setup(root, &setup, 0);
    picojson::object out = parse_object(R"({"lut_max": 7, "hdrc_lut": [1]})");
    EXPECT_EQ(drv_to_cmodel_hdrc_user_setup(&setup, out, 0), 0);
    const picojson::array &curve = out["hdrc_lut"].get<picojson::array>();
    ASSERT_EQ(curve.size(), 257u);
    for (const picojson::value &entry : curve) EXPECT_EQ(entry.get<double>(), 0.0);
    out.erase("hdrc_lut");
    EXPECT_EQ(picojson::value(out).serialize(),
              R"({"affine_k":1.25,"clip_level":1023,"dither_enable":1,"dither_pmask_15bit":24576,)"
              R"("dither_pmask_16bit":46080,"dither_seed":[4951,9320],"dither_seed_enable":1,)"
              R"("lut_max":7,"offset_in":[4096,4160,4224,4288],"offset_out":16})");
}

TEST(hdrc_module, replays_setup_curve_and_global_control_in_command_order) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_hdrc_p0.json",
              isp_test::read_file(ISP_TEST_DATA_DIR "/hdrc/rtl_hdrc_p0.json"));
    isp_sim::reset();
    isp_sim::set_log_echo(false);
    isp_test::pipe p(1, 1, dir.path());
    JsonModuleHandle h = p.handle();
    JsonModuleOps *ops = nullptr;
    ASSERT_EQ(qv_isp_module_hdrc_json_register(&ops), 0);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);

    const std::vector<isp_sim::call> pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 4u);  // the default parameters, then setup, curve, global control
    EXPECT_EQ(pushes[0].cmd, 0u);
    EXPECT_EQ(pushes[1].cmd, 1u);
    EXPECT_EQ(pushes[1].payload, expected_setup_bytes());
    EXPECT_EQ(pushes[2].cmd, 3u);
    _isp_hdrc_user_hdrc_lut_t lut;
    ASSERT_EQ(pushes[2].payload.size(), sizeof lut);
    std::memcpy(&lut, pushes[2].payload.data(), sizeof lut);
    expect_fixture_curve(lut);
    EXPECT_EQ(pushes[3].cmd, 4u);
    EXPECT_EQ(pushes[3].payload, expected_glb_ctrl_bytes());

    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
    EXPECT_TRUE(isp_sim::problems().empty());
}

}  // namespace
