/* Driver structures, converters of the dynamic range compression block ("isp_hdrc").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_HDRC_H
#define ISP_BLOCK_HDRC_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_hdrc_user_setup_t {
    uint32_t reserved;
} _isp_hdrc_user_setup_t;

typedef struct _isp_hdrc_user_hdrc_lut_t {
    uint32_t reserved;
} _isp_hdrc_user_hdrc_lut_t;

typedef struct _isp_hdrc_user_glb_ctrl_t {
    uint32_t reserved;
} _isp_hdrc_user_glb_ctrl_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_hdrc_user_setup(picojson::object &root, _isp_hdrc_user_setup_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdrc_user_hdrc_lut(picojson::object &root, _isp_hdrc_user_hdrc_lut_t *out,
                                               uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdrc_glb_ctl(picojson::object &root, _isp_hdrc_user_glb_ctrl_t *out,
                                         uint8_t partition);
#endif

#endif
