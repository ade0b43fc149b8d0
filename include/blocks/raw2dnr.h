/* Driver structures, converters of the raw noise reduction block ("isp_raw2dnr").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_RAW2DNR_H
#define ISP_BLOCK_RAW2DNR_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_raw2dnr_user_init_t {
    uint32_t reserved;
} _isp_raw2dnr_user_init_t;

typedef struct _isp_raw2dnr_user_setup_t {
    uint32_t reserved;
} _isp_raw2dnr_user_setup_t;

typedef struct _isp_raw2dnr_user_mask_t {
    uint32_t reserved;
} _isp_raw2dnr_user_mask_t;

typedef struct _isp_raw2dnr_user_fs_t {
    uint32_t reserved;
} _isp_raw2dnr_user_fs_t;

typedef struct _isp_raw2dnr_user_hfnr_t {
    uint32_t reserved;
} _isp_raw2dnr_user_hfnr_t;

typedef struct _isp_raw2dnr_user_mfnr_t {
    uint32_t reserved;
} _isp_raw2dnr_user_mfnr_t;

typedef struct _isp_raw2dnr_user_np_t {
    uint32_t reserved;
} _isp_raw2dnr_user_np_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_raw2dnr_user_init(picojson::object &root, _isp_raw2dnr_user_init_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_raw2dnr_user_setup(picojson::object &root, _isp_raw2dnr_user_setup_t *out,
                                               uint8_t partition);
ISP_JSON_API int rtl_to_drv_raw2dnr_user_mask(picojson::object &root, _isp_raw2dnr_user_mask_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_raw2dnr_user_fs(picojson::object &root, _isp_raw2dnr_user_fs_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_raw2dnr_user_hfnr(picojson::object &root, _isp_raw2dnr_user_hfnr_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_raw2dnr_user_mfnr(picojson::object &root, _isp_raw2dnr_user_mfnr_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_raw2dnr_user_np(picojson::object &root, _isp_raw2dnr_user_np_t *out,
                                            uint8_t partition);
#endif

#endif
