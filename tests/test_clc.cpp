/* Converters and exporters of the colour correction block against a realistic register file. */
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "isp_json.h"
#include "tests/support/test_support.h"

namespace {

picojson::object fixture() {
    return read_json_file(ISP_TEST_DATA_DIR "/clc/rtl_clc_p0.json").get<picojson::object>();
}

std::vector<std::string> stderr_lines_of(void (*run)(picojson::object &), picojson::object &root) {
    testing::internal::CaptureStderr();
    run(root);
    return isp_test::split_lines(testing::internal::GetCapturedStderr());
}

std::vector<double> numbers(const picojson::value &array) {
    std::vector<double> values;
    for (const picojson::value &v : array.get<picojson::array>()) values.push_back(v.get<double>());
    return values;
}

TEST(ClcConverters, RealisticFileGivesDocumentedEncodings) {
    picojson::object root = fixture();
    uint16_t size_h[4] = {}, size_v[4] = {};
    _isp_clc_user_init_t init{};
    init.part_size_h = size_h;
    init.part_size_v = size_v;
    _isp_clc_user_clc_setup_t setup{};
    _isp_clc_user_clc_t clc{};
    testing::internal::CaptureStderr();
    EXPECT_EQ(rtl_to_drv_clc_user_init(root, &init, 1), 0);
    EXPECT_EQ(rtl_to_drv_clc_user_clc_setup(root, &setup, 1), 0);
    EXPECT_EQ(rtl_to_drv_clc_user_clc(root, &clc, 1), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    EXPECT_EQ(init.manual_clk_en, 1);
    EXPECT_EQ(size_h[1], 1920);
    EXPECT_EQ(size_v[1], 1080);
    EXPECT_EQ(size_h[0], 0);

    EXPECT_EQ(setup.offset_out, 256);  // "val0" is the output offset
    EXPECT_EQ(setup.offset_in, 64);
    EXPECT_EQ(setup.mode, 1);
    const uint16_t hr_lpf[5] = {0x1E0, 64, 128, 64, 0x1E0};  // -32 in s1.7 is 0x1E0
    for (int i = 0; i < 5; ++i) EXPECT_EQ(setup.hr_lpf[i], hr_lpf[i]) << i;

    EXPECT_EQ(clc.sat_mit_enable, 1);
    const uint16_t identity[12] = {256, 0, 0, 0, 0, 256, 0, 0, 0, 0, 256, 0};
    for (int k = 0; k < 12; ++k) EXPECT_EQ(clc.matrix_list[0][k], identity[k]) << k;
    /* matrix 7: 256 + 112 on the diagonal, -56 (0xFC8 in s3.8) off it */
    const uint16_t boost[12] = {368, 0xFC8, 0xFC8, 0, 0xFC8, 368, 0xFC8, 0, 0xFC8, 0xFC8, 368, 0};
    for (int k = 0; k < 12; ++k) EXPECT_EQ(clc.matrix_list[7][k], boost[k]) << k;

    const uint8_t lower_ratio[8] = {0, 16, 32, 48, 64, 80, 96, 128};
    const uint8_t upper_ratio[8] = {128, 112, 96, 80, 64, 48, 32, 16};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(clc.sat_mit_ratio_lower_lut[i], lower_ratio[i]) << i;
        EXPECT_EQ(clc.sat_mit_ratio_upper_lut[i], upper_ratio[i]) << i;
    }
    /* lower curve in s8.4: x from -128 by 32, y from -64 by 8 */
    const uint16_t lower_x[8] = {0x1F80, 0x1FA0, 0x1FC0, 0x1FE0, 0, 32, 64, 96};
    const uint16_t lower_y[8] = {0x1FC0, 0x1FC8, 0x1FD0, 0x1FD8, 0x1FE0, 0x1FE8, 0x1FF0, 0x1FF8};
    const uint16_t upper_x[8] = {100, 612, 1124, 1636, 2148, 2660, 3172, 3684};
    const uint16_t upper_y[8] = {3, 259, 515, 771, 1027, 1283, 1539, 1795};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(clc.sat_mit_lower_lut_x[i], lower_x[i]) << i;
        EXPECT_EQ(clc.sat_mit_lower_lut_y[i], lower_y[i]) << i;
        EXPECT_EQ(clc.sat_mit_upper_lut_x[i], upper_x[i]) << i;
        EXPECT_EQ(clc.sat_mit_upper_lut_y[i], upper_y[i]) << i;
    }
    /* the third slope register holds "val0" only: its "val1" of 99 is ignored */
    const uint8_t lower_slope[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const uint8_t upper_slope[9] = {11, 12, 13, 14, 15, 16, 17, 18, 19};
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(clc.sat_mit_lower_lut_slope[i], lower_slope[i]) << i;
        EXPECT_EQ(clc.sat_mit_upper_lut_slope[i], upper_slope[i]) << i;
    }
}

