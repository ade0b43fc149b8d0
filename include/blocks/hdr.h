/* Driver structures, converters of the HDR fusion block ("isp_hdr").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_HDR_H
#define ISP_BLOCK_HDR_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_hdr_user_common_t {
    uint32_t reserved;
} _isp_hdr_user_common_t;

typedef struct _isp_hdr_user_deghost_t {
    uint32_t reserved;
} _isp_hdr_user_deghost_t;

typedef struct _isp_hdr_user_setup_t {
    uint32_t reserved;
} _isp_hdr_user_setup_t;

typedef struct _isp_hdr_kernel_exposure_t {
    uint32_t reserved;
} _isp_hdr_kernel_exposure_t;

typedef struct _isp_hdr_user_init_t {
    uint32_t reserved;
} _isp_hdr_user_init_t;

typedef struct _isp_hdr_user_motion_t {
    uint32_t reserved;
} _isp_hdr_user_motion_t;

typedef struct _isp_hdr_kernel_fusion_t {
    uint32_t reserved;
} _isp_hdr_kernel_fusion_t;

typedef struct _isp_hdr_kernel_common_t {
    uint32_t reserved;
} _isp_hdr_kernel_common_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_hdr_user_common(picojson::object &root, _isp_hdr_user_common_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdr_noise_profile(picojson::object &root, _isp_hdr_user_common_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdr_user_deghost(picojson::object &root, _isp_hdr_user_deghost_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdr_user_setup(picojson::object &root, _isp_hdr_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdr_exp_weight_lut_luma_mid(picojson::object &root, _isp_hdr_kernel_exposure_t *out,
                                                        uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdr_user_init(picojson::object &root, _isp_hdr_user_init_t *out,
                                          uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdr_user_motion(picojson::object &root, _isp_hdr_user_motion_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdr_kernel_fusion(picojson::object &root, _isp_hdr_kernel_fusion_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdr_kernel_common(picojson::object &root, _isp_hdr_kernel_common_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdr_kernel_exposure(picojson::object &root, _isp_hdr_kernel_exposure_t *out,
                                                uint8_t partition);
ISP_JSON_API int rtl_to_drv_hdr_exp_weight_lut_luma_low_high(picojson::object &root, _isp_hdr_kernel_exposure_t *out,
                                                             uint8_t partition);
#endif

#endif
