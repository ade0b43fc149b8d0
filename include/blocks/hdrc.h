/* Driver structures, converters and exporter of the dynamic range compression block
 * ("isp_hdrc"): a 257-entry compression curve with four input offsets, one output offset, a clip
 * level and a dither stage, plus a global control group. */
#ifndef ISP_BLOCK_HDRC_H
#define ISP_BLOCK_HDRC_H

#include <stdint.h>

#include "isp_framework.h"

#define HDRC_OFFSETS_IN 4    /* "offset_in0" to "offset_in3" */
#define HDRC_DITHER_WORDS 2  /* "dither_seed"."val0", "val1" */
#define HDRC_LUT_ENTRIES 257 /* 16-bit curve entries in "hdrc_lut" */
#define HDRC_LUT_WORDS 129   /* two entries per word, the last entry alone */

typedef struct _isp_hdrc_user_setup_t {
    uint8_t dither_seed_enable; /* "hdrc_ctrl"."dither_seed_en", u1.0 */
    uint8_t dither_enable;      /* "hdrc_ctrl"."dither_en", u1 */
    uint16_t affine_k;          /* "glb_val"."affine_k", u7.9: 0x200 = 1.0 */
    uint16_t clip_level;        /* "glb_val"."clip_level", u10.6: 0x40 = 1.0 */
    /* [i] "offset_in<i>"."val"; u14.6: 0x40 = 1.0 */
    uint32_t offset_in[HDRC_OFFSETS_IN];
    uint16_t offset_out; /* "offset_out"."val", u10.6: 0x40 = 1.0 */
    /* [i] "dither_seed"."val<i>"; u16.0 */
    uint16_t dither_seed[HDRC_DITHER_WORDS];
    uint16_t dither_pmask_16bit; /* "dither_pmask"."val_16bit", u16.0 */
    /* "dither_pmask"."val_15bit", u16.0: the 15-bit word takes the 16-bit format */
    uint16_t dither_pmask_15bit;
    uint16_t lut_max; /* "lut_max"."val", u10.6: 0x40 = 1.0 */
} _isp_hdrc_user_setup_t;

typedef struct _isp_hdrc_user_hdrc_lut_t {
    /* "hdrc_lut" raw entries, no encoding: word i (i < 128) = entry 2i | entry 2i+1 << 16,
     * word 128 = entry 256 */
    uint32_t hdrc_lut[HDRC_LUT_WORDS];
} _isp_hdrc_user_hdrc_lut_t;

typedef struct _isp_hdrc_user_glb_ctrl_t {
    uint8_t manual_clk_en; /* "glb_ctrl"."manual_clk_en", u1 */
    uint8_t bayer_pat;     /* "glb_ctrl"."bayer_pat", u8 */
} _isp_hdrc_user_glb_ctrl_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_hdrc_user_setup(picojson::object &root, _isp_hdrc_user_setup_t *out,
                                            uint8_t partition);
/* Raises picojson's type error when the curve is missing, not an array, shorter than 257
 * entries or holds a non-number. */
ISP_JSON_API int rtl_to_drv_hdrc_user_hdrc_lut(picojson::object &root,
                                               _isp_hdrc_user_hdrc_lut_t *out, uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdrc_glb_ctl(picojson::object &root, _isp_hdrc_user_glb_ctrl_t *out,
                                         uint8_t partition);

ISP_JSON_API int drv_to_cmodel_hdrc_user_setup(_isp_hdrc_user_setup_t *in, picojson::object &out,
                                               uint8_t partition);
#endif

#endif
