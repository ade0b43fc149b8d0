/* Converters and exporters of the defect pixel correction block. */
#include "blocks/dpc.h"

#include <stddef.h>

#include "convert/common/cmodel_writer.h"
#include "convert/common/field_reader.h"

namespace {

/* Three margins in two registers: "val0" and "val1" in the first, "val2" alone in the second;
 * "val1" is read before "val0". */
void read_margins(const isp::field_reader &f, const char *reg01, const char *reg2,
                  uint16_t *margin) {
    margin[1] = f.read(reg01, "val1", "u8.6");
    margin[0] = f.read(reg01, "val0", "u8.6");
    margin[2] = f.read(reg2, "val2", "u8.6");
}

}  // namespace

int rtl_to_drv_dpc_user_calc_dp_strength(picojson::object &root,
                                         _isp_dpc_user_calc_dp_strength_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_dpc");
    out->calc_limit_enable = f.read("bpc_ctrl", "calc_limit_enable", "u1.0");
    out->dp_det_mode       = f.read("bpc_ctrl", "bp_det_mode", "u1.0");
    out->static_enable     = f.read("bpc_ctrl", "static_enable", "u1.0");
    out->dp_det_th_ratio   = f.read("bp_det", "th_ratio", "u0.6");
    out->dp_det_m2         = f.read("bp_det", "m2", "u4.8");
    out->dp_det_m1         = f.read("bp_det", "m1", "u4.4");
    return 0;
}

int rtl_to_drv_dpc_user_setup(picojson::object &root, _isp_dpc_user_setup_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_dpc");
    /* "val1" of "bp_offset" is the input offset and "val0" the output offset. */
    out->offset_in            = f.read("bp_offset", "val1", "u8.6");
    out->offset_out           = f.read("bp_offset", "val0", "u8.6");
    out->dp_cor_ch_mode       = f.read("bp_cor", "ch_mode", "u1");
    out->dp_cor_clip_ratio    = f.read("bp_cor", "clip_ratio", "u0.6");
    out->dp_cor_dir_wt_r2     = f.read("bp_cor", "dir_wt_r2", "u1.4");
    out->color_limit_ratio[2] = f.read("color_limit_ratio", "val2", "u1.7");
    out->color_limit_ratio[1] = f.read("color_limit_ratio", "val1", "u1.7");
    out->color_limit_ratio[0] = f.read("color_limit_ratio", "val0", "u1.7");
    return 0;
}

int rtl_to_drv_dpc_user_calc_top_control(picojson::object &root,
                                         _isp_dpc_user_calc_top_control_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_dpc");
    out->quick_det_enable = f.read("bpc_ctrl", "quick_det_enable", "u1.0");
    return 0;
}

int rtl_to_drv_dpc_user_calc_noise(picojson::object &root, _isp_dpc_user_calc_noise_t *out,
                                   uint8_t) {
    const isp::field_reader f(root, "isp_dpc");
    /* Each element of the group carries an even and an odd entry, the odd one read first. */
    for (size_t k = 0; k < DPC_NOISE_PAIRS; ++k) {
        out->noise_lut[2 * k + 1] = f.read("noise_lut_grp", k, "noise_lut_odd", "val", "u8.6");
        out->noise_lut[2 * k]     = f.read("noise_lut_grp", k, "noise_lut_even", "val", "u8.6");
    }
    out->noise_lut[DPC_NOISE_LUT - 1] = f.read("noise_lut_lst", "val", "u8.6");
    return 0;
}

int rtl_to_drv_dpc_user_calc_wb_gain(picojson::object &root, _isp_dpc_user_calc_wb_gain_t *out,
                                     uint8_t) {
    const isp::field_reader f(root, "isp_dpc");
    out->wb_gain[1]     = f.read("wb_gain", "val1", "u4.4");
    out->wb_gain[0]     = f.read("wb_gain", "val0", "u4.4");
    out->inv_wb_gain[1] = f.read("inv_wb_gain", "val1", "u1.7");
    out->inv_wb_gain[0] = f.read("inv_wb_gain", "val0", "u1.7");
    return 0;
}

int rtl_to_drv_dpc_user_calc_quick_det(picojson::object &root, _isp_dpc_user_calc_quick_det_t *out,
                                       uint8_t) {
    const isp::field_reader f(root, "isp_dpc");
    out->quick_det_th_offset = f.read("quick_det_th", "offset", "u8.6");
    out->quick_det_th_max    = f.read("quick_det_th", "max", "u8.6");
    out->quick_det_th_slope  = f.read("quick_det_th_slope", "val", "u0.4");
    return 0;
}

int rtl_to_drv_dpc_user_calc_dp_correct(picojson::object &root,
                                        _isp_dpc_user_calc_dp_correct_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_dpc");
    out->dp_cor_m5 = f.read("bp_cor_m", "val5", "u4.4");
    out->dp_cor_m4 = f.read("bp_cor_m", "val4", "u1.7");
    out->dp_cor_m3 = f.read("bp_cor_m", "val3", "u1.7");
    return 0;
}

int rtl_to_drv_dpc_user_calc_dp_correct(picojson::object &root, _isp_dpc_user_calc_partition_t *out,
                                        uint8_t partition) {
    const isp::field_reader f(root, "isp_dpc");
    out->sbpc_pos_base_h_addr[partition] = f.read("sbpc_pos_base_h", "addr", "u1");
    out->sbpc_pos_base_l_addr[partition] = f.read("sbpc_pos_base_l", "addr", "u32");
    out->sbpc_pos_length[partition]      = f.read("sbpc_pos", "length", "u32");
    return 0;
}

