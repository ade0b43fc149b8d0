/* Driver structures, converters of the defect pixel correction block ("isp_dpc").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_DPC_H
#define ISP_BLOCK_DPC_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_dpc_user_calc_dp_strength_t {
    uint32_t reserved;
} _isp_dpc_user_calc_dp_strength_t;

typedef struct _isp_dpc_user_setup_t {
    uint32_t reserved;
} _isp_dpc_user_setup_t;

typedef struct _isp_dpc_user_calc_top_control_t {
    uint32_t reserved;
} _isp_dpc_user_calc_top_control_t;

typedef struct _isp_dpc_user_calc_noise_t {
    uint32_t reserved;
} _isp_dpc_user_calc_noise_t;

typedef struct _isp_dpc_user_calc_wb_gain_t {
    uint32_t reserved;
} _isp_dpc_user_calc_wb_gain_t;

typedef struct _isp_dpc_user_calc_quick_det_t {
    uint32_t reserved;
} _isp_dpc_user_calc_quick_det_t;

typedef struct _isp_dpc_user_calc_dp_correct_t {
    uint32_t reserved;
} _isp_dpc_user_calc_dp_correct_t;

typedef struct _isp_dpc_user_calc_color_limit_t {
    uint32_t reserved;
} _isp_dpc_user_calc_color_limit_t;

typedef struct _isp_dpc_user_init_t {
    uint32_t reserved;
} _isp_dpc_user_init_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_dpc_user_calc_dp_strength(picojson::object &root, _isp_dpc_user_calc_dp_strength_t *out,
                                                      uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_setup(picojson::object &root, _isp_dpc_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_top_control(picojson::object &root, _isp_dpc_user_calc_top_control_t *out,
                                                      uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_noise(picojson::object &root, _isp_dpc_user_calc_noise_t *out,
                                                uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_wb_gain(picojson::object &root, _isp_dpc_user_calc_wb_gain_t *out,
                                                  uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_quick_det(picojson::object &root, _isp_dpc_user_calc_quick_det_t *out,
                                                    uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_dp_correct(picojson::object &root, _isp_dpc_user_calc_dp_correct_t *out,
                                                     uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_calc_color_limit(picojson::object &root, _isp_dpc_user_calc_color_limit_t *out,
                                                      uint8_t partition);
ISP_JSON_API int rtl_to_drv_dpc_user_init(picojson::object &root, _isp_dpc_user_init_t *out,
                                          uint8_t partition);
#endif

#endif
