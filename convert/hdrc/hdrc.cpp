/* Converters of the dynamic range compression block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/hdrc.h"

int rtl_to_drv_hdrc_user_setup(picojson::object &, _isp_hdrc_user_setup_t *, uint8_t) { return 0; }

int rtl_to_drv_hdrc_user_hdrc_lut(picojson::object &, _isp_hdrc_user_hdrc_lut_t *, uint8_t) { return 0; }

int rtl_to_drv_hdrc_glb_ctl(picojson::object &, _isp_hdrc_user_glb_ctrl_t *, uint8_t) { return 0; }
