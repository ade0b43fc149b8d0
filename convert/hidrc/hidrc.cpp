/* Converters of the high-intensity dynamic range compression block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/hidrc.h"

int rtl_to_drv_hidrc_user_setup(picojson::object &, _isp_hidrc_user_setup_t *, uint8_t) { return 0; }

int rtl_to_drv_hidrc_user_hidrc_lut(picojson::object &, _isp_hidrc_user_hidrc_lut_t *, uint8_t) { return 0; }
