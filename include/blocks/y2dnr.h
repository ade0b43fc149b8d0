/* Driver structures, converters of the luma 2D noise reduction block ("isp_y2dnr").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_Y2DNR_H
#define ISP_BLOCK_Y2DNR_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_y2dnr_user_init_t {
    uint32_t reserved;
} _isp_y2dnr_user_init_t;

typedef struct _isp_y2dnr_user_setup_t {
    uint32_t reserved;
} _isp_y2dnr_user_setup_t;

typedef struct _isp_y2dnr_user_top_control_t {
    uint32_t reserved;
} _isp_y2dnr_user_top_control_t;

typedef struct _isp_y2dnr_user_debug_mode_t {
    uint32_t reserved;
} _isp_y2dnr_user_debug_mode_t;

typedef struct _isp_y2dnr_user_feature_t {
    uint32_t reserved;
} _isp_y2dnr_user_feature_t;

typedef struct _isp_y2dnr_user_dpc_t {
    uint32_t reserved;
} _isp_y2dnr_user_dpc_t;

typedef struct _isp_y2dnr_user_sf1_t {
    uint32_t reserved;
} _isp_y2dnr_user_sf1_t;

typedef struct _isp_y2dnr_user_sf2_t {
    uint32_t reserved;
} _isp_y2dnr_user_sf2_t;

typedef struct _isp_y2dnr_user_filter_style_t {
    uint32_t reserved;
} _isp_y2dnr_user_filter_style_t;

typedef struct _isp_y2dnr_user_luma_str_t {
    uint32_t reserved;
} _isp_y2dnr_user_luma_str_t;

typedef struct _isp_y2dnr_user_motion_t {
    uint32_t reserved;
} _isp_y2dnr_user_motion_t;

typedef struct _isp_y2dnr_user_dither_t {
    uint32_t reserved;
} _isp_y2dnr_user_dither_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_y2dnr_user_init(picojson::object &root, _isp_y2dnr_user_init_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_y2dnr_user_setup(picojson::object &root, _isp_y2dnr_user_setup_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_y2dnr_user_top_control(picojson::object &root, _isp_y2dnr_user_top_control_t *out,
                                                   uint8_t partition);
ISP_JSON_API int rtl_to_drv_y2dnr_user_debug_mode(picojson::object &root, _isp_y2dnr_user_debug_mode_t *out,
                                                  uint8_t partition);
ISP_JSON_API int rtl_to_drv_y2dnr_user_feature(picojson::object &root, _isp_y2dnr_user_feature_t *out,
                                               uint8_t partition);
ISP_JSON_API int rtl_to_drv_y2dnr_user_dpc(picojson::object &root, _isp_y2dnr_user_dpc_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_y2dnr_user_sf1(picojson::object &root, _isp_y2dnr_user_sf1_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_y2dnr_user_sf2(picojson::object &root, _isp_y2dnr_user_sf2_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_y2dnr_user_filter_style(picojson::object &root, _isp_y2dnr_user_filter_style_t *out,
                                                    uint8_t partition);
ISP_JSON_API int rtl_to_drv_y2dnr_user_luma_str(picojson::object &root, _isp_y2dnr_user_luma_str_t *out,
                                                uint8_t partition);
ISP_JSON_API int rtl_to_drv_y2dnr_user_motion(picojson::object &root, _isp_y2dnr_user_motion_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_y2dnr_user_dither(picojson::object &root, _isp_y2dnr_user_dither_t *out,
                                              uint8_t partition);
#endif

#endif
