/* C-model exporters of the demosaic block; the init and memory-control groups have none. */
#include "blocks/dem.h"

#include "convert/common/cmodel_writer.h"

int drv_to_cmodel_dem_user_setup(_isp_dem_user_setup_t *in, picojson::object &out,
                                 uint8_t partition) {
    const isp::cmodel_writer w(out);
    const size_t p                    = partition;
    const _isp_dem_wb_stat_roi_t &roi = in->wb_stat_roi[p];
    w.value("wb_stat_enable", in->wb_stat_enable, "u1.0");
    w.array("wb_stat_roi", {roi.top, roi.bottom, roi.left, roi.right}, "u14");
    w.array("wb_stat_mesh_block_start", in->wb_stat_mesh_block_start[p], "u3");
    w.array("wb_stat_mesh_pos_start", in->wb_stat_mesh_pos_start[p], "u14");
    w.value("wb_stat_slice_level", in->wb_stat_slice_level, "u8.4");
    w.value("wb_stat_slice_sat_tp", in->wb_stat_slice_sat_tp, "u1.0");
    w.array("wb_stat_mesh_shape", in->wb_stat_mesh_shape, "u11");
    w.value("wbc_enable", in->wbc_enable, "u1.0");
    w.array("wbc_mesh_block_start", in->wbc_mesh_block_start[p], "u4");
    w.array("wbc_mesh_phase_start", in->wbc_mesh_phase_start[p], "u0.15");
    w.array("wbc_mesh_pos_start", in->wbc_mesh_pos_start[p], "u14");
    w.array("wbc_mesh_step", in->wbc_mesh_step, "u0.14");
    w.value("gic_enable", in->gic_enable, "u1.0");
    w.value("grad_h_enable", in->grad_h_enable, "u1.0");
    w.value("gclip_level", in->gclip_level, "u0.4");
    w.value("edge_enhance_enable", in->edge_enhance_enable, "u1.0");
    w.value("edge_enhance_ghv_level", in->edge_enhance_ghv_level, "u2.4");
    w.value("edge_enhance_gpn_level", in->edge_enhance_gpn_level, "u2.4");
    w.value("edge_enhance_ghv_corner_min", in->edge_enhance_ghv_corner_min, "u0.8");
    w.value("edge_enhance_ghv_corner_slope", in->edge_enhance_ghv_corner_slope, "u2.4");
    w.value("edge_enhance_ghv_corner_offset", in->edge_enhance_ghv_corner_offset, "s0.8");
    w.value("fc_cor0_enable", in->fc_cor0_enable, "u1.0");
    w.value("offset_in", in->offset_in, "u8.4");
    w.value("offset_out", in->offset_out, "u8.4");
    w.value("bayer_pattern", in->bayer_pattern, "u2.0");
    w.value("img_size_hsize", in->img_size_hsize[p], "u14");
    w.value("img_size_vsize", in->img_size_vsize[p], "u14");
    return 0;
}

int drv_to_cmodel_dem_user_dem_mode(_isp_dem_user_dem_mode_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("pre_gamma_enable", in->pre_gamma_enable, "u1.0");
    w.value("mode", in->mode, "u4.0");
    w.value("post_gamma_enable", in->post_gamma_enable, "u1.0");
    return 0;
}

int drv_to_cmodel_dem_user_dem_core(_isp_dem_user_dem_core_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("gradf_ratio", in->gradf_ratio, "u1.4");
    w.value("grad_hh_level", in->grad_hh_level, "u2.2");
    w.array("inv_noise_lut", in->inv_noise_lut, "u4.8");
    w.value("ginterp_hf_ratio_x", in->ginterp_hf_ratio_x, "u1.5");
    w.value("ginterp_hf_ratio_pn", in->ginterp_hf_ratio_pn, "u1.5");
    w.value("ginterp_hf_ratio_hv", in->ginterp_hf_ratio_hv, "u1.5");
    return 0;
}

int drv_to_cmodel_dem_user_wbc(_isp_dem_user_wbc_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    const size_t rows = ISP_DEM_WBC_LUT_SIZE / ISP_DEM_WBC_LUT_COLS;
    w.table("wbc_gain_lut_r", in->wbc_gain_lut_r, rows, ISP_DEM_WBC_LUT_COLS, "u1.7");
    w.table("wbc_gain_lut_g", in->wbc_gain_lut_g, rows, ISP_DEM_WBC_LUT_COLS, "u1.7");
    w.table("wbc_gain_lut_b", in->wbc_gain_lut_b, rows, ISP_DEM_WBC_LUT_COLS, "u1.7");
    return 0;
}

int drv_to_cmodel_dem_user_fcc(_isp_dem_user_fcc_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("fc_cor1_limit", in->fc_cor1_limit, "u8.4");
    w.value("fc_cor1_gain_safe", in->fc_cor1_gain_safe, "u2.2");
    w.value("fc_cor1_gain", in->fc_cor1_gain, "u4.4");
    w.value("fc_cor1_th", in->fc_cor1_th, "u4.4");
    w.value("fc_cor2_inv_base_sat_level", in->fc_cor2_inv_base_sat_level, "u0.8");
    w.array("fc_cor2_ratio_limit", in->fc_cor2_ratio_limit, "u1.8");
    w.array("fc_cor_sat_lut", in->fc_cor_sat_lut, "u8.4");
    return 0;
}

int drv_to_cmodel_dem_user_gic(_isp_dem_user_gic_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.array("gic_strength_lut", in->gic_strength_lut, "u1.7");
    w.array("gic_ct", in->gic_ct, "u8.4");
    w.array("gic_limit", in->gic_limit, "u8.4");
    return 0;
}

int drv_to_cmodel_dem_user_sharpen(_isp_dem_user_sharpen_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.array("edge_enhance_level_lut", in->edge_enhance_level_lut, "u1.4");
    return 0;
}
