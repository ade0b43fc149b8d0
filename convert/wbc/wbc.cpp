/* Converters and exporters of the white-balance gain block: every field and key is a row of
 * wbc.def. */
#include "blocks/wbc.h"

#include "convert/common/register_map.h"

namespace isp {
extern const block_map wbc_map;
}

int rtl_to_drv_wbc_user_ctrl(picojson::object &root, _isp_wbc_user_ctrl_t *out, uint8_t partition) {
    isp::read_rows(isp::wbc_map, "ctrl", root, out, partition);
    return 0;
}

int rtl_to_drv_wbc_user_setup(picojson::object &root, _isp_wbc_user_setup_t *out,
                              uint8_t partition) {
    isp::read_rows(isp::wbc_map, "setup", root, out, partition);
    return 0;
}

int rtl_to_drv_wbc_user_init(picojson::object &root, _isp_wbc_user_init_t *out, uint8_t partition) {
    isp::read_rows(isp::wbc_map, "init", root, out, partition);
    return 0;
}

int drv_to_cmodel_wbc_user_ctrl(_isp_wbc_user_ctrl_t *in, picojson::object &out,
                                uint8_t partition) {
    isp::export_rows(isp::wbc_map, "ctrl", in, out, partition);
    return 0;
}

int drv_to_cmodel_wbc_user_setup(_isp_wbc_user_setup_t *in, picojson::object &out,
                                 uint8_t partition) {
    isp::export_rows(isp::wbc_map, "setup", in, out, partition);
    return 0;
}

#define ISP_DEF_FILE "convert/wbc/wbc.def"
#define ISP_DEF_BLOCK wbc
#include "convert/common/register_map_build.h"
