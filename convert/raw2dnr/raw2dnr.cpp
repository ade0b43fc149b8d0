/* Converters of the raw noise reduction block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/raw2dnr.h"

int rtl_to_drv_raw2dnr_user_init(picojson::object &, _isp_raw2dnr_user_init_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_raw2dnr_user_setup(picojson::object &, _isp_raw2dnr_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_raw2dnr_user_mask(picojson::object &, _isp_raw2dnr_user_mask_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_raw2dnr_user_fs(picojson::object &, _isp_raw2dnr_user_fs_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_raw2dnr_user_hfnr(picojson::object &, _isp_raw2dnr_user_hfnr_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_raw2dnr_user_mfnr(picojson::object &, _isp_raw2dnr_user_mfnr_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_raw2dnr_user_np(picojson::object &, _isp_raw2dnr_user_np_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/raw2dnr/raw2dnr.def"
#define ISP_DEF_BLOCK raw2dnr
#include "convert/common/register_map_build.h"
