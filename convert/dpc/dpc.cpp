/* Converters of the defect pixel correction block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/dpc.h"

int rtl_to_drv_dpc_user_calc_dp_strength(picojson::object &, _isp_dpc_user_calc_dp_strength_t *, uint8_t) { return 0; }

int rtl_to_drv_dpc_user_setup(picojson::object &, _isp_dpc_user_setup_t *, uint8_t) { return 0; }

int rtl_to_drv_dpc_user_calc_top_control(picojson::object &, _isp_dpc_user_calc_top_control_t *, uint8_t) { return 0; }

int rtl_to_drv_dpc_user_calc_noise(picojson::object &, _isp_dpc_user_calc_noise_t *, uint8_t) { return 0; }

int rtl_to_drv_dpc_user_calc_wb_gain(picojson::object &, _isp_dpc_user_calc_wb_gain_t *, uint8_t) { return 0; }

int rtl_to_drv_dpc_user_calc_quick_det(picojson::object &, _isp_dpc_user_calc_quick_det_t *, uint8_t) { return 0; }

int rtl_to_drv_dpc_user_calc_dp_correct(picojson::object &, _isp_dpc_user_calc_dp_correct_t *, uint8_t) { return 0; }

int rtl_to_drv_dpc_user_calc_color_limit(picojson::object &, _isp_dpc_user_calc_color_limit_t *, uint8_t) { return 0; }

int rtl_to_drv_dpc_user_init(picojson::object &, _isp_dpc_user_init_t *, uint8_t) { return 0; }
