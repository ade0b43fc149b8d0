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

using isp_test::add_failed;
using isp_test::bytes_of;
using isp_test::clear;
using isp_test::parse_object;
using isp_test::serialized;
using isp_test::stderr_lines_of;
using isp_test::stderr_of;

picojson::object fixture(int partition) {
    return isp_test::data_object("dem/rtl_dem_p" + std::to_string(partition) + ".json");
}

picojson::object &dem_registers(picojson::object &root) {
    return root["isp_dem"].get<picojson::object>();
}

/* What the fixtures hold, written out by hand; the setup group after partitions 0 and 1. */
void fill_expected(_isp_dem_user_init_t &init) {
    init.clkgt_enable = 65535;
}

void fill_expected(_isp_dem_user_setup_t &s) {
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
    mode.pre_gamma_enable  = 1;
    mode.mode              = 3;
    mode.post_gamma_enable = 1;
}

void fill_expected(_isp_dem_user_dem_core_t &core) {
    const uint16_t inv_noise[9] = {3840, 1920, 1280, 960, 768, 640, 548, 480, 426};
    core.gradf_ratio            = 12;
    core.grad_hh_level          = 6;
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
    const uint16_t sat[9]          = {0, 160, 320, 480, 640, 800, 960, 1120, 1280};
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
    std::memcpy(gic.gic_strength_lut, strength, sizeof strength);
    std::memcpy(gic.gic_ct, ct, sizeof ct);
    std::memcpy(gic.gic_limit, limit, sizeof limit);
}

void fill_expected(_isp_dem_user_sharpen_t &sharpen) {
    const uint8_t level[18] = {16, 17, 18, 19, 20, 21, 22, 23, 24,
                               24, 23, 22, 21, 20, 19, 18, 17, 16};
    std::memcpy(sharpen.edge_enhance_level_lut, level, sizeof level);
}

/* The bytes of the expected structure, padding included. */
template <typename T>
std::vector<uint8_t> expected() {
    return isp_test::bytes_filled<T>(fill_expected);
}

TEST(DemConvert, PartitionFilesFillEveryGroupAndLeaveOtherPartitionsAlone) {
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
    setup.wb_stat_roi[2].left = setup.wbc_mesh_phase_start[2][0] = setup.img_size_vsize[2] = 77;
    EXPECT_EQ(stderr_of([&] {
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
              }),
              "");
    EXPECT_EQ(setup.wb_stat_roi[2].left, 77u);
    EXPECT_EQ(setup.wbc_mesh_phase_start[2][0], 77u);
    EXPECT_EQ(setup.img_size_vsize[2], 77u);
    setup.wb_stat_roi[2].left = setup.wbc_mesh_phase_start[2][0] = setup.img_size_vsize[2] = 0;
    EXPECT_EQ(bytes_of(init), expected<_isp_dem_user_init_t>());
    EXPECT_EQ(bytes_of(setup), expected<_isp_dem_user_setup_t>());
    EXPECT_EQ(bytes_of(mode), expected<_isp_dem_user_dem_mode_t>());
    EXPECT_EQ(bytes_of(core), expected<_isp_dem_user_dem_core_t>());
    EXPECT_EQ(bytes_of(wbc), expected<_isp_dem_user_wbc_t>());
    EXPECT_EQ(bytes_of(fcc), expected<_isp_dem_user_fcc_t>());
    EXPECT_EQ(bytes_of(gic), expected<_isp_dem_user_gic_t>());
    EXPECT_EQ(bytes_of(sharpen), expected<_isp_dem_user_sharpen_t>());
    /* the kernel's memory control reads nothing and keeps what it holds */
    EXPECT_EQ(mem.sw_rd, 1u);
    EXPECT_EQ(mem.sw_clr, 0u);
}

/* Array groups ("wbc_gain_lut_g", "gic_ct_lut") name only register and field in their
 * messages; a missing field or element zeroes only its own entries. */
TEST(DemConvert, ArrayGroupsReportOnlyRegisterAndField) {
    picojson::object root = fixture(0);
    dem_registers(root)["wbc_gain_lut_g"]
        .get<picojson::array>()[5]
        .get<picojson::object>()["wbc_gain_g"]
        .get<picojson::object>()
        .erase("lut2");
    dem_registers(root)["gic_ct_lut"].get<picojson::array>().pop_back();
    _isp_dem_user_wbc_t wbc{};
    _isp_dem_user_gic_t gic{};
    wbc.wbc_gain_lut_g[22] = gic.gic_ct[8] = gic.gic_ct[17] = 9;
    EXPECT_EQ(stderr_of([&] {
                  rtl_to_drv_dem_user_wbc(root, &wbc, 0);
                  rtl_to_drv_dem_user_gic(root, &gic, 0);
              }),
              "read json_obj failed: wbc_gain_g.lut2\n"
              "read json_obj failed: gic_ct.lut0\nread json_obj failed: gic_ct.lut1\n");
    EXPECT_EQ(wbc.wbc_gain_lut_g[21], 179u);
    EXPECT_EQ(wbc.wbc_gain_lut_g[22], 0u);
    EXPECT_EQ(wbc.wbc_gain_lut_g[23], 177u);
    EXPECT_EQ(wbc.wbc_gain_lut_b[63], 190u);
    EXPECT_EQ(gic.gic_ct[7], 1280u);
    EXPECT_EQ(gic.gic_ct[8], 0u);
    EXPECT_EQ(gic.gic_ct[16], 2720u);
    EXPECT_EQ(gic.gic_ct[17], 0u);
}

