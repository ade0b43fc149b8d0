/* Colour space conversion block: a BT.601-like matrix with chroma decimation converted and
 * exported, the identity matrix, signed and unsigned taps, the field order of the packed
 * registers and the module replaying a case. */
#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/csc.h"
#include "isp_json_modules.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::clear;
using isp_test::parse_object;
using isp_test::serialized;

picojson::object fixture() {
    return isp_test::data_object("csc/rtl_csc_p0.json");
}

/* What the fixture holds, written out by hand: the BT.601 coefficients times 1024, negative ones as
 * 13-bit two's complement. */
void fill_expected(_isp_csc_user_core_t &core) {
    const uint16_t matrix[CSC_MATRIX_COEFFS] = {306, 601, 117, 8019, 7853, 512, 512, 7763, 8109};
    memcpy(core.matrix, matrix, sizeof matrix);
}

void fill_expected(_isp_csc_user_setup_t &setup) {
    const uint8_t taps_h[CSC_DECIMATION_H_TAPS] = {126, 0, 10, 16, 10, 0, 126};
    memcpy(setup.decimation_h, taps_h, sizeof taps_h);
    setup.decimation_v[0] = 1;
    setup.decimation_v[1] = 1;
    setup.output_type     = 1;
    setup.offset_out[0]   = 64;
    setup.offset_out[1]   = 512;
    setup.offset_out[2]   = 512;
    setup.offset_in[0]    = 2032;  // -16
    setup.offset_in[1]    = 2040;  // -8
    setup.offset_in[2]    = 2044;  // -4
}

void fill_expected(_isp_csc_user_init_t &init) {
    init.uv_seq_sel = 1;
}

/* The bytes of the expected structure, padding included. */
template <typename T>
std::vector<uint8_t> expected() {
    return isp_test::bytes_filled<T>(fill_expected);
}

TEST(csc_convert, bt601_file_fills_every_group_and_exports_its_real_values) {
    picojson::object root = fixture();
    _isp_csc_user_core_t core;
    _isp_csc_user_setup_t setup;
    _isp_csc_user_init_t init;
    clear(core), clear(setup), clear(init);
    EXPECT_EQ(isp_test::stderr_of([&] {
                  EXPECT_EQ(rtl_to_drv_csc_user_core(root, &core, 0), 0);
                  EXPECT_EQ(rtl_to_drv_csc_user_setup(root, &setup, 0), 0);
                  EXPECT_EQ(rtl_to_drv_csc_user_init(root, &init, 0), 0);
              }),
              "");
    EXPECT_EQ(bytes_of(core), expected<_isp_csc_user_core_t>());
    EXPECT_EQ(bytes_of(setup), expected<_isp_csc_user_setup_t>());
    EXPECT_EQ(bytes_of(init), expected<_isp_csc_user_init_t>());

    picojson::object out;
    EXPECT_EQ(drv_to_cmodel_csc_user_core(&core, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_csc_user_setup(&setup, out, 0), 0);
    EXPECT_EQ(serialized(out),
              R"({"decimation_h":[-0.0625,0,0.3125,0.5,0.3125,0,-0.0625],)"
              R"("decimation_v":[0.5,0.5],"input_type":0,)"
              R"("matrix":[0.298828125,0.5869140625,0.1142578125,-0.1689453125,-0.3310546875,)"
              R"(0.5,0.5,-0.4189453125,-0.0810546875],)"
              R"("offset_in":[-4,-2,-1],"offset_out":[16,128,128],"output_type":1})");
}

TEST(csc_convert, taps_keep_signed_and_unsigned_encodings_without_clipping) {
    picojson::object root = parse_object(R"({"isp_csc": {
        "reg_csc_decimation_h23": {"val2": 31, "val3": -4},
        "reg_csc_decimation_v": {"val0": -1, "val1": 5}}})");
    _isp_csc_user_setup_t setup{};
    isp_test::stderr_of([&] { rtl_to_drv_csc_user_setup(root, &setup, 0); });
    EXPECT_EQ(setup.decimation_h[2], 31);
    EXPECT_EQ(setup.decimation_h[3], 0x7C);  // -4 in 7-bit two's complement
    EXPECT_EQ(setup.decimation_v[0], 1);     // unsigned: the magnitude
    EXPECT_EQ(setup.decimation_v[1], 5);     // wider than the 2-bit field, kept whole
    picojson::object out;
    drv_to_cmodel_csc_user_setup(&setup, out, 0);
    EXPECT_EQ(out["decimation_h"].serialize(), "[0,0,0.96875,-0.125,0,0,0]");
    EXPECT_EQ(out["decimation_v"].serialize(), "[0.5,2.5]");
}

