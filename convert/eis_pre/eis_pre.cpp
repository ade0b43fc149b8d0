/* Converters of the stabilisation, first stage block. Its register map is not yet defined, so they
 * read no field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/eis_pre.h"

int rtl_to_drv_eis_pre_user_lut(picojson::object &, _isp_eis_pre_user_lut_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_eis_pre_user_setup(picojson::object &, _isp_eis_pre_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_eis_pre_user_ctrl(picojson::object &, _isp_eis_pre_user_ctrl_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_eis_pre_user_init(picojson::object &, _isp_eis_pre_user_init_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/eis_pre/eis_pre.def"
#define ISP_DEF_BLOCK eis_pre
#include "convert/common/register_map_build.h"