TEST(DemConvert, MissingTopKeyReportsEveryFieldInConversionOrder) {
    picojson::object root = parse_object(R"({"isp_lsc": {}})");
    _isp_dem_user_setup_t setup{};
    setup.wb_stat_roi[4].right = setup.img_size_vsize[4] = setup.wbc_mesh_step[1] = 9;
    setup.edge_enhance_ghv_corner_offset                                          = 9;
    std::vector<std::string> expected;
    add_failed(expected, "wb_stat_ctrl", {"enable"});
    add_failed(expected, "wb_stat_roi0", {"top", "bottom"});
    add_failed(expected, "wb_stat_roi1", {"left", "right"});
    add_failed(expected, "wb_stat_mesh_block", {"start0", "start1"});
    add_failed(expected, "wb_stat_mesh_pos", {"start0", "start1"});
    add_failed(expected, "wb_stat_slice", {"level"});
    add_failed(expected, "wb_stat_slice_sat", {"tp"});
    add_failed(expected, "wb_stat_mesh", {"shape0", "shape1"});
    add_failed(expected, "wbc_ctrl", {"enable"});
    add_failed(expected, "wbc_mesh_block", {"start0", "start1"});
    add_failed(expected, "wbc_mesh_phase", {"start0", "start1"});
    add_failed(expected, "wbc_mesh_pos", {"start0", "start1"});
    add_failed(expected, "wbc_mesh", {"step0", "step1"});
    add_failed(expected, "gic", {"enable"});
    add_failed(expected, "grad_h", {"enable"});
    add_failed(expected, "gclip", {"level"});
    add_failed(expected, "edge_enhance_ctrl", {"enable"});
    add_failed(expected, "edge_enhance", {"ghv_level", "gpn_level"});
    add_failed(expected, "edge_enhance_ghv", {"corner_min", "corner_slope", "corner_offset"});
    add_failed(expected, "fc_cor0", {"enable"});
    add_failed(expected, "offset", {"in", "out"});
    add_failed(expected, "bayer", {"pattern"});
    add_failed(expected, "img_size", {"hsize", "vsize"});
    EXPECT_EQ(stderr_lines_of([&] { rtl_to_drv_dem_user_setup(root, &setup, 4); }), expected);
    EXPECT_EQ(setup.wb_stat_roi[4].right, 0u);
    EXPECT_EQ(setup.img_size_vsize[4], 0u);
    EXPECT_EQ(setup.wbc_mesh_step[1], 0u);
    EXPECT_EQ(setup.edge_enhance_ghv_corner_offset, 0u);
    EXPECT_TRUE(root.at("isp_dem").is<picojson::null>());

    _isp_dem_user_dem_core_t core{};
    _isp_dem_user_wbc_t wbc{};
    _isp_dem_user_gic_t gic{};
    _isp_dem_user_sharpen_t sharpen{};
    expected.clear();
    add_failed(expected, "gradf", {"ratio"});
    add_failed(expected, "grad_hh", {"level"});
    for (const char *reg : {"inv_noise0", "inv_noise1", "inv_noise2", "inv_noise3"})
        add_failed(expected, reg, {"lut0", "lut1"});
    add_failed(expected, "inv_noise4", {"lut0"});
    add_failed(expected, "ginterp_hf_ratio", {"x", "pn", "hv"});
    for (const char *reg : {"wbc_gain_r", "wbc_gain_g", "wbc_gain_b"})
        add_failed(expected, reg, {"lut0", "lut1", "lut2", "lut3"}, 16);
    add_failed(expected, "gic_strength0", {"lut0", "lut1", "lut2", "lut3"});
    add_failed(expected, "gic_strength1", {"lut0", "lut1", "lut2", "lut3"});
    add_failed(expected, "gic_strength2", {"lut0"});
    add_failed(expected, "gic_ct", {"lut0", "lut1"}, 9);
    for (const char *reg : {"gic_limit0", "gic_limit1", "gic_limit2", "gic_limit3"})
        add_failed(expected, reg, {"lut0", "lut1"});
    add_failed(expected, "gic_limit4", {"lut0"});
    add_failed(expected, "edge_enhance_level", {"lut0", "lut1"}, 9);
    EXPECT_EQ(stderr_lines_of([&] {
                  rtl_to_drv_dem_user_dem_core(root, &core, 0);
                  rtl_to_drv_dem_user_wbc(root, &wbc, 0);
                  rtl_to_drv_dem_user_gic(root, &gic, 0);
                  rtl_to_drv_dem_user_sharpen(root, &sharpen, 0);
              }),
              expected);
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
    EXPECT_EQ(first["wb_stat_roi"].serialize(), "[0,1079,0,959]");
    EXPECT_EQ(first["wbc_mesh_pos_start"].serialize(), "[0,0]");
}

