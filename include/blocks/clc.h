/* Driver structures, converters of the colour correction block ("isp_clc").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_CLC_H
#define ISP_BLOCK_CLC_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_clc_user_init_t {
    uint32_t reserved;
} _isp_clc_user_init_t;

typedef struct _isp_clc_user_clc_setup_t {
    uint32_t reserved;
} _isp_clc_user_clc_setup_t;

typedef struct _isp_clc_user_clc_t {
    uint32_t reserved;
} _isp_clc_user_clc_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_clc_user_init(picojson::object &root, _isp_clc_user_init_t *out,
                                          uint8_t partition);
ISP_JSON_API int rtl_to_drv_clc_user_clc_setup(picojson::object &root, _isp_clc_user_clc_setup_t *out,
                                               uint8_t partition);
ISP_JSON_API int rtl_to_drv_clc_user_clc(picojson::object &root, _isp_clc_user_clc_t *out,
                                         uint8_t partition);
#endif

#endif
