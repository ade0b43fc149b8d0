/* Driver structures, converters and exporters of the defect pixel correction block ("isp_dpc"):
 * dynamic detection and correction of bad pixels, and the place of the static bad-pixel table
 * that the hardware reads by DMA. The register files say "bp_" where members and C-model keys
 * say "dp_". */
#ifndef ISP_BLOCK_DPC_H
#define ISP_BLOCK_DPC_H

#include <stdint.h>

#include "isp_framework.h"

#define DPC_WB_GAINS 2     /* "val0", "val1" of "wb_gain" and "inv_wb_gain" */
#define DPC_MARGINS 3      /* colour-limit margins: two in "margin_?0", one in "margin_?1" */
#define DPC_NOISE_PAIRS 4  /* elements of "noise_lut_grp": an even and an odd entry each */
#define DPC_NOISE_LUT 9    /* the pairs, then "noise_lut_lst" */
#define DPC_LIMIT_RATIOS 3 /* "color_limit_ratio"."val0".."val2" */

typedef struct _isp_dpc_user_calc_dp_strength_t {
    uint8_t calc_limit_enable; /* "bpc_ctrl"."calc_limit_enable", u1.0 */
    uint8_t dp_det_mode;       /* "bpc_ctrl"."bp_det_mode", u1.0 */
    uint8_t static_enable;     /* "bpc_ctrl"."static_enable", u1.0 */
    uint8_t dp_det_th_ratio;   /* "bp_det"."th_ratio", u0.6 */
    uint16_t dp_det_m2;        /* "bp_det"."m2", u4.8 */
    uint8_t dp_det_m1;         /* "bp_det"."m1", u4.4 */
} _isp_dpc_user_calc_dp_strength_t;

typedef struct _isp_dpc_user_setup_t {
    uint16_t offset_in;                          /* "bp_offset"."val1", u8.6 */
    uint16_t offset_out;                         /* "bp_offset"."val0", u8.6 */
    uint8_t dp_cor_ch_mode;                      /* "bp_cor"."ch_mode", u1 */
    uint8_t dp_cor_clip_ratio;                   /* "bp_cor"."clip_ratio", u0.6 */
    uint8_t dp_cor_dir_wt_r2;                    /* "bp_cor"."dir_wt_r2", u1.4 */
    uint8_t color_limit_ratio[DPC_LIMIT_RATIOS]; /* [k]: "color_limit_ratio"."val<k>", u1.7 */
} _isp_dpc_user_setup_t;

/* Kept by the module: its contents have no setup command of their own. */
typedef struct _isp_dpc_user_calc_top_control_t {
    uint8_t quick_det_enable; /* "bpc_ctrl"."quick_det_enable", u1.0 */
} _isp_dpc_user_calc_top_control_t;

typedef struct _isp_dpc_user_calc_noise_t {
    /* [2k]: "noise_lut_grp"[k]."noise_lut_even"."val", [2k + 1]: the same element's
     * "noise_lut_odd"."val", [8]: "noise_lut_lst"."val"; u8.6 */
    uint16_t noise_lut[DPC_NOISE_LUT];
} _isp_dpc_user_calc_noise_t;

typedef struct _isp_dpc_user_calc_wb_gain_t {
    uint8_t wb_gain[DPC_WB_GAINS];     /* [k]: "wb_gain"."val<k>", u4.4: 0x10 = 1.0 */
    uint8_t inv_wb_gain[DPC_WB_GAINS]; /* [k]: "inv_wb_gain"."val<k>", u1.7: 0x80 = 1.0 */
} _isp_dpc_user_calc_wb_gain_t;

typedef struct _isp_dpc_user_calc_quick_det_t {
    uint16_t quick_det_th_offset; /* "quick_det_th"."offset", u8.6 */
    uint16_t quick_det_th_max;    /* "quick_det_th"."max", u8.6 */
    uint8_t quick_det_th_slope;   /* "quick_det_th_slope"."val", u0.4 */
} _isp_dpc_user_calc_quick_det_t;

typedef struct _isp_dpc_user_calc_dp_correct_t {
    uint8_t dp_cor_m5; /* "bp_cor_m"."val5", u4.4 */
    uint8_t dp_cor_m4; /* "bp_cor_m"."val4", u1.7 */
    uint8_t dp_cor_m3; /* "bp_cor_m"."val3", u1.7 */
} _isp_dpc_user_calc_dp_correct_t;

typedef struct _isp_dpc_user_calc_color_limit_t {
    /* [0], [1]: "margin_u0"."val0", "val1"; [2]: "margin_u1"."val2"; u8.6 */
    uint16_t margin_u[DPC_MARGINS];
    /* [0], [1]: "margin_l0"."val0", "val1"; [2]: "margin_l1"."val2"; u8.6 */
    uint16_t margin_l[DPC_MARGINS];
} _isp_dpc_user_calc_color_limit_t;

