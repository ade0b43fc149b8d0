/* Black level and linearisation block: register files to driver structures and back to
 * C-model values. */
#include <stddef.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/blc.h"
#include "isp_json_modules.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::clear;
using isp_test::codes;
using isp_test::fill;
using isp_test::parse_object;
using isp_test::serialized;
using isp_test::stderr_lines_of;
using isp_test::stderr_of;

picojson::object fixture() {
    return isp_test::data_object("blc/rtl_blc_p0_chn0.json");
}

picojson::object &top_of(picojson::object &root) {
    return root["isp_blc"].get<picojson::object>();
}

/* The fixture's tables: knot k at 1000 k; channel c of knot k at 1000 k + 10 c (knot-major);
 * channel c of segment s at 256 + 16 s + c (segment-major). */
const std::vector<uint32_t> fixture_x = {0,    1000, 2000,  3000,  4000,  5000,  6000, 7000,
                                         8000, 9000, 10000, 11000, 12000, 13000, 14000};
std::vector<uint32_t> fixture_y() {
    std::vector<uint32_t> y;
    for (uint32_t k = 0; k < BLC_LIN_KNOTS; ++k)
        for (uint32_t c = 0; c < BLC_CHANNELS; ++c) y.push_back(1000 * k + 10 * c);
    return y;
}
std::vector<uint32_t> fixture_slope() {
    std::vector<uint32_t> slope;
    for (uint32_t s = 0; s < BLC_LIN_SEGMENTS; ++s)
        for (uint32_t c = 0; c < BLC_CHANNELS; ++c) slope.push_back(256 + 16 * s + c);
    return slope;
}

_isp_blc_user_lin_t convert_lin(picojson::object &root, std::string *messages = nullptr) {
    _isp_blc_user_lin_t lin{};
    const std::string text = stderr_of([&] { rtl_to_drv_blc_user_lin(root, &lin, 0); });
    if (messages) *messages = text;
    return lin;
}

TEST(BlcConvert, LinTablesFromTheirGroups) {
    picojson::object root = fixture();
    std::string messages;
    const _isp_blc_user_lin_t lin = convert_lin(root, &messages);
    EXPECT_EQ(messages, "");
    EXPECT_EQ(codes(lin.lin_lut_x), fixture_x);
    EXPECT_EQ(codes(lin.lin_lut_y), fixture_y());
    EXPECT_EQ(codes(lin.lin_lut_slope), fixture_slope());
}

