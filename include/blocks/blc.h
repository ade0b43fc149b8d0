/* Driver structures, converters of the black level and linearisation block ("isp_blc").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_BLC_H
#define ISP_BLOCK_BLC_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_blc_user_lin_t {
    uint32_t reserved;
} _isp_blc_user_lin_t;

typedef struct _isp_blc_user_common_t {
    uint32_t reserved;
} _isp_blc_user_common_t;

typedef struct _isp_blc_user_dither_t {
    uint32_t reserved;
} _isp_blc_user_dither_t;

typedef struct _isp_blc_user_setup_t {
    uint32_t reserved;
} _isp_blc_user_setup_t;

typedef struct _isp_blc_user_init_t {
    uint32_t reserved;
} _isp_blc_user_init_t;

typedef struct _isp_blc_kernel_gbl_t {
    uint32_t reserved;
} _isp_blc_kernel_gbl_t;

typedef struct _isp_blc_kernel_sbl_t {
    uint32_t reserved;
} _isp_blc_kernel_sbl_t;

typedef struct _isp_blc_kernel_ctrl_t {
    uint32_t reserved;
} _isp_blc_kernel_ctrl_t;

typedef struct _isp_blc_user_gbl_t {
    uint32_t reserved;
} _isp_blc_user_gbl_t;

typedef struct _isp_blc_user_sbl_t {
    uint32_t reserved;
} _isp_blc_user_sbl_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_blc_user_lin(picojson::object &root, _isp_blc_user_lin_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_common(picojson::object &root, _isp_blc_user_common_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_dither(picojson::object &root, _isp_blc_user_dither_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_setup(picojson::object &root, _isp_blc_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_init(picojson::object &root, _isp_blc_user_init_t *out,
                                          uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_kernel_gbl(picojson::object &root, _isp_blc_kernel_gbl_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_kernel_sbl(picojson::object &root, _isp_blc_kernel_sbl_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_kernel_ctrl(picojson::object &root, _isp_blc_kernel_ctrl_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_gbl(picojson::object &root, _isp_blc_user_gbl_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_blc_user_sbl(picojson::object &root, _isp_blc_user_sbl_t *out,
                                         uint8_t partition);
#endif

#endif
