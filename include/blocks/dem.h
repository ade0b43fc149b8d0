/* Driver structures, converters and C-model exporters of the demosaic block ("isp_dem"): the
 * interpolation core, white-balance statistics and gain mesh, green imbalance and false-colour
 * correction, edge enhancement and memory control. */
#ifndef ISP_BLOCK_DEM_H
#define ISP_BLOCK_DEM_H

#include <stdint.h>

#include "isp_framework.h"

#define ISP_DEM_WBC_LUT_SIZE 64   /* gain entries per colour: 16 registers of "lut0".."lut3" */
#define ISP_DEM_LUT9_SIZE 9       /* tables spread over five registers of "lut0", "lut1" */
#define ISP_DEM_SPLIT_LUT_SIZE 18 /* tables of nine group elements holding entries k, k + 9 */
#define ISP_DEM_WBC_LUT_COLS 4    /* gains per register; the C-model keeps one row each */

typedef struct _isp_dem_user_init_t {
    uint16_t clkgt_enable; /* "clkgt_enable"."en", u16 */
    uint8_t debug_en;      /* "misc_ctrl"."debug_en", u1 */
} _isp_dem_user_init_t;

/* A partition's white-balance statistics window. */
typedef struct _isp_dem_wb_stat_roi_t {
    uint16_t top;    /* "wb_stat_roi0"."top", u14 */
    uint16_t bottom; /* "wb_stat_roi0"."bottom", u14 */
    uint16_t left;   /* "wb_stat_roi1"."left", u14 */
    uint16_t right;  /* "wb_stat_roi1"."right", u14 */
} _isp_dem_wb_stat_roi_t;

/* Per-partition members are indexed by the partition; [p][0] and [p][1] are the register's
 * "start0" and "start1". */
typedef struct _isp_dem_user_setup_t {
    uint8_t wb_stat_enable;                                  /* "wb_stat_ctrl"."enable", u1.0 */
    _isp_dem_wb_stat_roi_t wb_stat_roi[ISP_MAX_PARTITIONS];  /* per partition */
    uint8_t wb_stat_mesh_block_start[ISP_MAX_PARTITIONS][2]; /* "wb_stat_mesh_block", u3 */
    uint16_t wb_stat_mesh_pos_start[ISP_MAX_PARTITIONS][2];  /* "wb_stat_mesh_pos", u14 */
    uint16_t wb_stat_slice_level;                            /* "wb_stat_slice"."level", u8.4 */
    uint8_t wb_stat_slice_sat_tp;                            /* "wb_stat_slice_sat"."tp", u1.0 */
    uint16_t wb_stat_mesh_shape[2];                      /* "wb_stat_mesh"."shape0","shape1", u11 */
    uint8_t wbc_enable;                                  /* "wbc_ctrl"."enable", u1.0 */
    uint8_t wbc_mesh_block_start[ISP_MAX_PARTITIONS][2]; /* "wbc_mesh_block", u4 */
    uint16_t wbc_mesh_phase_start[ISP_MAX_PARTITIONS][2]; /* "wbc_mesh_phase", u0.15 */
    uint16_t wbc_mesh_pos_start[ISP_MAX_PARTITIONS][2];   /* "wbc_mesh_pos", u14 */
    uint16_t wbc_mesh_step[2];                            /* "wbc_mesh"."step0","step1", u0.14 */
    uint8_t gic_enable;                                   /* "gic"."enable", u1.0 */
    uint8_t grad_h_enable;                                /* "grad_h"."enable", u1.0 */
    uint8_t gclip_level;                                  /* "gclip"."level", u0.4 */
    uint8_t edge_enhance_enable;                          /* "edge_enhance_ctrl"."enable", u1.0 */
    uint8_t edge_enhance_ghv_level;                       /* "edge_enhance"."ghv_level", u2.4 */
    uint8_t edge_enhance_gpn_level;                       /* "edge_enhance"."gpn_level", u2.4 */
    uint8_t edge_enhance_ghv_corner_min;         /* "edge_enhance_ghv"."corner_min", u0.8 */
    uint8_t edge_enhance_ghv_corner_slope;       /* "edge_enhance_ghv"."corner_slope", u2.4 */
    uint16_t edge_enhance_ghv_corner_offset;     /* "edge_enhance_ghv"."corner_offset", s0.8 */
    uint8_t fc_cor0_enable;                      /* "fc_cor0"."enable", u1.0 */
    uint16_t offset_in;                          /* "offset"."in", u8.4 */
    uint16_t offset_out;                         /* "offset"."out", u8.4 */
    uint8_t bayer_pattern;                       /* "bayer"."pattern", u2.0 */
    uint16_t img_size_hsize[ISP_MAX_PARTITIONS]; /* "img_size"."hsize", u14 */
    uint16_t img_size_vsize[ISP_MAX_PARTITIONS]; /* "img_size"."vsize", u14 */
} _isp_dem_user_setup_t;

typedef struct _isp_dem_user_dem_mode_t {
    uint8_t pre_gamma_enable;  /* "pre_gamma_ctrl"."enable", u1.0 */
    uint8_t mode;              /* "dem"."mode", u4.0 */
    uint8_t post_gamma_enable; /* "post_gamma_ctrl"."enable", u1.0 */
} _isp_dem_user_dem_mode_t;

typedef struct _isp_dem_user_dem_core_t {
    uint8_t gradf_ratio;                       /* "gradf"."ratio", u1.4 */
    uint8_t grad_hh_level;                     /* "grad_hh"."level", u2.2 */
    uint16_t inv_noise_lut[ISP_DEM_LUT9_SIZE]; /* "inv_noise0".."inv_noise4", u4.8 */
    uint8_t ginterp_hf_ratio_x;                /* "ginterp_hf_ratio"."x", u1.5 */
    uint8_t ginterp_hf_ratio_pn;               /* "ginterp_hf_ratio"."pn", u1.5 */
    uint8_t ginterp_hf_ratio_hv;               /* "ginterp_hf_ratio"."hv", u1.5 */
} _isp_dem_user_dem_core_t;

