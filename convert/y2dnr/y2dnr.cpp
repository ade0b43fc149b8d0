/* Converters of the luma 2D noise reduction block. Its register map is not yet defined, so they
 * read no field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/y2dnr.h"

int rtl_to_drv_y2dnr_user_init(picojson::object &, _isp_y2dnr_user_init_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_y2dnr_user_setup(picojson::object &, _isp_y2dnr_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_y2dnr_user_top_control(picojson::object &, _isp_y2dnr_user_top_control_t *,
                                      uint8_t) {
    return 0;
}

int rtl_to_drv_y2dnr_user_debug_mode(picojson::object &, _isp_y2dnr_user_debug_mode_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_y2dnr_user_feature(picojson::object &, _isp_y2dnr_user_feature_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_y2dnr_user_dpc(picojson::object &, _isp_y2dnr_user_dpc_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_y2dnr_user_sf1(picojson::object &, _isp_y2dnr_user_sf1_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_y2dnr_user_sf2(picojson::object &, _isp_y2dnr_user_sf2_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_y2dnr_user_filter_style(picojson::object &, _isp_y2dnr_user_filter_style_t *,
                                       uint8_t) {
    return 0;
}

int rtl_to_drv_y2dnr_user_luma_str(picojson::object &, _isp_y2dnr_user_luma_str_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_y2dnr_user_motion(picojson::object &, _isp_y2dnr_user_motion_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_y2dnr_user_dither(picojson::object &, _isp_y2dnr_user_dither_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/y2dnr/y2dnr.def"
#define ISP_DEF_BLOCK y2dnr
#include "convert/common/register_map_build.h"
