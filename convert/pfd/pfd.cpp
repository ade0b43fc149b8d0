/* Converters of the purple fringe block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/pfd.h"

int rtl_to_drv_pfd_user_det(picojson::object &, _isp_pfd_user_det_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_pfd_user_setup(picojson::object &, _isp_pfd_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_pfd_user_init(picojson::object &, _isp_pfd_user_init_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_pfd_user_ptn_related(picojson::object &, _isp_pfd_user_ptn_related_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_pfd_mesh_lut(picojson::object &, _isp_pfd_user_mesh_lut_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_pfd_mesh_thr(picojson::object &, _isp_pfd_user_mesh_thr_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/pfd/pfd.def"
#define ISP_DEF_BLOCK pfd
#include "convert/common/register_map_build.h"
