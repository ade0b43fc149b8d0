/* Driver structures, converters of the demosaic block ("isp_dem").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_DEM_H
#define ISP_BLOCK_DEM_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_dem_user_init_t {
    uint32_t reserved;
} _isp_dem_user_init_t;

typedef struct _isp_dem_user_setup_t {
    uint32_t reserved;
} _isp_dem_user_setup_t;

typedef struct _isp_dem_user_dem_mode_t {
    uint32_t reserved;
} _isp_dem_user_dem_mode_t;

typedef struct _isp_dem_user_dem_core_t {
    uint32_t reserved;
} _isp_dem_user_dem_core_t;

typedef struct _isp_dem_user_wbc_t {
    uint32_t reserved;
} _isp_dem_user_wbc_t;

typedef struct _isp_dem_user_fcc_t {
    uint32_t reserved;
} _isp_dem_user_fcc_t;

typedef struct _isp_dem_user_gic_t {
    uint32_t reserved;
} _isp_dem_user_gic_t;

typedef struct _isp_dem_user_sharpen_t {
    uint32_t reserved;
} _isp_dem_user_sharpen_t;

typedef struct _isp_dem_kernel_mem_ctrl_t {
    uint32_t reserved;
} _isp_dem_kernel_mem_ctrl_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_dem_user_init(picojson::object &root, _isp_dem_user_init_t *out,
                                          uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_setup(picojson::object &root, _isp_dem_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_dem_mode(picojson::object &root, _isp_dem_user_dem_mode_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_dem_core(picojson::object &root, _isp_dem_user_dem_core_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_wbc(picojson::object &root, _isp_dem_user_wbc_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_fcc(picojson::object &root, _isp_dem_user_fcc_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_gic(picojson::object &root, _isp_dem_user_gic_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_user_sharpen(picojson::object &root, _isp_dem_user_sharpen_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_dem_kernel_mem_ctrl(picojson::object &root, _isp_dem_kernel_mem_ctrl_t *out,
                                                uint8_t partition);
#endif

#endif
