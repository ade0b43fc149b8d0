/* Every register-file converter on arbitrary JSON: objects of any shape, wrong types, fractional,
 * huge and negative numbers, short arrays, deep nesting. A converter may only fill its structure
 * and report missing fields; the raw-number curve and mesh converters may also pass picojson's
 * type error on. Anything else (a crash, a sanitizer report, another exception) is a finding.
 *
 * The converters of every block whose top key the object holds run in turn on the same object,
 * as a module runs them; an object without a known top key runs one block chosen by the input's
 * size. The partition index is the input's size, low 8 bits. */
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <memory>
#include <vector>

#include "fuzz/fuzz_support.h"
#include "isp_json.h"

namespace {

enum class may_throw { no, type_error };

using runner = void (*)(picojson::object &root, uint8_t partition);

struct converter {
    const char *top_key;
    const char *name;
    runner run;
    may_throw throws;
};

/* Each structure lives alone in a heap block of its exact size, so a write past its end reaches
 * a redzone. */
template <typename T, int (*convert)(picojson::object &, T *, uint8_t)>
void run(picojson::object &root, uint8_t partition) {
    std::unique_ptr<T> out(new T());
    convert(root, out.get(), partition);
}

/* The partition sizes of the colour correction block are arrays the module provides, one
 * element per partition of the grid: here the smallest grid that holds the partition. */
void run_clc_init(picojson::object &root, uint8_t partition) {
    std::unique_ptr<_isp_clc_user_init_t> out(new _isp_clc_user_init_t());
    std::vector<uint16_t> sizes_h(partition + 1u), sizes_v(partition + 1u);
    out->part_size_h = sizes_h.data();
    out->part_size_v = sizes_v.data();
    rtl_to_drv_clc_user_init(root, out.get(), partition);
}

#define CONVERTER(block, name, type) \
    { "isp_" #block, #name, run<type, name>, may_throw::no }
#define RAW_CONVERTER(block, name, type) \
    { "isp_" #block, #name, run<type, name>, may_throw::type_error }

// clang-format off
const converter converters[] = {
    CONVERTER(wbc, rtl_to_drv_wbc_user_ctrl, _isp_wbc_user_ctrl_t),
    CONVERTER(wbc, rtl_to_drv_wbc_user_setup, _isp_wbc_user_setup_t),
    CONVERTER(wbc, rtl_to_drv_wbc_user_init, _isp_wbc_user_init_t),
    CONVERTER(blc, rtl_to_drv_blc_user_lin, _isp_blc_user_lin_t),
    CONVERTER(blc, rtl_to_drv_blc_user_common, _isp_blc_user_common_t),
    CONVERTER(blc, rtl_to_drv_blc_user_dither, _isp_blc_user_dither_t),
    CONVERTER(blc, rtl_to_drv_blc_user_setup, _isp_blc_user_setup_t),
    CONVERTER(blc, rtl_to_drv_blc_user_init, _isp_blc_user_init_t),
    CONVERTER(blc, rtl_to_drv_blc_kernel_gbl, _isp_blc_kernel_gbl_t),
    CONVERTER(blc, rtl_to_drv_blc_kernel_sbl, _isp_blc_kernel_sbl_t),
    CONVERTER(blc, rtl_to_drv_blc_kernel_ctrl, _isp_blc_kernel_ctrl_t),
    CONVERTER(blc, rtl_to_drv_blc_user_gbl, _isp_blc_user_gbl_t),
    CONVERTER(blc, rtl_to_drv_blc_user_sbl, _isp_blc_user_sbl_t),
    CONVERTER(dpc, rtl_to_drv_dpc_user_calc_dp_strength, _isp_dpc_user_calc_dp_strength_t),
    CONVERTER(dpc, rtl_to_drv_dpc_user_setup, _isp_dpc_user_setup_t),
    CONVERTER(dpc, rtl_to_drv_dpc_user_calc_top_control, _isp_dpc_user_calc_top_control_t),
    CONVERTER(dpc, rtl_to_drv_dpc_user_calc_noise, _isp_dpc_user_calc_noise_t),
    CONVERTER(dpc, rtl_to_drv_dpc_user_calc_wb_gain, _isp_dpc_user_calc_wb_gain_t),
    CONVERTER(dpc, rtl_to_drv_dpc_user_calc_quick_det, _isp_dpc_user_calc_quick_det_t),
    CONVERTER(dpc, rtl_to_drv_dpc_user_calc_dp_correct, _isp_dpc_user_calc_dp_correct_t),
    CONVERTER(dpc, rtl_to_drv_dpc_user_calc_dp_correct, _isp_dpc_user_calc_partition_t),
    CONVERTER(dpc, rtl_to_drv_dpc_user_calc_color_limit, _isp_dpc_user_calc_color_limit_t),
    CONVERTER(dpc, rtl_to_drv_dpc_user_init, _isp_dpc_user_init_t),
    CONVERTER(lsc, rtl_to_drv_lsc_user_setup, _isp_lsc_user_setup_t),
    CONVERTER(lsc, rtl_to_drv_lsc_user_coord, _isp_lsc_user_coord_t),
    RAW_CONVERTER(lsc, rtl_to_drv_lsc_user_mesh, _isp_lsc_user_mesh_t),
    CONVERTER(dem, rtl_to_drv_dem_user_init, _isp_dem_user_init_t),
    CONVERTER(dem, rtl_to_drv_dem_user_setup, _isp_dem_user_setup_t),
    CONVERTER(dem, rtl_to_drv_dem_user_dem_mode, _isp_dem_user_dem_mode_t),
    CONVERTER(dem, rtl_to_drv_dem_user_dem_core, _isp_dem_user_dem_core_t),
    CONVERTER(dem, rtl_to_drv_dem_user_wbc, _isp_dem_user_wbc_t),
    CONVERTER(dem, rtl_to_drv_dem_user_fcc, _isp_dem_user_fcc_t),
    CONVERTER(dem, rtl_to_drv_dem_user_gic, _isp_dem_user_gic_t),
    CONVERTER(dem, rtl_to_drv_dem_user_sharpen, _isp_dem_user_sharpen_t),
    CONVERTER(dem, rtl_to_drv_dem_kernel_mem_ctrl, _isp_dem_kernel_mem_ctrl_t),
    {"isp_clc", "rtl_to_drv_clc_user_init", run_clc_init, may_throw::no},
    CONVERTER(clc, rtl_to_drv_clc_user_clc_setup, _isp_clc_user_clc_setup_t),
    CONVERTER(clc, rtl_to_drv_clc_user_clc, _isp_clc_user_clc_t),
    CONVERTER(gamma, rtl_to_drv_gamma_user_setup, _isp_gamma_user_setup_t),
    CONVERTER(gamma, rtl_to_drv_gamma_user_dither, _isp_gamma_user_dither_t),
    CONVERTER(gamma, rtl_to_drv_gamma_user_lut, _isp_gamma_user_lut_t),
    CONVERTER(csc, rtl_to_drv_csc_user_core, _isp_csc_user_core_t),
    CONVERTER(csc, rtl_to_drv_csc_user_setup, _isp_csc_user_setup_t),
    CONVERTER(csc, rtl_to_drv_csc_user_init, _isp_csc_user_init_t),
    CONVERTER(hdrc, rtl_to_drv_hdrc_user_setup, _isp_hdrc_user_setup_t),
    RAW_CONVERTER(hdrc, rtl_to_drv_hdrc_user_hdrc_lut, _isp_hdrc_user_hdrc_lut_t),
    CONVERTER(hdrc, rtl_to_drv_hdrc_glb_ctl, _isp_hdrc_user_glb_ctrl_t),
    CONVERTER(hidrc, rtl_to_drv_hidrc_user_setup, _isp_hidrc_user_setup_t),
    RAW_CONVERTER(hidrc, rtl_to_drv_hidrc_user_hidrc_lut, _isp_hidrc_user_hidrc_lut_t),
    CONVERTER(hdr, rtl_to_drv_hdr_user_common, _isp_hdr_user_common_t),
    CONVERTER(hdr, rtl_to_drv_hdr_noise_profile, _isp_hdr_user_common_t),
    CONVERTER(hdr, rtl_to_drv_hdr_user_deghost, _isp_hdr_user_deghost_t),
    CONVERTER(hdr, rtl_to_drv_hdr_user_setup, _isp_hdr_user_setup_t),
    CONVERTER(hdr, rtl_to_drv_hdr_exp_weight_lut_luma_mid, _isp_hdr_kernel_exposure_t),
    CONVERTER(hdr, rtl_to_drv_hdr_user_init, _isp_hdr_user_init_t),
    CONVERTER(hdr, rtl_to_drv_hdr_user_motion, _isp_hdr_user_motion_t),
    CONVERTER(hdr, rtl_to_drv_hdr_kernel_fusion, _isp_hdr_kernel_fusion_t),
    CONVERTER(hdr, rtl_to_drv_hdr_kernel_common, _isp_hdr_kernel_common_t),
    CONVERTER(hdr, rtl_to_drv_hdr_kernel_exposure, _isp_hdr_kernel_exposure_t),
    CONVERTER(hdr, rtl_to_drv_hdr_exp_weight_lut_luma_low_high, _isp_hdr_kernel_exposure_t),
    CONVERTER(raw2dnr, rtl_to_drv_raw2dnr_user_init, _isp_raw2dnr_user_init_t),
    CONVERTER(raw2dnr, rtl_to_drv_raw2dnr_user_setup, _isp_raw2dnr_user_setup_t),
    CONVERTER(raw2dnr, rtl_to_drv_raw2dnr_user_mask, _isp_raw2dnr_user_mask_t),
    CONVERTER(raw2dnr, rtl_to_drv_raw2dnr_user_fs, _isp_raw2dnr_user_fs_t),
    CONVERTER(raw2dnr, rtl_to_drv_raw2dnr_user_hfnr, _isp_raw2dnr_user_hfnr_t),
    CONVERTER(raw2dnr, rtl_to_drv_raw2dnr_user_mfnr, _isp_raw2dnr_user_mfnr_t),
    CONVERTER(raw2dnr, rtl_to_drv_raw2dnr_user_np, _isp_raw2dnr_user_np_t),
    CONVERTER(lce, rtl_to_drv_lce_user_hs2dlut, _isp_lce_user_hs2dlut_t),
    CONVERTER(lce, rtl_to_drv_lce_user_ccmp, _isp_lce_user_ccmp_t),
    CONVERTER(lce, rtl_to_drv_lce_user_ycproc, _isp_lce_user_ycproc_t),
    CONVERTER(lce, rtl_to_drv_lce_user_scm, _isp_lce_user_scm_t),
    CONVERTER(lce, rtl_to_drv_lce_user_init, _isp_lce_user_init_t),
    CONVERTER(lce, rtl_to_drv_lce_user_setup, _isp_lce_user_setup_t),
    CONVERTER(lce, rtl_to_drv_lce_user_basic_setting, _isp_lce_user_basic_setting_t),
    CONVERTER(lce, rtl_to_drv_lce_user_luma_chroma_setting, _isp_lce_user_luma_chroma_setting_t),
    CONVERTER(lce, rtl_to_drv_lce_user_motion_setting, _isp_lce_user_motion_setting_t),
    CONVERTER(lce, rtl_to_drv_lce_user_nr_coring_setting, _isp_lce_user_nr_coring_setting_t),
    CONVERTER(lce, rtl_to_drv_lce_user_desat_setting, _isp_lce_user_desat_setting_t),
    CONVERTER(rltm, rtl_to_drv_rltm_user_init, _isp_rltm_user_init_t),
    CONVERTER(rltm, rtl_to_drv_rltm_user_setup, _isp_rltm_user_setup_t),
    CONVERTER(rltm, rtl_to_drv_rltm_user_dither, _isp_rltm_user_dither_t),
    CONVERTER(rltm, rtl_to_drv_rltm_user_reserved, _isp_rltm_user_reserved_t),
    CONVERTER(rltm, rtl_to_drv_rltm_user_common, _isp_rltm_user_common_t),
    CONVERTER(rltm, rtl_to_drv_rltm_user_info, _isp_rltm_user_info_t),
    CONVERTER(rltm, rtl_to_drv_rltm_user_detail, _isp_rltm_user_detail_t),
    CONVERTER(rltm, rtl_to_drv_rltm_user_low_freq, _isp_rltm_user_low_freq_t),
    CONVERTER(rltm, rtl_to_drv_rltm_kernel_sync, _isp_rltm_kernel_sync_t),
    CONVERTER(rltm, rtl_to_drv_rltm_user_lut, _isp_rltm_user_lut_t),
    CONVERTER(dehaze, rtl_to_drv_dehaze_user_setup, _isp_dehaze_user_setup_t),
    CONVERTER(dehaze, rtl_to_drv_dehaze_user_part, _isp_dehaze_user_part_t),
    CONVERTER(dehaze, rtl_to_drv_dehaze_user_ctrl, _isp_dehaze_user_ctrl_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_init, _isp_y2dnr_user_init_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_setup, _isp_y2dnr_user_setup_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_top_control, _isp_y2dnr_user_top_control_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_debug_mode, _isp_y2dnr_user_debug_mode_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_feature, _isp_y2dnr_user_feature_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_dpc, _isp_y2dnr_user_dpc_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_sf1, _isp_y2dnr_user_sf1_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_sf2, _isp_y2dnr_user_sf2_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_filter_style, _isp_y2dnr_user_filter_style_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_luma_str, _isp_y2dnr_user_luma_str_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_motion, _isp_y2dnr_user_motion_t),
    CONVERTER(y2dnr, rtl_to_drv_y2dnr_user_dither, _isp_y2dnr_user_dither_t),
    CONVERTER(yuv3dnr, rtl_to_drv_yuv3dnr_user_ctrl, _isp_yuv3dnr_user_ctrl_t),
    CONVERTER(yuv3dnr, rtl_to_drv_yuv3dnr_user_extmask, _isp_yuv3dnr_user_extmask_t),
    CONVERTER(yuv3dnr, rtl_to_drv_yuv3dnr_user_motion, _isp_yuv3dnr_user_motion_t),
    CONVERTER(yuv3dnr, rtl_to_drv_yuv3dnr_user_setup, _isp_yuv3dnr_user_setup_t),
    CONVERTER(yuv3dnr, rtl_to_drv_yuv3dnr_user_tnr, _isp_yuv3dnr_user_tnr_t),
    CONVERTER(yuv3dnr, rtl_to_drv_yuv3dnr_user_ysf, _isp_yuv3dnr_user_ysf_t),
    CONVERTER(yuv3dnr, rtl_to_drv_yuv3dnr_user_csf, _isp_yuv3dnr_user_csf_t),
    CONVERTER(yuv3dnr, rtl_to_drv_yuv3dnr_user_cgf, _isp_yuv3dnr_user_cgf_t),
    CONVERTER(yuv3dnr, rtl_to_drv_yuv3dnr_user_part, _isp_yuv3dnr_user_part_t),
    CONVERTER(yuv3dnr, rtl_to_drv_yuv3dnr_user_dither, _isp_yuv3dnr_user_dither_t),
    CONVERTER(yuv3dnr, rtl_to_drv_yuv3dnr_user_init, _isp_yuv3dnr_user_init_t),
    CONVERTER(pfd, rtl_to_drv_pfd_user_det, _isp_pfd_user_det_t),
    CONVERTER(pfd, rtl_to_drv_pfd_user_setup, _isp_pfd_user_setup_t),
    CONVERTER(pfd, rtl_to_drv_pfd_user_init, _isp_pfd_user_init_t),
    CONVERTER(pfd, rtl_to_drv_pfd_user_ptn_related, _isp_pfd_user_ptn_related_t),
    CONVERTER(pfd, rtl_to_drv_pfd_mesh_lut, _isp_pfd_user_mesh_lut_t),
    CONVERTER(pfd, rtl_to_drv_pfd_mesh_thr, _isp_pfd_user_mesh_thr_t),
    CONVERTER(nrlite, rtl_to_drv_nrlite_user_post, _isp_nrlite_user_post_t),
    CONVERTER(ae_stat, rtl_to_drv_ae_stat_user_init, _isp_ae_stat_user_init_t),
    CONVERTER(ae_stat, rtl_to_drv_ae_stat_user_aes_adj, _isp_ae_stat_user_aes_adj_t),
    CONVERTER(ae_stat, rtl_to_drv_ae_stat_user_aes_calc, _isp_ae_stat_user_aes_calc_t),
    CONVERTER(awb_stat, rtl_to_drv_awb_stat_user_init, _isp_awb_stat_user_init_t),
    CONVERTER(awb_stat, rtl_to_drv_awb_stat_user_awbs_adj, _isp_awb_stat_user_awbs_adj_t),
    CONVERTER(awb_stat, rtl_to_drv_awb_stat_user_awbs_calc_grid, _isp_awb_stat_user_awbs_calc_grid_t),
    CONVERTER(af_stat, rtl_to_drv_af_stat_user_init, _isp_af_stat_user_init_t),
    CONVERTER(af_stat, rtl_to_drv_af_stat_user_afs_setup, _isp_af_stat_user_afs_setup_t),
    CONVERTER(af_stat, rtl_to_drv_af_stat_user_afs_adj, _isp_af_stat_user_afs_adj_t),
    CONVERTER(af_stat, rtl_to_drv_af_stat_user_afs_ptn, _isp_af_stat_user_afs_ptn_t),
    CONVERTER(af_stat, rtl_to_drv_af_stat_user_afs_drc, _isp_af_stat_user_afs_drc_t),
    CONVERTER(af_stat, rtl_to_drv_af_stat_kernel_wr_addr, _isp_af_stat_kernel_wr_addr_t),
    CONVERTER(af_stat, rtl_to_drv_af_stat_kernel_afs_setup, _isp_af_stat_kernel_afs_setup_t),
    CONVERTER(bl_det, rtl_to_drv_bl_det_user_setup, _isp_bl_det_user_setup_t),
    CONVERTER(bl_det, rtl_to_drv_bl_det_user_init, _isp_bl_det_user_init_t),
    CONVERTER(eis_pre, rtl_to_drv_eis_pre_user_lut, _isp_eis_pre_user_lut_t),
    CONVERTER(eis_pre, rtl_to_drv_eis_pre_user_setup, _isp_eis_pre_user_setup_t),
    CONVERTER(eis_pre, rtl_to_drv_eis_pre_user_ctrl, _isp_eis_pre_user_ctrl_t),
    CONVERTER(eis_pre, rtl_to_drv_eis_pre_user_init, _isp_eis_pre_user_init_t),
    CONVERTER(eis_post, rtl_to_drv_eis_post_user_ctrl, _isp_eis_post_user_ctrl_t),
    CONVERTER(eis_post, rtl_to_drv_eis_post_user_setup, _isp_eis_post_user_setup_t),
    CONVERTER(eis_post, rtl_to_drv_eis_post_user_init, _isp_eis_post_user_init_t),
    CONVERTER(ifa, rtl_to_drv_ifa_user_setup, _isp_ifa_user_setup_t),
    CONVERTER(ifa, rtl_to_drv_ifa_user_crop, _isp_ifa_user_crop_t),
};
// clang-format on

const size_t converter_count = sizeof converters / sizeof converters[0];

void run_one(const converter &c, picojson::object &root, uint8_t partition) {
    try {
        c.run(root, partition);
    } catch (const std::exception &error) {
        if (c.throws == may_throw::type_error && isp_fuzz::is_type_error(error)) return;
        isp_fuzz::unexpected(c.name, error.what());
    } catch (...) {
        isp_fuzz::unexpected(c.name, "not a std::exception");
    }
}

/* Runs the converters of the block at position first (all rows with its top key). */
void run_block(size_t first, picojson::object &root, uint8_t partition) {
    const char *top = converters[first].top_key;
    for (size_t i = first; i < converter_count && strcmp(converters[i].top_key, top) == 0; ++i)
        run_one(converters[i], root, partition);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    picojson::value document;
    if (!isp_fuzz::parse(data, size, document) || !document.is<picojson::object>()) return 0;
    picojson::object &root  = document.get<picojson::object>();
    const uint8_t partition = static_cast<uint8_t>(size);
    /* Block starts, and which of them the object names; looked up before any converter
     * inserts its null entries. */
    std::vector<size_t> blocks, named;
    for (size_t i = 0; i < converter_count; ++i) {
        if (i > 0 && strcmp(converters[i].top_key, converters[i - 1].top_key) == 0) continue;
        blocks.push_back(i);
        if (root.count(converters[i].top_key)) named.push_back(i);
    }
    if (named.empty()) named.push_back(blocks[size % blocks.size()]);
    for (size_t first : named) run_block(first, root, partition);
    return 0;
}
