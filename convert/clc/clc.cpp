/* Converters and exporters of the colour correction block: the fields and keys are rows of
 * clc.def; the partition sizes are read here. */
#include "blocks/clc.h"

#include <stddef.h>

#include "convert/common/register_map.h"

namespace isp {
extern const block_map clc_map;
}

namespace {

/* No row can store these: the structure holds pointers to arrays the module provides beside it,
 * and the partition's sizes go into those arrays. */
void read_part_sizes(const isp::field_reader &f, void *out, uint8_t partition) {
    _isp_clc_user_init_t *init   = static_cast<_isp_clc_user_init_t *>(out);
    init->part_size_h[partition] = f.read("part_size", "h", "u14");
    init->part_size_v[partition] = f.read("part_size", "v", "u14");
}

}  // namespace

int rtl_to_drv_clc_user_init(picojson::object &root, _isp_clc_user_init_t *out, uint8_t partition) {
    isp::read_rows(isp::clc_map, "init", root, out, partition);
    return 0;
}

int rtl_to_drv_clc_user_clc_setup(picojson::object &root, _isp_clc_user_clc_setup_t *out,
                                  uint8_t partition) {
    isp::read_rows(isp::clc_map, "clc_setup", root, out, partition);
    return 0;
}

int rtl_to_drv_clc_user_clc(picojson::object &root, _isp_clc_user_clc_t *out, uint8_t partition) {
    isp::read_rows(isp::clc_map, "clc", root, out, partition);
    return 0;
}

int drv_to_cmodel_clc_user_clc_setup(_isp_clc_user_clc_setup_t *in, picojson::object &out,
                                     uint8_t partition) {
    isp::export_rows(isp::clc_map, "clc_setup", in, out, partition);
    return 0;
}

int drv_to_cmodel_clc_user_clc(_isp_clc_user_clc_t *in, picojson::object &out, uint8_t partition) {
    isp::export_rows(isp::clc_map, "clc", in, out, partition);
    return 0;
}

#define ISP_DEF_FILE "convert/clc/clc.def"
#define ISP_DEF_BLOCK clc
#include "convert/common/register_map_build.h"
