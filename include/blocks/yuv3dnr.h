/* Driver structures, converters of the YUV 3D noise reduction block ("isp_yuv3dnr").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_YUV3DNR_H
#define ISP_BLOCK_YUV3DNR_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_yuv3dnr_user_ctrl_t {
    uint32_t reserved;
} _isp_yuv3dnr_user_ctrl_t;

typedef struct _isp_yuv3dnr_user_extmask_t {
    uint32_t reserved;
} _isp_yuv3dnr_user_extmask_t;

typedef struct _isp_yuv3dnr_user_motion_t {
    uint32_t reserved;
} _isp_yuv3dnr_user_motion_t;

typedef struct _isp_yuv3dnr_user_setup_t {
    uint32_t reserved;
} _isp_yuv3dnr_user_setup_t;

typedef struct _isp_yuv3dnr_user_tnr_t {
    uint32_t reserved;
} _isp_yuv3dnr_user_tnr_t;

typedef struct _isp_yuv3dnr_user_ysf_t {
    uint32_t reserved;
} _isp_yuv3dnr_user_ysf_t;

typedef struct _isp_yuv3dnr_user_csf_t {
    uint32_t reserved;
} _isp_yuv3dnr_user_csf_t;

typedef struct _isp_yuv3dnr_user_cgf_t {
    uint32_t reserved;
} _isp_yuv3dnr_user_cgf_t;

typedef struct _isp_yuv3dnr_user_part_t {
    uint32_t reserved;
} _isp_yuv3dnr_user_part_t;

typedef struct _isp_yuv3dnr_user_dither_t {
    uint32_t reserved;
} _isp_yuv3dnr_user_dither_t;

typedef struct _isp_yuv3dnr_user_init_t {
    uint32_t reserved;
} _isp_yuv3dnr_user_init_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_yuv3dnr_user_ctrl(picojson::object &root, _isp_yuv3dnr_user_ctrl_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_yuv3dnr_user_extmask(picojson::object &root, _isp_yuv3dnr_user_extmask_t *out,
                                                 uint8_t partition);
ISP_JSON_API int rtl_to_drv_yuv3dnr_user_motion(picojson::object &root, _isp_yuv3dnr_user_motion_t *out,
                                                uint8_t partition);
ISP_JSON_API int rtl_to_drv_yuv3dnr_user_setup(picojson::object &root, _isp_yuv3dnr_user_setup_t *out,
                                               uint8_t partition);
ISP_JSON_API int rtl_to_drv_yuv3dnr_user_tnr(picojson::object &root, _isp_yuv3dnr_user_tnr_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_yuv3dnr_user_ysf(picojson::object &root, _isp_yuv3dnr_user_ysf_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_yuv3dnr_user_csf(picojson::object &root, _isp_yuv3dnr_user_csf_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_yuv3dnr_user_cgf(picojson::object &root, _isp_yuv3dnr_user_cgf_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_yuv3dnr_user_part(picojson::object &root, _isp_yuv3dnr_user_part_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_yuv3dnr_user_dither(picojson::object &root, _isp_yuv3dnr_user_dither_t *out,
                                                uint8_t partition);
ISP_JSON_API int rtl_to_drv_yuv3dnr_user_init(picojson::object &root, _isp_yuv3dnr_user_init_t *out,
                                              uint8_t partition);
#endif

#endif
