/* Black level and linearisation block: register files to driver structures and back to
 * C-model values. */
#include <stddef.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/blc.h"
#include "isp_json_modules.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::clear;
using isp_test::fill;
using isp_test::parse_object;
using isp_test::split_lines;

picojson::object fixture() {
    return parse_object(isp_test::read_file(ISP_TEST_DATA_DIR "/blc/rtl_blc_p0_chn0.json"));
}

picojson::object &top_of(picojson::object &root) {
    return root["isp_blc"].get<picojson::object>();
}

std::string serialized(const picojson::value &value) {
    return value.serialize();
}
std::string serialized(const picojson::object &object) {
    return picojson::value(object).serialize();
}

template <typename T, size_t N>
std::vector<uint32_t> codes(const T (&member)[N]) {
    return std::vector<uint32_t>(member, member + N);
}

const std::vector<uint32_t> fixture_x = {0,    1000, 2000,  3000,  4000,  5000,  6000, 7000,
                                         8000, 9000, 10000, 11000, 12000, 13000, 14000};
// knot-major: one line per knot, channels 0 to 3
const std::vector<uint32_t> fixture_y = {0,     10,    20,    30,     //
                                         1000,  1010,  1020,  1030,   //
                                         2000,  2010,  2020,  2030,   //
                                         3000,  3010,  3020,  3030,   //
                                         4000,  4010,  4020,  4030,   //
                                         5000,  5010,  5020,  5030,   //
                                         6000,  6010,  6020,  6030,   //
                                         7000,  7010,  7020,  7030,   //
                                         8000,  8010,  8020,  8030,   //
                                         9000,  9010,  9020,  9030,   //
                                         10000, 10010, 10020, 10030,  //
                                         11000, 11010, 11020, 11030,  //
                                         12000, 12010, 12020, 12030,  //
                                         13000, 13010, 13020, 13030,  //
                                         14000, 14010, 14020, 14030};
// segment-major: one line per segment, channels 0 to 3
const std::vector<uint32_t> fixture_slope = {256, 257, 258, 259,  //
                                             272, 273, 274, 275,  //
                                             288, 289, 290, 291,  //
                                             304, 305, 306, 307,  //
                                             320, 321, 322, 323,  //
                                             336, 337, 338, 339,  //
                                             352, 353, 354, 355,  //
                                             368, 369, 370, 371,  //
                                             384, 385, 386, 387,  //
                                             400, 401, 402, 403,  //
                                             416, 417, 418, 419,  //
                                             432, 433, 434, 435,  //
                                             448, 449, 450, 451,  //
                                             464, 465, 466, 467,  //
                                             480, 481, 482, 483,  //
                                             496, 497, 498, 499};

_isp_blc_user_lin_t convert_lin(picojson::object &root, std::string *messages = nullptr) {
    _isp_blc_user_lin_t lin{};
    testing::internal::CaptureStderr();
    rtl_to_drv_blc_user_lin(root, &lin, 0);
    const std::string text = testing::internal::GetCapturedStderr();
    if (messages) *messages = text;
    return lin;
}

TEST(BlcConvert, LinTablesFromTheirGroups) {
    picojson::object root = fixture();
    std::string messages;
    const _isp_blc_user_lin_t lin = convert_lin(root, &messages);
    EXPECT_EQ(messages, "");
    EXPECT_EQ(codes(lin.lin_lut_x), fixture_x);
    EXPECT_EQ(codes(lin.lin_lut_y), fixture_y);
    EXPECT_EQ(codes(lin.lin_lut_slope), fixture_slope);
}

