/* The tool's mirror of the module catalogue and of every block's converters and exporters. */
#include "tools/module_table.h"

#include <stdio.h>

#include <array>
#include <map>

#include "isp_json.h"

namespace isp_case {
namespace {

template <typename T, int (*convert)(picojson::object &, T *, uint8_t)>
int convert_as(picojson::object &root, void *structure, uint8_t partition) {
    return convert(root, static_cast<T *>(structure), partition);
}

template <typename T, int (*exporter)(T *, picojson::object &, uint8_t)>
int export_as(void *structure, picojson::object &out, uint8_t partition) {
    return exporter(static_cast<T *>(structure), out, partition);
}

/* The colour-correction init group reaches its partition sizes through pointers that the
 * module provides; a converter run on its own needs arrays for every partition index. */
int convert_clc_init(picojson::object &root, void *structure, uint8_t partition) {
    std::array<uint16_t, ISP_MAX_PARTITIONS> size_h{}, size_v{};
    _isp_clc_user_init_t *init = static_cast<_isp_clc_user_init_t *>(structure);
    init->part_size_h          = size_h.data();
    init->part_size_v          = size_v.data();
    const int status           = rtl_to_drv_clc_user_init(root, init, partition);
    init->part_size_h = init->part_size_v = nullptr;
    return status;
}

#define GROUP(name, cmd, type, converter) \
    { name, cmd, sizeof(type), &convert_as<type, converter>, #converter, nullptr, false, #type }
#define EXPORTED(name, cmd, type, converter, exporter, per_partition)      \
    {                                                                      \
        name, cmd, sizeof(type), &convert_as<type, converter>, #converter, \
            &export_as<type, exporter>, per_partition, #type               \
    }

using block_groups = std::vector<group_info>;

// clang-format off
const std::map<std::string, block_groups> &blocks() {
    static const std::map<std::string, block_groups> table = {
        {"wbc", {
            EXPORTED("ctrl", 1, _isp_wbc_user_ctrl_t, rtl_to_drv_wbc_user_ctrl, drv_to_cmodel_wbc_user_ctrl, false),
            EXPORTED("setup", 2, _isp_wbc_user_setup_t, rtl_to_drv_wbc_user_setup, drv_to_cmodel_wbc_user_setup, false),
            GROUP("init", 3, _isp_wbc_user_init_t, rtl_to_drv_wbc_user_init),
        }},
        {"blc", {
            EXPORTED("lin", 3, _isp_blc_user_lin_t, rtl_to_drv_blc_user_lin, drv_to_cmodel_blc_user_lin, false),
            EXPORTED("common", 4, _isp_blc_user_common_t, rtl_to_drv_blc_user_common, drv_to_cmodel_blc_user_common, false),
            EXPORTED("dither", 5, _isp_blc_user_dither_t, rtl_to_drv_blc_user_dither, drv_to_cmodel_blc_user_dither, false),
            EXPORTED("setup", 6, _isp_blc_user_setup_t, rtl_to_drv_blc_user_setup, drv_to_cmodel_blc_user_setup, false),
            GROUP("init", 7, _isp_blc_user_init_t, rtl_to_drv_blc_user_init),
            EXPORTED("kernel_gbl", 8, _isp_blc_kernel_gbl_t, rtl_to_drv_blc_kernel_gbl, drv_to_cmodel_blc_kernel_gbl, false),
            EXPORTED("kernel_sbl", 9, _isp_blc_kernel_sbl_t, rtl_to_drv_blc_kernel_sbl, drv_to_cmodel_blc_kernel_sbl, false),
            EXPORTED("kernel_ctrl", 10, _isp_blc_kernel_ctrl_t, rtl_to_drv_blc_kernel_ctrl, drv_to_cmodel_blc_kernel_ctrl, false),
        }},
        {"dpc", {
            EXPORTED("calc_dp_strength", 2, _isp_dpc_user_calc_dp_strength_t, rtl_to_drv_dpc_user_calc_dp_strength, drv_to_cmodel_dpc_user_calc_dp_strength, false),
            EXPORTED("setup", 4, _isp_dpc_user_setup_t, rtl_to_drv_dpc_user_setup, drv_to_cmodel_dpc_user_setup, false),
            EXPORTED("top_control", 0, _isp_dpc_user_calc_top_control_t, rtl_to_drv_dpc_user_calc_top_control, drv_to_cmodel_dpc_top_control, false),
            EXPORTED("calc_noise", 5, _isp_dpc_user_calc_noise_t, rtl_to_drv_dpc_user_calc_noise, drv_to_cmodel_dpc_user_calc_noise, false),
            EXPORTED("calc_wb_gain", 6, _isp_dpc_user_calc_wb_gain_t, rtl_to_drv_dpc_user_calc_wb_gain, drv_to_cmodel_dpc_user_calc_wb_gain, false),
            EXPORTED("calc_quick_det", 7, _isp_dpc_user_calc_quick_det_t, rtl_to_drv_dpc_user_calc_quick_det, drv_to_cmodel_dpc_user_calc_quick_det, false),
            EXPORTED("calc_dp_correct", 8, _isp_dpc_user_calc_dp_correct_t, rtl_to_drv_dpc_user_calc_dp_correct, drv_to_cmodel_dpc_user_calc_dp_correct, false),
            EXPORTED("calc_color_limit", 9, _isp_dpc_user_calc_color_limit_t, rtl_to_drv_dpc_user_calc_color_limit, drv_to_cmodel_dpc_user_calc_color_limit, false),
            GROUP("init", 10, _isp_dpc_user_init_t, rtl_to_drv_dpc_user_init),
        }},
        {"lsc", {
            EXPORTED("setup", 1, _isp_lsc_user_setup_t, rtl_to_drv_lsc_user_setup, drv_to_cmodel_lsc_user_setup, false),
            EXPORTED("coord", 2, _isp_lsc_user_coord_t, rtl_to_drv_lsc_user_coord, drv_to_cmodel_lsc_user_coord, true),
            GROUP("mesh", 3, _isp_lsc_user_mesh_t, rtl_to_drv_lsc_user_mesh),
        }},
        {"dem", {
            GROUP("init", 9, _isp_dem_user_init_t, rtl_to_drv_dem_user_init),
            EXPORTED("setup", 2, _isp_dem_user_setup_t, rtl_to_drv_dem_user_setup, drv_to_cmodel_dem_user_setup, true),
            EXPORTED("dem_mode", 4, _isp_dem_user_dem_mode_t, rtl_to_drv_dem_user_dem_mode, drv_to_cmodel_dem_user_dem_mode, false),
            EXPORTED("dem_core", 6, _isp_dem_user_dem_core_t, rtl_to_drv_dem_user_dem_core, drv_to_cmodel_dem_user_dem_core, false),
            EXPORTED("wbc", 3, _isp_dem_user_wbc_t, rtl_to_drv_dem_user_wbc, drv_to_cmodel_dem_user_wbc, false),
            EXPORTED("fcc", 8, _isp_dem_user_fcc_t, rtl_to_drv_dem_user_fcc, drv_to_cmodel_dem_user_fcc, false),
            EXPORTED("gic", 5, _isp_dem_user_gic_t, rtl_to_drv_dem_user_gic, drv_to_cmodel_dem_user_gic, false),
            EXPORTED("sharpen", 7, _isp_dem_user_sharpen_t, rtl_to_drv_dem_user_sharpen, drv_to_cmodel_dem_user_sharpen, false),
        }},
        {"clc", {
            {"init", 3, sizeof(_isp_clc_user_init_t), &convert_clc_init, "rtl_to_drv_clc_user_init", nullptr, false, "_isp_clc_user_init_t"},
            EXPORTED("clc_setup", 1, _isp_clc_user_clc_setup_t, rtl_to_drv_clc_user_clc_setup, drv_to_cmodel_clc_user_clc_setup, false),
            EXPORTED("clc", 2, _isp_clc_user_clc_t, rtl_to_drv_clc_user_clc, drv_to_cmodel_clc_user_clc, false),
        }},
        {"gamma", {
            EXPORTED("setup", 1, _isp_gamma_user_setup_t, rtl_to_drv_gamma_user_setup, drv_to_cmodel_gamma_user_setup, false),
            EXPORTED("dither", 2, _isp_gamma_user_dither_t, rtl_to_drv_gamma_user_dither, drv_to_cmodel_gamma_user_dither, false),
            EXPORTED("lut", 3, _isp_gamma_user_lut_t, rtl_to_drv_gamma_user_lut, drv_to_cmodel_gamma_user_lut, false),
        }},
        {"csc", {
            EXPORTED("core", 1, _isp_csc_user_core_t, rtl_to_drv_csc_user_core, drv_to_cmodel_csc_user_core, false),
            EXPORTED("setup", 2, _isp_csc_user_setup_t, rtl_to_drv_csc_user_setup, drv_to_cmodel_csc_user_setup, false),
            GROUP("init", 3, _isp_csc_user_init_t, rtl_to_drv_csc_user_init),
        }},
        {"hdrc", {
            EXPORTED("setup", 1, _isp_hdrc_user_setup_t, rtl_to_drv_hdrc_user_setup, drv_to_cmodel_hdrc_user_setup, false),
            GROUP("hdrc_lut", 3, _isp_hdrc_user_hdrc_lut_t, rtl_to_drv_hdrc_user_hdrc_lut),
            GROUP("glb_ctl", 4, _isp_hdrc_user_glb_ctrl_t, rtl_to_drv_hdrc_glb_ctl),
        }},
        {"hidrc", {
            EXPORTED("setup", 1, _isp_hidrc_user_setup_t, rtl_to_drv_hidrc_user_setup, drv_to_cmodel_hidrc_user_setup, false),
            GROUP("hidrc_lut", 2, _isp_hidrc_user_hidrc_lut_t, rtl_to_drv_hidrc_user_hidrc_lut),
        }},
        {"dehaze", {
            GROUP("setup", 1, _isp_dehaze_user_setup_t, rtl_to_drv_dehaze_user_setup),
            GROUP("part", 2, _isp_dehaze_user_part_t, rtl_to_drv_dehaze_user_part),
            GROUP("ctrl", 3, _isp_dehaze_user_ctrl_t, rtl_to_drv_dehaze_user_ctrl),
        }},
        {"lce", {
            GROUP("hs2dlut", 8, _isp_lce_user_hs2dlut_t, rtl_to_drv_lce_user_hs2dlut),
            GROUP("ccmp", 9, _isp_lce_user_ccmp_t, rtl_to_drv_lce_user_ccmp),
            GROUP("ycproc", 6, _isp_lce_user_ycproc_t, rtl_to_drv_lce_user_ycproc),
            GROUP("scm", 10, _isp_lce_user_scm_t, rtl_to_drv_lce_user_scm),
            GROUP("init", 7, _isp_lce_user_init_t, rtl_to_drv_lce_user_init),
            GROUP("setup", 1, _isp_lce_user_setup_t, rtl_to_drv_lce_user_setup),
            GROUP("basic_setting", 2, _isp_lce_user_basic_setting_t, rtl_to_drv_lce_user_basic_setting),
            GROUP("luma_chroma_setting", 4, _isp_lce_user_luma_chroma_setting_t, rtl_to_drv_lce_user_luma_chroma_setting),
            GROUP("motion_setting", 5, _isp_lce_user_motion_setting_t, rtl_to_drv_lce_user_motion_setting),
            GROUP("nr_coring_setting", 3, _isp_lce_user_nr_coring_setting_t, rtl_to_drv_lce_user_nr_coring_setting),
            GROUP("desat_setting", 11, _isp_lce_user_desat_setting_t, rtl_to_drv_lce_user_desat_setting),
        }},
        {"ifa", {
            GROUP("setup", 1, _isp_ifa_user_setup_t, rtl_to_drv_ifa_user_setup),
            GROUP("crop", 2, _isp_ifa_user_crop_t, rtl_to_drv_ifa_user_crop),
        }},
        {"yuv3dnr", {
            GROUP("ctrl", 11, _isp_yuv3dnr_user_ctrl_t, rtl_to_drv_yuv3dnr_user_ctrl),
            GROUP("extmask", 1, _isp_yuv3dnr_user_extmask_t, rtl_to_drv_yuv3dnr_user_extmask),
            GROUP("motion", 2, _isp_yuv3dnr_user_motion_t, rtl_to_drv_yuv3dnr_user_motion),
            GROUP("setup", 3, _isp_yuv3dnr_user_setup_t, rtl_to_drv_yuv3dnr_user_setup),
            GROUP("tnr", 4, _isp_yuv3dnr_user_tnr_t, rtl_to_drv_yuv3dnr_user_tnr),
            GROUP("ysf", 5, _isp_yuv3dnr_user_ysf_t, rtl_to_drv_yuv3dnr_user_ysf),
            GROUP("csf", 6, _isp_yuv3dnr_user_csf_t, rtl_to_drv_yuv3dnr_user_csf),
            GROUP("cgf", 7, _isp_yuv3dnr_user_cgf_t, rtl_to_drv_yuv3dnr_user_cgf),
            GROUP("part", 8, _isp_yuv3dnr_user_part_t, rtl_to_drv_yuv3dnr_user_part),
            GROUP("dither", 9, _isp_yuv3dnr_user_dither_t, rtl_to_drv_yuv3dnr_user_dither),
            GROUP("init", 10, _isp_yuv3dnr_user_init_t, rtl_to_drv_yuv3dnr_user_init),
        }},
        {"ae_stat", {
            GROUP("init", 1, _isp_ae_stat_user_init_t, rtl_to_drv_ae_stat_user_init),
            GROUP("aes_adj", 2, _isp_ae_stat_user_aes_adj_t, rtl_to_drv_ae_stat_user_aes_adj),
            GROUP("aes_calc", 3, _isp_ae_stat_user_aes_calc_t, rtl_to_drv_ae_stat_user_aes_calc),
        }},
        {"awb_stat", {
            GROUP("init", 1, _isp_awb_stat_user_init_t, rtl_to_drv_awb_stat_user_init),
            GROUP("awbs_adj", 2, _isp_awb_stat_user_awbs_adj_t, rtl_to_drv_awb_stat_user_awbs_adj),
            GROUP("awbs_calc_grid", 3, _isp_awb_stat_user_awbs_calc_grid_t, rtl_to_drv_awb_stat_user_awbs_calc_grid),
        }},
        {"af_stat", {
            GROUP("init", 1, _isp_af_stat_user_init_t, rtl_to_drv_af_stat_user_init),
            GROUP("afs_setup", 5, _isp_af_stat_user_afs_setup_t, rtl_to_drv_af_stat_user_afs_setup),
            GROUP("afs_adj", 3, _isp_af_stat_user_afs_adj_t, rtl_to_drv_af_stat_user_afs_adj),
            GROUP("afs_ptn", 2, _isp_af_stat_user_afs_ptn_t, rtl_to_drv_af_stat_user_afs_ptn),
            GROUP("afs_drc", 4, _isp_af_stat_user_afs_drc_t, rtl_to_drv_af_stat_user_afs_drc),
            GROUP("kernel_wr_addr", 6, _isp_af_stat_kernel_wr_addr_t, rtl_to_drv_af_stat_kernel_wr_addr),
            GROUP("kernel_afs_setup", 7, _isp_af_stat_kernel_afs_setup_t, rtl_to_drv_af_stat_kernel_afs_setup),
        }},
        {"eis_post", {
            GROUP("ctrl", 1, _isp_eis_post_user_ctrl_t, rtl_to_drv_eis_post_user_ctrl),
            GROUP("setup", 2, _isp_eis_post_user_setup_t, rtl_to_drv_eis_post_user_setup),
            GROUP("init", 3, _isp_eis_post_user_init_t, rtl_to_drv_eis_post_user_init),
        }},
        {"eis_pre", {
            GROUP("lut", 1, _isp_eis_pre_user_lut_t, rtl_to_drv_eis_pre_user_lut),
            GROUP("setup", 2, _isp_eis_pre_user_setup_t, rtl_to_drv_eis_pre_user_setup),
            GROUP("ctrl", 3, _isp_eis_pre_user_ctrl_t, rtl_to_drv_eis_pre_user_ctrl),
            GROUP("init", 4, _isp_eis_pre_user_init_t, rtl_to_drv_eis_pre_user_init),
        }},
        {"y2dnr", {
            GROUP("init", 12, _isp_y2dnr_user_init_t, rtl_to_drv_y2dnr_user_init),
            GROUP("setup", 4, _isp_y2dnr_user_setup_t, rtl_to_drv_y2dnr_user_setup),
            GROUP("top_control", 2, _isp_y2dnr_user_top_control_t, rtl_to_drv_y2dnr_user_top_control),
            GROUP("debug_mode", 1, _isp_y2dnr_user_debug_mode_t, rtl_to_drv_y2dnr_user_debug_mode),
            GROUP("feature", 5, _isp_y2dnr_user_feature_t, rtl_to_drv_y2dnr_user_feature),
            GROUP("dpc", 6, _isp_y2dnr_user_dpc_t, rtl_to_drv_y2dnr_user_dpc),
            GROUP("sf1", 7, _isp_y2dnr_user_sf1_t, rtl_to_drv_y2dnr_user_sf1),
            GROUP("sf2", 8, _isp_y2dnr_user_sf2_t, rtl_to_drv_y2dnr_user_sf2),
            GROUP("filter_style", 9, _isp_y2dnr_user_filter_style_t, rtl_to_drv_y2dnr_user_filter_style),
            GROUP("luma_str", 10, _isp_y2dnr_user_luma_str_t, rtl_to_drv_y2dnr_user_luma_str),
            GROUP("motion", 11, _isp_y2dnr_user_motion_t, rtl_to_drv_y2dnr_user_motion),
            GROUP("dither", 3, _isp_y2dnr_user_dither_t, rtl_to_drv_y2dnr_user_dither),
        }},
        {"rltm", {
            GROUP("init", 4, _isp_rltm_user_init_t, rtl_to_drv_rltm_user_init),
            GROUP("setup", 2, _isp_rltm_user_setup_t, rtl_to_drv_rltm_user_setup),
            GROUP("dither", 1, _isp_rltm_user_dither_t, rtl_to_drv_rltm_user_dither),
            GROUP("reserved", 6, _isp_rltm_user_reserved_t, rtl_to_drv_rltm_user_reserved),
            GROUP("common", 3, _isp_rltm_user_common_t, rtl_to_drv_rltm_user_common),
            GROUP("info", 5, _isp_rltm_user_info_t, rtl_to_drv_rltm_user_info),
            GROUP("detail", 7, _isp_rltm_user_detail_t, rtl_to_drv_rltm_user_detail),
            GROUP("low_freq", 8, _isp_rltm_user_low_freq_t, rtl_to_drv_rltm_user_low_freq),
            GROUP("kernel_sync", 0, _isp_rltm_kernel_sync_t, rtl_to_drv_rltm_kernel_sync),
            GROUP("lut", 9, _isp_rltm_user_lut_t, rtl_to_drv_rltm_user_lut),
        }},
        {"nrlite", {
            GROUP("post", 5, _isp_nrlite_user_post_t, rtl_to_drv_nrlite_user_post),
        }},
        {"pfd", {
            GROUP("det", 1, _isp_pfd_user_det_t, rtl_to_drv_pfd_user_det),
            GROUP("setup", 2, _isp_pfd_user_setup_t, rtl_to_drv_pfd_user_setup),
            GROUP("init", 3, _isp_pfd_user_init_t, rtl_to_drv_pfd_user_init),
            GROUP("ptn_related", 4, _isp_pfd_user_ptn_related_t, rtl_to_drv_pfd_user_ptn_related),
            GROUP("mesh_lut", 5, _isp_pfd_user_mesh_lut_t, rtl_to_drv_pfd_mesh_lut),
            GROUP("mesh_thr", 6, _isp_pfd_user_mesh_thr_t, rtl_to_drv_pfd_mesh_thr),
        }},
        {"raw2dnr", {
            GROUP("init", 6, _isp_raw2dnr_user_init_t, rtl_to_drv_raw2dnr_user_init),
            GROUP("setup", 1, _isp_raw2dnr_user_setup_t, rtl_to_drv_raw2dnr_user_setup),
            GROUP("mask", 2, _isp_raw2dnr_user_mask_t, rtl_to_drv_raw2dnr_user_mask),
            GROUP("fs", 3, _isp_raw2dnr_user_fs_t, rtl_to_drv_raw2dnr_user_fs),
            GROUP("hfnr", 5, _isp_raw2dnr_user_hfnr_t, rtl_to_drv_raw2dnr_user_hfnr),
            GROUP("mfnr", 4, _isp_raw2dnr_user_mfnr_t, rtl_to_drv_raw2dnr_user_mfnr),
            GROUP("np", 8, _isp_raw2dnr_user_np_t, rtl_to_drv_raw2dnr_user_np),
        }},
        {"bl_det", {
            GROUP("setup", 1, _isp_bl_det_user_setup_t, rtl_to_drv_bl_det_user_setup),
            GROUP("init", 3, _isp_bl_det_user_init_t, rtl_to_drv_bl_det_user_init),
        }},
        {"hdr", {
            GROUP("common", 1, _isp_hdr_user_common_t, rtl_to_drv_hdr_user_common),
            GROUP("noise_profile", 0, _isp_hdr_user_common_t, rtl_to_drv_hdr_noise_profile),
            GROUP("deghost", 2, _isp_hdr_user_deghost_t, rtl_to_drv_hdr_user_deghost),
            GROUP("setup", 3, _isp_hdr_user_setup_t, rtl_to_drv_hdr_user_setup),
            GROUP("exp_weight_lut_luma_mid", 0, _isp_hdr_kernel_exposure_t, rtl_to_drv_hdr_exp_weight_lut_luma_mid),
            GROUP("init", 5, _isp_hdr_user_init_t, rtl_to_drv_hdr_user_init),
            GROUP("motion", 4, _isp_hdr_user_motion_t, rtl_to_drv_hdr_user_motion),
            GROUP("kernel_fusion", 7, _isp_hdr_kernel_fusion_t, rtl_to_drv_hdr_kernel_fusion),
            GROUP("kernel_common", 6, _isp_hdr_kernel_common_t, rtl_to_drv_hdr_kernel_common),
            GROUP("kernel_exposure", 8, _isp_hdr_kernel_exposure_t, rtl_to_drv_hdr_kernel_exposure),
            GROUP("exp_weight_lut_luma_low_high", 0, _isp_hdr_kernel_exposure_t, rtl_to_drv_hdr_exp_weight_lut_luma_low_high),
        }},
    };
    return table;
}

#define FRAME(block) "cfgs/f%d/rtl_" block "_p%d.json"
#define CHANNEL(block) "cfgs/f%d/rtl_" block "_p%d_chn%d.json"
#define REGISTER(mod) &qv_isp_module_##mod##_json_register
#define SYNC enable_update::in_sync
#define TRIGGER enable_update::in_trigger

const std::vector<module_info> &module_rows() {
    using k = file_kind;
    static const std::vector<module_info> rows = {
        // module        block       file                        kind            registration              bypass enable where  grid   converters in the loader's order
        {"ifa",          "ifa",      FRAME("ifa"),               k::per_frame,   REGISTER(ifa),            35, 27, SYNC,    false, {"setup", "crop"}},
        {"bl_det",       "bl_det",   CHANNEL("bl_det"),          k::per_channel, REGISTER(bl_det),         33, 28, SYNC,    false, {"setup", "init"}},
        {"blc",          "blc",      CHANNEL("blc"),             k::per_channel, REGISTER(blc),             3, 22, SYNC,    false, {"lin", "common", "dither", "setup", "init", "kernel_gbl", "kernel_sbl", "kernel_ctrl"}},
        {"lin",          "blc",      FRAME("blc"),               k::per_frame,   REGISTER(lin),             3, 22, SYNC,    false, {"lin"}},
        {"hdr",          "hdr",      FRAME("hdr"),               k::per_frame,   REGISTER(hdr),             0,  2, SYNC,    false, {"common", "noise_profile", "deghost", "setup", "exp_weight_lut_luma_mid", "init", "motion", "kernel_fusion", "kernel_common", "kernel_exposure", "exp_weight_lut_luma_low_high"}},
        {"dpc",          "dpc",      CHANNEL("dpc"),             k::per_channel, REGISTER(dpc),             4,  1, SYNC,    true,  {"calc_dp_strength", "setup", "top_control", "calc_noise", "calc_wb_gain", "calc_quick_det", "calc_dp_correct", "calc_color_limit", "init"}},
        {"raw2dnr",      "raw2dnr",  FRAME("raw2dnr"),           k::per_frame,   REGISTER(raw2dnr),         5,  4, SYNC,    false, {"init", "setup", "mask", "fs", "hfnr", "mfnr", "np"}},
        {"lsc",          "lsc",      FRAME("lsc"),               k::per_frame,   REGISTER(lsc),             6,  7, SYNC,    false, {"setup", "coord", "mesh"}},
        {"wbc",          "wbc",      FRAME("wbc"),               k::per_frame,   REGISTER(wbc),            11,  5, SYNC,    false, {"ctrl", "setup", "init"}},
        {"ae_stat",      "ae_stat",  FRAME("ae_stat"),           k::per_frame,   REGISTER(ae_stat),        30,  8, TRIGGER, false, {"init", "aes_adj", "aes_calc"}},
        {"awb_stat",     "awb_stat", FRAME("awb_stat"),          k::per_frame,   REGISTER(awb_stat),       32, 10, SYNC,    false, {"init", "awbs_adj", "awbs_calc_grid"}},
        {"af_stat",      "af_stat",  FRAME("af_stat"),           k::per_frame,   REGISTER(af_stat),        31,  9, SYNC,    false, {"init", "afs_setup", "afs_adj", "afs_ptn", "afs_drc", "kernel_wr_addr", "kernel_afs_setup"}},
        {"hidrc",        "hidrc",    FRAME("hidrc"),             k::per_frame,   REGISTER(hidrc),          28, 25, TRIGGER, false, {"setup", "hidrc_lut"}},
        {"hdrc",         "hdrc",     FRAME("hdrc"),              k::per_frame,   REGISTER(hdrc),           27, 24, TRIGGER, false, {"setup", "hdrc_lut", "glb_ctl"}},
        {"rltm",         "rltm",     FRAME("rltm"),              k::per_frame,   REGISTER(rltm),            7,  6, SYNC,    false, {"init", "setup", "dither", "reserved", "common", "info", "detail", "low_freq", "kernel_sync", "lut"}},
        {"demosaic",     "dem",      FRAME("dem"),               k::per_frame,   REGISTER(demosaic),        1, 12, SYNC,    false, {"init", "setup", "dem_mode", "dem_core", "wbc"}},
        {"gic",          "dem",      FRAME("dem"),               k::per_frame,   REGISTER(gic),             1, 12, SYNC,    false, {"gic"}},
        {"fcc",          "dem",      FRAME("dem"),               k::per_frame,   REGISTER(fcc),             1, 12, SYNC,    false, {"fcc"}},
        {"edge_enhance", "dem",      FRAME("dem"),               k::per_frame,   REGISTER(edge_enhance),    1, 12, SYNC,    false, {"sharpen"}},
        {"cc",           "clc",      FRAME("clc"),               k::per_frame,   REGISTER(cc),              8, 13, SYNC,    true,  {"init", "clc_setup", "clc"}},
        {"gamma",        "gamma",    FRAME("gamma"),             k::per_frame,   REGISTER(gamma),          10, 14, SYNC,    false, {"setup", "dither", "lut"}},
        {"depurple",     "pfd",      FRAME("pfd"),               k::per_frame,   REGISTER(depurple),        9, 11, SYNC,    false, {"det", "setup", "init", "ptn_related", "mesh_lut", "mesh_thr"}},
        {"dehaze",       "dehaze",   FRAME("dehaze"),            k::per_frame,   REGISTER(dehaze),         15, 15, SYNC,    true,  {"setup", "part", "ctrl"}},
        {"csc",          "csc",      FRAME("csc"),               k::per_frame,   REGISTER(csc),             2, 16, SYNC,    false, {"core", "setup", "init"}},
        {"hs2dlut",      "lce",      FRAME("lce"),               k::per_frame,   REGISTER(hs2dlut),        20, 18, SYNC,    false, {"hs2dlut"}},
        {"ccmp",         "lce",      FRAME("lce"),               k::per_frame,   REGISTER(ccmp),           22, 18, SYNC,    false, {"ccmp"}},
        {"ycproc",       "lce",      FRAME("lce"),               k::per_frame,   REGISTER(ycproc),         21, 18, SYNC,    false, {"ycproc"}},
        {"sharpen",      "lce",      FRAME("lce"),               k::per_frame,   REGISTER(sharpen),        18, 18, SYNC,    false, {"init", "setup", "basic_setting", "luma_chroma_setting", "motion_setting", "nr_coring_setting", "desat_setting"}},
        {"scm",          "lce",      FRAME("lce"),               k::per_frame,   REGISTER(scm),            19, 18, SYNC,    false, {"scm"}},
        {"y2dnr",        "y2dnr",    FRAME("y2dnr"),             k::per_frame,   REGISTER(y2dnr),          29, 26, SYNC,    false, {"init", "setup", "top_control", "debug_mode", "feature", "dpc", "sf1", "sf2", "filter_style", "luma_str", "motion", "dither"}},
        {"yuv3dnr",      "yuv3dnr",  FRAME("yuv3dnr"),           k::per_frame,   REGISTER(yuv3dnr),        13, 17, SYNC,    false, {"ctrl", "extmask", "motion", "setup", "tnr", "ysf", "csf", "cgf", "part", "dither", "init"}},
        {"ainr",         "nrlite",   "isp_nrlite_ptn_%d.json",   k::pattern,     REGISTER(ainr),           -1, -1, enable_update::none, false, {"post"}},
        {"eis_pre",      "eis_pre",  FRAME("eis_pre"),           k::per_frame,   REGISTER(eis_pre),        25, 20, SYNC,    false, {"lut", "setup", "ctrl", "init"}},
        {"eis_post",     "eis_post", FRAME("eis_post"),          k::per_frame,   REGISTER(eis_post),       26, 21, SYNC,    false, {"ctrl", "setup", "init"}},
    };
    return rows;
}
// clang-format on

}  // namespace

const std::vector<module_info> &modules() {
    return module_rows();
}

const module_info *find_module(const std::string &name) {
    for (const module_info &m : modules())
        if (name == m.name) return &m;
    return nullptr;
}

const group_info *find_group(const std::string &block, const std::string &name) {
    auto it = blocks().find(block);
    if (it == blocks().end()) return nullptr;
    for (const group_info &g : it->second)
        if (name == g.name) return &g;
    return nullptr;
}

const group_info *find_pushed_group(const std::string &block, uint32_t cmd) {
    auto it = blocks().find(block);
    if (it == blocks().end() || cmd == 0) return nullptr;
    for (const group_info &g : it->second)
        if (g.cmd == cmd) return &g;
    return nullptr;
}

std::vector<const group_info *> exported_groups(const std::string &block) {
    std::vector<const group_info *> groups;
    auto it = blocks().find(block);
    if (it == blocks().end()) return groups;
    for (const group_info &g : it->second)
        if (g.exporter) groups.push_back(&g);
    return groups;
}

const std::vector<std::string> &exporting_blocks() {
    static const std::vector<std::string> names = {"wbc", "blc",   "dpc", "lsc",  "dem",
                                                   "clc", "gamma", "csc", "hdrc", "hidrc"};
    return names;
}

std::string relative_file(const module_info &module, int frame, int partition, int channel) {
    char path[ISP_CASE_PATH_SIZE];
    switch (module.kind) {
        case file_kind::pattern:
            snprintf(path, sizeof path, module.file, partition);
            break;
        case file_kind::per_channel:
            snprintf(path, sizeof path, module.file, frame, partition, channel);
            break;
        default:
            snprintf(path, sizeof path, module.file, frame, partition);
            break;
    }
    return path;
}

}  // namespace isp_case