TEST(ClcConverters, FileWithoutTopKeyReportsEveryFieldInConversionOrder) {
    picojson::object root;
    std::vector<std::string> expected;
    const auto msg = [&](const std::string &reg, const std::string &field) {
        expected.push_back("read json_obj failed: " + reg + "." + field);
    };
    msg("clc_ctrl0", "sat_mit_enable");
    for (int k = 0; k < 6; ++k)
        for (int n = 0; n < 8; ++n) {
            msg("matrix_list" + std::to_string(n), "val1");
            msg("matrix_list" + std::to_string(n), "val0");
        }
    for (const char *reg : {"sat_mit_ratio_lower_lut0", "sat_mit_ratio_lower_lut1",
                            "sat_mit_ratio_upper_lut0", "sat_mit_ratio_upper_lut1"})
        for (const char *field : {"val3", "val2", "val1", "val0"}) msg(reg, field);
    for (int k = 0; k < 16; ++k) msg("lower_lut", "sat_mit_lower_lut");
    for (int k = 0; k < 16; ++k) msg("upper_lut", "sat_mit_upper_lut");
    for (const char *side : {"lower", "upper"}) {
        const std::string base = std::string("sat_mit_") + side + "_lut_slope";
        for (const char *reg : {"0", "1"})
            for (const char *field : {"val3", "val2", "val1", "val0"}) msg(base + reg, field);
        msg(base + "2", "val0");
    }

    _isp_clc_user_clc_t clc;
    memset(&clc, 0xAB, sizeof clc);
    const auto lines = stderr_lines_of(
        [](picojson::object &r) {
            _isp_clc_user_clc_t c;
            rtl_to_drv_clc_user_clc(r, &c, 0);
        },
        root);
    EXPECT_EQ(lines, expected);
    /* the missing top key is left in the caller's object as null */
    ASSERT_EQ(root.count("isp_clc"), 1u);
    EXPECT_TRUE(root["isp_clc"].is<picojson::null>());

    testing::internal::CaptureStderr();
    rtl_to_drv_clc_user_clc(root, &clc, 0);
    testing::internal::GetCapturedStderr();
    /* every field stores the encoding of zero (padding keeps its filler) */
    const auto all_zero = [](const auto &array) {
        return std::all_of(std::begin(array), std::end(array), [](auto v) { return v == 0; });
    };
    EXPECT_EQ(clc.sat_mit_enable, 0);
    for (const auto &matrix : clc.matrix_list) EXPECT_TRUE(all_zero(matrix));
    EXPECT_TRUE(all_zero(clc.sat_mit_ratio_lower_lut) && all_zero(clc.sat_mit_ratio_upper_lut));
    EXPECT_TRUE(all_zero(clc.sat_mit_lower_lut_x) && all_zero(clc.sat_mit_lower_lut_y));
    EXPECT_TRUE(all_zero(clc.sat_mit_upper_lut_x) && all_zero(clc.sat_mit_upper_lut_y));
    EXPECT_TRUE(all_zero(clc.sat_mit_lower_lut_slope) && all_zero(clc.sat_mit_upper_lut_slope));

    testing::internal::CaptureStderr();
    _isp_clc_user_clc_setup_t setup{};
    rtl_to_drv_clc_user_clc_setup(root, &setup, 0);
    EXPECT_EQ(isp_test::split_lines(testing::internal::GetCapturedStderr()),
              (std::vector<std::string>{
                  "read json_obj failed: offset.val0", "read json_obj failed: offset.val1",
                  "read json_obj failed: clc_ctrl1.mode", "read json_obj failed: hr_lpf0.val2",
                  "read json_obj failed: hr_lpf0.val1", "read json_obj failed: hr_lpf0.val0",
                  "read json_obj failed: hr_lpf1.val1", "read json_obj failed: hr_lpf1.val0"}));
}