typedef struct _isp_dpc_user_init_t {
    uint16_t pic_size_h[ISP_MAX_PARTITIONS]; /* [partition] "pic_size"."h", u16 */
    uint16_t pic_size_v[ISP_MAX_PARTITIONS]; /* [partition] "pic_size"."v", u16 */
    uint16_t pic_blank_h;                    /* "pic_blank"."h", u16 */
    uint8_t hdr_dgst_en;                     /* "bpc_hw_cfg"."hdr_dgst_en", u1.0 */
    uint8_t wdma_err_ctrl;                   /* "bpc_hw_cfg"."wdma_err_ctrl", u1 */
    uint8_t rdma_err_ctrl;                   /* "bpc_hw_cfg"."rdma_err_ctrl", u1 */
    uint8_t sbpc_table_type;                 /* "bpc_hw_cfg"."sbpc_table_type", u1.0 */
    uint8_t bayer_pat;                       /* "bpc_hw_cfg"."bayer_pat", u2.0 */
    uint8_t dma_burst_len_rd;                /* "dma_burst_len"."rd", u2 */
    uint8_t sbpc_load;                       /* "bpc_osd_num"."sbpc_load", u6 */
    uint32_t dummy_wr_val;                   /* "dummy_wr"."val", u32 */
    uint8_t sbpc_qos_thr;                    /* "qos_ctrl"."sbpc_qos_thr", u4 */
    uint8_t sbpc_qos_low;                    /* "qos_ctrl"."sbpc_qos_low", u4 */
    uint8_t sbpc_qos_high;                   /* "qos_ctrl"."sbpc_qos_high", u4 */
} _isp_dpc_user_init_t;

/* Where each partition's static bad-pixel table lies. */
typedef struct _isp_dpc_user_calc_partition_t {
    uint8_t sbpc_pos_base_h_addr[ISP_MAX_PARTITIONS]; /* [partition] "sbpc_pos_base_h"."addr", u1 */
    uint32_t
        sbpc_pos_base_l_addr[ISP_MAX_PARTITIONS]; /* [partition] "sbpc_pos_base_l"."addr", u32 */
    uint32_t sbpc_pos_length[ISP_MAX_PARTITIONS]; /* [partition] "sbpc_pos"."length", u32 */
} _isp_dpc_user_calc_partition_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_dpc_user_calc_dp_strength(picojson::object &root,
                                                      _isp_dpc_user_calc_dp_strength_t *out,
                                                      uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_setup(picojson::object &root, _isp_dpc_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_top_control(picojson::object &root,
                                                      _isp_dpc_user_calc_top_control_t *out,
                                                      uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_noise(picojson::object &root,
                                                _isp_dpc_user_calc_noise_t *out, uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_wb_gain(picojson::object &root,
                                                  _isp_dpc_user_calc_wb_gain_t *out,
                                                  uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_quick_det(picojson::object &root,
                                                    _isp_dpc_user_calc_quick_det_t *out,
                                                    uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_dp_correct(picojson::object &root,
                                                     _isp_dpc_user_calc_dp_correct_t *out,
                                                     uint8_t partition);
/* The partition group's converter shares the dp_correct converter's name. */
ISP_JSON_API int rtl_to_drv_dpc_user_calc_dp_correct(picojson::object &root,
                                                     _isp_dpc_user_calc_partition_t *out,
                                                     uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_color_limit(picojson::object &root,
                                                      _isp_dpc_user_calc_color_limit_t *out,
                                                      uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_init(picojson::object &root, _isp_dpc_user_init_t *out,
                                          uint8_t partition);

/* The top-control exporter's name lacks the "user_calc_" of its group. */
ISP_JSON_API int drv_to_cmodel_dpc_top_control(_isp_dpc_user_calc_top_control_t *in,
                                               picojson::object &out, uint8_t partition);
ISP_JSON_API int drv_to_cmodel_dpc_user_calc_quick_det(_isp_dpc_user_calc_quick_det_t *in,
                                                       picojson::object &out, uint8_t partition);
ISP_JSON_API int drv_to_cmodel_dpc_user_calc_dp_correct(_isp_dpc_user_calc_dp_correct_t *in,
                                                        picojson::object &out, uint8_t partition);
ISP_JSON_API int drv_to_cmodel_dpc_user_calc_dp_strength(_isp_dpc_user_calc_dp_strength_t *in,
                                                         picojson::object &out, uint8_t partition);
ISP_JSON_API int drv_to_cmodel_dpc_user_setup(_isp_dpc_user_setup_t *in, picojson::object &out,
                                              uint8_t partition);
ISP_JSON_API int drv_to_cmodel_dpc_user_calc_noise(_isp_dpc_user_calc_noise_t *in,
                                                   picojson::object &out, uint8_t partition);
ISP_JSON_API int drv_to_cmodel_dpc_user_calc_wb_gain(_isp_dpc_user_calc_wb_gain_t *in,
                                                     picojson::object &out, uint8_t partition);
ISP_JSON_API int drv_to_cmodel_dpc_user_calc_color_limit(_isp_dpc_user_calc_color_limit_t *in,
                                                         picojson::object &out, uint8_t partition);
#endif

#endif
