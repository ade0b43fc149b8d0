/* Driver structures, converters of the high-intensity dynamic range compression block ("isp_hidrc").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_HIDRC_H
#define ISP_BLOCK_HIDRC_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_hidrc_user_setup_t {
    uint32_t reserved;
} _isp_hidrc_user_setup_t;

typedef struct _isp_hidrc_user_hidrc_lut_t {
    uint32_t reserved;
} _isp_hidrc_user_hidrc_lut_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_hidrc_user_setup(picojson::object &root, _isp_hidrc_user_setup_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_hidrc_user_hidrc_lut(picojson::object &root, _isp_hidrc_user_hidrc_lut_t *out,
                                                 uint8_t partition);
#endif

#endif
