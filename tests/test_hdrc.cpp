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

/* The text picojson raises when a checked access finds another type. */
std::string type_error(const char *type) {
    return std::string("\"type mismatch! call is<type>() before get<type>()\" && is<") + type +
           ">()";
}

template <typename T>
T zeroed() {
    T value;
    std::memset(&value, 0, sizeof value);
    return value;
}

template <typename T>
std::vector<uint8_t> bytes_of(const T &value) {
    const uint8_t *bytes = reinterpret_cast<const uint8_t *>(&value);
    return std::vector<uint8_t>(bytes, bytes + sizeof value);
}

TEST(hdrc_convert, setup_reads_every_scalar_register) {
    picojson::object root = fixture();
    _isp_hdrc_user_setup_t setup;
    std::memset(&setup, 0xAB, sizeof setup);
    CaptureStderr();
    EXPECT_EQ(rtl_to_drv_hdrc_user_setup(root, &setup, 0), 0);
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(setup.dither_seed_enable, 1);
    EXPECT_EQ(setup.dither_enable, 1);
    EXPECT_EQ(setup.affine_k, 640);
    EXPECT_EQ(setup.clip_level, 65472);
    EXPECT_EQ(setup.offset_in[0], 4096u);
    EXPECT_EQ(setup.offset_in[1], 4160u);
    EXPECT_EQ(setup.offset_in[2], 4224u);
    EXPECT_EQ(setup.offset_in[3], 4288u);
    EXPECT_EQ(setup.offset_out, 1024);
    EXPECT_EQ(setup.dither_seed[0], 4951);
    EXPECT_EQ(setup.dither_seed[1], 9320);
    EXPECT_EQ(setup.dither_pmask_16bit, 46080);
    EXPECT_EQ(setup.dither_pmask_15bit, 24576);
    EXPECT_EQ(setup.lut_max, 65535);
}

TEST(hdrc_convert, global_control_reads_clock_and_bayer_pattern) {
    picojson::object root = fixture();
    _isp_hdrc_user_glb_ctrl_t glb;
    std::memset(&glb, 0xAB, sizeof glb);
    EXPECT_EQ(rtl_to_drv_hdrc_glb_ctl(root, &glb, 0), 0);
    EXPECT_EQ(glb.manual_clk_en, 1);
    EXPECT_EQ(glb.bayer_pat, 2);
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

TEST(hdrc_curve, packs_two_entries_per_word_and_the_last_alone) {
    picojson::object root = fixture();
    _isp_hdrc_user_hdrc_lut_t lut;
    std::memset(&lut, 0xAB, sizeof lut);
    CaptureStderr();
    EXPECT_EQ(rtl_to_drv_hdrc_user_hdrc_lut(root, &lut, 0), 0);
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(lut.hdrc_lut[0], 88211456u);      // 0 | 1346 << 16
    EXPECT_EQ(lut.hdrc_lut[1], 250874427u);     // 2619 | 3828 << 16
    EXPECT_EQ(lut.hdrc_lut[63], 3304440912u);   // 50256 | 50421 << 16
    EXPECT_EQ(lut.hdrc_lut[127], 4289265489u);  // 65361 | 65448 << 16
    EXPECT_EQ(lut.hdrc_lut[128], 65535u);
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
              R"("lut_max":7,"offset_in":[64,65,66,67],"offset_out":16})");
}

TEST(hdrc_export, input_offsets_keep_all_20_bits) {
    picojson::object root = parse_object(R"({"isp_hdrc": {"offset_in2": {"val": 1048575}}})");
    _isp_hdrc_user_setup_t setup{};
    CaptureStderr();
    rtl_to_drv_hdrc_user_setup(root, &setup, 0);
    GetCapturedStderr();
    EXPECT_EQ(setup.offset_in[2], 0xFFFFFu);
    picojson::object out;
    drv_to_cmodel_hdrc_user_setup(&setup, out, 0);
    EXPECT_EQ(out["offset_in"].serialize(), "[0,0,16383.984375,0]");
}

/* A curve of `count` entries, zero but for the few given, as register-file text. */
std::string curve_text(size_t count, const std::vector<std::pair<size_t, uint32_t>> &entries) {
    std::vector<uint32_t> values(count, 0);
    for (const auto &entry : entries) values[entry.first] = entry.second;
    std::string text = "[";
    for (size_t i = 0; i < count; ++i) text += (i ? "," : "") + std::to_string(values[i]);
    return text + "]";
}

TEST(hdrc_module, replays_setup_curve_and_global_control_in_command_order) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_hdrc_p0.json",
              R"({"isp_hdrc": {"glb_ctrl": {"manual_clk_en": 1, "bayer_pat": 3},
                  "hdrc_ctrl": {"dither_seed_en": 0, "dither_en": 1},
                  "glb_val": {"affine_k": 512, "clip_level": 65472},
                  "offset_in0": {"val": 1}, "offset_in1": {"val": 2}, "offset_in2": {"val": 3},
                  "offset_in3": {"val": 1048575}, "offset_out": {"val": 64},
                  "dither_seed": {"val0": 10, "val1": 11},
                  "dither_pmask": {"val_16bit": 12, "val_15bit": 13}, "lut_max": {"val": 14},
                  "hdrc_lut": )" +
                  curve_text(HDRC_LUT_ENTRIES, {{0, 1}, {1, 2}, {200, 0x1FFFF}, {256, 65535}}) +
                  "}}");
    isp_sim::reset();
    isp_sim::set_log_echo(false);
    isp_test::pipe p(1, 1, dir.path());
    JsonModuleHandle h = p.handle();
    JsonModuleOps *ops = nullptr;
    ASSERT_EQ(qv_isp_module_hdrc_json_register(&ops), 0);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);

    _isp_hdrc_user_setup_t setup  = zeroed<_isp_hdrc_user_setup_t>();
    setup.dither_enable           = 1;
    setup.affine_k                = 512;
    setup.clip_level              = 65472;
    setup.offset_in[0]            = 1;
    setup.offset_in[1]            = 2;
    setup.offset_in[2]            = 3;
    setup.offset_in[3]            = 1048575;
    setup.offset_out              = 64;
    setup.dither_seed[0]          = 10;
    setup.dither_seed[1]          = 11;
    setup.dither_pmask_16bit      = 12;
    setup.dither_pmask_15bit      = 13;
    setup.lut_max                 = 14;
    _isp_hdrc_user_hdrc_lut_t lut = zeroed<_isp_hdrc_user_hdrc_lut_t>();
    lut.hdrc_lut[0]               = 0x00020001;
    lut.hdrc_lut[100]             = 0x0001FFFF;
    lut.hdrc_lut[128]             = 65535;
    _isp_hdrc_user_glb_ctrl_t glb = zeroed<_isp_hdrc_user_glb_ctrl_t>();
    glb.manual_clk_en             = 1;
    glb.bayer_pat                 = 3;

    const std::vector<isp_sim::call> pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 4u);  // the default parameters, then setup, curve, global control
    EXPECT_EQ(pushes[0].cmd, 0u);
    EXPECT_EQ(pushes[1].cmd, 1u);
    EXPECT_EQ(pushes[1].payload, bytes_of(setup));
    EXPECT_EQ(pushes[2].cmd, 3u);
    EXPECT_EQ(pushes[2].payload, bytes_of(lut));
    EXPECT_EQ(pushes[3].cmd, 4u);
    EXPECT_EQ(pushes[3].payload, bytes_of(glb));

    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
    EXPECT_TRUE(isp_sim::problems().empty());
}

}  // namespace
