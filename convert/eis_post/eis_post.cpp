/* Converters of the stabilisation, second stage block. Its register map is not yet defined, so they
 * read no field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/eis_post.h"

int rtl_to_drv_eis_post_user_ctrl(picojson::object &, _isp_eis_post_user_ctrl_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_eis_post_user_setup(picojson::object &, _isp_eis_post_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_eis_post_user_init(picojson::object &, _isp_eis_post_user_init_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/eis_post/eis_post.def"
#define ISP_DEF_BLOCK eis_post
#include "convert/common/register_map_build.h"