/* Entry 4k + j of each table: group element k, field "lut<j>". */
typedef struct _isp_dem_user_wbc_t {
    uint8_t wbc_gain_lut_r[ISP_DEM_WBC_LUT_SIZE]; /* "wbc_gain_lut_r"[k]."wbc_gain_r", u1.7 */
    uint8_t wbc_gain_lut_g[ISP_DEM_WBC_LUT_SIZE]; /* "wbc_gain_lut_g"[k]."wbc_gain_g", u1.7 */
    uint8_t wbc_gain_lut_b[ISP_DEM_WBC_LUT_SIZE]; /* "wbc_gain_lut_b"[k]."wbc_gain_b", u1.7 */
} _isp_dem_user_wbc_t;

typedef struct _isp_dem_user_fcc_t {
    uint16_t fc_cor1_limit;                     /* "fc_cor1"."limit", u8.4 */
    uint8_t fc_cor1_gain_safe;                  /* "fc_cor1"."gain_safe", u2.2 */
    uint8_t fc_cor1_gain;                       /* "fc_cor1"."gain", u4.4 */
    uint8_t fc_cor1_th;                         /* "fc_cor1"."th", u4.4 */
    uint8_t fc_cor2_inv_base_sat_level;         /* "fc_cor2"."inv_base_sat_level", u0.8 */
    uint16_t fc_cor2_ratio_limit[2];            /* "fc_cor2"."ratio_limit0","ratio_limit1", u1.8 */
    uint16_t fc_cor_sat_lut[ISP_DEM_LUT9_SIZE]; /* "fc_cor_sat0".."fc_cor_sat4", u8.4 */
} _isp_dem_user_fcc_t;

typedef struct _isp_dem_user_gic_t {
    uint8_t gic_strength_lut[ISP_DEM_LUT9_SIZE]; /* "gic_strength0".."gic_strength2", u1.7 */
    uint16_t
        gic_ct[ISP_DEM_SPLIT_LUT_SIZE]; /* "gic_ct_lut"[k]."gic_ct": k "lut0", k + 9 "lut1"; u8.4 */
    uint16_t gic_limit[ISP_DEM_LUT9_SIZE]; /* "gic_limit0".."gic_limit4", u8.4 */
} _isp_dem_user_gic_t;

typedef struct _isp_dem_user_sharpen_t {
    /* "edge_enhance_level_lut"[k]."edge_enhance_level": k "lut0", k + 9 "lut1"; u1.4 */
    uint8_t edge_enhance_level_lut[ISP_DEM_SPLIT_LUT_SIZE];
} _isp_dem_user_sharpen_t;

typedef struct _isp_dem_kernel_mem_ctrl_t {
    uint8_t sw_rd;  /* "wb_stat_mem_ctrl"."sw_rd", u1 */
    uint8_t sw_clr; /* "wb_stat_mem_ctrl"."sw_clr", u1 */
} _isp_dem_kernel_mem_ctrl_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_dem_user_init(picojson::object &root, _isp_dem_user_init_t *out,
                                          uint8_t partition);
/* The only demosaic converter that writes per-partition members. */
ISP_JSON_API int rtl_to_drv_dem_user_setup(picojson::object &root, _isp_dem_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_dem_mode(picojson::object &root, _isp_dem_user_dem_mode_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_dem_core(picojson::object &root, _isp_dem_user_dem_core_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_wbc(picojson::object &root, _isp_dem_user_wbc_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_fcc(picojson::object &root, _isp_dem_user_fcc_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_gic(picojson::object &root, _isp_dem_user_gic_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_sharpen(picojson::object &root, _isp_dem_user_sharpen_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_kernel_mem_ctrl(picojson::object &root,
                                                _isp_dem_kernel_mem_ctrl_t *out, uint8_t partition);

/* Every member under its own name, the partition's element for per-partition members
 * ("wb_stat_roi" as top, bottom, left, right). */
ISP_JSON_API int drv_to_cmodel_dem_user_setup(_isp_dem_user_setup_t *in, picojson::object &out,
                                              uint8_t partition);
/* "pre_gamma_enable", "mode", "post_gamma_enable". */
ISP_JSON_API int drv_to_cmodel_dem_user_dem_mode(_isp_dem_user_dem_mode_t *in,
                                                 picojson::object &out, uint8_t partition);
ISP_JSON_API int drv_to_cmodel_dem_user_dem_core(_isp_dem_user_dem_core_t *in,
                                                 picojson::object &out, uint8_t partition);
/* "wbc_gain_lut_r", "_g", "_b": 16 rows of 4, one row per register. */
ISP_JSON_API int drv_to_cmodel_dem_user_wbc(_isp_dem_user_wbc_t *in, picojson::object &out,
                                            uint8_t partition);
ISP_JSON_API int drv_to_cmodel_dem_user_fcc(_isp_dem_user_fcc_t *in, picojson::object &out,
                                            uint8_t partition);
/* "gic_strength_lut", "gic_ct", "gic_limit". */
ISP_JSON_API int drv_to_cmodel_dem_user_gic(_isp_dem_user_gic_t *in, picojson::object &out,
                                            uint8_t partition);
/* "edge_enhance_level_lut". */
ISP_JSON_API int drv_to_cmodel_dem_user_sharpen(_isp_dem_user_sharpen_t *in, picojson::object &out,
                                                uint8_t partition);
#endif

#endif
