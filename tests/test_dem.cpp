/* Demosaic block: register files to driver structures and back to C-model values. */
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/dem.h"
#include "isp_json_modules.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::clear;  // in place: a copy need not keep padding bytes
using isp_test::parse_object;
using isp_test::split_lines;

std::string fixture_path(int partition) {
    return std::string(ISP_TEST_DATA_DIR) + "/dem/rtl_dem_p" + std::to_string(partition) + ".json";
}

picojson::object fixture(int partition) {
    return parse_object(isp_test::read_file(fixture_path(partition)));
}

std::string serialized(const picojson::value &value) {
    return value.serialize();
}
std::string serialized(const picojson::object &object) {
    return picojson::value(object).serialize();
}

picojson::object &dem_registers(picojson::object &root) {
    return root["isp_dem"].get<picojson::object>();
}

/* "read json_obj failed: " lines for each field of reg, in order. */
void expect_fields(std::vector<std::string> &lines, const std::string &reg,
                   const std::vector<std::string> &fields) {
    for (const std::string &field : fields)
        lines.push_back("read json_obj failed: " + reg + "." + field);
}

/* What the fixtures hold, written out by hand; the setup group after partitions 0 and 1. */
void fill_expected(_isp_dem_user_init_t &init) {
    clear(init);
    init.clkgt_enable = 65535;
}

void fill_expected(_isp_dem_user_setup_t &s) {
    clear(s);
    s.wb_stat_enable                 = 1;
    s.wb_stat_roi[0]                 = {0, 1079, 0, 959};
    s.wb_stat_roi[1]                 = {0, 1079, 960, 1919};
    s.wb_stat_mesh_block_start[1][0] = 7;
    s.wb_stat_mesh_pos_start[1][0]   = 120;
    s.wb_stat_slice_level            = 3968;  // partition 1's; partition 0 has 4000
    s.wb_stat_slice_sat_tp           = 1;
    s.wb_stat_mesh_shape[0]          = 64;
    s.wb_stat_mesh_shape[1]          = 68;
    s.wbc_enable                     = 1;
    s.wbc_mesh_block_start[1][0]     = 10;
    s.wbc_mesh_phase_start[1][0]     = 21845;
    s.wbc_mesh_pos_start[1][0]       = 40;
    s.wbc_mesh_step[0]               = 1365;
    s.wbc_mesh_step[1]               = 1024;
    s.gic_enable                     = 1;
    s.grad_h_enable                  = 1;
    s.gclip_level                    = 8;
    s.edge_enhance_enable            = 1;
    s.edge_enhance_ghv_level         = 24;
    s.edge_enhance_gpn_level         = 20;
    s.edge_enhance_ghv_corner_min    = 32;
    s.edge_enhance_ghv_corner_slope  = 40;
    s.edge_enhance_ghv_corner_offset = 0x1FF;  // -1 in s0.8, partition 1's
    s.fc_cor0_enable                 = 1;
    s.offset_in                      = 1024;
    s.offset_out                     = 1024;
    s.bayer_pattern                  = 1;
    s.img_size_hsize[0] = s.img_size_hsize[1] = 960;
    s.img_size_vsize[0] = s.img_size_vsize[1] = 1080;
}

void fill_expected(_isp_dem_user_dem_mode_t &mode) {
    clear(mode);
    mode.pre_gamma_enable  = 1;
    mode.mode              = 3;
    mode.post_gamma_enable = 1;
}

void fill_expected(_isp_dem_user_dem_core_t &core) {
    const uint16_t inv_noise[9] = {3840, 1920, 1280, 960, 768, 640, 548, 480, 426};
    clear(core);
    core.gradf_ratio   = 12;
    core.grad_hh_level = 6;
    std::memcpy(core.inv_noise_lut, inv_noise, sizeof inv_noise);
    core.ginterp_hf_ratio_x  = 16;
    core.ginterp_hf_ratio_pn = 24;
    core.ginterp_hf_ratio_hv = 32;
}

