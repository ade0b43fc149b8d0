/* Converters and C-model exporters of the colour space conversion block: every field and key is
 * a row of csc.def. */
#include "blocks/csc.h"

#include "convert/common/register_map.h"

namespace isp {
extern const block_map csc_map;
}

int rtl_to_drv_csc_user_init(picojson::object &root, _isp_csc_user_init_t *out, uint8_t partition) {
    isp::read_rows(isp::csc_map, "init", root, out, partition);
    return 0;
}

int rtl_to_drv_csc_user_core(picojson::object &root, _isp_csc_user_core_t *out, uint8_t partition) {
    isp::read_rows(isp::csc_map, "core", root, out, partition);
    return 0;
}

int rtl_to_drv_csc_user_setup(picojson::object &root, _isp_csc_user_setup_t *out,
                              uint8_t partition) {
    isp::read_rows(isp::csc_map, "setup", root, out, partition);
    return 0;
}

int drv_to_cmodel_csc_user_core(_isp_csc_user_core_t *in, picojson::object &out,
                                uint8_t partition) {
    isp::export_rows(isp::csc_map, "core", in, out, partition);
    return 0;
}

int drv_to_cmodel_csc_user_setup(_isp_csc_user_setup_t *in, picojson::object &out,
                                 uint8_t partition) {
    isp::export_rows(isp::csc_map, "setup", in, out, partition);
    return 0;
}

#define ISP_DEF_FILE "convert/csc/csc.def"
#define ISP_DEF_BLOCK csc
#include "convert/common/register_map_build.h"
