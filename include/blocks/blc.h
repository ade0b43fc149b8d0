/* Driver structures, converters and exporters of the black level and linearisation block
 * ("isp_blc"): global and second black levels per Bayer channel, digital gain, output offset,
 * dither, and a piecewise-linear linearisation table per channel. */
#ifndef ISP_BLOCK_BLC_H
#define ISP_BLOCK_BLC_H

#include <stdint.h>

#include "isp_framework.h"

#define BLC_CHANNELS 4       /* Bayer channels */
#define BLC_LIN_KNOTS 15     /* knots of each linearisation table */
#define BLC_LIN_KNOT_PAIRS 7 /* elements of "grp0".."grp4": knots k and k + 7 in each */
#define BLC_LIN_SEGMENTS 16  /* slope segments of each linearisation table */
#define BLC_DITHER_WORDS 2   /* [0]: the 16-bit word "val16", [1]: the 15-bit word "val15" */

typedef struct _isp_blc_user_lin_t {
    /* knot k < 7: "grp0"[k]."lin_lut_x"."low"; knot k + 7: the same element's "high";
     * knot 14: "lin_lut_x_14"."low"; u8.6 */
    uint16_t lin_lut_x[BLC_LIN_KNOTS];
    /* knot e of channel c at [4e + c]: "grp<1+c>"[k]."lin_lut_y<c>"."low" / "high" as for
     * lin_lut_x, knot 14 from "lin_lut_y<c>_14"."low"; u8.6 */
    uint16_t lin_lut_y[BLC_LIN_KNOTS * BLC_CHANNELS];
    /* segment s of channel c at [4s + c]: "grp<5+c>"[s]."lin_lut_slope<c>"."value", u12.8 */
    uint32_t lin_lut_slope[BLC_LIN_SEGMENTS * BLC_CHANNELS];
} _isp_blc_user_lin_t;

typedef struct _isp_blc_user_common_t {
    uint16_t dgain;        /* "dgain"."val", u1.8: 0x100 = 1.0 */
    uint8_t dither_enable; /* "dither"."enable", u1 */
} _isp_blc_user_common_t;

typedef struct _isp_blc_user_dither_t {
    uint8_t dither_seed_enable;             /* "dither"."seed_enable", u1 */
    uint16_t dither_seed[BLC_DITHER_WORDS]; /* [0] "dither_seed"."val16", u16; [1] "val15", u15 */
} _isp_blc_user_dither_t;

typedef struct _isp_blc_user_setup_t {
    uint16_t dither_pmask[BLC_DITHER_WORDS]; /* [0] "dither_pmask"."val16", u16; [1] "val15", u15 */
} _isp_blc_user_setup_t;

typedef struct _isp_blc_user_init_t {
    uint8_t bayer_patten; /* "bayer"."patten", u2 */
} _isp_blc_user_init_t;

typedef struct _isp_blc_kernel_gbl_t {
    uint32_t gbl_val[BLC_CHANNELS]; /* [k]: "grp10"[k]."gbl_val"."value", u8.10 */
} _isp_blc_kernel_gbl_t;

typedef struct _isp_blc_kernel_sbl_t {
    uint32_t sbl_val[BLC_CHANNELS]; /* [k]: "grp9"[k]."sbl_val"."value", u8.10 */
} _isp_blc_kernel_sbl_t;

typedef struct _isp_blc_kernel_ctrl_t {
    uint8_t sbl_corr_enable; /* "blc"."sbl_corr_enable", u1 */
    uint8_t gbl_corr_enable; /* "blc"."gbl_corr_enable", u1 */
    uint8_t lin_enable;      /* "blc"."lin_enable", u1 */
    uint16_t offset_out;     /* "offset"."out", u8.6 */
} _isp_blc_kernel_ctrl_t;

/* The user black-level groups carry nothing: the levels reach the hardware through the kernel
 * groups. They keep a word so that they are valid structures. */
typedef struct _isp_blc_user_gbl_t {
    uint32_t reserved;
} _isp_blc_user_gbl_t;

typedef struct _isp_blc_user_sbl_t {
    uint32_t reserved;
} _isp_blc_user_sbl_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_blc_user_lin(picojson::object &root, _isp_blc_user_lin_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_common(picojson::object &root, _isp_blc_user_common_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_dither(picojson::object &root, _isp_blc_user_dither_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_setup(picojson::object &root, _isp_blc_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_init(picojson::object &root, _isp_blc_user_init_t *out,
                                          uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_kernel_gbl(picojson::object &root, _isp_blc_kernel_gbl_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_kernel_sbl(picojson::object &root, _isp_blc_kernel_sbl_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_kernel_ctrl(picojson::object &root, _isp_blc_kernel_ctrl_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_gbl(picojson::object &root, _isp_blc_user_gbl_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_sbl(picojson::object &root, _isp_blc_user_sbl_t *out,
                                         uint8_t partition);

ISP_JSON_API int drv_to_cmodel_blc_user_lin(_isp_blc_user_lin_t *in, picojson::object &out,
                                            uint8_t partition);
ISP_JSON_API int drv_to_cmodel_blc_user_common(_isp_blc_user_common_t *in, picojson::object &out,
                                               uint8_t partition);
ISP_JSON_API int drv_to_cmodel_blc_user_dither(_isp_blc_user_dither_t *in, picojson::object &out,
                                               uint8_t partition);
ISP_JSON_API int drv_to_cmodel_blc_user_setup(_isp_blc_user_setup_t *in, picojson::object &out,
                                              uint8_t partition);
ISP_JSON_API int drv_to_cmodel_blc_kernel_gbl(_isp_blc_kernel_gbl_t *in, picojson::object &out,
                                              uint8_t partition);
ISP_JSON_API int drv_to_cmodel_blc_kernel_sbl(_isp_blc_kernel_sbl_t *in, picojson::object &out,
                                              uint8_t partition);
ISP_JSON_API int drv_to_cmodel_blc_kernel_ctrl(_isp_blc_kernel_ctrl_t *in, picojson::object &out,
                                               uint8_t partition);
ISP_JSON_API int drv_to_cmodel_blc_user_gbl(_isp_blc_user_gbl_t *in, picojson::object &out,
                                            uint8_t partition);
ISP_JSON_API int drv_to_cmodel_blc_user_sbl(_isp_blc_user_sbl_t *in, picojson::object &out,
                                            uint8_t partition);
#endif

#endif
