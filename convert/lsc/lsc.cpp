/* Converters of the lens shading block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/lsc.h"

int rtl_to_drv_lsc_user_setup(picojson::object &, _isp_lsc_user_setup_t *, uint8_t) { return 0; }

int rtl_to_drv_lsc_user_coord(picojson::object &, _isp_lsc_user_coord_t *, uint8_t) { return 0; }

int rtl_to_drv_lsc_user_mesh(picojson::object &, _isp_lsc_user_mesh_t *, uint8_t) { return 0; }
