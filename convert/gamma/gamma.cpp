/* Converters of the gamma block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/gamma.h"

int rtl_to_drv_gamma_user_setup(picojson::object &, _isp_gamma_user_setup_t *, uint8_t) { return 0; }

int rtl_to_drv_gamma_user_dither(picojson::object &, _isp_gamma_user_dither_t *, uint8_t) { return 0; }

int rtl_to_drv_gamma_user_lut(picojson::object &, _isp_gamma_user_lut_t *, uint8_t) { return 0; }
