/* Driver structures, converters of the AWB statistics block ("isp_awb_stat").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_AWB_STAT_H
#define ISP_BLOCK_AWB_STAT_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_awb_stat_user_init_t {
    uint32_t reserved;
    /* statistics write address of each partition's area, in 8-byte units; written by the
     * awb_stat module from its DMA buffer, never by the converter */
    uint32_t wr_addr[ISP_MAX_PARTITIONS];
} _isp_awb_stat_user_init_t;

typedef struct _isp_awb_stat_user_awbs_adj_t {
    uint32_t reserved;
} _isp_awb_stat_user_awbs_adj_t;

typedef struct _isp_awb_stat_user_awbs_calc_grid_t {
    uint32_t reserved;
} _isp_awb_stat_user_awbs_calc_grid_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_awb_stat_user_init(picojson::object &root, _isp_awb_stat_user_init_t *out,
                                               uint8_t partition);
ISP_JSON_API int rtl_to_drv_awb_stat_user_awbs_adj(picojson::object &root, _isp_awb_stat_user_awbs_adj_t *out,
                                                   uint8_t partition);
ISP_JSON_API int rtl_to_drv_awb_stat_user_awbs_calc_grid(picojson::object &root, _isp_awb_stat_user_awbs_calc_grid_t *out,
                                                         uint8_t partition);
#endif

#endif
