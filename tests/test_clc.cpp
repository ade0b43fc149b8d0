/* Converters and exporters of the colour correction block against a realistic register file,
 * and the colour-correction module pushing them. */
#include <string.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::add_failed;
using isp_test::bytes_of;
using isp_test::clear;
using isp_test::codes;
using isp_test::stderr_lines_of;

picojson::object fixture() {
    return isp_test::data_object("clc/rtl_clc_p0.json");
}

TEST(ClcConverters, RealisticFileGivesDocumentedEncodingsThatTheModulePushes) {
    picojson::object root = fixture();
    uint16_t size_h[4] = {}, size_v[4] = {};
    _isp_clc_user_init_t init{0, size_h, size_v};
    _isp_clc_user_clc_setup_t setup;
    _isp_clc_user_clc_t clc;
    clear(setup), clear(clc);
    EXPECT_EQ(isp_test::stderr_of([&] {
                  EXPECT_EQ(rtl_to_drv_clc_user_init(root, &init, 1), 0);
                  EXPECT_EQ(rtl_to_drv_clc_user_clc_setup(root, &setup, 1), 0);
                  EXPECT_EQ(rtl_to_drv_clc_user_clc(root, &clc, 1), 0);
              }),
              "");
    EXPECT_EQ(init.manual_clk_en, 1);
    EXPECT_EQ(codes(size_h), (std::vector<uint32_t>{0, 1920, 0, 0}));
    EXPECT_EQ(codes(size_v), (std::vector<uint32_t>{0, 1080, 0, 0}));

    EXPECT_EQ(setup.offset_out, 256);  // "val0" is the output offset
    EXPECT_EQ(setup.offset_in, 64);
    EXPECT_EQ(setup.mode, 1);
    // -32 in s1.7 is 0x1E0
    EXPECT_EQ(codes(setup.hr_lpf), (std::vector<uint32_t>{0x1E0, 64, 128, 64, 0x1E0}));

    EXPECT_EQ(clc.sat_mit_enable, 1);
    EXPECT_EQ(codes(clc.matrix_list[0]),
              (std::vector<uint32_t>{256, 0, 0, 0, 0, 256, 0, 0, 0, 0, 256, 0}));
    // matrix 7: 256 + 112 on the diagonal, -56 (0xFC8 in s3.8) off it
    EXPECT_EQ(codes(clc.matrix_list[7]), (std::vector<uint32_t>{368, 0xFC8, 0xFC8, 0, 0xFC8, 368,
                                                                0xFC8, 0, 0xFC8, 0xFC8, 368, 0}));
    EXPECT_EQ(codes(clc.sat_mit_ratio_lower_lut),
              (std::vector<uint32_t>{0, 16, 32, 48, 64, 80, 96, 128}));
    EXPECT_EQ(codes(clc.sat_mit_ratio_upper_lut),
              (std::vector<uint32_t>{128, 112, 96, 80, 64, 48, 32, 16}));
    // lower curve in s8.4: x from -128 by 32, y from -64 by 8
    EXPECT_EQ(codes(clc.sat_mit_lower_lut_x),
              (std::vector<uint32_t>{0x1F80, 0x1FA0, 0x1FC0, 0x1FE0, 0, 32, 64, 96}));
    EXPECT_EQ(
        codes(clc.sat_mit_lower_lut_y),
        (std::vector<uint32_t>{0x1FC0, 0x1FC8, 0x1FD0, 0x1FD8, 0x1FE0, 0x1FE8, 0x1FF0, 0x1FF8}));
    EXPECT_EQ(codes(clc.sat_mit_upper_lut_x),
              (std::vector<uint32_t>{100, 612, 1124, 1636, 2148, 2660, 3172, 3684}));
    EXPECT_EQ(codes(clc.sat_mit_upper_lut_y),
              (std::vector<uint32_t>{3, 259, 515, 771, 1027, 1283, 1539, 1795}));
    // the third slope register holds "val0" only: its "val1" of 99 is ignored
    EXPECT_EQ(codes(clc.sat_mit_lower_lut_slope),
              (std::vector<uint32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(codes(clc.sat_mit_upper_lut_slope),
              (std::vector<uint32_t>{11, 12, 13, 14, 15, 16, 17, 18, 19}));

    /* the module pushes exactly these structures (the grid's one partition, partition 0) */
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_clc_p0.json", isp_test::data_text("clc/rtl_clc_p0.json"));
    const std::vector<isp_sim::call> pushes = isp_test::replay(qv_isp_module_cc_json_register, dir);
    ASSERT_EQ(isp_test::commands_of(pushes), (std::vector<uint32_t>{0, 3, 1, 2}));
    EXPECT_EQ(pushes[2].payload, bytes_of(setup));
    EXPECT_EQ(pushes[3].payload, bytes_of(clc));
}

TEST(ClcConverters, FileWithoutTopKeyReportsEveryFieldInConversionOrder) {
    picojson::object root;
    std::vector<std::string> expected;
    add_failed(expected, "clc_ctrl0", {"sat_mit_enable"});
    for (int k = 0; k < 6; ++k)
        for (int n = 0; n < 8; ++n)
            add_failed(expected, "matrix_list" + std::to_string(n), {"val1", "val0"});
    for (const char *reg : {"sat_mit_ratio_lower_lut0", "sat_mit_ratio_lower_lut1",
                            "sat_mit_ratio_upper_lut0", "sat_mit_ratio_upper_lut1"})
        add_failed(expected, reg, {"val3", "val2", "val1", "val0"});
    add_failed(expected, "lower_lut", {"sat_mit_lower_lut"}, 16);
    add_failed(expected, "upper_lut", {"sat_mit_upper_lut"}, 16);
    for (const std::string side : {"lower", "upper"}) {
        const std::string base = "sat_mit_" + side + "_lut_slope";
        add_failed(expected, base + "0", {"val3", "val2", "val1", "val0"});
        add_failed(expected, base + "1", {"val3", "val2", "val1", "val0"});
        add_failed(expected, base + "2", {"val0"});
    }
    _isp_clc_user_clc_t clc;
    memset(&clc, 0xAB, sizeof clc);
    EXPECT_EQ(stderr_lines_of([&] { rtl_to_drv_clc_user_clc(root, &clc, 0); }), expected);
    /* the missing top key is left in the caller's object as null */
    EXPECT_TRUE(root.at("isp_clc").is<picojson::null>());
    /* every field stores the encoding of zero */
    const std::vector<uint32_t> zeros8(8, 0), zeros9(9, 0), zeros12(12, 0);
    EXPECT_EQ(clc.sat_mit_enable, 0);
    for (const auto &matrix : clc.matrix_list) EXPECT_EQ(codes(matrix), zeros12);
    EXPECT_EQ(codes(clc.sat_mit_ratio_lower_lut), zeros8);
    EXPECT_EQ(codes(clc.sat_mit_ratio_upper_lut), zeros8);
    EXPECT_EQ(codes(clc.sat_mit_lower_lut_x), zeros8);
    EXPECT_EQ(codes(clc.sat_mit_lower_lut_y), zeros8);
    EXPECT_EQ(codes(clc.sat_mit_upper_lut_x), zeros8);
    EXPECT_EQ(codes(clc.sat_mit_upper_lut_y), zeros8);
    EXPECT_EQ(codes(clc.sat_mit_lower_lut_slope), zeros9);
    EXPECT_EQ(codes(clc.sat_mit_upper_lut_slope), zeros9);

    _isp_clc_user_clc_setup_t setup{};
    EXPECT_EQ(stderr_lines_of([&] { rtl_to_drv_clc_user_clc_setup(root, &setup, 0); }),
              (std::vector<std::string>{
                  "read json_obj failed: offset.val0", "read json_obj failed: offset.val1",
                  "read json_obj failed: clc_ctrl1.mode", "read json_obj failed: hr_lpf0.val2",
                  "read json_obj failed: hr_lpf0.val1", "read json_obj failed: hr_lpf0.val0",
                  "read json_obj failed: hr_lpf1.val1", "read json_obj failed: hr_lpf1.val0"}));
}

TEST(ClcConverters, ShortMatrixListZeroesOnlyTheMissingPasses) {
    picojson::object root = fixture();
    root["isp_clc"].get<picojson::object>()["matrix_list"].get<picojson::array>().resize(4);
    _isp_clc_user_clc_t clc{};
    const std::vector<std::string> lines =
        stderr_lines_of([&] { rtl_to_drv_clc_user_clc(root, &clc, 0); });
    ASSERT_EQ(lines.size(), 32u);  // two passes, eight matrices, "val1" then "val0"
    EXPECT_EQ(lines[0], "read json_obj failed: matrix_list0.val1");
    EXPECT_EQ(lines[1], "read json_obj failed: matrix_list0.val0");
    EXPECT_EQ(lines[31], "read json_obj failed: matrix_list7.val0");
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
    uint16_t size_h[4] = {11, 12, 13, 14}, size_v[4] = {21, 22, 23, 24};
    _isp_clc_user_init_t init{0, size_h, size_v};
    isp_test::stderr_of([&] {
        rtl_to_drv_clc_user_clc(root, &clc, 0);
        rtl_to_drv_clc_user_init(root, &init, 2);
    });
    /* -1 is the 13-bit two's complement in s8.4, and its magnitude in the unsigned u9.4 */
    EXPECT_EQ(clc.sat_mit_lower_lut_x[0], 0x1FFF);
    EXPECT_EQ(clc.sat_mit_upper_lut_x[0], 1);
    EXPECT_EQ(codes(size_h), (std::vector<uint32_t>{11, 12, 640, 14}));  // truncated toward zero
    EXPECT_EQ(codes(size_v), (std::vector<uint32_t>{21, 22, 480, 24}));
}

TEST(ClcExporters, ConvertedFileExportsFileValueOverTwoToTheFractionBits) {
    picojson::object root = fixture();
    _isp_clc_user_clc_setup_t setup{};
    _isp_clc_user_clc_t clc{};
    rtl_to_drv_clc_user_clc_setup(root, &setup, 0);
    rtl_to_drv_clc_user_clc(root, &clc, 0);

    picojson::object out = isp_test::parse_object(R"({"unrelated": 7, "mode": "replaced"})");
    EXPECT_EQ(drv_to_cmodel_clc_user_clc_setup(&setup, out, 0), 0);
    EXPECT_EQ(isp_test::serialized(out),
              R"({"hr_lpf":[-0.25,0.5,1,0.5,-0.25],"mode":1,"offset_in":4,"offset_out":16,)"
              R"("unrelated":7})");

    picojson::object matrix;
    EXPECT_EQ(drv_to_cmodel_clc_user_clc(&clc, matrix, 0), 0);
    EXPECT_EQ(matrix.size(), 10u);
    const picojson::array &list = matrix["matrix_list"].get<picojson::array>();
    ASSERT_EQ(list.size(), 96u);
    EXPECT_EQ(picojson::value(picojson::array(list.begin(), list.begin() + 12)).serialize(),
              "[1,0,0,0,0,1,0,0,0,0,1,0]");
    EXPECT_EQ(list[84].get<double>(), 1.4375);    // matrix 7, coefficient 0: 368 / 256
    EXPECT_EQ(list[85].get<double>(), -0.21875);  // -56 / 256
    EXPECT_EQ(matrix["sat_mit_lower_lut_x"].serialize(), "[-8,-6,-4,-2,0,2,4,6]");
    EXPECT_EQ(matrix["sat_mit_upper_lut_y"].serialize(),
              "[0.1875,16.1875,32.1875,48.1875,64.1875,80.1875,96.1875,112.1875]");
    EXPECT_EQ(matrix["sat_mit_ratio_upper_lut"].serialize(),
              "[1,0.875,0.75,0.625,0.5,0.375,0.25,0.125]");
    EXPECT_EQ(matrix["sat_mit_lower_lut_slope"].get<picojson::array>().size(), 9u);
}

}  // namespace
