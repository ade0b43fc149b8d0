/* Converters and C-model exporter of the inverse dynamic range compression block: every field
 * and key is a row of hidrc.def. */
#include "blocks/hidrc.h"

#include "convert/common/register_map.h"

namespace isp {
extern const block_map hidrc_map;
}

int rtl_to_drv_hidrc_user_setup(picojson::object &root, _isp_hidrc_user_setup_t *out,
                                uint8_t partition) {
    isp::read_rows(isp::hidrc_map, "setup", root, out, partition);
    return 0;
}

/* A missing or short curve, or a non-number in it, raises out of here; the words before it stay
 * written. */
int rtl_to_drv_hidrc_user_hidrc_lut(picojson::object &root, _isp_hidrc_user_hidrc_lut_t *out,
                                    uint8_t partition) {
    isp::read_rows(isp::hidrc_map, "hidrc_lut", root, out, partition);
    return 0;
}

int drv_to_cmodel_hidrc_user_setup(_isp_hidrc_user_setup_t *in, picojson::object &out,
                                   uint8_t partition) {
    isp::export_rows(isp::hidrc_map, "setup", in, out, partition);
    return 0;
}

#define ISP_DEF_FILE "convert/hidrc/hidrc.def"
#define ISP_DEF_BLOCK hidrc
#include "convert/common/register_map_build.h"
