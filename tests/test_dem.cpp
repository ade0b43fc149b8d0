/* Demosaic block: two partition files through converters, exporters and the four modules that
 * share the block, and array groups whose missing elements fail alone. */
#include <gtest/gtest.h>

#include "blocks/dem.h"
#include "isp_json_modules.h"
#include "tests/support/block_case.h"

namespace {

TEST(Dem, CaseConvertsExportsAndReplays) {
    /* partition 1 differs in its width, window, mesh starts, slice level and corner offset (-1);
     * the kernel's memory control is set, not read */
    std::map<std::string, picojson::object> exports = isp_test::check_block(
        {"dem",
         {"dem/rtl_dem_p0.json", "dem/rtl_dem_p1.json"},
         R"({"_isp_dem_user_init_t": {"clkgt_enable": 65535}, "_isp_dem_kernel_mem_ctrl_t": {"sw_rd": 1},
             "_isp_dem_user_setup_t": {"wb_stat_enable": 1, "wb_stat_roi.top": [0, 0],
                 "wb_stat_roi.bottom": [1079, 1079], "wb_stat_roi.left": [0, 960],
                 "wb_stat_roi.right": [959, 1919], "wb_stat_mesh_block_start": [0, 0, 7],
                 "wb_stat_mesh_pos_start": [0, 0, 120], "wb_stat_slice_level": 3968,
                 "wb_stat_slice_sat_tp": 1, "wb_stat_mesh_shape": [64, 68], "wbc_enable": 1,
                 "wbc_mesh_block_start": [0, 0, 10], "wbc_mesh_phase_start": [0, 0, 21845],
                 "wbc_mesh_pos_start": [0, 0, 40], "wbc_mesh_step": [1365, 1024], "gic_enable": 1,
                 "grad_h_enable": 1, "gclip_level": 8, "edge_enhance_enable": 1,
                 "edge_enhance_ghv_level": 24, "edge_enhance_gpn_level": 20,
                 "edge_enhance_ghv_corner_min": 32, "edge_enhance_ghv_corner_slope": 40,
                 "edge_enhance_ghv_corner_offset": 511, "fc_cor0_enable": 1, "offset_in": 1024,
                 "offset_out": 1024, "bayer_pattern": 1, "img_size_hsize": [960, 944],
                 "img_size_vsize": [1080, 1080]},
             "_isp_dem_user_dem_mode_t": {"pre_gamma_enable": 1, "mode": 3, "post_gamma_enable": 1},
             "_isp_dem_user_dem_core_t": {"gradf_ratio": 12, "grad_hh_level": 6,
                 "inv_noise_lut": [3840, 1920, 1280, 960, 768, 640, 548, 480, 426],
                 "ginterp_hf_ratio_x": 16, "ginterp_hf_ratio_pn": 24, "ginterp_hf_ratio_hv": 32},
             "_isp_dem_user_wbc_t": {"wbc_gain_lut_r": [128, 129, "..."],
                 "wbc_gain_lut_g": [200, 199, "..."], "wbc_gain_lut_b": [64, 66, "..."]},
             "_isp_dem_user_fcc_t": {"fc_cor1_limit": 1600, "fc_cor1_gain_safe": 6,
                 "fc_cor1_gain": 40, "fc_cor1_th": 20, "fc_cor2_inv_base_sat_level": 51,
                 "fc_cor2_ratio_limit": [384, 128], "fc_cor_sat_lut": [0, 160, "..."]},
             "_isp_dem_user_gic_t": {"gic_strength_lut": [128, 112, "..."],
                 "gic_ct": [160, 320, "..."], "gic_limit": [32, 48, "..."]},
             "_isp_dem_user_sharpen_t": {"edge_enhance_level_lut": [16, 17, 18, 19, 20, 21, 22, 23,
                 24, 24, 23, 22, 21, 20, 19, 18, 17, 16]}})",
         // partition 1's elements; each value over 2^fraction bits, the corner offset -1 / 2^8
         R"({"_isp_dem_user_setup_t": {"bayer_pattern": 1, "edge_enhance_enable": 1,
                 "edge_enhance_ghv_corner_min": 0.125, "edge_enhance_ghv_corner_offset": -0.00390625,
                 "edge_enhance_ghv_corner_slope": 2.5, "edge_enhance_ghv_level": 1.5,
                 "edge_enhance_gpn_level": 1.25, "fc_cor0_enable": 1, "gclip_level": 0.5,
                 "gic_enable": 1, "grad_h_enable": 1, "img_size_hsize": 944, "img_size_vsize": 1080,
                 "offset_in": 64, "offset_out": 64, "wb_stat_enable": 1,
                 "wb_stat_mesh_block_start": [7, 0], "wb_stat_mesh_pos_start": [120, 0],
                 "wb_stat_mesh_shape": [64, 68], "wb_stat_roi": [0, 1079, 960, 1919],
                 "wb_stat_slice_level": 248, "wb_stat_slice_sat_tp": 1, "wbc_enable": 1,
                 "wbc_mesh_block_start": [10, 0], "wbc_mesh_phase_start": [0.666656494140625, 0],
                 "wbc_mesh_pos_start": [40, 0], "wbc_mesh_step": [0.08331298828125, 0.0625]},
             "_isp_dem_user_dem_mode_t": {"mode": 3, "post_gamma_enable": 1, "pre_gamma_enable": 1},
             "_isp_dem_user_dem_core_t": {"ginterp_hf_ratio_hv": 1, "ginterp_hf_ratio_pn": 0.75,
                 "ginterp_hf_ratio_x": 0.5, "grad_hh_level": 1.5, "gradf_ratio": 0.75,
                 "inv_noise_lut": [15, 7.5, 5, 3.75, 3, 2.5, 2.140625, 1.875, 1.6640625]},
             "_isp_dem_user_wbc_t": {"wbc_gain_lut_b": "*", "wbc_gain_lut_g": "*",
                 "wbc_gain_lut_r": "*"},
             "_isp_dem_user_fcc_t": {"fc_cor1_gain": 2.5, "fc_cor1_gain_safe": 1.5,
                 "fc_cor1_limit": 100, "fc_cor1_th": 1.25, "fc_cor2_inv_base_sat_level": 0.19921875,
                 "fc_cor2_ratio_limit": [1.5, 0.5], "fc_cor_sat_lut": [0, 10, "..."]},
             "_isp_dem_user_gic_t": {"gic_ct": [10, 20, "..."], "gic_limit": [2, 3, "..."],
                 "gic_strength_lut": [1, 0.875, "..."]},
             "_isp_dem_user_sharpen_t": {"edge_enhance_level_lut": [1, 1.0625, 1.125, 1.1875, 1.25,
                 1.3125, 1.375, 1.4375, 1.5, 1.5, 1.4375, 1.375, 1.3125, 1.25, 1.1875, 1.125,
                 1.0625, 1]}})",
         {{"demosaic", qv_isp_module_demosaic_json_register, {0, 9, 2, 4, 6, 3}},
          {"fcc", qv_isp_module_fcc_json_register, {0, 8}},
          {"gic", qv_isp_module_gic_json_register, {0, 5}},
          {"edge_enhance", qv_isp_module_edge_enhance_json_register, {0, 7}}}});
    /* the white-balance tables as sixteen rows of four, over 2^7 */
    picojson::object &wbc = exports["_isp_dem_user_wbc_t"];
    for (const char *key : {"wbc_gain_lut_r", "wbc_gain_lut_g", "wbc_gain_lut_b"}) {
        ASSERT_EQ(wbc[key].get<picojson::array>().size(), 16u) << key;
        for (const picojson::value &row : wbc[key].get<picojson::array>())
            EXPECT_EQ(row.get<picojson::array>().size(), 4u) << key;
    }
    EXPECT_EQ(wbc["wbc_gain_lut_r"].get<picojson::array>()[0].serialize(),
              "[1,1.0078125,1.015625,1.0234375]");
    EXPECT_EQ(wbc["wbc_gain_lut_g"].get<picojson::array>()[5].serialize(),
              "[1.40625,1.3984375,1.390625,1.3828125]");
    EXPECT_EQ(wbc["wbc_gain_lut_b"].get<picojson::array>()[15].serialize(),
              "[1.4375,1.453125,1.46875,1.484375]");
}

