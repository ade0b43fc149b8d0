/* Converters of the YUV 3D noise reduction block. Its register map is not yet defined, so they read
 * no field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/yuv3dnr.h"

int rtl_to_drv_yuv3dnr_user_ctrl(picojson::object &, _isp_yuv3dnr_user_ctrl_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_yuv3dnr_user_extmask(picojson::object &, _isp_yuv3dnr_user_extmask_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_yuv3dnr_user_motion(picojson::object &, _isp_yuv3dnr_user_motion_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_yuv3dnr_user_setup(picojson::object &, _isp_yuv3dnr_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_yuv3dnr_user_tnr(picojson::object &, _isp_yuv3dnr_user_tnr_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_yuv3dnr_user_ysf(picojson::object &, _isp_yuv3dnr_user_ysf_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_yuv3dnr_user_csf(picojson::object &, _isp_yuv3dnr_user_csf_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_yuv3dnr_user_cgf(picojson::object &, _isp_yuv3dnr_user_cgf_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_yuv3dnr_user_part(picojson::object &, _isp_yuv3dnr_user_part_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_yuv3dnr_user_dither(picojson::object &, _isp_yuv3dnr_user_dither_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_yuv3dnr_user_init(picojson::object &, _isp_yuv3dnr_user_init_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/yuv3dnr/yuv3dnr.def"
#define ISP_DEF_BLOCK yuv3dnr
#include "convert/common/register_map_build.h"