TEST(BlcConvert, SmallGroupsFromRegisterFile) {
    picojson::object root = fixture();
    _isp_blc_user_common_t common{};
    _isp_blc_user_dither_t dither{};
    _isp_blc_user_setup_t setup{};
    _isp_blc_user_init_t init{};
    _isp_blc_kernel_gbl_t gbl{};
    _isp_blc_kernel_sbl_t sbl{};
    _isp_blc_kernel_ctrl_t ctrl{};
    testing::internal::CaptureStderr();
    EXPECT_EQ(rtl_to_drv_blc_user_common(root, &common, 0), 0);
    EXPECT_EQ(rtl_to_drv_blc_user_dither(root, &dither, 0), 0);
    EXPECT_EQ(rtl_to_drv_blc_user_setup(root, &setup, 0), 0);
    EXPECT_EQ(rtl_to_drv_blc_user_init(root, &init, 0), 0);
    EXPECT_EQ(rtl_to_drv_blc_kernel_gbl(root, &gbl, 0), 0);
    EXPECT_EQ(rtl_to_drv_blc_kernel_sbl(root, &sbl, 0), 0);
    EXPECT_EQ(rtl_to_drv_blc_kernel_ctrl(root, &ctrl, 0), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    EXPECT_EQ(common.dgain, 320u);
    EXPECT_EQ(common.dither_enable, 1u);
    EXPECT_EQ(dither.dither_seed_enable, 1u);
    // element 0 is the 16-bit word "val16", element 1 the 15-bit "val15"
    EXPECT_EQ(codes(dither.dither_seed), (std::vector<uint32_t>{52719, 4660}));
    EXPECT_EQ(codes(setup.dither_pmask), (std::vector<uint32_t>{43690, 21845}));
    EXPECT_EQ(init.bayer_patten, 1u);
    EXPECT_EQ(codes(gbl.gbl_val), (std::vector<uint32_t>{65536, 65792, 66048, 66304}));
    EXPECT_EQ(codes(sbl.sbl_val), (std::vector<uint32_t>{1024, 1040, 1056, 1072}));
    EXPECT_EQ(ctrl.sbl_corr_enable, 0u);
    EXPECT_EQ(ctrl.gbl_corr_enable, 1u);
    EXPECT_EQ(ctrl.lin_enable, 1u);
    EXPECT_EQ(ctrl.offset_out, 4096u);
}

TEST(BlcConvert, MissingLastKnotOfOneChannelZeroesOnlyThatKnot) {
    picojson::object root = fixture();
    top_of(root).erase("lin_lut_y2_14");
    std::string messages;
    const _isp_blc_user_lin_t lin = convert_lin(root, &messages);
    EXPECT_EQ(messages, "read json_obj failed: lin_lut_y2_14.low\n");
    std::vector<uint32_t> expected = fixture_y;

    expected[4 * 14 + 2] = 0;  // knot 14, channel 2
    EXPECT_EQ(codes(lin.lin_lut_y), expected);
    EXPECT_EQ(codes(lin.lin_lut_x), fixture_x);
    EXPECT_EQ(codes(lin.lin_lut_slope), fixture_slope);
}

TEST(BlcConvert, MissingTopKeyReportsLinFieldsInConversionOrder) {
    picojson::object root = parse_object(R"({"isp_wbc": {}})");
    std::string messages;
    convert_lin(root, &messages);
    const std::vector<std::string> lines = split_lines(messages);
    ASSERT_EQ(lines.size(), 139u);
    const std::vector<std::string> head(lines.begin(), lines.begin() + 17);
    const std::vector<std::string> expected_head = {
        "read json_obj failed: lin_lut_x.high",   "read json_obj failed: lin_lut_x.low",
        "read json_obj failed: lin_lut_x.high",   "read json_obj failed: lin_lut_x.low",
        "read json_obj failed: lin_lut_x.high",   "read json_obj failed: lin_lut_x.low",
        "read json_obj failed: lin_lut_x.high",   "read json_obj failed: lin_lut_x.low",
        "read json_obj failed: lin_lut_x.high",   "read json_obj failed: lin_lut_x.low",
        "read json_obj failed: lin_lut_x.high",   "read json_obj failed: lin_lut_x.low",
        "read json_obj failed: lin_lut_x.high",   "read json_obj failed: lin_lut_x.low",
        "read json_obj failed: lin_lut_x_14.low", "read json_obj failed: lin_lut_y0.high",
        "read json_obj failed: lin_lut_y0.low"};
    EXPECT_EQ(head, expected_head);
    EXPECT_EQ(lines[74], "read json_obj failed: lin_lut_y3_14.low");
    EXPECT_EQ(lines[75], "read json_obj failed: lin_lut_slope0.value");
    EXPECT_EQ(lines[91], "read json_obj failed: lin_lut_slope1.value");
    EXPECT_EQ(lines[138], "read json_obj failed: lin_lut_slope3.value");
    EXPECT_TRUE(root["isp_blc"].is<picojson::null>());
}

TEST(BlcConvert, MissingTopKeyReportsSmallGroupsInConversionOrder) {
    picojson::object root;
    _isp_blc_user_dither_t dither{};
    _isp_blc_user_setup_t setup{};
    _isp_blc_kernel_ctrl_t ctrl{};
    testing::internal::CaptureStderr();
    rtl_to_drv_blc_user_dither(root, &dither, 0);
    rtl_to_drv_blc_user_setup(root, &setup, 0);
    rtl_to_drv_blc_kernel_ctrl(root, &ctrl, 0);
    const std::vector<std::string> expected = {
        "read json_obj failed: dither.seed_enable",  "read json_obj failed: dither_seed.val15",
        "read json_obj failed: dither_seed.val16",   "read json_obj failed: dither_pmask.val15",
        "read json_obj failed: dither_pmask.val16",  "read json_obj failed: blc.sbl_corr_enable",
        "read json_obj failed: blc.gbl_corr_enable", "read json_obj failed: blc.lin_enable",
        "read json_obj failed: offset.out"};
    EXPECT_EQ(split_lines(testing::internal::GetCapturedStderr()), expected);
}

TEST(BlcConvert, FieldSpelledPatternIsNotTheBayerPatten) {
    picojson::object root = parse_object(R"({"isp_blc": {"bayer": {"pattern": 3}}})");
    _isp_blc_user_init_t init{};
    init.bayer_patten = 2;
    testing::internal::CaptureStderr();
    rtl_to_drv_blc_user_init(root, &init, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "read json_obj failed: bayer.patten\n");
    EXPECT_EQ(init.bayer_patten, 0u);
}

TEST(BlcConvert, GroupThatIsNotAnArrayFailsEachOfItsFields) {
    picojson::object root = fixture();

    top_of(root)["grp0"] = picojson::value(1.0);
    std::string messages;
    const _isp_blc_user_lin_t lin = convert_lin(root, &messages);
    std::vector<std::string> expected;
    for (int k = 0; k < 7; ++k) {
        expected.push_back("read json_obj failed: lin_lut_x.high");
        expected.push_back("read json_obj failed: lin_lut_x.low");
    }
    EXPECT_EQ(split_lines(messages), expected);
    EXPECT_EQ(codes(lin.lin_lut_x),
              (std::vector<uint32_t>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 14000}));
    EXPECT_EQ(codes(lin.lin_lut_y), fixture_y);
}