TEST(DemExport, ConvertedGroupsExportEachFieldOverItsScale) {
    picojson::object root = fixture(0);
    _isp_dem_user_dem_mode_t mode{};
    _isp_dem_user_dem_core_t core{};
    _isp_dem_user_wbc_t wbc{};
    _isp_dem_user_fcc_t fcc{};
    _isp_dem_user_gic_t gic{};
    _isp_dem_user_sharpen_t sharpen{};
    rtl_to_drv_dem_user_dem_mode(root, &mode, 0);
    rtl_to_drv_dem_user_dem_core(root, &core, 0);
    rtl_to_drv_dem_user_wbc(root, &wbc, 0);
    rtl_to_drv_dem_user_fcc(root, &fcc, 0);
    rtl_to_drv_dem_user_gic(root, &gic, 0);
    rtl_to_drv_dem_user_sharpen(root, &sharpen, 0);
    picojson::object m, c, w = parse_object(R"({"wbc_gain_lut_r": 0, "gamma": 1})"), f, g, s;
    EXPECT_EQ(drv_to_cmodel_dem_user_dem_mode(&mode, m, 0), 0);
    EXPECT_EQ(drv_to_cmodel_dem_user_dem_core(&core, c, 0), 0);
    EXPECT_EQ(drv_to_cmodel_dem_user_wbc(&wbc, w, 0), 0);
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
    /* the wbc tables as sixteen rows of four, over 2^7: entries 0-3 of red, 20-23 of green,
     * 60-63 of blue shown */
    ASSERT_EQ(w.size(), 4u);
    EXPECT_EQ(w["gamma"].serialize(), "1");
    for (const char *key : {"wbc_gain_lut_r", "wbc_gain_lut_g", "wbc_gain_lut_b"}) {
        const picojson::array &rows = w[key].get<picojson::array>();
        ASSERT_EQ(rows.size(), 16u) << key;
        for (const picojson::value &row : rows) EXPECT_EQ(row.get<picojson::array>().size(), 4u);
    }
    EXPECT_EQ(w["wbc_gain_lut_r"].get<picojson::array>()[0].serialize(),
              "[1,1.0078125,1.015625,1.0234375]");
    EXPECT_EQ(w["wbc_gain_lut_g"].get<picojson::array>()[5].serialize(),
              "[1.40625,1.3984375,1.390625,1.3828125]");
    EXPECT_EQ(w["wbc_gain_lut_b"].get<picojson::array>()[15].serialize(),
              "[1.4375,1.453125,1.46875,1.484375]");
}

using DemModule = isp_test::platform_test;

TEST_F(DemModule, FourModulesShareOneWrapperAndPushTheirGroups) {
    frame_file(0, "rtl_dem_p0.json", isp_test::data_text("dem/rtl_dem_p0.json"));
    frame_file(0, "rtl_dem_p1.json", isp_test::data_text("dem/rtl_dem_p1.json"));
    isp_test::pipe pipe(2, 1, case_dir.path());
    std::vector<isp_test::module_instance> dem = {
        isp_test::module_instance(qv_isp_module_demosaic_json_register, pipe),
        isp_test::module_instance(qv_isp_module_fcc_json_register, pipe),
        isp_test::module_instance(qv_isp_module_gic_json_register, pipe),
        isp_test::module_instance(qv_isp_module_edge_enhance_json_register, pipe)};
    for (isp_test::module_instance &m : dem) {
        ASSERT_EQ(m.create(), 0);
        ASSERT_EQ(m.init(), 0);
    }
    ASSERT_EQ(isp_sim::calls_of("vin_hal_wrapper_create").size(), 1u);
    const std::vector<isp_sim::call> pushes = isp_test::pushes();
    for (const isp_sim::call &push : pushes) EXPECT_EQ(push.handle, pushes[0].handle);
    // the default parameters once, for the shared wrapper
    ASSERT_EQ(isp_test::commands_of(pushes), (std::vector<uint32_t>{0, 9, 2, 4, 6, 3, 8, 5, 7}));
    EXPECT_EQ(pushes[1].payload, expected<_isp_dem_user_init_t>());
    EXPECT_EQ(pushes[2].payload, expected<_isp_dem_user_setup_t>());
    EXPECT_EQ(pushes[3].payload, expected<_isp_dem_user_dem_mode_t>());
    EXPECT_EQ(pushes[4].payload, expected<_isp_dem_user_dem_core_t>());
    EXPECT_EQ(pushes[5].payload, expected<_isp_dem_user_wbc_t>());
    EXPECT_EQ(pushes[6].payload, expected<_isp_dem_user_fcc_t>());
    EXPECT_EQ(pushes[7].payload, expected<_isp_dem_user_gic_t>());
    EXPECT_EQ(pushes[8].payload, expected<_isp_dem_user_sharpen_t>());
    for (isp_test::module_instance &m : dem) {
        EXPECT_EQ(m.deinit(), 0);
        EXPECT_EQ(m.destroy(), 0);
    }
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_destroy").size(), 1u);
}

}  // namespace
