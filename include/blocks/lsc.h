/* Driver structures, converters of the lens shading block ("isp_lsc").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_LSC_H
#define ISP_BLOCK_LSC_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_lsc_user_setup_t {
    uint32_t reserved;
} _isp_lsc_user_setup_t;

typedef struct _isp_lsc_user_coord_t {
    uint32_t reserved;
} _isp_lsc_user_coord_t;

typedef struct _isp_lsc_user_mesh_t {
    uint32_t reserved;
} _isp_lsc_user_mesh_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_lsc_user_setup(picojson::object &root, _isp_lsc_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_lsc_user_coord(picojson::object &root, _isp_lsc_user_coord_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_lsc_user_mesh(picojson::object &root, _isp_lsc_user_mesh_t *out,
                                          uint8_t partition);
#endif

#endif