TEST(BlcConvert, ShortGroupTreatsMissingElementsAsMissingKeys) {
    picojson::object root = parse_object(R"({"isp_blc": {"grp10": [
        {"gbl_val": {"value": 100}}, {"gbl_val": {"value": 101}}, {"gbl_val": {"value": 102}}]}})");
    _isp_blc_kernel_gbl_t gbl;
    gbl.gbl_val[3] = 9;
    testing::internal::CaptureStderr();
    rtl_to_drv_blc_kernel_gbl(root, &gbl, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "read json_obj failed: gbl_val.value\n");
    EXPECT_EQ(codes(gbl.gbl_val), (std::vector<uint32_t>{100, 101, 102, 0}));
}

TEST(BlcConvert, UserLevelGroupsReadAndWriteNothing) {
    picojson::object root = parse_object(R"({"other": 1})");
    picojson::object out  = parse_object(R"({"keep": 2})");
    _isp_blc_user_gbl_t gbl{0xDEADBEEF};
    _isp_blc_user_sbl_t sbl{0xCAFEF00D};
    testing::internal::CaptureStderr();
    EXPECT_EQ(rtl_to_drv_blc_user_gbl(root, &gbl, 0), 0);
    EXPECT_EQ(rtl_to_drv_blc_user_sbl(root, &sbl, 0), 0);
    EXPECT_EQ(drv_to_cmodel_blc_user_gbl(&gbl, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_blc_user_sbl(&sbl, out, 0), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(serialized(root), R"({"other":1})");
    EXPECT_EQ(serialized(out), R"({"keep":2})");
    EXPECT_EQ(gbl.reserved, 0xDEADBEEFu);
    EXPECT_EQ(sbl.reserved, 0xCAFEF00Du);
}

TEST(BlcExport, DitherWordsListTheFifteenBitWordFirst) {
    _isp_blc_user_setup_t setup{{0xFFFF, 0x7FFF}};
    _isp_blc_user_dither_t dither{1, {0x1234, 0x0042}};
    picojson::object out;
    EXPECT_EQ(drv_to_cmodel_blc_user_setup(&setup, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_blc_user_dither(&dither, out, 0), 0);
    EXPECT_EQ(serialized(out),
              R"({"dither_pmask":[32767,65535],"dither_seed":[66,4660],"dither_seed_enable":1})");
}

TEST(BlcExport, LinTablesAreKnotAndSegmentRows) {
    _isp_blc_user_lin_t lin{};
    for (size_t i = 0; i < BLC_LIN_KNOTS; ++i) lin.lin_lut_x[i] = static_cast<uint16_t>(32 * i);
    for (size_t i = 0; i < BLC_LIN_KNOTS * BLC_CHANNELS; ++i)
        lin.lin_lut_y[i] = static_cast<uint16_t>(64 * i);
    for (size_t i = 0; i < BLC_LIN_SEGMENTS * BLC_CHANNELS; ++i) lin.lin_lut_slope[i] = 128 * i;
    picojson::object out;
    EXPECT_EQ(drv_to_cmodel_blc_user_lin(&lin, out, 0), 0);
    EXPECT_EQ(serialized(out["lin_lut_x"]), "[0,0.5,1,1.5,2,2.5,3,3.5,4,4.5,5,5.5,6,6.5,7]");
    EXPECT_EQ(serialized(out["lin_lut_y"]),
              "[[0,1,2,3],[4,5,6,7],[8,9,10,11],[12,13,14,15],[16,17,18,19],[20,21,22,23],"
              "[24,25,26,27],[28,29,30,31],[32,33,34,35],[36,37,38,39],[40,41,42,43],"
              "[44,45,46,47],[48,49,50,51],[52,53,54,55],[56,57,58,59]]");
    EXPECT_EQ(serialized(out["lin_lut_slope"]),
              "[[0,0.5,1,1.5],[2,2.5,3,3.5],[4,4.5,5,5.5],[6,6.5,7,7.5],[8,8.5,9,9.5],"
              "[10,10.5,11,11.5],[12,12.5,13,13.5],[14,14.5,15,15.5],[16,16.5,17,17.5],"
              "[18,18.5,19,19.5],[20,20.5,21,21.5],[22,22.5,23,23.5],[24,24.5,25,25.5],"
              "[26,26.5,27,27.5],[28,28.5,29,29.5],[30,30.5,31,31.5]]");
    EXPECT_EQ(out.size(), 3u);
}

TEST(BlcExport, ConvertedFileExportsEachFieldOverItsScale) {
    picojson::object root = fixture();
    _isp_blc_user_common_t common{};
    _isp_blc_user_dither_t dither{};
    _isp_blc_user_setup_t setup{};
    _isp_blc_kernel_gbl_t gbl{};
    _isp_blc_kernel_sbl_t sbl{};
    _isp_blc_kernel_ctrl_t ctrl{};
    rtl_to_drv_blc_user_common(root, &common, 0);
    rtl_to_drv_blc_user_dither(root, &dither, 0);
    rtl_to_drv_blc_user_setup(root, &setup, 0);
    rtl_to_drv_blc_kernel_gbl(root, &gbl, 0);
    rtl_to_drv_blc_kernel_sbl(root, &sbl, 0);
    rtl_to_drv_blc_kernel_ctrl(root, &ctrl, 0);
    _isp_blc_user_lin_t lin = convert_lin(root);
    picojson::object out;
    drv_to_cmodel_blc_user_common(&common, out, 0);
    drv_to_cmodel_blc_user_dither(&dither, out, 0);
    drv_to_cmodel_blc_user_setup(&setup, out, 0);
    drv_to_cmodel_blc_kernel_gbl(&gbl, out, 0);
    drv_to_cmodel_blc_kernel_sbl(&sbl, out, 0);
    drv_to_cmodel_blc_kernel_ctrl(&ctrl, out, 0);
    drv_to_cmodel_blc_user_lin(&lin, out, 0);

    // 320 / 2^8; "val15", "val16" as integers; levels / 2^10; offset 4096 / 2^6
    EXPECT_EQ(serialized(out["dgain"]), "1.25");
    EXPECT_EQ(serialized(out["dither_seed"]), "[4660,52719]");
    EXPECT_EQ(serialized(out["dither_pmask"]), "[21845,43690]");
    EXPECT_EQ(serialized(out["gbl_val"]), "[64,64.25,64.5,64.75]");
    EXPECT_EQ(serialized(out["sbl_val"]), "[1,1.015625,1.03125,1.046875]");
    EXPECT_EQ(serialized(out["offset_out"]), "64");
    // knots / 2^6, slopes / 2^8
    EXPECT_EQ(serialized(out["lin_lut_x"]),
              "[0,15.625,31.25,46.875,62.5,78.125,93.75,109.375,125,140.625,156.25,171.875,"
              "187.5,203.125,218.75]");
    const picojson::array &y = out["lin_lut_y"].get<picojson::array>();
    ASSERT_EQ(y.size(), 15u);
    EXPECT_EQ(serialized(y[1]), "[15.625,15.78125,15.9375,16.09375]");
    EXPECT_EQ(serialized(y[14]), "[218.75,218.90625,219.0625,219.21875]");
    const picojson::array &slope = out["lin_lut_slope"].get<picojson::array>();
    ASSERT_EQ(slope.size(), 16u);
    EXPECT_EQ(serialized(slope[0]), "[1,1.00390625,1.0078125,1.01171875]");
    EXPECT_EQ(serialized(slope[15]), "[1.9375,1.94140625,1.9453125,1.94921875]");
}

std::vector<uint8_t> fixture_lin_bytes() {
    _isp_blc_user_lin_t lin;
    clear(lin);
    fill(lin.lin_lut_x, fixture_x);
    fill(lin.lin_lut_y, fixture_y);
    fill(lin.lin_lut_slope, fixture_slope);
    return bytes_of(lin);
}

/* A module's operations on the simulated platform, over a case directory. */
struct replay {
    isp_test::temp_dir dir;
    JsonModuleOps *ops = nullptr;

    replay() {
        isp_sim::reset();
        isp_sim::set_log_echo(false);
    }
};

TEST(BlcModule, LinReplaysTheTablesOfThePartitionFile) {
    replay r;
    r.dir.write("cfgs/f0/rtl_blc_p0.json",
                isp_test::read_file(ISP_TEST_DATA_DIR "/blc/rtl_blc_p0_chn0.json"));
    isp_test::pipe p(1, 1, r.dir.path());
    JsonModuleHandle h = p.handle();
    ASSERT_EQ(qv_isp_module_lin_json_register(&r.ops), 0);
    ASSERT_EQ(r.ops->create(&h), 0);
    ASSERT_EQ(r.ops->init(&h), 0);

    const std::vector<isp_sim::call> pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 2u);  // the default parameters, then the tables
    EXPECT_EQ(pushes[0].cmd, 0u);
    EXPECT_EQ(pushes[1].cmd, 3u);
    EXPECT_EQ(pushes[1].payload, fixture_lin_bytes());

    EXPECT_EQ(r.ops->deinit(&h), 0);
    EXPECT_EQ(r.ops->destroy(&h), 0);
    EXPECT_TRUE(isp_sim::problems().empty());
}

TEST(BlcModule, BlcReplaysEveryGroupOfEachChannelToItsOwnWrapper) {
    replay r;
    const std::string chn0 = isp_test::read_file(ISP_TEST_DATA_DIR "/blc/rtl_blc_p0_chn0.json");
    picojson::object chn1  = parse_object(chn0);
    top_of(chn1)["dgain"]  = picojson::value(parse_object(R"({"val": 288})"));
    top_of(chn1)["bayer"]  = picojson::value(parse_object(R"({"patten": 3})"));
    r.dir.write("cfgs/f0/rtl_blc_p0_chn0.json", chn0);
    r.dir.write("cfgs/f0/rtl_blc_p0_chn1.json", serialized(chn1));
    isp_test::pipe p(1, 1, r.dir.path(), 2);
    JsonModuleHandle h = p.handle();
    ASSERT_EQ(qv_isp_module_blc_json_register(&r.ops), 0);
    ASSERT_EQ(r.ops->create(&h), 0);
    ASSERT_EQ(r.ops->init(&h), 0);

    _isp_blc_user_common_t common;
    clear(common);
    common.dgain         = 320;
    common.dither_enable = 1;
    _isp_blc_user_dither_t dither;
    clear(dither);
    dither.dither_seed_enable = 1;
    fill(dither.dither_seed, {52719, 4660});
    _isp_blc_user_setup_t setup;
    clear(setup);
    fill(setup.dither_pmask, {43690, 21845});
    _isp_blc_user_init_t init;
    clear(init);
    init.bayer_patten = 1;
    _isp_blc_kernel_gbl_t gbl;
    clear(gbl);
    fill(gbl.gbl_val, {65536, 65792, 66048, 66304});
    _isp_blc_kernel_sbl_t sbl;
    clear(sbl);
    fill(sbl.sbl_val, {1024, 1040, 1056, 1072});
    _isp_blc_kernel_ctrl_t ctrl;
    clear(ctrl);
    ctrl.gbl_corr_enable = 1;
    ctrl.lin_enable      = 1;
    ctrl.offset_out      = 4096;

    const std::vector<isp_sim::call> pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 18u);  // a default push per channel, then 8 groups per channel
    EXPECT_EQ(pushes[0].cmd, 0u);
    EXPECT_EQ(pushes[1].cmd, 0u);
    const uint32_t chn0_wrapper = pushes[0].handle;
    const uint32_t chn1_wrapper = pushes[1].handle;
    EXPECT_NE(chn0_wrapper, chn1_wrapper);
    const std::vector<std::vector<uint8_t>> chn0_groups = {
        fixture_lin_bytes(), bytes_of(common), bytes_of(dither), bytes_of(setup),
        bytes_of(init),      bytes_of(gbl),    bytes_of(sbl),    bytes_of(ctrl)};
    for (size_t g = 0; g < 8; ++g) {
        SCOPED_TRACE(g);
        EXPECT_EQ(pushes[2 + g].cmd, 3 + g);
        EXPECT_EQ(pushes[2 + g].handle, chn0_wrapper);
        EXPECT_EQ(pushes[2 + g].payload, chn0_groups[g]);
        EXPECT_EQ(pushes[10 + g].cmd, 3 + g);
        EXPECT_EQ(pushes[10 + g].handle, chn1_wrapper);
    }
    common.dgain      = 288;
    init.bayer_patten = 3;
    EXPECT_EQ(pushes[11].payload, bytes_of(common));
    EXPECT_EQ(pushes[14].payload, bytes_of(init));
    EXPECT_EQ(pushes[17].payload, bytes_of(ctrl));

    EXPECT_EQ(r.ops->deinit(&h), 0);
    EXPECT_EQ(r.ops->destroy(&h), 0);
    EXPECT_TRUE(isp_sim::problems().empty());
}

}  // namespace
