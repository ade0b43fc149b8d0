/* Driver structures, converters of the gamma block ("isp_gamma").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_GAMMA_H
#define ISP_BLOCK_GAMMA_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_gamma_user_setup_t {
    uint32_t reserved;
} _isp_gamma_user_setup_t;

typedef struct _isp_gamma_user_dither_t {
    uint32_t reserved;
} _isp_gamma_user_dither_t;

typedef struct _isp_gamma_user_lut_t {
    uint32_t reserved;
} _isp_gamma_user_lut_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_gamma_user_setup(picojson::object &root, _isp_gamma_user_setup_t *out,
                                             uint8_t partition);
ISP_JSON_API int rtl_to_drv_gamma_user_dither(picojson::object &root, _isp_gamma_user_dither_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_gamma_user_lut(picojson::object &root, _isp_gamma_user_lut_t *out,
                                           uint8_t partition);
#endif

#endif
