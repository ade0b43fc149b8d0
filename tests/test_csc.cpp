/* Colour space conversion block: a BT.601-like matrix with chroma decimation converted and
 * exported, the identity matrix, signed and unsigned taps, the field order of the packed
 * registers and the module replaying a case. */
#include <stdint.h>

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/csc.h"
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
    return read_json_file(ISP_TEST_DATA_DIR "/csc/rtl_csc_p0.json").get<picojson::object>();
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

/* The bytes of the fixture's groups as the converters must fill them: the BT.601 coefficients times
 * 1024, negative ones as 13-bit two's complement. */
std::vector<uint8_t> expected_core_bytes() {
    _isp_csc_user_core_t core;
    clear(&core);
    const uint16_t matrix[CSC_MATRIX_COEFFS] = {306, 601, 117, 8019, 7853, 512, 512, 7763, 8109};
    std::memcpy(core.matrix, matrix, sizeof matrix);
    return bytes_of(core);
}

std::vector<uint8_t> expected_setup_bytes() {
    _isp_csc_user_setup_t setup;
    clear(&setup);
    const uint8_t taps_h[CSC_DECIMATION_H_TAPS] = {126, 0, 10, 16, 10, 0, 126};
    std::memcpy(setup.decimation_h, taps_h, sizeof taps_h);
    setup.decimation_v[0] = 1;
    setup.decimation_v[1] = 1;
    setup.output_type     = 1;
    setup.offset_out[0]   = 64;
    setup.offset_out[1]   = 512;
    setup.offset_out[2]   = 512;
    setup.offset_in[0]    = 2032;  // -16
    setup.offset_in[1]    = 2040;  // -8
    setup.offset_in[2]    = 2044;  // -4
    return bytes_of(setup);
}

std::vector<uint8_t> expected_init_bytes() {
    _isp_csc_user_init_t init;
    clear(&init);
    init.uv_seq_sel = 1;
    return bytes_of(init);
}

TEST(csc_convert, register_file_fills_every_group_with_exact_encodings) {
    picojson::object root = fixture();
    _isp_csc_user_core_t core;
    clear(&core);
    _isp_csc_user_setup_t setup;
    clear(&setup);
    _isp_csc_user_init_t init;
    clear(&init);
    CaptureStderr();
    EXPECT_EQ(rtl_to_drv_csc_user_core(root, &core, 0), 0);
    EXPECT_EQ(rtl_to_drv_csc_user_setup(root, &setup, 0), 0);
    EXPECT_EQ(rtl_to_drv_csc_user_init(root, &init, 0), 0);
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(bytes_of(core), expected_core_bytes());
    EXPECT_EQ(bytes_of(setup), expected_setup_bytes());
    EXPECT_EQ(bytes_of(init), expected_init_bytes());
}

TEST(csc_convert, taps_keep_signed_and_unsigned_encodings_without_clipping) {
    picojson::object root = parse_object(R"({"isp_csc": {
        "reg_csc_decimation_h23": {"val2": 31, "val3": -4},
        "reg_csc_decimation_v": {"val0": -1, "val1": 5}}})");
    _isp_csc_user_setup_t setup{};
    CaptureStderr();
    rtl_to_drv_csc_user_setup(root, &setup, 0);
    GetCapturedStderr();
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
    std::memset(&core, 0xAB, sizeof core);
    std::memset(&setup, 0xAB, sizeof setup);
    CaptureStderr();
    rtl_to_drv_csc_user_core(root, &core, 0);
    rtl_to_drv_csc_user_setup(root, &setup, 0);
    EXPECT_EQ(split_lines(GetCapturedStderr()),
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

TEST(csc_export, bt601_file_exports_its_real_values) {
    picojson::object root = fixture();
    _isp_csc_user_core_t core{};
    _isp_csc_user_setup_t setup{};
    rtl_to_drv_csc_user_core(root, &core, 0);
    rtl_to_drv_csc_user_setup(root, &setup, 0);
    picojson::object out;
    EXPECT_EQ(drv_to_cmodel_csc_user_core(&core, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_csc_user_setup(&setup, out, 0), 0);
    EXPECT_EQ(picojson::value(out).serialize(),
              R"({"decimation_h":[-0.0625,0,0.3125,0.5,0.3125,0,-0.0625],)"
              R"("decimation_v":[0.5,0.5],"input_type":0,)"
              R"("matrix":[0.298828125,0.5869140625,0.1142578125,-0.1689453125,-0.3310546875,)"
              R"(0.5,0.5,-0.4189453125,-0.0810546875],)"
              R"("offset_in":[-4,-2,-1],"offset_out":[16,128,128],"output_type":1})");
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
    EXPECT_EQ(picojson::value(out).serialize(), R"({"kept":true,"matrix":[1,0,0,0,1,0,0,0,1]})");
}

TEST(csc_module, replays_core_setup_and_init_in_command_order) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_csc_p0.json",
              isp_test::read_file(ISP_TEST_DATA_DIR "/csc/rtl_csc_p0.json"));
    isp_sim::reset();
    isp_sim::set_log_echo(false);
    isp_test::pipe p(1, 1, dir.path());
    JsonModuleHandle h = p.handle();
    JsonModuleOps *ops = nullptr;
    ASSERT_EQ(qv_isp_module_csc_json_register(&ops), 0);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);

    const std::vector<isp_sim::call> pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 4u);  // the default parameters, then core, setup, init
    EXPECT_EQ(pushes[0].cmd, 0u);
    EXPECT_EQ(pushes[1].cmd, 1u);
    EXPECT_EQ(pushes[1].payload, expected_core_bytes());
    EXPECT_EQ(pushes[2].cmd, 2u);
    EXPECT_EQ(pushes[2].payload, expected_setup_bytes());
    EXPECT_EQ(pushes[3].cmd, 3u);
    EXPECT_EQ(pushes[3].payload, expected_init_bytes());

    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
    EXPECT_TRUE(isp_sim::problems().empty());
}

}  // namespace
