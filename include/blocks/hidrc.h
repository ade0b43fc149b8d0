/* Driver structures, converters and exporter of the inverse dynamic range compression block
 * ("isp_hidrc"): a 513-entry curve with an inverse-curve mode, one input offset and four output
 * offsets. */
#ifndef ISP_BLOCK_HIDRC_H
#define ISP_BLOCK_HIDRC_H

#include <stdint.h>

#include "isp_framework.h"

#define HIDRC_OFFSETS_OUT 4   /* "offset_out0" to "offset_out3" */
#define HIDRC_LUT_ENTRIES 513 /* one entry per word */

typedef struct _isp_hidrc_user_setup_t {
    uint16_t affine_k;    /* "affine_k"."val", u1.11: 0x800 = 1.0 */
    uint8_t lut_inv_mode; /* "lut_inv_mode"."val", u1 */
    uint16_t offset_in;   /* "offset_in"."val", u10.6: 0x40 = 1.0 */
    /* [i] "offset_out<i>"."val"; u14.6: 0x40 = 1.0 */
    uint32_t offset_out[HIDRC_OFFSETS_OUT];
} _isp_hidrc_user_setup_t;

typedef struct _isp_hidrc_user_hidrc_lut_t {
    uint32_t hidrc_lut[HIDRC_LUT_ENTRIES]; /* "hidrc_lut" raw entries, no encoding */
} _isp_hidrc_user_hidrc_lut_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_hidrc_user_setup(picojson::object &root, _isp_hidrc_user_setup_t *out,
                                             uint8_t partition);
/* Raises picojson's type error when the curve is missing, not an array, shorter than 513
 * entries or holds a non-number; the words before the failing entry stay written. */
ISP_JSON_API int rtl_to_drv_hidrc_user_hidrc_lut(picojson::object &root,
                                                 _isp_hidrc_user_hidrc_lut_t *out,
                                                 uint8_t partition);

ISP_JSON_API int drv_to_cmodel_hidrc_user_setup(_isp_hidrc_user_setup_t *in, picojson::object &out,
                                                uint8_t partition);
#endif

#endif
