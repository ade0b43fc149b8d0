/* Driver structures, converters of the lite noise reduction (pattern files) block ("isp_nrlite").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_NRLITE_H
#define ISP_BLOCK_NRLITE_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_nrlite_user_post_t {
    uint32_t reserved;
} _isp_nrlite_user_post_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_nrlite_user_post(picojson::object &root, _isp_nrlite_user_post_t *out,
                                             uint8_t partition);
#endif

#endif
