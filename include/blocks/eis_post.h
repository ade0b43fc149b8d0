/* Driver structures, converters of the stabilisation, second stage block ("isp_eis_post").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_EIS_POST_H
#define ISP_BLOCK_EIS_POST_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_eis_post_user_ctrl_t {
    uint32_t reserved;
} _isp_eis_post_user_ctrl_t;

typedef struct _isp_eis_post_user_setup_t {
    uint32_t reserved;
} _isp_eis_post_user_setup_t;

typedef struct _isp_eis_post_user_init_t {
    uint32_t reserved;
} _isp_eis_post_user_init_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_eis_post_user_ctrl(picojson::object &root, _isp_eis_post_user_ctrl_t *out,
                                               uint8_t partition);
ISP_JSON_API int rtl_to_drv_eis_post_user_setup(picojson::object &root, _isp_eis_post_user_setup_t *out,
                                                uint8_t partition);
ISP_JSON_API int rtl_to_drv_eis_post_user_init(picojson::object &root, _isp_eis_post_user_init_t *out,
                                               uint8_t partition);
#endif

#endif
