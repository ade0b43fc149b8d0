/* Converters of the black level and linearisation block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/blc.h"

int rtl_to_drv_blc_user_lin(picojson::object &, _isp_blc_user_lin_t *, uint8_t) { return 0; }

int rtl_to_drv_blc_user_common(picojson::object &, _isp_blc_user_common_t *, uint8_t) { return 0; }

int rtl_to_drv_blc_user_dither(picojson::object &, _isp_blc_user_dither_t *, uint8_t) { return 0; }

int rtl_to_drv_blc_user_setup(picojson::object &, _isp_blc_user_setup_t *, uint8_t) { return 0; }

int rtl_to_drv_blc_user_init(picojson::object &, _isp_blc_user_init_t *, uint8_t) { return 0; }

int rtl_to_drv_blc_kernel_gbl(picojson::object &, _isp_blc_kernel_gbl_t *, uint8_t) { return 0; }

int rtl_to_drv_blc_kernel_sbl(picojson::object &, _isp_blc_kernel_sbl_t *, uint8_t) { return 0; }

int rtl_to_drv_blc_kernel_ctrl(picojson::object &, _isp_blc_kernel_ctrl_t *, uint8_t) { return 0; }

int rtl_to_drv_blc_user_gbl(picojson::object &, _isp_blc_user_gbl_t *, uint8_t) { return 0; }

int rtl_to_drv_blc_user_sbl(picojson::object &, _isp_blc_user_sbl_t *, uint8_t) { return 0; }
