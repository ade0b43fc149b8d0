/* Driver structures, converters of the purple fringe block ("isp_pfd").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_PFD_H
#define ISP_BLOCK_PFD_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_pfd_user_det_t {
    uint32_t reserved;
} _isp_pfd_user_det_t;

typedef struct _isp_pfd_user_setup_t {
    uint32_t reserved;
} _isp_pfd_user_setup_t;

typedef struct _isp_pfd_user_init_t {
    uint32_t reserved;
} _isp_pfd_user_init_t;

typedef struct _isp_pfd_user_ptn_related_t {
    uint32_t reserved;
} _isp_pfd_user_ptn_related_t;

typedef struct _isp_pfd_user_mesh_lut_t {
    uint32_t reserved;
} _isp_pfd_user_mesh_lut_t;

typedef struct _isp_pfd_user_mesh_thr_t {
    uint32_t reserved;
} _isp_pfd_user_mesh_thr_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_pfd_user_det(picojson::object &root, _isp_pfd_user_det_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_pfd_user_setup(picojson::object &root, _isp_pfd_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_pfd_user_init(picojson::object &root, _isp_pfd_user_init_t *out,
                                          uint8_t partition);
ISP_JSON_API int rtl_to_drv_pfd_user_ptn_related(picojson::object &root, _isp_pfd_user_ptn_related_t *out,
                                                 uint8_t partition);
ISP_JSON_API int rtl_to_drv_pfd_mesh_lut(picojson::object &root, _isp_pfd_user_mesh_lut_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_pfd_mesh_thr(picojson::object &root, _isp_pfd_user_mesh_thr_t *out,
                                         uint8_t partition);
#endif

#endif