TEST(BlcConvert, SmallGroupsFromRegisterFileExportEachFieldOverItsScale) {
    picojson::object root = fixture();
    _isp_blc_user_common_t common{};
    _isp_blc_user_dither_t dither{};
    _isp_blc_user_setup_t setup{};
    _isp_blc_user_init_t init{};
    _isp_blc_kernel_gbl_t gbl{};
    _isp_blc_kernel_sbl_t sbl{};
    _isp_blc_kernel_ctrl_t ctrl{};
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(rtl_to_drv_blc_user_common(root, &common, 0), 0);
                  EXPECT_EQ(rtl_to_drv_blc_user_dither(root, &dither, 0), 0);
                  EXPECT_EQ(rtl_to_drv_blc_user_setup(root, &setup, 0), 0);
                  EXPECT_EQ(rtl_to_drv_blc_user_init(root, &init, 0), 0);
                  EXPECT_EQ(rtl_to_drv_blc_kernel_gbl(root, &gbl, 0), 0);
                  EXPECT_EQ(rtl_to_drv_blc_kernel_sbl(root, &sbl, 0), 0);
                  EXPECT_EQ(rtl_to_drv_blc_kernel_ctrl(root, &ctrl, 0), 0);
              }),
              "");
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

    _isp_blc_user_lin_t lin = convert_lin(root);
    picojson::object out;
    EXPECT_EQ(drv_to_cmodel_blc_user_common(&common, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_blc_user_dither(&dither, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_blc_user_setup(&setup, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_blc_kernel_gbl(&gbl, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_blc_kernel_sbl(&sbl, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_blc_kernel_ctrl(&ctrl, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_blc_user_lin(&lin, out, 0), 0);
    // 320 / 2^8; the dither words as integers, the 15-bit word first; levels / 2^10;
    // offset 4096 / 2^6; knots / 2^6 in one row per knot, slopes / 2^8 in one row per segment
    const picojson::array &y     = out["lin_lut_y"].get<picojson::array>();
    const picojson::array &slope = out["lin_lut_slope"].get<picojson::array>();
    ASSERT_EQ(y.size(), 15u);
    ASSERT_EQ(slope.size(), 16u);
    EXPECT_EQ(y[1].serialize(), "[15.625,15.78125,15.9375,16.09375]");
    EXPECT_EQ(y[14].serialize(), "[218.75,218.90625,219.0625,219.21875]");
    EXPECT_EQ(slope[0].serialize(), "[1,1.00390625,1.0078125,1.01171875]");
    EXPECT_EQ(slope[15].serialize(), "[1.9375,1.94140625,1.9453125,1.94921875]");
    out.erase("lin_lut_y");
    out.erase("lin_lut_slope");
    EXPECT_EQ(serialized(out),
              R"({"dgain":1.25,"dither_enable":1,"dither_pmask":[21845,43690],)"
              R"("dither_seed":[4660,52719],"dither_seed_enable":1,)"
              R"("gbl_corr_enable":1,"gbl_val":[64,64.25,64.5,64.75],"lin_enable":1,)"
              R"("lin_lut_x":[0,15.625,31.25,46.875,62.5,78.125,93.75,109.375,125,140.625,)"
              R"(156.25,171.875,187.5,203.125,218.75],"offset_out":64,"sbl_corr_enable":0,)"
              R"("sbl_val":[1,1.015625,1.03125,1.046875]})");
}

TEST(BlcConvert, MissingLastKnotOfOneChannelZeroesOnlyThatKnot) {
    picojson::object root = fixture();
    top_of(root).erase("lin_lut_y2_14");
    std::string messages;
    const _isp_blc_user_lin_t lin = convert_lin(root, &messages);
    EXPECT_EQ(messages, "read json_obj failed: lin_lut_y2_14.low\n");
    std::vector<uint32_t> expected = fixture_y();
    expected[4 * 14 + 2]           = 0;  // knot 14, channel 2
    EXPECT_EQ(codes(lin.lin_lut_y), expected);
    EXPECT_EQ(codes(lin.lin_lut_x), fixture_x);
    EXPECT_EQ(codes(lin.lin_lut_slope), fixture_slope());
}

TEST(BlcConvert, MissingTopKeyReportsFieldsInConversionOrder) {
    picojson::object root = parse_object(R"({"isp_wbc": {}})");
    std::string messages;
    convert_lin(root, &messages);
    const std::vector<std::string> lines = isp_test::split_lines(messages);
    ASSERT_EQ(lines.size(), 139u);
    /* "high" before "low", knot 14 in its own register, the groups named by register only */
    std::vector<std::string> head;
    isp_test::add_failed(head, "lin_lut_x", {"high", "low"}, 7);
    isp_test::add_failed(head, "lin_lut_x_14", {"low"});
    isp_test::add_failed(head, "lin_lut_y0", {"high", "low"});
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 17), head);
    EXPECT_EQ(lines[74], "read json_obj failed: lin_lut_y3_14.low");
    EXPECT_EQ(lines[75], "read json_obj failed: lin_lut_slope0.value");
    EXPECT_EQ(lines[91], "read json_obj failed: lin_lut_slope1.value");
    EXPECT_EQ(lines[138], "read json_obj failed: lin_lut_slope3.value");
    EXPECT_TRUE(root["isp_blc"].is<picojson::null>());

    _isp_blc_user_dither_t dither{};
    _isp_blc_user_setup_t setup{};
    _isp_blc_kernel_ctrl_t ctrl{};
    EXPECT_EQ(
        stderr_lines_of([&] {
            rtl_to_drv_blc_user_dither(root, &dither, 0);
            rtl_to_drv_blc_user_setup(root, &setup, 0);
            rtl_to_drv_blc_kernel_ctrl(root, &ctrl, 0);
        }),
        (std::vector<std::string>{
            "read json_obj failed: dither.seed_enable", "read json_obj failed: dither_seed.val15",
            "read json_obj failed: dither_seed.val16", "read json_obj failed: dither_pmask.val15",
            "read json_obj failed: dither_pmask.val16", "read json_obj failed: blc.sbl_corr_enable",
            "read json_obj failed: blc.gbl_corr_enable", "read json_obj failed: blc.lin_enable",
            "read json_obj failed: offset.out"}));
}

TEST(BlcConvert, FieldSpelledPatternIsNotTheBayerPatten) {
    picojson::object root = parse_object(R"({"isp_blc": {"bayer": {"pattern": 3}}})");
    _isp_blc_user_init_t init{2};
    EXPECT_EQ(stderr_of([&] { rtl_to_drv_blc_user_init(root, &init, 0); }),
              "read json_obj failed: bayer.patten\n");
    EXPECT_EQ(init.bayer_patten, 0u);
}

TEST(BlcConvert, ShortGroupTreatsMissingElementsAsMissingKeys) {
    picojson::object root     = parse_object(R"({"isp_blc": {"grp10": [
        {"gbl_val": {"value": 100}}, {"gbl_val": {"value": 101}}, {"gbl_val": {"value": 102}}]}})");
    _isp_blc_kernel_gbl_t gbl = {{1, 1, 1, 9}};
    EXPECT_EQ(stderr_of([&] { rtl_to_drv_blc_kernel_gbl(root, &gbl, 0); }),
              "read json_obj failed: gbl_val.value\n");
    EXPECT_EQ(codes(gbl.gbl_val), (std::vector<uint32_t>{100, 101, 102, 0}));
}

