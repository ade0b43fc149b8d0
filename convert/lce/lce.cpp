/* Converters of the local contrast and YUV processing block. Its register map is not yet defined,
 * so they read no field; each keeps the signature every converter has so the modules call them in
 * order. */
#include "blocks/lce.h"

int rtl_to_drv_lce_user_hs2dlut(picojson::object &, _isp_lce_user_hs2dlut_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_lce_user_ccmp(picojson::object &, _isp_lce_user_ccmp_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_lce_user_ycproc(picojson::object &, _isp_lce_user_ycproc_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_lce_user_scm(picojson::object &, _isp_lce_user_scm_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_lce_user_init(picojson::object &, _isp_lce_user_init_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_lce_user_setup(picojson::object &, _isp_lce_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_lce_user_basic_setting(picojson::object &, _isp_lce_user_basic_setting_t *,
                                      uint8_t) {
    return 0;
}

int rtl_to_drv_lce_user_luma_chroma_setting(picojson::object &,
                                            _isp_lce_user_luma_chroma_setting_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_lce_user_motion_setting(picojson::object &, _isp_lce_user_motion_setting_t *,
                                       uint8_t) {
    return 0;
}

int rtl_to_drv_lce_user_nr_coring_setting(picojson::object &, _isp_lce_user_nr_coring_setting_t *,
                                          uint8_t) {
    return 0;
}

int rtl_to_drv_lce_user_desat_setting(picojson::object &, _isp_lce_user_desat_setting_t *,
                                      uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/lce/lce.def"
#define ISP_DEF_BLOCK lce
#include "convert/common/register_map_build.h"
