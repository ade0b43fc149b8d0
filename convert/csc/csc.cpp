/* Converters of the colour space conversion block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/csc.h"

int rtl_to_drv_csc_user_core(picojson::object &, _isp_csc_user_core_t *, uint8_t) { return 0; }

int rtl_to_drv_csc_user_setup(picojson::object &, _isp_csc_user_setup_t *, uint8_t) { return 0; }

int rtl_to_drv_csc_user_init(picojson::object &, _isp_csc_user_init_t *, uint8_t) { return 0; }
