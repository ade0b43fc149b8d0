/* Converters of the AE statistics block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/ae_stat.h"

int rtl_to_drv_ae_stat_user_init(picojson::object &, _isp_ae_stat_user_init_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_ae_stat_user_aes_adj(picojson::object &, _isp_ae_stat_user_aes_adj_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_ae_stat_user_aes_calc(picojson::object &, _isp_ae_stat_user_aes_calc_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/ae_stat/ae_stat.def"
#define ISP_DEF_BLOCK ae_stat
#include "convert/common/register_map_build.h"
