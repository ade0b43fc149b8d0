/* Converters of the colour correction block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/clc.h"

int rtl_to_drv_clc_user_init(picojson::object &, _isp_clc_user_init_t *, uint8_t) { return 0; }

int rtl_to_drv_clc_user_clc_setup(picojson::object &, _isp_clc_user_clc_setup_t *, uint8_t) { return 0; }

int rtl_to_drv_clc_user_clc(picojson::object &, _isp_clc_user_clc_t *, uint8_t) { return 0; }