int rtl_to_drv_dpc_user_calc_color_limit(picojson::object &root,
                                         _isp_dpc_user_calc_color_limit_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_dpc");
    read_margins(f, "margin_u0", "margin_u1", out->margin_u);
    read_margins(f, "margin_l0", "margin_l1", out->margin_l);
    return 0;
}

int rtl_to_drv_dpc_user_init(picojson::object &root, _isp_dpc_user_init_t *out, uint8_t partition) {
    const isp::field_reader f(root, "isp_dpc");
    out->pic_size_h[partition] = f.read("pic_size", "h", "u16");
    out->pic_size_v[partition] = f.read("pic_size", "v", "u16");
    out->pic_blank_h           = f.read("pic_blank", "h", "u16");
    out->hdr_dgst_en           = f.read("bpc_hw_cfg", "hdr_dgst_en", "u1.0");
    out->wdma_err_ctrl         = f.read("bpc_hw_cfg", "wdma_err_ctrl", "u1");
    out->rdma_err_ctrl         = f.read("bpc_hw_cfg", "rdma_err_ctrl", "u1");
    out->sbpc_table_type       = f.read("bpc_hw_cfg", "sbpc_table_type", "u1.0");
    out->bayer_pat             = f.read("bpc_hw_cfg", "bayer_pat", "u2.0");
    out->dma_burst_len_rd      = f.read("dma_burst_len", "rd", "u2");
    out->sbpc_load             = f.read("bpc_osd_num", "sbpc_load", "u6");
    out->dummy_wr_val          = f.read("dummy_wr", "val", "u32");
    out->sbpc_qos_thr          = f.read("qos_ctrl", "sbpc_qos_thr", "u4");
    out->sbpc_qos_low          = f.read("qos_ctrl", "sbpc_qos_low", "u4");
    out->sbpc_qos_high         = f.read("qos_ctrl", "sbpc_qos_high", "u4");
    return 0;
}

int drv_to_cmodel_dpc_top_control(_isp_dpc_user_calc_top_control_t *in, picojson::object &out,
                                  uint8_t) {
    isp::cmodel_writer(out).value("quick_det_enable", in->quick_det_enable, "u1.0");
    return 0;
}

int drv_to_cmodel_dpc_user_calc_quick_det(_isp_dpc_user_calc_quick_det_t *in, picojson::object &out,
                                          uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("quick_det_th_offset", in->quick_det_th_offset, "u8.6");
    w.value("quick_det_th_max", in->quick_det_th_max, "u8.6");
    w.value("quick_det_th_slope", in->quick_det_th_slope, "u0.4");
    return 0;
}

int drv_to_cmodel_dpc_user_calc_dp_correct(_isp_dpc_user_calc_dp_correct_t *in,
                                           picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("dp_cor_m5", in->dp_cor_m5, "u4.4");
    w.value("dp_cor_m4", in->dp_cor_m4, "u1.7");
    w.value("dp_cor_m3", in->dp_cor_m3, "u1.7");
    return 0;
}

int drv_to_cmodel_dpc_user_calc_dp_strength(_isp_dpc_user_calc_dp_strength_t *in,
                                            picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("calc_limit_enable", in->calc_limit_enable, "u1.0");
    w.value("dp_det_mode", in->dp_det_mode, "u1.0");
    w.value("static_enable", in->static_enable, "u1.0");
    w.value("dp_det_th_ratio", in->dp_det_th_ratio, "u0.6");
    w.value("dp_det_m2", in->dp_det_m2, "u4.8");
    w.value("dp_det_m1", in->dp_det_m1, "u4.4");
    return 0;
}

int drv_to_cmodel_dpc_user_setup(_isp_dpc_user_setup_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("offset_in", in->offset_in, "u8.6");
    w.value("offset_out", in->offset_out, "u8.6");
    w.value("dp_cor_ch_mode", in->dp_cor_ch_mode, "u1");
    w.value("dp_cor_clip_ratio", in->dp_cor_clip_ratio, "u0.6");
    w.value("dp_cor_dir_wt_r2", in->dp_cor_dir_wt_r2, "u1.4");
    w.array("color_limit_ratio", in->color_limit_ratio, "u1.7");
    return 0;
}

int drv_to_cmodel_dpc_user_calc_noise(_isp_dpc_user_calc_noise_t *in, picojson::object &out,
                                      uint8_t) {
    isp::cmodel_writer(out).array("noise_lut", in->noise_lut, "u8.6");
    return 0;
}

int drv_to_cmodel_dpc_user_calc_wb_gain(_isp_dpc_user_calc_wb_gain_t *in, picojson::object &out,
                                        uint8_t) {
    const isp::cmodel_writer w(out);
    w.array("wb_gain", in->wb_gain, "u4.4");
    w.array("inv_wb_gain", in->inv_wb_gain, "u1.7");
    return 0;
}

int drv_to_cmodel_dpc_user_calc_color_limit(_isp_dpc_user_calc_color_limit_t *in,
                                            picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.array("margin_u", in->margin_u, "u8.6");
    w.array("margin_l", in->margin_l, "u8.6");
    return 0;
}

#define ISP_DEF_FILE "convert/dpc/dpc.def"
#define ISP_DEF_BLOCK dpc
#include "convert/common/register_map_build.h"
