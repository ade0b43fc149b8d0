/* Converters of the dehaze block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/dehaze.h"

int rtl_to_drv_dehaze_user_setup(picojson::object &, _isp_dehaze_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_dehaze_user_part(picojson::object &, _isp_dehaze_user_part_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_dehaze_user_ctrl(picojson::object &, _isp_dehaze_user_ctrl_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/dehaze/dehaze.def"
#define ISP_DEF_BLOCK dehaze
#include "convert/common/register_map_build.h"
