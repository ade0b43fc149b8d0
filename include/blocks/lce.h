/* Driver structures, converters of the local contrast and YUV processing block ("isp_lce").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_LCE_H
#define ISP_BLOCK_LCE_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_lce_user_hs2dlut_t {
    uint32_t reserved;
} _isp_lce_user_hs2dlut_t;

typedef struct _isp_lce_user_ccmp_t {
    uint32_t reserved;
} _isp_lce_user_ccmp_t;

typedef struct _isp_lce_user_ycproc_t {
    uint32_t reserved;
} _isp_lce_user_ycproc_t;

typedef struct _isp_lce_user_scm_t {
    uint32_t reserved;
} _isp_lce_user_scm_t;

typedef struct _isp_lce_user_init_t {
    uint32_t reserved;
} _isp_lce_user_init_t;

typedef struct _isp_lce_user_setup_t {
    uint32_t reserved;
} _isp_lce_user_setup_t;

typedef struct _isp_lce_user_basic_setting_t {
    uint32_t reserved;
} _isp_lce_user_basic_setting_t;

typedef struct _isp_lce_user_luma_chroma_setting_t {
    uint32_t reserved;
} _isp_lce_user_luma_chroma_setting_t;

typedef struct _isp_lce_user_motion_setting_t {
    uint32_t reserved;
} _isp_lce_user_motion_setting_t;

typedef struct _isp_lce_user_nr_coring_setting_t {
    uint32_t reserved;
} _isp_lce_user_nr_coring_setting_t;

typedef struct _isp_lce_user_desat_setting_t {
    uint32_t reserved;
} _isp_lce_user_desat_setting_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_lce_user_hs2dlut(picojson::object &root, _isp_lce_user_hs2dlut_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_lce_user_ccmp(picojson::object &root, _isp_lce_user_ccmp_t *out,
                                          uint8_t partition);
ISP_JSON_API int rtl_to_drv_lce_user_ycproc(picojson::object &root, _isp_lce_user_ycproc_t *out,
                                            uint8_t partition);
ISP_JSON_API int rtl_to_drv_lce_user_scm(picojson::object &root, _isp_lce_user_scm_t *out,
                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_lce_user_init(picojson::object &root, _isp_lce_user_init_t *out,
                                          uint8_t partition);
ISP_JSON_API int rtl_to_drv_lce_user_setup(picojson::object &root, _isp_lce_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_lce_user_basic_setting(picojson::object &root, _isp_lce_user_basic_setting_t *out,
                                                   uint8_t partition);
ISP_JSON_API int rtl_to_drv_lce_user_luma_chroma_setting(picojson::object &root, _isp_lce_user_luma_chroma_setting_t *out,
                                                         uint8_t partition);
ISP_JSON_API int rtl_to_drv_lce_user_motion_setting(picojson::object &root, _isp_lce_user_motion_setting_t *out,
                                                    uint8_t partition);
ISP_JSON_API int rtl_to_drv_lce_user_nr_coring_setting(picojson::object &root, _isp_lce_user_nr_coring_setting_t *out,
                                                       uint8_t partition);
ISP_JSON_API int rtl_to_drv_lce_user_desat_setting(picojson::object &root, _isp_lce_user_desat_setting_t *out,
                                                   uint8_t partition);
#endif

#endif
