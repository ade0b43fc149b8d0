/* Converters of the AWB statistics block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/awb_stat.h"

int rtl_to_drv_awb_stat_user_init(picojson::object &, _isp_awb_stat_user_init_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_awb_stat_user_awbs_adj(picojson::object &, _isp_awb_stat_user_awbs_adj_t *,
                                      uint8_t) {
    return 0;
}

int rtl_to_drv_awb_stat_user_awbs_calc_grid(picojson::object &,
                                            _isp_awb_stat_user_awbs_calc_grid_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/awb_stat/awb_stat.def"
#define ISP_DEF_BLOCK awb_stat
#include "convert/common/register_map_build.h"
