/* Converters of the AF statistics block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/af_stat.h"

int rtl_to_drv_af_stat_user_init(picojson::object &, _isp_af_stat_user_init_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_af_stat_user_afs_setup(picojson::object &, _isp_af_stat_user_afs_setup_t *,
                                      uint8_t) {
    return 0;
}

int rtl_to_drv_af_stat_user_afs_adj(picojson::object &, _isp_af_stat_user_afs_adj_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_af_stat_user_afs_ptn(picojson::object &, _isp_af_stat_user_afs_ptn_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_af_stat_user_afs_drc(picojson::object &, _isp_af_stat_user_afs_drc_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_af_stat_kernel_wr_addr(picojson::object &, _isp_af_stat_kernel_wr_addr_t *,
                                      uint8_t) {
    return 0;
}

int rtl_to_drv_af_stat_kernel_afs_setup(picojson::object &, _isp_af_stat_kernel_afs_setup_t *,
                                        uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/af_stat/af_stat.def"
#define ISP_DEF_BLOCK af_stat
#include "convert/common/register_map_build.h"
