/* Driver structures, converters and exporters of the gamma block ("isp_gamma"): a 129-point
 * curve per colour component, input and output offsets, a range adjustment switch and a dither
 * stage. */
#ifndef ISP_BLOCK_GAMMA_H
#define ISP_BLOCK_GAMMA_H

#include <stdint.h>

#include "isp_framework.h"

#define GAMMA_DITHER_WORDS 2 /* the 16-bit word, then the 15-bit word */
#define GAMMA_LUT_POINTS 129 /* 64 low/high pairs of "grp0" plus "gam_lut_65" */

typedef struct _isp_gamma_user_setup_t {
    uint8_t range_adjust_enable; /* "gamma"."range_adjust_enable", u1 */
    uint8_t mode;                /* "gamma"."mode", u1 */
    uint8_t dither_enable;       /* "dither"."enable", u1 */
    /* [0] "dither_pmask"."val16", u16; [1] "dither_pmask"."val15", u15 */
    uint16_t dither_pmask[GAMMA_DITHER_WORDS];
    uint16_t offset_out; /* "gamma_offset"."out", u8.2: 0x4 = 1.0 */
    uint16_t offset_in;  /* "gamma_offset"."in", u8.4: 0x10 = 1.0 */
} _isp_gamma_user_setup_t;

typedef struct _isp_gamma_user_dither_t {
    uint8_t dither_seed_enable; /* "dither"."seed_enable", u1 */
    /* [0] "dither_seed"."val16", u16; [1] "dither_seed"."val15", u15 */
    uint16_t dither_seed[GAMMA_DITHER_WORDS];
} _isp_gamma_user_dither_t;

typedef struct _isp_gamma_user_lut_t {
    /* [2k] "grp0"[k]."gam_lut"."low", [2k+1] "grp0"[k]."gam_lut"."high" (k = 0-63),
     * [128] "gam_lut_65"."low"; u8.4: 0x10 = 1.0 */
    uint16_t gam_lut[GAMMA_LUT_POINTS];
} _isp_gamma_user_lut_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_gamma_user_setup(picojson::object &root, _isp_gamma_user_setup_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_gamma_user_dither(picojson::object &root, _isp_gamma_user_dither_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_gamma_user_lut(picojson::object &root, _isp_gamma_user_lut_t *out,
                                           uint8_t partition);

ISP_JSON_API int drv_to_cmodel_gamma_user_setup(_isp_gamma_user_setup_t *in, picojson::object &out,
                                                uint8_t partition);
ISP_JSON_API int drv_to_cmodel_gamma_user_dither(_isp_gamma_user_dither_t *in,
                                                 picojson::object &out, uint8_t partition);
ISP_JSON_API int drv_to_cmodel_gamma_user_lut(_isp_gamma_user_lut_t *in, picojson::object &out,
                                              uint8_t partition);
#endif

#endif
