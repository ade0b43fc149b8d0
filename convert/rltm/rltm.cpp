/* Converters of the tone mapping block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/rltm.h"

int rtl_to_drv_rltm_user_init(picojson::object &, _isp_rltm_user_init_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_rltm_user_setup(picojson::object &, _isp_rltm_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_rltm_user_dither(picojson::object &, _isp_rltm_user_dither_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_rltm_user_reserved(picojson::object &, _isp_rltm_user_reserved_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_rltm_user_common(picojson::object &, _isp_rltm_user_common_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_rltm_user_info(picojson::object &, _isp_rltm_user_info_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_rltm_user_detail(picojson::object &, _isp_rltm_user_detail_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_rltm_user_low_freq(picojson::object &, _isp_rltm_user_low_freq_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_rltm_kernel_sync(picojson::object &, _isp_rltm_kernel_sync_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_rltm_user_lut(picojson::object &, _isp_rltm_user_lut_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/rltm/rltm.def"
#define ISP_DEF_BLOCK rltm
#include "convert/common/register_map_build.h"
