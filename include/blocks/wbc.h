/* Driver structures, converters of the white-balance gain block ("isp_wbc").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_WBC_H
#define ISP_BLOCK_WBC_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_wbc_user_ctrl_t {
    uint32_t reserved;
} _isp_wbc_user_ctrl_t;

typedef struct _isp_wbc_user_setup_t {
    uint32_t reserved;
} _isp_wbc_user_setup_t;

typedef struct _isp_wbc_user_init_t {
    uint32_t reserved;
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
#endif

#endif
