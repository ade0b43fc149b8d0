/* Converters of the HDR fusion block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/hdr.h"

int rtl_to_drv_hdr_user_common(picojson::object &, _isp_hdr_user_common_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_hdr_noise_profile(picojson::object &, _isp_hdr_user_common_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_hdr_user_deghost(picojson::object &, _isp_hdr_user_deghost_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_hdr_user_setup(picojson::object &, _isp_hdr_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_hdr_exp_weight_lut_luma_mid(picojson::object &, _isp_hdr_kernel_exposure_t *,
                                           uint8_t) {
    return 0;
}

int rtl_to_drv_hdr_user_init(picojson::object &, _isp_hdr_user_init_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_hdr_user_motion(picojson::object &, _isp_hdr_user_motion_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_hdr_kernel_fusion(picojson::object &, _isp_hdr_kernel_fusion_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_hdr_kernel_common(picojson::object &, _isp_hdr_kernel_common_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_hdr_kernel_exposure(picojson::object &, _isp_hdr_kernel_exposure_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_hdr_exp_weight_lut_luma_low_high(picojson::object &, _isp_hdr_kernel_exposure_t *,
                                                uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/hdr/hdr.def"
#define ISP_DEF_BLOCK hdr
#include "convert/common/register_map_build.h"
