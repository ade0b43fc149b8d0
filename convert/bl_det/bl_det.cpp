/* Converters of the black-level detection block. Its register map is not yet defined, so they read
 * no field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/bl_det.h"

int rtl_to_drv_bl_det_user_setup(picojson::object &, _isp_bl_det_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_bl_det_user_init(picojson::object &, _isp_bl_det_user_init_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/bl_det/bl_det.def"
#define ISP_DEF_BLOCK bl_det
#include "convert/common/register_map_build.h"
