/* Inverse dynamic range compression block: an exponential 513-entry curve stored one entry per
 * word, the setup group, raw saturating entries, the uncaught curve errors and the module
 * replaying a case. */
#include <stdint.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/hidrc.h"
#include "isp_json_utils.h"
#include "isp_json_modules.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::parse_object;
using isp_test::split_lines;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

const char type_error_prefix[] = "\"type mismatch! call is<type>() before get<type>()\" && ";

picojson::object fixture() {
    return read_json_file(ISP_TEST_DATA_DIR "/hidrc/rtl_hidrc_p0.json").get<picojson::object>();
}

picojson::array &curve_of(picojson::object &root) {
    return root["isp_hidrc"].get<picojson::object>()["hidrc_lut"].get<picojson::array>();
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

/* The bytes of the fixture's setup group as the converter must fill it. */
std::vector<uint8_t> expected_setup_bytes() {
    _isp_hidrc_user_setup_t setup;
    clear(&setup);
    setup.affine_k      = 1536;
    setup.lut_inv_mode  = 1;
    setup.offset_in     = 1024;
    setup.offset_out[0] = 262144;  // beyond 16 bits
    setup.offset_out[1] = 264192;
    setup.offset_out[2] = 266240;
    setup.offset_out[3] = 268288;
    return bytes_of(setup);
}

/* Words of the fixture's curve: 1048575 * (16^(i / 512) - 1) / 15, one entry per word. */
void expect_fixture_curve(const _isp_hidrc_user_hidrc_lut_t &lut) {
    EXPECT_EQ(lut.hidrc_lut[0], 0u);
    EXPECT_EQ(lut.hidrc_lut[1], 380u);
    EXPECT_EQ(lut.hidrc_lut[2], 761u);
    EXPECT_EQ(lut.hidrc_lut[256], 209715u);
    EXPECT_EQ(lut.hidrc_lut[511], 1042535u);
    EXPECT_EQ(lut.hidrc_lut[512], 1048575u);
}

/* Runs the curve converter and returns the text of the error it raises, "" when none. */
std::string curve_error(picojson::object &root, _isp_hidrc_user_hidrc_lut_t *lut) {
    try {
        rtl_to_drv_hidrc_user_hidrc_lut(root, lut, 0);
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return "";
}

TEST(hidrc_convert, register_file_fills_both_groups) {
    picojson::object root = fixture();
    _isp_hidrc_user_setup_t setup;
    clear(&setup);
    _isp_hidrc_user_hidrc_lut_t lut;
    clear(&lut);
    CaptureStderr();
    EXPECT_EQ(rtl_to_drv_hidrc_user_setup(root, &setup, 0), 0);
    EXPECT_EQ(rtl_to_drv_hidrc_user_hidrc_lut(root, &lut, 0), 0);
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(bytes_of(setup), expected_setup_bytes());
    expect_fixture_curve(lut);
}

TEST(hidrc_convert, missing_registers_report_in_conversion_order) {
    picojson::object root = parse_object(R"({"isp_hidrc": {"affine_k": {"val": 2048}}})");
    _isp_hidrc_user_setup_t setup;
    std::memset(&setup, 0xAB, sizeof setup);
    CaptureStderr();
    rtl_to_drv_hidrc_user_setup(root, &setup, 0);
    EXPECT_EQ(
        split_lines(GetCapturedStderr()),
        (std::vector<std::string>{
            "read json_obj failed: lut_inv_mode.val", "read json_obj failed: offset_in.val",
            "read json_obj failed: offset_out3.val", "read json_obj failed: offset_out2.val",
            "read json_obj failed: offset_out1.val", "read json_obj failed: offset_out0.val"}));
    EXPECT_EQ(setup.affine_k, 2048);
    EXPECT_EQ(setup.lut_inv_mode, 0);
    EXPECT_EQ(setup.offset_out[0], 0u);
}

TEST(hidrc_curve, entries_truncate_and_saturate_into_32_bits) {
    picojson::object root  = fixture();
    picojson::array &curve = curve_of(root);
    curve[0]               = picojson::value(-5.0);
    curve[1]               = picojson::value(70000.7);
    curve[2]               = picojson::value(1e12);
    curve[3]               = picojson::value(4294967295.0);
    _isp_hidrc_user_hidrc_lut_t lut{};
    rtl_to_drv_hidrc_user_hidrc_lut(root, &lut, 0);
    EXPECT_EQ(lut.hidrc_lut[0], 0u);
    EXPECT_EQ(lut.hidrc_lut[1], 70000u);
    EXPECT_EQ(lut.hidrc_lut[2], 0xFFFFFFFFu);
    EXPECT_EQ(lut.hidrc_lut[3], 0xFFFFFFFFu);
}

TEST(hidrc_curve, short_curve_raises_and_keeps_the_words_before_it) {
    picojson::object root = fixture();
    curve_of(root).pop_back();
    _isp_hidrc_user_hidrc_lut_t lut;
    std::memset(&lut, 0xAB, sizeof lut);
    CaptureStderr();
    EXPECT_EQ(curve_error(root, &lut), std::string(type_error_prefix) + "is<double>()");
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(lut.hidrc_lut[511], 1042535u);
    EXPECT_EQ(lut.hidrc_lut[512], 0xABABABABu);
}

TEST(hidrc_curve, missing_block_or_curve_raises_the_type_error_of_its_level) {
    picojson::object no_block;
    picojson::object no_array = parse_object(R"({"isp_hidrc": {"hidrc_lut": {"0": 1}}})");
    _isp_hidrc_user_hidrc_lut_t lut{};
    EXPECT_EQ(curve_error(no_block, &lut), std::string(type_error_prefix) + "is<object>()");
    EXPECT_EQ(curve_error(no_array, &lut), std::string(type_error_prefix) + "is<array>()");
}

TEST(hidrc_export, setup_exports_file_values_over_their_scale) {
    picojson::object root = fixture();
    _isp_hidrc_user_setup_t setup{};
    rtl_to_drv_hidrc_user_setup(root, &setup, 0);
    picojson::object out;
    EXPECT_EQ(drv_to_cmodel_hidrc_user_setup(&setup, out, 0), 0);
    EXPECT_EQ(picojson::value(out).serialize(),
              R"({"affine_k":0.75,"lut_inv_mode":1,"offset_in":16,)"
              R"("offset_out":[4096,4128,4160,4192]})");
}

TEST(hidrc_module, replays_setup_and_curve_in_command_order) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_hidrc_p0.json",
              isp_test::read_file(ISP_TEST_DATA_DIR "/hidrc/rtl_hidrc_p0.json"));
    isp_sim::reset();
    isp_sim::set_log_echo(false);
    isp_test::pipe p(1, 1, dir.path());
    JsonModuleHandle h = p.handle();
    JsonModuleOps *ops = nullptr;
    ASSERT_EQ(qv_isp_module_hidrc_json_register(&ops), 0);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);

    const std::vector<isp_sim::call> pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 3u);  // the default parameters, then setup, curve
    EXPECT_EQ(pushes[0].cmd, 0u);
    EXPECT_EQ(pushes[1].cmd, 1u);
    EXPECT_EQ(pushes[1].payload, expected_setup_bytes());
    EXPECT_EQ(pushes[2].cmd, 2u);
    _isp_hidrc_user_hidrc_lut_t lut;
    ASSERT_EQ(pushes[2].payload.size(), sizeof lut);
    std::memcpy(&lut, pushes[2].payload.data(), sizeof lut);
    expect_fixture_curve(lut);

    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
    EXPECT_TRUE(isp_sim::problems().empty());
}

}  // namespace