/* Red 128 + n, green 200 - n, blue 64 + 2n for entry n = 4k + j. */
void fill_expected(_isp_dem_user_wbc_t &wbc) {
    for (unsigned n = 0; n < ISP_DEM_WBC_LUT_SIZE; ++n) {
        wbc.wbc_gain_lut_r[n] = static_cast<uint8_t>(128 + n);
        wbc.wbc_gain_lut_g[n] = static_cast<uint8_t>(200 - n);
        wbc.wbc_gain_lut_b[n] = static_cast<uint8_t>(64 + 2 * n);
    }
}

void fill_expected(_isp_dem_user_fcc_t &fcc) {
    const uint16_t sat[9] = {0, 160, 320, 480, 640, 800, 960, 1120, 1280};
    clear(fcc);
    fcc.fc_cor1_limit              = 1600;
    fcc.fc_cor1_gain_safe          = 6;
    fcc.fc_cor1_gain               = 40;
    fcc.fc_cor1_th                 = 20;
    fcc.fc_cor2_inv_base_sat_level = 51;
    fcc.fc_cor2_ratio_limit[0]     = 384;
    fcc.fc_cor2_ratio_limit[1]     = 128;
    std::memcpy(fcc.fc_cor_sat_lut, sat, sizeof sat);
}

void fill_expected(_isp_dem_user_gic_t &gic) {
    const uint8_t strength[9] = {128, 112, 96, 80, 64, 48, 32, 16, 0};
    const uint16_t ct[18]     = {160,  320,  480,  640,  800,  960,  1120, 1280, 1440,
                                 1600, 1760, 1920, 2080, 2240, 2400, 2560, 2720, 2880};
    const uint16_t limit[9]   = {32, 48, 64, 80, 96, 112, 128, 144, 160};
    clear(gic);
    std::memcpy(gic.gic_strength_lut, strength, sizeof strength);
    std::memcpy(gic.gic_ct, ct, sizeof ct);
    std::memcpy(gic.gic_limit, limit, sizeof limit);
}

void fill_expected(_isp_dem_user_sharpen_t &sharpen) {
    const uint8_t level[18] = {16, 17, 18, 19, 20, 21, 22, 23, 24,
                               24, 23, 22, 21, 20, 19, 18, 17, 16};
    std::memcpy(sharpen.edge_enhance_level_lut, level, sizeof level);
}

/* Compares bytes with the hand-filled expected structure of type T, padding included. */
template <typename T>
void expect_bytes(const void *actual, size_t size, const std::string &what) {
    T expected;
    fill_expected(expected);
    ASSERT_EQ(size, sizeof(T)) << what;
    EXPECT_EQ(std::memcmp(actual, &expected, sizeof(T)), 0) << what;
}

template <typename T>
void expect_filled(const T &actual, const std::string &what) {
    expect_bytes<T>(&actual, sizeof actual, what);
}