/* An array group's messages name only register and field; a missing field or element (a group
 * shorter than its table) zeroes only its own entries. The red gains are read whole before the
 * green ones, so red's last element fails before green's sixth. */
TEST(Dem, ArrayGroupsFailOnlyTheMissingEntries) {
    picojson::object root = isp_test::data_object("dem/rtl_dem_p0.json");
    picojson::object &top = root["isp_dem"].get<picojson::object>();
    top["wbc_gain_lut_r"]
        .get<picojson::array>()[15]
        .get<picojson::object>()["wbc_gain_r"]
        .get<picojson::object>()
        .erase("lut3");
    top["wbc_gain_lut_g"]
        .get<picojson::array>()[5]
        .get<picojson::object>()["wbc_gain_g"]
        .get<picojson::object>()
        .erase("lut2");
    top["gic_ct_lut"].get<picojson::array>().pop_back();
    const isp_test::conversion w = isp_test::convert_named("rtl_to_drv_dem_user_wbc", root, 0, 9);
    const isp_test::conversion g = isp_test::convert_named("rtl_to_drv_dem_user_gic", root, 0, 9);
    EXPECT_EQ(w.lines, isp_test::failed({{"wbc_gain_r", {"lut3"}}, {"wbc_gain_g", {"lut2"}}}));
    EXPECT_EQ(g.lines, isp_test::failed({{"gic_ct", {"lut0", "lut1"}}}));
    _isp_dem_user_wbc_t wbc;
    _isp_dem_user_gic_t gic;
    isp_test::copy_bytes(w.bytes, wbc);
    isp_test::copy_bytes(g.bytes, gic);
    EXPECT_EQ(wbc.wbc_gain_lut_r[63], 0u);
    EXPECT_EQ(wbc.wbc_gain_lut_g[21], 179u);
    EXPECT_EQ(wbc.wbc_gain_lut_g[22], 0u);
    EXPECT_EQ(wbc.wbc_gain_lut_g[23], 177u);
    EXPECT_EQ(gic.gic_ct[7], 1280u);  // element k holds entries k and k + 9
    EXPECT_EQ(gic.gic_ct[8], 0u);
    EXPECT_EQ(gic.gic_ct[16], 2720u);
    EXPECT_EQ(gic.gic_ct[17], 0u);
}

}  // namespace
