/* Driver structures, converters of the input formatting block ("isp_ifa").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_IFA_H
#define ISP_BLOCK_IFA_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_ifa_user_setup_t {
    uint32_t reserved;
} _isp_ifa_user_setup_t;

typedef struct _isp_ifa_user_crop_t {
    uint32_t reserved;
} _isp_ifa_user_crop_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_ifa_user_setup(picojson::object &root, _isp_ifa_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_ifa_user_crop(picojson::object &root, _isp_ifa_user_crop_t *out,
                                          uint8_t partition);
#endif

#endif