TEST(csc_convert, missing_registers_report_in_conversion_order) {
    picojson::object root = parse_object(R"({"isp_csc": {"reg_csc_mode": {"in": 1}}})");
    _isp_csc_user_core_t core;
    _isp_csc_user_setup_t setup;
    memset(&core, 0xAB, sizeof core);
    memset(&setup, 0xAB, sizeof setup);
    EXPECT_EQ(isp_test::stderr_lines_of([&] {
                  rtl_to_drv_csc_user_core(root, &core, 0);
                  rtl_to_drv_csc_user_setup(root, &setup, 0);
              }),
              (std::vector<std::string>{
                  "read json_obj failed: reg_csc_matrix_gp0.m01",
                  "read json_obj failed: reg_csc_matrix_gp0.m00",
                  "read json_obj failed: reg_csc_matrix_gp1.m10",
                  "read json_obj failed: reg_csc_matrix_gp1.m02",
                  "read json_obj failed: reg_csc_matrix_gp2.m12",
                  "read json_obj failed: reg_csc_matrix_gp2.m11",
                  "read json_obj failed: reg_csc_matrix_gp3.m21",
                  "read json_obj failed: reg_csc_matrix_gp3.m20",
                  "read json_obj failed: reg_csc_matrix_gp4.m22",
                  "read json_obj failed: reg_csc_decimation_h01.val1",
                  "read json_obj failed: reg_csc_decimation_h01.val0",
                  "read json_obj failed: reg_csc_decimation_h23.val3",
                  "read json_obj failed: reg_csc_decimation_h23.val2",
                  "read json_obj failed: reg_csc_decimation_h45.val5",
                  "read json_obj failed: reg_csc_decimation_h45.val4",
                  "read json_obj failed: reg_csc_decimation_h6.val6",
                  "read json_obj failed: reg_csc_decimation_v.val1",
                  "read json_obj failed: reg_csc_decimation_v.val0",
                  "read json_obj failed: reg_csc_mode.out",
                  "read json_obj failed: reg_csc_offset_gp0.out",
                  "read json_obj failed: reg_csc_offset_gp0.in",
                  "read json_obj failed: reg_csc_offset_gp1.out",
                  "read json_obj failed: reg_csc_offset_gp1.in",
                  "read json_obj failed: reg_csc_offset_gp2.out",
                  "read json_obj failed: reg_csc_offset_gp2.in",
              }));
    EXPECT_EQ(core.matrix[8], 0);
    EXPECT_EQ(setup.input_type, 1);
    EXPECT_EQ(setup.offset_in[2], 0);
}

TEST(csc_export, identity_matrix_exports_ones_on_the_diagonal) {
    picojson::object root = parse_object(R"({"isp_csc": {
        "reg_csc_matrix_gp0": {"m00": 1024, "m01": 0}, "reg_csc_matrix_gp1": {"m02": 0, "m10": 0},
        "reg_csc_matrix_gp2": {"m11": 1024, "m12": 0}, "reg_csc_matrix_gp3": {"m20": 0, "m21": 0},
        "reg_csc_matrix_gp4": {"m22": 1024}}})");
    _isp_csc_user_core_t core{};
    rtl_to_drv_csc_user_core(root, &core, 0);
    EXPECT_EQ(core.matrix[0], 0x400);
    EXPECT_EQ(core.matrix[4], 0x400);
    EXPECT_EQ(core.matrix[8], 0x400);
    picojson::object out = parse_object(R"({"matrix": [], "kept": true})");
    drv_to_cmodel_csc_user_core(&core, out, 0);
    EXPECT_EQ(serialized(out), R"({"kept":true,"matrix":[1,0,0,0,1,0,0,0,1]})");
}

TEST(csc_module, replays_core_setup_and_init_in_command_order) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_csc_p0.json", isp_test::data_text("csc/rtl_csc_p0.json"));
    const std::vector<isp_sim::call> pushes =
        isp_test::replay(qv_isp_module_csc_json_register, dir);
    ASSERT_EQ(isp_test::commands_of(pushes), (std::vector<uint32_t>{0, 1, 2, 3}));
    EXPECT_EQ(pushes[1].payload, expected<_isp_csc_user_core_t>());
    EXPECT_EQ(pushes[2].payload, expected<_isp_csc_user_setup_t>());
    EXPECT_EQ(pushes[3].payload, expected<_isp_csc_user_init_t>());
}

}  // namespace