TEST(BlcConvert, UserLevelGroupsReadAndWriteNothing) {
    picojson::object root = parse_object(R"({"other": 1})");
    picojson::object out  = parse_object(R"({"keep": 2})");
    _isp_blc_user_gbl_t gbl{0xDEADBEEF};
    _isp_blc_user_sbl_t sbl{0xCAFEF00D};
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(rtl_to_drv_blc_user_gbl(root, &gbl, 0), 0);
                  EXPECT_EQ(rtl_to_drv_blc_user_sbl(root, &sbl, 0), 0);
                  EXPECT_EQ(drv_to_cmodel_blc_user_gbl(&gbl, out, 0), 0);
                  EXPECT_EQ(drv_to_cmodel_blc_user_sbl(&sbl, out, 0), 0);
              }),
              "");
    EXPECT_EQ(serialized(root), R"({"other":1})");
    EXPECT_EQ(serialized(out), R"({"keep":2})");
    EXPECT_EQ(gbl.reserved, 0xDEADBEEFu);
    EXPECT_EQ(sbl.reserved, 0xCAFEF00Du);
}

std::vector<uint8_t> fixture_lin_bytes() {
    _isp_blc_user_lin_t lin;
    clear(lin);
    fill(lin.lin_lut_x, fixture_x);
    fill(lin.lin_lut_y, fixture_y());
    fill(lin.lin_lut_slope, fixture_slope());
    return bytes_of(lin);
}

TEST(BlcModule, LinReplaysTheTablesOfThePartitionFile) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_blc_p0.json", isp_test::data_text("blc/rtl_blc_p0_chn0.json"));
    const std::vector<isp_sim::call> pushes =
        isp_test::replay(qv_isp_module_lin_json_register, dir);
    ASSERT_EQ(isp_test::commands_of(pushes), (std::vector<uint32_t>{0, 3}));
    EXPECT_EQ(pushes[1].payload, fixture_lin_bytes());
}

TEST(BlcModule, BlcReplaysEveryGroupOfEachChannelToItsOwnWrapper) {
    isp_test::temp_dir dir;
    picojson::object chn1 = fixture();
    top_of(chn1)["dgain"] = picojson::value(parse_object(R"({"val": 288})"));
    top_of(chn1)["bayer"] = picojson::value(parse_object(R"({"patten": 3})"));
    dir.write("cfgs/f0/rtl_blc_p0_chn0.json", isp_test::data_text("blc/rtl_blc_p0_chn0.json"));
    dir.write("cfgs/f0/rtl_blc_p0_chn1.json", serialized(chn1));
    const std::vector<isp_sim::call> pushes =
        isp_test::replay(qv_isp_module_blc_json_register, dir, 1, 1, 2);

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

    // a default push per channel, then 8 groups per channel
    ASSERT_EQ(isp_test::commands_of(pushes),
              (std::vector<uint32_t>{0, 0, 3, 4, 5, 6, 7, 8, 9, 10, 3, 4, 5, 6, 7, 8, 9, 10}));
    const uint32_t chn0_wrapper = pushes[0].handle, chn1_wrapper = pushes[1].handle;
    EXPECT_NE(chn0_wrapper, chn1_wrapper);
    const std::vector<std::vector<uint8_t>> chn0_groups = {
        fixture_lin_bytes(), bytes_of(common), bytes_of(dither), bytes_of(setup),
        bytes_of(init),      bytes_of(gbl),    bytes_of(sbl),    bytes_of(ctrl)};
    for (size_t g = 0; g < 8; ++g) {
        SCOPED_TRACE(g);
        EXPECT_EQ(pushes[2 + g].handle, chn0_wrapper);
        EXPECT_EQ(pushes[2 + g].payload, chn0_groups[g]);
        EXPECT_EQ(pushes[10 + g].handle, chn1_wrapper);
    }
    common.dgain      = 288;
    init.bayer_patten = 3;
    EXPECT_EQ(pushes[11].payload, bytes_of(common));
    EXPECT_EQ(pushes[14].payload, bytes_of(init));
    EXPECT_EQ(pushes[17].payload, bytes_of(ctrl));
}

}  // namespace
