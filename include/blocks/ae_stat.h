/* Driver structures, converters of the AE statistics block ("isp_ae_stat").
 * Its register map is not yet defined: every group holds one reserved word and the converters
 * read no field. */
#ifndef ISP_BLOCK_AE_STAT_H
#define ISP_BLOCK_AE_STAT_H

#include <stdint.h>

#include "isp_framework.h"

typedef struct _isp_ae_stat_user_init_t {
    uint32_t reserved;
    /* statistics write addresses of each partition's three sub-areas, in 8-byte units; written
     * by the ae_stat module from its DMA buffer, never by the converter */
    uint32_t wr_addr0[ISP_MAX_PARTITIONS];
    uint32_t wr_addr1[ISP_MAX_PARTITIONS];
    uint32_t wr_addr2[ISP_MAX_PARTITIONS];
} _isp_ae_stat_user_init_t;

typedef struct _isp_ae_stat_user_aes_adj_t {
    uint32_t reserved;
} _isp_ae_stat_user_aes_adj_t;

typedef struct _isp_ae_stat_user_aes_calc_t {
    uint32_t reserved;
} _isp_ae_stat_user_aes_calc_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_ae_stat_user_init(picojson::object &root, _isp_ae_stat_user_init_t *out,
                                              uint8_t partition);
ISP_JSON_API int rtl_to_drv_ae_stat_user_aes_adj(picojson::object &root, _isp_ae_stat_user_aes_adj_t *out,
                                                 uint8_t partition);
ISP_JSON_API int rtl_to_drv_ae_stat_user_aes_calc(picojson::object &root, _isp_ae_stat_user_aes_calc_t *out,
                                                  uint8_t partition);
#endif

#endif