TEST(DemConvert, RegisterFilesFillEveryGroup) {
    picojson::object files[2] = {fixture(0), fixture(1)};
    _isp_dem_user_init_t init;
    _isp_dem_user_setup_t setup;
    _isp_dem_user_dem_mode_t mode;
    _isp_dem_user_dem_core_t core;
    _isp_dem_user_wbc_t wbc;
    _isp_dem_user_fcc_t fcc;
    _isp_dem_user_gic_t gic;
    _isp_dem_user_sharpen_t sharpen;
    _isp_dem_kernel_mem_ctrl_t mem = {0, 1};
    clear(init), clear(setup), clear(mode), clear(core);
    clear(wbc), clear(fcc), clear(gic), clear(sharpen);
    testing::internal::CaptureStderr();
    for (uint8_t p = 0; p < 2; ++p) {
        EXPECT_EQ(rtl_to_drv_dem_user_init(files[p], &init, p), 0);
        EXPECT_EQ(rtl_to_drv_dem_user_setup(files[p], &setup, p), 0);
        EXPECT_EQ(rtl_to_drv_dem_user_dem_mode(files[p], &mode, p), 0);
        EXPECT_EQ(rtl_to_drv_dem_user_dem_core(files[p], &core, p), 0);
        EXPECT_EQ(rtl_to_drv_dem_user_wbc(files[p], &wbc, p), 0);
        EXPECT_EQ(rtl_to_drv_dem_user_fcc(files[p], &fcc, p), 0);
        EXPECT_EQ(rtl_to_drv_dem_user_gic(files[p], &gic, p), 0);
        EXPECT_EQ(rtl_to_drv_dem_user_sharpen(files[p], &sharpen, p), 0);
        EXPECT_EQ(rtl_to_drv_dem_kernel_mem_ctrl(files[p], &mem, p), 0);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    expect_filled(init, "init");
    expect_filled(setup, "setup");
    expect_filled(mode, "dem_mode");
    expect_filled(core, "dem_core");
    expect_filled(wbc, "wbc");
    expect_filled(fcc, "fcc");
    expect_filled(gic, "gic");
    expect_filled(sharpen, "sharpen");
    EXPECT_EQ(mem.sw_rd, 1u);
    EXPECT_EQ(mem.sw_clr, 0u);
}

TEST(DemConvert, SetupWritesOnlyTheGivenPartitionsElements) {
    picojson::object p0 = fixture(0);
    _isp_dem_user_setup_t setup{};
    setup.wb_stat_roi[1].left = setup.wbc_mesh_phase_start[1][0] = setup.img_size_vsize[1] = 77;
    rtl_to_drv_dem_user_setup(p0, &setup, 0);
    EXPECT_EQ(setup.wb_stat_roi[0].right, 959u);
    EXPECT_EQ(setup.img_size_vsize[0], 1080u);
    EXPECT_EQ(setup.wb_stat_roi[1].left, 77u);
    EXPECT_EQ(setup.wbc_mesh_phase_start[1][0], 77u);
    EXPECT_EQ(setup.img_size_vsize[1], 77u);
    EXPECT_EQ(setup.wb_stat_slice_level, 4000u);
    EXPECT_EQ(setup.edge_enhance_ghv_corner_offset, 0x1F0u);  // -16 in s0.8
}

TEST(DemConvert, WbcMissingFieldNamesOnlyRegisterAndField) {
    picojson::object root = fixture(0);
    dem_registers(root)["wbc_gain_lut_g"]
        .get<picojson::array>()[5]
        .get<picojson::object>()["wbc_gain_g"]
        .get<picojson::object>()
        .erase("lut2");
    _isp_dem_user_wbc_t wbc{};
    wbc.wbc_gain_lut_g[22] = 9;
    testing::internal::CaptureStderr();
    rtl_to_drv_dem_user_wbc(root, &wbc, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "read json_obj failed: wbc_gain_g.lut2\n");
    EXPECT_EQ(wbc.wbc_gain_lut_g[21], 179u);
    EXPECT_EQ(wbc.wbc_gain_lut_g[22], 0u);
    EXPECT_EQ(wbc.wbc_gain_lut_g[23], 177u);
    EXPECT_EQ(wbc.wbc_gain_lut_b[63], 190u);
}

TEST(DemConvert, ShortArrayGroupReportsItsMissingElement) {
    picojson::object root = fixture(0);
    dem_registers(root)["gic_ct_lut"].get<picojson::array>().pop_back();
    _isp_dem_user_gic_t gic{};
    gic.gic_ct[8] = gic.gic_ct[17] = 9;
    testing::internal::CaptureStderr();
    rtl_to_drv_dem_user_gic(root, &gic, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "read json_obj failed: gic_ct.lut0\nread json_obj failed: gic_ct.lut1\n");
    EXPECT_EQ(gic.gic_ct[7], 1280u);
    EXPECT_EQ(gic.gic_ct[8], 0u);
    EXPECT_EQ(gic.gic_ct[16], 2720u);
    EXPECT_EQ(gic.gic_ct[17], 0u);
}

TEST(DemConvert, MissingTopKeyReportsEverySetupFieldInOrder) {
    picojson::object root = parse_object(R"({"isp_lsc": {}})");
    _isp_dem_user_setup_t setup{};
    setup.wb_stat_roi[4].right = setup.img_size_vsize[4] = setup.wbc_mesh_step[1] = 9;
    setup.edge_enhance_ghv_corner_offset                                          = 9;
    testing::internal::CaptureStderr();
    rtl_to_drv_dem_user_setup(root, &setup, 4);
    std::vector<std::string> expected;
    expect_fields(expected, "wb_stat_ctrl", {"enable"});
    expect_fields(expected, "wb_stat_roi0", {"top", "bottom"});
    expect_fields(expected, "wb_stat_roi1", {"left", "right"});
    expect_fields(expected, "wb_stat_mesh_block", {"start0", "start1"});
    expect_fields(expected, "wb_stat_mesh_pos", {"start0", "start1"});
    expect_fields(expected, "wb_stat_slice", {"level"});
    expect_fields(expected, "wb_stat_slice_sat", {"tp"});
    expect_fields(expected, "wb_stat_mesh", {"shape0", "shape1"});
    expect_fields(expected, "wbc_ctrl", {"enable"});
    expect_fields(expected, "wbc_mesh_block", {"start0", "start1"});
    expect_fields(expected, "wbc_mesh_phase", {"start0", "start1"});
    expect_fields(expected, "wbc_mesh_pos", {"start0", "start1"});
    expect_fields(expected, "wbc_mesh", {"step0", "step1"});
    expect_fields(expected, "gic", {"enable"});
    expect_fields(expected, "grad_h", {"enable"});
    expect_fields(expected, "gclip", {"level"});
    expect_fields(expected, "edge_enhance_ctrl", {"enable"});
    expect_fields(expected, "edge_enhance", {"ghv_level", "gpn_level"});
    expect_fields(expected, "edge_enhance_ghv", {"corner_min", "corner_slope", "corner_offset"});
    expect_fields(expected, "fc_cor0", {"enable"});
    expect_fields(expected, "offset", {"in", "out"});
    expect_fields(expected, "bayer", {"pattern"});
    expect_fields(expected, "img_size", {"hsize", "vsize"});
    EXPECT_EQ(split_lines(testing::internal::GetCapturedStderr()), expected);
    EXPECT_EQ(setup.wb_stat_roi[4].right, 0u);
    EXPECT_EQ(setup.img_size_vsize[4], 0u);
    EXPECT_EQ(setup.wbc_mesh_step[1], 0u);
    EXPECT_EQ(setup.edge_enhance_ghv_corner_offset, 0u);
    ASSERT_EQ(root.count("isp_dem"), 1u);
    EXPECT_TRUE(root["isp_dem"].is<picojson::null>());
}

TEST(DemConvert, MissingTopKeyReportsTableFieldsInOrder) {
    picojson::object root = parse_object(R"({})");
    _isp_dem_user_dem_core_t core{};
    _isp_dem_user_gic_t gic{};
    _isp_dem_user_sharpen_t sharpen{};
    testing::internal::CaptureStderr();
    rtl_to_drv_dem_user_dem_core(root, &core, 0);
    rtl_to_drv_dem_user_gic(root, &gic, 0);
    rtl_to_drv_dem_user_sharpen(root, &sharpen, 0);
    std::vector<std::string> expected;
    expect_fields(expected, "gradf", {"ratio"});
    expect_fields(expected, "grad_hh", {"level"});
    expect_fields(expected, "inv_noise0", {"lut0", "lut1"});
    expect_fields(expected, "inv_noise1", {"lut0", "lut1"});
    expect_fields(expected, "inv_noise2", {"lut0", "lut1"});
    expect_fields(expected, "inv_noise3", {"lut0", "lut1"});
    expect_fields(expected, "inv_noise4", {"lut0"});
    expect_fields(expected, "ginterp_hf_ratio", {"x", "pn", "hv"});
    expect_fields(expected, "gic_strength0", {"lut0", "lut1", "lut2", "lut3"});
    expect_fields(expected, "gic_strength1", {"lut0", "lut1", "lut2", "lut3"});
    expect_fields(expected, "gic_strength2", {"lut0"});
    for (int k = 0; k < 9; ++k) expect_fields(expected, "gic_ct", {"lut0", "lut1"});
    expect_fields(expected, "gic_limit0", {"lut0", "lut1"});
    expect_fields(expected, "gic_limit1", {"lut0", "lut1"});
    expect_fields(expected, "gic_limit2", {"lut0", "lut1"});
    expect_fields(expected, "gic_limit3", {"lut0", "lut1"});
    expect_fields(expected, "gic_limit4", {"lut0"});
    for (int k = 0; k < 9; ++k) expect_fields(expected, "edge_enhance_level", {"lut0", "lut1"});
    EXPECT_EQ(split_lines(testing::internal::GetCapturedStderr()), expected);
}

TEST(DemConvert, MissingWbcGroupsReportSixteenRegistersEach) {
    picojson::object root = parse_object(R"({"isp_dem": {"wbc_gain_lut_g": []}})");
    _isp_dem_user_wbc_t wbc{};
    testing::internal::CaptureStderr();
    rtl_to_drv_dem_user_wbc(root, &wbc, 0);
    std::vector<std::string> expected;
    for (const char *reg : {"wbc_gain_r", "wbc_gain_g", "wbc_gain_b"})
        for (int k = 0; k < 16; ++k) expect_fields(expected, reg, {"lut0", "lut1", "lut2", "lut3"});
    EXPECT_EQ(split_lines(testing::internal::GetCapturedStderr()), expected);
}

TEST(DemExport, ConvertedSetupExportsThePartitionsMembers) {
    picojson::object p0 = fixture(0), p1 = fixture(1);
    _isp_dem_user_setup_t setup{};
    rtl_to_drv_dem_user_setup(p0, &setup, 0);
    rtl_to_drv_dem_user_setup(p1, &setup, 1);
    picojson::object out;
    EXPECT_EQ(drv_to_cmodel_dem_user_setup(&setup, out, 1), 0);
    // each field's integer over 2^fraction bits; the corner offset -1 / 2^8
    EXPECT_EQ(serialized(out),
              R"({"bayer_pattern":1,"edge_enhance_enable":1,"edge_enhance_ghv_corner_min":0.125,)"
              R"("edge_enhance_ghv_corner_offset":-0.00390625,"edge_enhance_ghv_corner_slope":2.5,)"
              R"("edge_enhance_ghv_level":1.5,"edge_enhance_gpn_level":1.25,"fc_cor0_enable":1,)"
              R"("gclip_level":0.5,"gic_enable":1,"grad_h_enable":1,"img_size_hsize":960,)"
              R"("img_size_vsize":1080,"offset_in":64,"offset_out":64,"wb_stat_enable":1,)"
              R"("wb_stat_mesh_block_start":[7,0],"wb_stat_mesh_pos_start":[120,0],)"
              R"("wb_stat_mesh_shape":[64,68],"wb_stat_roi":[0,1079,960,1919],)"
              R"("wb_stat_slice_level":248,"wb_stat_slice_sat_tp":1,"wbc_enable":1,)"
              R"("wbc_mesh_block_start":[10,0],"wbc_mesh_phase_start":[0.666656494140625,0],)"
              R"("wbc_mesh_pos_start":[40,0],"wbc_mesh_step":[0.08331298828125,0.0625]})");

    picojson::object first;
    drv_to_cmodel_dem_user_setup(&setup, first, 0);
    EXPECT_EQ(serialized(first["wb_stat_roi"]), "[0,1079,0,959]");
    EXPECT_EQ(serialized(first["wbc_mesh_pos_start"]), "[0,0]");
}

TEST(DemExport, ConvertedGroupsExportEachFieldOverItsScale) {
    picojson::object root = fixture(0);
    _isp_dem_user_dem_mode_t mode{};
    _isp_dem_user_dem_core_t core{};
    _isp_dem_user_fcc_t fcc{};
    _isp_dem_user_gic_t gic{};
    _isp_dem_user_sharpen_t sharpen{};
    rtl_to_drv_dem_user_dem_mode(root, &mode, 0);
    rtl_to_drv_dem_user_dem_core(root, &core, 0);
    rtl_to_drv_dem_user_fcc(root, &fcc, 0);
    rtl_to_drv_dem_user_gic(root, &gic, 0);
    rtl_to_drv_dem_user_sharpen(root, &sharpen, 0);
    picojson::object m, c, f, g, s;
    EXPECT_EQ(drv_to_cmodel_dem_user_dem_mode(&mode, m, 0), 0);
    EXPECT_EQ(drv_to_cmodel_dem_user_dem_core(&core, c, 0), 0);
    EXPECT_EQ(drv_to_cmodel_dem_user_fcc(&fcc, f, 0), 0);
    EXPECT_EQ(drv_to_cmodel_dem_user_gic(&gic, g, 0), 0);
    EXPECT_EQ(drv_to_cmodel_dem_user_sharpen(&sharpen, s, 0), 0);
    EXPECT_EQ(serialized(m), R"({"mode":3,"post_gamma_enable":1,"pre_gamma_enable":1})");
    EXPECT_EQ(serialized(c),
              R"({"ginterp_hf_ratio_hv":1,"ginterp_hf_ratio_pn":0.75,"ginterp_hf_ratio_x":0.5,)"
              R"("grad_hh_level":1.5,"gradf_ratio":0.75,)"
              R"("inv_noise_lut":[15,7.5,5,3.75,3,2.5,2.140625,1.875,1.6640625]})");
    EXPECT_EQ(
        serialized(f),
        R"({"fc_cor1_gain":2.5,"fc_cor1_gain_safe":1.5,"fc_cor1_limit":100,"fc_cor1_th":1.25,)"
        R"("fc_cor2_inv_base_sat_level":0.19921875,"fc_cor2_ratio_limit":[1.5,0.5],)"
        R"("fc_cor_sat_lut":[0,10,20,30,40,50,60,70,80]})");
    EXPECT_EQ(serialized(g),
              R"({"gic_ct":[10,20,30,40,50,60,70,80,90,100,110,120,130,140,150,160,170,180],)"
              R"("gic_limit":[2,3,4,5,6,7,8,9,10],)"
              R"("gic_strength_lut":[1,0.875,0.75,0.625,0.5,0.375,0.25,0.125,0]})");
    EXPECT_EQ(serialized(s),
              R"({"edge_enhance_level_lut":[1,1.0625,1.125,1.1875,1.25,1.3125,1.375,1.4375,1.5,)"
              R"(1.5,1.4375,1.375,1.3125,1.25,1.1875,1.125,1.0625,1]})");
}

TEST(DemExport, WbcTablesAreSixteenRowsOfFour) {
    picojson::object root = fixture(0);
    _isp_dem_user_wbc_t wbc{};
    rtl_to_drv_dem_user_wbc(root, &wbc, 0);
    picojson::object out = parse_object(R"({"wbc_gain_lut_r": 0, "gamma": 1})");
    EXPECT_EQ(drv_to_cmodel_dem_user_wbc(&wbc, out, 0), 0);
    ASSERT_EQ(out.size(), 4u);
    EXPECT_EQ(serialized(out["gamma"]), "1");
    for (const char *key : {"wbc_gain_lut_r", "wbc_gain_lut_g", "wbc_gain_lut_b"}) {
        const picojson::array &rows = out[key].get<picojson::array>();
        ASSERT_EQ(rows.size(), 16u) << key;
        for (const picojson::value &row : rows) EXPECT_EQ(row.get<picojson::array>().size(), 4u);
    }
    // entries 0-3 of red, 20-23 of green, 60-63 of blue, over 2^7
    EXPECT_EQ(serialized(out["wbc_gain_lut_r"].get<picojson::array>()[0]),
              "[1,1.0078125,1.015625,1.0234375]");
    EXPECT_EQ(serialized(out["wbc_gain_lut_g"].get<picojson::array>()[5]),
              "[1.40625,1.3984375,1.390625,1.3828125]");
    EXPECT_EQ(serialized(out["wbc_gain_lut_b"].get<picojson::array>()[15]),
              "[1.4375,1.453125,1.46875,1.484375]");
}

/* One pushed group: its command and the bytes of the structure, compared whole. */
template <typename T>
void expect_push(const isp_sim::call &push, uint32_t cmd) {
    EXPECT_EQ(push.cmd, cmd);
    expect_bytes<T>(push.payload.data(), push.payload.size(), "command " + std::to_string(cmd));
}

TEST(DemReplay, FourModulesShareOneWrapperAndPushTheirGroups) {
    isp_sim::reset();
    isp_sim::set_log_echo(false);
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_dem_p0.json", isp_test::read_file(fixture_path(0)));
    dir.write("cfgs/f0/rtl_dem_p1.json", isp_test::read_file(fixture_path(1)));
    isp_test::pipe pipe(2, 1, dir.path());
    JsonModuleOps *ops[4] = {};
    ASSERT_EQ(qv_isp_module_demosaic_json_register(&ops[0]), 0);
    ASSERT_EQ(qv_isp_module_fcc_json_register(&ops[1]), 0);
    ASSERT_EQ(qv_isp_module_gic_json_register(&ops[2]), 0);
    ASSERT_EQ(qv_isp_module_edge_enhance_json_register(&ops[3]), 0);
    JsonModuleHandle handles[4] = {pipe.handle(), pipe.handle(), pipe.handle(), pipe.handle()};
    for (int m = 0; m < 4; ++m) {
        ASSERT_EQ(ops[m]->create(&handles[m]), 0) << m;
        ASSERT_EQ(ops[m]->init(&handles[m]), 0) << m;
    }

    ASSERT_EQ(isp_sim::calls_of("vin_hal_wrapper_create").size(), 1u);
    const std::vector<isp_sim::call> pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 9u);
    for (const isp_sim::call &push : pushes) EXPECT_EQ(push.handle, pushes[0].handle);
    EXPECT_EQ(pushes[0].cmd, 0u);  // the default parameters, once for the shared wrapper
    expect_push<_isp_dem_user_init_t>(pushes[1], 9);
    expect_push<_isp_dem_user_setup_t>(pushes[2], 2);
    expect_push<_isp_dem_user_dem_mode_t>(pushes[3], 4);
    expect_push<_isp_dem_user_dem_core_t>(pushes[4], 6);
    expect_push<_isp_dem_user_wbc_t>(pushes[5], 3);
    expect_push<_isp_dem_user_fcc_t>(pushes[6], 8);
    expect_push<_isp_dem_user_gic_t>(pushes[7], 5);
    expect_push<_isp_dem_user_sharpen_t>(pushes[8], 7);

    for (int m = 0; m < 4; ++m) {
        EXPECT_EQ(ops[m]->deinit(&handles[m]), 0) << m;
        EXPECT_EQ(ops[m]->destroy(&handles[m]), 0) << m;
    }
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_destroy").size(), 1u);
    EXPECT_TRUE(isp_sim::problems().empty());
}

}  // namespace
