/* Driver structures, converters of the AF statistics block ("isp_af_stat").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_AF_STAT_H
#define ISP_BLOCK_AF_STAT_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_af_stat_user_init_t {
    uint32_t reserved;
} _isp_af_stat_user_init_t;

typedef struct _isp_af_stat_user_afs_setup_t {
    uint32_t reserved;
} _isp_af_stat_user_afs_setup_t;

typedef struct _isp_af_stat_user_afs_adj_t {
    uint32_t reserved;
} _isp_af_stat_user_afs_adj_t;

typedef struct _isp_af_stat_user_afs_ptn_t {
    uint32_t reserved;
} _isp_af_stat_user_afs_ptn_t;

typedef struct _isp_af_stat_user_afs_drc_t {
    uint32_t reserved;
} _isp_af_stat_user_afs_drc_t;

typedef struct _isp_af_stat_kernel_wr_addr_t {
    uint32_t reserved;
} _isp_af_stat_kernel_wr_addr_t;

typedef struct _isp_af_stat_kernel_afs_setup_t {
    uint32_t reserved;
} _isp_af_stat_kernel_afs_setup_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_af_stat_user_init(picojson::object &root, _isp_af_stat_user_init_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_af_stat_user_afs_setup(picojson::object &root, _isp_af_stat_user_afs_setup_t *out,
                                                   uint8_t partition);
ISP_JSON_API int rtl_to_drv_af_stat_user_afs_adj(picojson::object &root, _isp_af_stat_user_afs_adj_t *out,
                                                 uint8_t partition);
ISP_JSON_API int rtl_to_drv_af_stat_user_afs_ptn(picojson::object &root, _isp_af_stat_user_afs_ptn_t *out,
                                                 uint8_t partition);
ISP_JSON_API int rtl_to_drv_af_stat_user_afs_drc(picojson::object &root, _isp_af_stat_user_afs_drc_t *out,
                                                 uint8_t partition);
ISP_JSON_API int rtl_to_drv_af_stat_kernel_wr_addr(picojson::object &root, _isp_af_stat_kernel_wr_addr_t *out,
                                                   uint8_t partition);
ISP_JSON_API int rtl_to_drv_af_stat_kernel_afs_setup(picojson::object &root, _isp_af_stat_kernel_afs_setup_t *out,
                                                     uint8_t partition);
#endif

#endif
