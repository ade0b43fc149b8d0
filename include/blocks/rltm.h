/* Driver structures, converters of the tone mapping block ("isp_rltm").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_RLTM_H
#define ISP_BLOCK_RLTM_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_rltm_user_init_t {
    uint32_t reserved;
} _isp_rltm_user_init_t;

typedef struct _isp_rltm_user_setup_t {
    uint32_t reserved;
} _isp_rltm_user_setup_t;

typedef struct _isp_rltm_user_dither_t {
    uint32_t reserved;
} _isp_rltm_user_dither_t;

typedef struct _isp_rltm_user_reserved_t {
    uint32_t reserved;
} _isp_rltm_user_reserved_t;

typedef struct _isp_rltm_user_common_t {
    uint32_t reserved;
} _isp_rltm_user_common_t;

typedef struct _isp_rltm_user_info_t {
    uint32_t reserved;
} _isp_rltm_user_info_t;

typedef struct _isp_rltm_user_detail_t {
    uint32_t reserved;
} _isp_rltm_user_detail_t;

typedef struct _isp_rltm_user_low_freq_t {
    uint32_t reserved;
} _isp_rltm_user_low_freq_t;

typedef struct _isp_rltm_kernel_sync_t {
    uint32_t reserved;
} _isp_rltm_kernel_sync_t;

typedef struct _isp_rltm_user_lut_t {
    uint32_t reserved;
} _isp_rltm_user_lut_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_rltm_user_init(picojson::object &root, _isp_rltm_user_init_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_rltm_user_setup(picojson::object &root, _isp_rltm_user_setup_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_rltm_user_dither(picojson::object &root, _isp_rltm_user_dither_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_rltm_user_reserved(picojson::object &root, _isp_rltm_user_reserved_t *out,
                                               uint8_t partition);
ISP_JSON_API int rtl_to_drv_rltm_user_common(picojson::object &root, _isp_rltm_user_common_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_rltm_user_info(picojson::object &root, _isp_rltm_user_info_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_rltm_user_detail(picojson::object &root, _isp_rltm_user_detail_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_rltm_user_low_freq(picojson::object &root, _isp_rltm_user_low_freq_t *out,
                                               uint8_t partition);
ISP_JSON_API int rtl_to_drv_rltm_kernel_sync(picojson::object &root, _isp_rltm_kernel_sync_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_rltm_user_lut(picojson::object &root, _isp_rltm_user_lut_t *out,
                                          uint8_t partition);
#endif

#endif
