/* Converters of the white-balance gain block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/wbc.h"

int rtl_to_drv_wbc_user_ctrl(picojson::object &, _isp_wbc_user_ctrl_t *, uint8_t) { return 0; }

int rtl_to_drv_wbc_user_setup(picojson::object &, _isp_wbc_user_setup_t *, uint8_t) { return 0; }

int rtl_to_drv_wbc_user_init(picojson::object &, _isp_wbc_user_init_t *, uint8_t) { return 0; }
