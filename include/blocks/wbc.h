/* Driver structures, converters and exporters of the white-balance gain block ("isp_wbc"):
 * a digital gain, four Bayer-channel gains, input and output offsets and a clip level. */
#ifndef ISP_BLOCK_WBC_H
#define ISP_BLOCK_WBC_H

#include <stdint.h>

#include "isp_framework.h"

#define WBC_CHANNELS 4 /* gains of the 2x2 Bayer cell */

typedef struct _isp_wbc_user_ctrl_t {
    uint32_t d_gain; /* "d_gain"."val", u10.8: 0x100 = 1.0 */
    /* "wb_gain0"."val0","val1", "wb_gain2"."val2","val3"; u4.8: 0x100 = 1.0 */
    uint16_t wb_gain[WBC_CHANNELS];
    uint32_t clip_level; /* "clip_level"."val", u14.6 */
} _isp_wbc_user_ctrl_t;

typedef struct _isp_wbc_user_setup_t {
    uint32_t offset_in;  /* "offset_in"."val", u14.6 */
    uint32_t offset_out; /* "offset_out"."val", u14.6 */
} _isp_wbc_user_setup_t;

typedef struct _isp_wbc_user_init_t {
    uint8_t bayer_pattern; /* "bayer_pattern"."val", u2: channel order of the Bayer cell, 0-3 */
} _isp_wbc_user_init_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_wbc_user_ctrl(picojson::object &root, _isp_wbc_user_ctrl_t *out,
                                          uint8_t partition);
ISP_JSON_API int rtl_to_drv_wbc_user_setup(picojson::object &root, _isp_wbc_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_wbc_user_init(picojson::object &root, _isp_wbc_user_init_t *out,
                                          uint8_t partition);

ISP_JSON_API int drv_to_cmodel_wbc_user_ctrl(_isp_wbc_user_ctrl_t *in, picojson::object &out,
                                             uint8_t partition);
ISP_JSON_API int drv_to_cmodel_wbc_user_setup(_isp_wbc_user_setup_t *in, picojson::object &out,
                                              uint8_t partition);
#endif

#endif