TEST(ClcConverters, ShortMatrixListZeroesOnlyTheMissingPasses) {
    picojson::object root = fixture();
    picojson::array &passes =
        root["isp_clc"].get<picojson::object>()["matrix_list"].get<picojson::array>();
    passes.resize(4);
    _isp_clc_user_clc_t clc{};
    const auto lines = stderr_lines_of(
        [](picojson::object &r) {
            _isp_clc_user_clc_t c{};
            rtl_to_drv_clc_user_clc(r, &c, 0);
        },
        root);
    ASSERT_EQ(lines.size(), 32u);  // two passes, eight matrices, "val1" then "val0"
    EXPECT_EQ(lines[0], "read json_obj failed: matrix_list0.val1");
    EXPECT_EQ(lines[1], "read json_obj failed: matrix_list0.val0");
    EXPECT_EQ(lines[31], "read json_obj failed: matrix_list7.val0");

    testing::internal::CaptureStderr();
    rtl_to_drv_clc_user_clc(root, &clc, 0);
    testing::internal::GetCapturedStderr();
    for (int n = 1; n < 8; ++n) {
        EXPECT_EQ(clc.matrix_list[n][0], 256 + 16 * n) << n;  // element 0 kept
        EXPECT_EQ(clc.matrix_list[n][4], 0) << n;
        EXPECT_EQ(clc.matrix_list[n][5], 0) << n;
        EXPECT_EQ(clc.matrix_list[n][10], 0) << n;
        EXPECT_EQ(clc.matrix_list[n][11], 0) << n;
    }
}

TEST(ClcConverters, CurveSignsAndPartitionElements) {
    picojson::object root = isp_test::parse_object(R"({"isp_clc": {
        "lower_lut": [{"sat_mit_lower_lut": -1.0}], "upper_lut": [{"sat_mit_upper_lut": -1.0}],
        "part_size": {"h": 640.9, "v": 480}}})");
    _isp_clc_user_clc_t clc{};
    testing::internal::CaptureStderr();
    rtl_to_drv_clc_user_clc(root, &clc, 0);
    /* -1 is the 13-bit two's complement in s8.4, and its magnitude in the unsigned u9.4 */
    EXPECT_EQ(clc.sat_mit_lower_lut_x[0], 0x1FFF);
    EXPECT_EQ(clc.sat_mit_upper_lut_x[0], 1);

    uint16_t size_h[4] = {11, 12, 13, 14}, size_v[4] = {21, 22, 23, 24};
    _isp_clc_user_init_t init{0, size_h, size_v};
    rtl_to_drv_clc_user_init(root, &init, 2);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(size_h[2], 640);  // truncated toward zero
    EXPECT_EQ(size_v[2], 480);
    EXPECT_EQ(size_h[1], 12);
    EXPECT_EQ(size_h[3], 14);
    EXPECT_EQ(size_v[0], 21);
}

TEST(ClcExporters, ConvertedFileExportsFileValueOverTwoToTheFractionBits) {
    picojson::object root = fixture();
    _isp_clc_user_clc_setup_t setup{};
    _isp_clc_user_clc_t clc{};
    rtl_to_drv_clc_user_clc_setup(root, &setup, 0);
    rtl_to_drv_clc_user_clc(root, &clc, 0);

    picojson::object out;
    out["unrelated"] = picojson::value(7.0);
    out["mode"]      = picojson::value("replaced");
    EXPECT_EQ(drv_to_cmodel_clc_user_clc_setup(&setup, out, 0), 0);
    EXPECT_EQ(out["offset_out"].get<double>(), 16.0);
    EXPECT_EQ(out["offset_in"].get<double>(), 4.0);
    EXPECT_EQ(out["mode"].get<double>(), 1.0);
    EXPECT_EQ(numbers(out["hr_lpf"]), (std::vector<double>{-0.25, 0.5, 1.0, 0.5, -0.25}));
    EXPECT_EQ(out["unrelated"].get<double>(), 7.0);

    picojson::object matrix;
    EXPECT_EQ(drv_to_cmodel_clc_user_clc(&clc, matrix, 0), 0);
    EXPECT_EQ(matrix.size(), 10u);
    const std::vector<double> list = numbers(matrix["matrix_list"]);
    ASSERT_EQ(list.size(), 96u);
    EXPECT_EQ(std::vector<double>(list.begin(), list.begin() + 12),
              (std::vector<double>{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}));
    EXPECT_EQ(list[84], 1.4375);    // matrix 7, coefficient 0: 368 / 256
    EXPECT_EQ(list[85], -0.21875);  // -56 / 256
    EXPECT_EQ(numbers(matrix["sat_mit_lower_lut_x"]),
              (std::vector<double>{-8, -6, -4, -2, 0, 2, 4, 6}));
    EXPECT_EQ(numbers(matrix["sat_mit_upper_lut_y"]),
              (std::vector<double>{0.1875, 16.1875, 32.1875, 48.1875, 64.1875, 80.1875, 96.1875,
                                   112.1875}));
    EXPECT_EQ(numbers(matrix["sat_mit_ratio_upper_lut"]),
              (std::vector<double>{1, 0.875, 0.75, 0.625, 0.5, 0.375, 0.25, 0.125}));
    EXPECT_EQ(numbers(matrix["sat_mit_lower_lut_slope"]).size(), 9u);
}

}  // namespace
