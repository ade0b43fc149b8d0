/* Converters and C-model exporters of the gamma block: the fields and keys are rows of
 * gamma.def; the crossed dither words are exported here. */
#include "blocks/gamma.h"

#include <stddef.h>

#include <vector>

#include "convert/common/register_map.h"
#include "isp_json_utils.h"

namespace isp {
extern const block_map gamma_map;
}

namespace {

/* The C model takes the 15-bit word first, the reverse of the memory order, each word decoded
 * with its own width. */
void export_dither_words(picojson::object &out, const char *key,
                         const uint16_t (&words)[GAMMA_DITHER_WORDS]) {
    const std::vector<double> values = {regval_to_float(words[1], "u15"),
                                        regval_to_float(words[0], "u16")};
    out[key]                         = json::createArray1D<double>(values);
}

}  // namespace

int rtl_to_drv_gamma_user_setup(picojson::object &root, _isp_gamma_user_setup_t *out,
                                uint8_t partition) {
    isp::read_rows(isp::gamma_map, "setup", root, out, partition);
    return 0;
}

int rtl_to_drv_gamma_user_dither(picojson::object &root, _isp_gamma_user_dither_t *out,
                                 uint8_t partition) {
    isp::read_rows(isp::gamma_map, "dither", root, out, partition);
    return 0;
}

int rtl_to_drv_gamma_user_lut(picojson::object &root, _isp_gamma_user_lut_t *out,
                              uint8_t partition) {
    isp::read_rows(isp::gamma_map, "lut", root, out, partition);
    return 0;
}

int drv_to_cmodel_gamma_user_setup(_isp_gamma_user_setup_t *in, picojson::object &out,
                                   uint8_t partition) {
    isp::export_rows(isp::gamma_map, "setup", in, out, partition);
    export_dither_words(out, "dither_pmask", in->dither_pmask);
    return 0;
}

int drv_to_cmodel_gamma_user_dither(_isp_gamma_user_dither_t *in, picojson::object &out,
                                    uint8_t partition) {
    isp::export_rows(isp::gamma_map, "dither", in, out, partition);
    export_dither_words(out, "dither_seed", in->dither_seed);
    return 0;
}

int drv_to_cmodel_gamma_user_lut(_isp_gamma_user_lut_t *in, picojson::object &out,
                                 uint8_t partition) {
    isp::export_rows(isp::gamma_map, "lut", in, out, partition);
    return 0;
}

#define ISP_DEF_FILE "convert/gamma/gamma.def"
#define ISP_DEF_BLOCK gamma
#include "convert/common/register_map_build.h"
