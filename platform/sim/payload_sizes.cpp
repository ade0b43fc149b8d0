/* The simulated wrapper's command table: which driver structure each setup command of a block
 * carries, so that every push can be recorded as a byte copy of the structure. */
#include <cstring>
#include <string>

#include "isp_json.h"
#include "isp_sim.h"

namespace isp_sim {
namespace {

struct command_size {
    const char *block;
    uint32_t cmd;
    size_t size;
};

// clang-format off
const command_size k_commands[] = {
    {"clc", 3, sizeof(_isp_clc_user_init_t)}, {"clc", 1, sizeof(_isp_clc_user_clc_setup_t)},
    {"clc", 2, sizeof(_isp_clc_user_clc_t)},
    {"dehaze", 1, sizeof(_isp_dehaze_user_setup_t)}, {"dehaze", 2, sizeof(_isp_dehaze_user_part_t)},
    {"dehaze", 3, sizeof(_isp_dehaze_user_ctrl_t)},
    {"dem", 9, sizeof(_isp_dem_user_init_t)}, {"dem", 2, sizeof(_isp_dem_user_setup_t)},
    {"dem", 4, sizeof(_isp_dem_user_dem_mode_t)}, {"dem", 6, sizeof(_isp_dem_user_dem_core_t)},
    {"dem", 3, sizeof(_isp_dem_user_wbc_t)}, {"dem", 8, sizeof(_isp_dem_user_fcc_t)},
    {"dem", 5, sizeof(_isp_dem_user_gic_t)}, {"dem", 7, sizeof(_isp_dem_user_sharpen_t)},
    {"lce", 8, sizeof(_isp_lce_user_hs2dlut_t)}, {"lce", 9, sizeof(_isp_lce_user_ccmp_t)},
    {"lce", 6, sizeof(_isp_lce_user_ycproc_t)}, {"lce", 10, sizeof(_isp_lce_user_scm_t)},
    {"lce", 7, sizeof(_isp_lce_user_init_t)}, {"lce", 1, sizeof(_isp_lce_user_setup_t)},
    {"lce", 2, sizeof(_isp_lce_user_basic_setting_t)},
    {"lce", 4, sizeof(_isp_lce_user_luma_chroma_setting_t)},
    {"lce", 5, sizeof(_isp_lce_user_motion_setting_t)},
    {"lce", 3, sizeof(_isp_lce_user_nr_coring_setting_t)},
    {"lce", 11, sizeof(_isp_lce_user_desat_setting_t)},
    {"blc", 3, sizeof(_isp_blc_user_lin_t)}, {"blc", 4, sizeof(_isp_blc_user_common_t)},
    {"blc", 5, sizeof(_isp_blc_user_dither_t)}, {"blc", 6, sizeof(_isp_blc_user_setup_t)},
    {"blc", 7, sizeof(_isp_blc_user_init_t)}, {"blc", 8, sizeof(_isp_blc_kernel_gbl_t)},
    {"blc", 9, sizeof(_isp_blc_kernel_sbl_t)}, {"blc", 10, sizeof(_isp_blc_kernel_ctrl_t)},
    {"ifa", 1, sizeof(_isp_ifa_user_setup_t)}, {"ifa", 2, sizeof(_isp_ifa_user_crop_t)},
    {"yuv3dnr", 11, sizeof(_isp_yuv3dnr_user_ctrl_t)}, {"yuv3dnr", 1, sizeof(_isp_yuv3dnr_user_extmask_t)},
    {"yuv3dnr", 2, sizeof(_isp_yuv3dnr_user_motion_t)}, {"yuv3dnr", 3, sizeof(_isp_yuv3dnr_user_setup_t)},
    {"yuv3dnr", 4, sizeof(_isp_yuv3dnr_user_tnr_t)}, {"yuv3dnr", 5, sizeof(_isp_yuv3dnr_user_ysf_t)},
    {"yuv3dnr", 6, sizeof(_isp_yuv3dnr_user_csf_t)}, {"yuv3dnr", 7, sizeof(_isp_yuv3dnr_user_cgf_t)},
    {"yuv3dnr", 8, sizeof(_isp_yuv3dnr_user_part_t)}, {"yuv3dnr", 9, sizeof(_isp_yuv3dnr_user_dither_t)},
    {"yuv3dnr", 10, sizeof(_isp_yuv3dnr_user_init_t)},
    {"ae_stat", 1, sizeof(_isp_ae_stat_user_init_t)}, {"ae_stat", 2, sizeof(_isp_ae_stat_user_aes_adj_t)},
    {"ae_stat", 3, sizeof(_isp_ae_stat_user_aes_calc_t)},
    {"awb_stat", 1, sizeof(_isp_awb_stat_user_init_t)}, {"awb_stat", 2, sizeof(_isp_awb_stat_user_awbs_adj_t)},
    {"awb_stat", 3, sizeof(_isp_awb_stat_user_awbs_calc_grid_t)},
    {"lsc", 1, sizeof(_isp_lsc_user_setup_t)}, {"lsc", 2, sizeof(_isp_lsc_user_coord_t)},
    {"lsc", 3, sizeof(_isp_lsc_user_mesh_t)},
    {"af_stat", 1, sizeof(_isp_af_stat_user_init_t)}, {"af_stat", 5, sizeof(_isp_af_stat_user_afs_setup_t)},
    {"af_stat", 3, sizeof(_isp_af_stat_user_afs_adj_t)}, {"af_stat", 2, sizeof(_isp_af_stat_user_afs_ptn_t)},
    {"af_stat", 4, sizeof(_isp_af_stat_user_afs_drc_t)}, {"af_stat", 6, sizeof(_isp_af_stat_kernel_wr_addr_t)},
    {"af_stat", 7, sizeof(_isp_af_stat_kernel_afs_setup_t)},
    {"gamma", 1, sizeof(_isp_gamma_user_setup_t)}, {"gamma", 2, sizeof(_isp_gamma_user_dither_t)},
    {"gamma", 3, sizeof(_isp_gamma_user_lut_t)},
    {"wbc", 1, sizeof(_isp_wbc_user_ctrl_t)}, {"wbc", 2, sizeof(_isp_wbc_user_setup_t)},
    {"wbc", 3, sizeof(_isp_wbc_user_init_t)},
    {"dpc", 2, sizeof(_isp_dpc_user_calc_dp_strength_t)}, {"dpc", 4, sizeof(_isp_dpc_user_setup_t)},
    {"dpc", 5, sizeof(_isp_dpc_user_calc_noise_t)}, {"dpc", 6, sizeof(_isp_dpc_user_calc_wb_gain_t)},
    {"dpc", 7, sizeof(_isp_dpc_user_calc_quick_det_t)}, {"dpc", 8, sizeof(_isp_dpc_user_calc_dp_correct_t)},
    {"dpc", 9, sizeof(_isp_dpc_user_calc_color_limit_t)}, {"dpc", 10, sizeof(_isp_dpc_user_init_t)},
    {"eis_post", 1, sizeof(_isp_eis_post_user_ctrl_t)}, {"eis_post", 2, sizeof(_isp_eis_post_user_setup_t)},
    {"eis_post", 3, sizeof(_isp_eis_post_user_init_t)},
    {"y2dnr", 12, sizeof(_isp_y2dnr_user_init_t)}, {"y2dnr", 4, sizeof(_isp_y2dnr_user_setup_t)},
    {"y2dnr", 2, sizeof(_isp_y2dnr_user_top_control_t)}, {"y2dnr", 1, sizeof(_isp_y2dnr_user_debug_mode_t)},
    {"y2dnr", 5, sizeof(_isp_y2dnr_user_feature_t)}, {"y2dnr", 6, sizeof(_isp_y2dnr_user_dpc_t)},
    {"y2dnr", 7, sizeof(_isp_y2dnr_user_sf1_t)}, {"y2dnr", 8, sizeof(_isp_y2dnr_user_sf2_t)},
    {"y2dnr", 9, sizeof(_isp_y2dnr_user_filter_style_t)}, {"y2dnr", 10, sizeof(_isp_y2dnr_user_luma_str_t)},
    {"y2dnr", 11, sizeof(_isp_y2dnr_user_motion_t)}, {"y2dnr", 3, sizeof(_isp_y2dnr_user_dither_t)},
    {"rltm", 4, sizeof(_isp_rltm_user_init_t)}, {"rltm", 2, sizeof(_isp_rltm_user_setup_t)},
    {"rltm", 1, sizeof(_isp_rltm_user_dither_t)}, {"rltm", 6, sizeof(_isp_rltm_user_reserved_t)},
    {"rltm", 3, sizeof(_isp_rltm_user_common_t)}, {"rltm", 5, sizeof(_isp_rltm_user_info_t)},
    {"rltm", 7, sizeof(_isp_rltm_user_detail_t)}, {"rltm", 8, sizeof(_isp_rltm_user_low_freq_t)},
    {"rltm", 9, sizeof(_isp_rltm_user_lut_t)},
    {"nrlite", 5, sizeof(_isp_nrlite_user_post_t)},
    {"csc", 1, sizeof(_isp_csc_user_core_t)}, {"csc", 2, sizeof(_isp_csc_user_setup_t)},
    {"csc", 3, sizeof(_isp_csc_user_init_t)},
    {"hidrc", 1, sizeof(_isp_hidrc_user_setup_t)}, {"hidrc", 2, sizeof(_isp_hidrc_user_hidrc_lut_t)},
    {"pfd", 1, sizeof(_isp_pfd_user_det_t)}, {"pfd", 2, sizeof(_isp_pfd_user_setup_t)},
    {"pfd", 3, sizeof(_isp_pfd_user_init_t)}, {"pfd", 4, sizeof(_isp_pfd_user_ptn_related_t)},
    {"pfd", 5, sizeof(_isp_pfd_user_mesh_lut_t)}, {"pfd", 6, sizeof(_isp_pfd_user_mesh_thr_t)},
    {"eis_pre", 1, sizeof(_isp_eis_pre_user_lut_t)}, {"eis_pre", 2, sizeof(_isp_eis_pre_user_setup_t)},
    {"eis_pre", 3, sizeof(_isp_eis_pre_user_ctrl_t)}, {"eis_pre", 4, sizeof(_isp_eis_pre_user_init_t)},
    {"raw2dnr", 6, sizeof(_isp_raw2dnr_user_init_t)}, {"raw2dnr", 1, sizeof(_isp_raw2dnr_user_setup_t)},
    {"raw2dnr", 2, sizeof(_isp_raw2dnr_user_mask_t)}, {"raw2dnr", 3, sizeof(_isp_raw2dnr_user_fs_t)},
    {"raw2dnr", 5, sizeof(_isp_raw2dnr_user_hfnr_t)}, {"raw2dnr", 4, sizeof(_isp_raw2dnr_user_mfnr_t)},
    {"raw2dnr", 8, sizeof(_isp_raw2dnr_user_np_t)},
    {"bl_det", 1, sizeof(_isp_bl_det_user_setup_t)}, {"bl_det", 3, sizeof(_isp_bl_det_user_init_t)},
    {"hdrc", 1, sizeof(_isp_hdrc_user_setup_t)}, {"hdrc", 3, sizeof(_isp_hdrc_user_hdrc_lut_t)},
    {"hdrc", 4, sizeof(_isp_hdrc_user_glb_ctrl_t)},
    {"hdr", 1, sizeof(_isp_hdr_user_common_t)}, {"hdr", 2, sizeof(_isp_hdr_user_deghost_t)},
    {"hdr", 3, sizeof(_isp_hdr_user_setup_t)}, {"hdr", 4, sizeof(_isp_hdr_user_motion_t)},
    {"hdr", 5, sizeof(_isp_hdr_user_init_t)}, {"hdr", 6, sizeof(_isp_hdr_kernel_common_t)},
    {"hdr", 7, sizeof(_isp_hdr_kernel_fusion_t)}, {"hdr", 8, sizeof(_isp_hdr_kernel_exposure_t)},
};
// clang-format on

}  // namespace

size_t payload_size(const std::string &block, uint32_t cmd) {
    for (const command_size &c : k_commands)
        if (c.cmd == cmd && block == c.block) return c.size;
    return 0;
}

}  // namespace isp_sim
