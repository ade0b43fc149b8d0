/* Inverse dynamic range compression block: an exponential 513-entry curve stored one entry per
 * word, the setup group, raw saturating entries, the uncaught curve errors and the module
 * replaying a case. */
#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/hidrc.h"
#include "isp_json_modules.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::clear;
using isp_test::runtime_error_of;
using isp_test::type_error;

picojson::object fixture() {
    return isp_test::data_object("hidrc/rtl_hidrc_p0.json");
}

picojson::array &curve_of(picojson::object &root) {
    return root["isp_hidrc"].get<picojson::object>()["hidrc_lut"].get<picojson::array>();
}

/* What the fixture's setup group holds, written out by hand. */
void fill_expected(_isp_hidrc_user_setup_t &setup) {
    setup.affine_k     = 1536;
    setup.lut_inv_mode = 1;
    setup.offset_in    = 1024;
    isp_test::fill(setup.offset_out, {262144, 264192, 266240, 268288});  // beyond 16 bits
}

/* The bytes of the expected structure, padding included. */
template <typename T>
std::vector<uint8_t> expected() {
    return isp_test::bytes_filled<T>(fill_expected);
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

TEST(hidrc_convert, register_file_fills_both_groups_and_exports_the_setup_over_its_scale) {
    picojson::object root = fixture();
    _isp_hidrc_user_setup_t setup;
    _isp_hidrc_user_hidrc_lut_t lut;
    clear(setup), clear(lut);
    EXPECT_EQ(isp_test::stderr_of([&] {
                  EXPECT_EQ(rtl_to_drv_hidrc_user_setup(root, &setup, 0), 0);
                  EXPECT_EQ(rtl_to_drv_hidrc_user_hidrc_lut(root, &lut, 0), 0);
              }),
              "");
    EXPECT_EQ(bytes_of(setup), expected<_isp_hidrc_user_setup_t>());
    expect_fixture_curve(lut);
    picojson::object out;
    EXPECT_EQ(drv_to_cmodel_hidrc_user_setup(&setup, out, 0), 0);
    EXPECT_EQ(isp_test::serialized(out), R"({"affine_k":0.75,"lut_inv_mode":1,"offset_in":16,)"
                                         R"("offset_out":[4096,4128,4160,4192]})");
}

TEST(hidrc_convert, missing_registers_report_in_conversion_order) {
    picojson::object root = isp_test::parse_object(R"({"isp_hidrc": {"affine_k": {"val": 2048}}})");
    _isp_hidrc_user_setup_t setup;
    memset(&setup, 0xAB, sizeof setup);
    EXPECT_EQ(
        isp_test::stderr_lines_of([&] { rtl_to_drv_hidrc_user_setup(root, &setup, 0); }),
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
    const double entries[] = {-5.0, 70000.7, 1e12, 4294967295.0};
    for (size_t i = 0; i < 4; ++i) curve[i] = picojson::value(entries[i]);
    _isp_hidrc_user_hidrc_lut_t lut{};
    rtl_to_drv_hidrc_user_hidrc_lut(root, &lut, 0);
    EXPECT_EQ(lut.hidrc_lut[0], 0u);
    EXPECT_EQ(lut.hidrc_lut[1], 70000u);
    EXPECT_EQ(lut.hidrc_lut[2], 0xFFFFFFFFu);
    EXPECT_EQ(lut.hidrc_lut[3], 0xFFFFFFFFu);
}

/* No message and no catch: the type error of the level that fails, the words before it kept. */
TEST(hidrc_curve, a_short_or_missing_curve_raises_the_type_error_of_its_level) {
    picojson::object root = fixture();
    curve_of(root).pop_back();
    _isp_hidrc_user_hidrc_lut_t lut;
    memset(&lut, 0xAB, sizeof lut);
    EXPECT_EQ(isp_test::stderr_of([&] {
                  EXPECT_EQ(
                      runtime_error_of([&] { rtl_to_drv_hidrc_user_hidrc_lut(root, &lut, 0); }),
                      type_error("double"));
              }),
              "");
    EXPECT_EQ(lut.hidrc_lut[511], 1042535u);
    EXPECT_EQ(lut.hidrc_lut[512], 0xABABABABu);

    picojson::object no_block;
    picojson::object no_array = isp_test::parse_object(R"({"isp_hidrc": {"hidrc_lut": {"0": 1}}})");
    EXPECT_EQ(runtime_error_of([&] { rtl_to_drv_hidrc_user_hidrc_lut(no_block, &lut, 0); }),
              type_error("object"));
    EXPECT_EQ(runtime_error_of([&] { rtl_to_drv_hidrc_user_hidrc_lut(no_array, &lut, 0); }),
              type_error("array"));
}

TEST(hidrc_module, replays_setup_and_curve_in_command_order) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_hidrc_p0.json", isp_test::data_text("hidrc/rtl_hidrc_p0.json"));
    const std::vector<isp_sim::call> pushes =
        isp_test::replay(qv_isp_module_hidrc_json_register, dir);
    ASSERT_EQ(isp_test::commands_of(pushes), (std::vector<uint32_t>{0, 1, 2}));
    EXPECT_EQ(pushes[1].payload, expected<_isp_hidrc_user_setup_t>());
    _isp_hidrc_user_hidrc_lut_t lut;
    isp_test::copy_bytes(pushes[2].payload, lut);
    expect_fixture_curve(lut);
}

}  // namespace
