/* Converters and C-model exporters of the gamma block. */
#include "blocks/gamma.h"

#include <stddef.h>

#include <vector>

#include "convert/common/cmodel_writer.h"
#include "convert/common/field_reader.h"

namespace {

/* "grp0" holds the curve as 64 low/high pairs; the last point lives outside the array. */
constexpr size_t grp0_pairs = (GAMMA_LUT_POINTS - 1) / 2;

/* The C model takes the 15-bit word first, the reverse of the memory order, each word decoded
 * with its own width. */
void export_dither_words(picojson::object &out, const char *key,
                         const uint16_t (&words)[GAMMA_DITHER_WORDS]) {
    const std::vector<double> values = {regval_to_float(words[1], "u15"),
                                        regval_to_float(words[0], "u16")};
    out[key]                         = json::createArray1D<double>(values);
}

}  // namespace

int rtl_to_drv_gamma_user_setup(picojson::object &root, _isp_gamma_user_setup_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_gamma");
    out->range_adjust_enable = f.read("gamma", "range_adjust_enable", "u1");
    out->mode                = f.read("gamma", "mode", "u1");
    out->dither_enable       = f.read("dither", "enable", "u1");
    /* The register file names the 15-bit word first; memory holds the 16-bit word first. */
    out->dither_pmask[1] = f.read("dither_pmask", "val15", "u15");
    out->dither_pmask[0] = f.read("dither_pmask", "val16", "u16");
    /* The output offset carries two fraction bits, the input offset four. */
    out->offset_out = f.read("gamma_offset", "out", "u8.2");
    out->offset_in  = f.read("gamma_offset", "in", "u8.4");
    return 0;
}

int rtl_to_drv_gamma_user_dither(picojson::object &root, _isp_gamma_user_dither_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_gamma");
    out->dither_seed_enable = f.read("dither", "seed_enable", "u1");
    /* Same crossing as the mask: the 16-bit word is element 0. */
    out->dither_seed[1] = f.read("dither_seed", "val15", "u15");
    out->dither_seed[0] = f.read("dither_seed", "val16", "u16");
    return 0;
}

int rtl_to_drv_gamma_user_lut(picojson::object &root, _isp_gamma_user_lut_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_gamma");
    for (size_t k = 0; k < grp0_pairs; ++k) {
        /* Each pair is read high before low; "high" is the odd point. */
        out->gam_lut[2 * k + 1] = f.read("grp0", k, "gam_lut", "high", "u8.4");
        out->gam_lut[2 * k]     = f.read("grp0", k, "gam_lut", "low", "u8.4");
    }
    /* The 129th point is a register of its own whose single field is also named "low". */
    out->gam_lut[GAMMA_LUT_POINTS - 1] = f.read("gam_lut_65", "low", "u8.4");
    return 0;
}

int drv_to_cmodel_gamma_user_setup(_isp_gamma_user_setup_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("range_adjust_enable", in->range_adjust_enable, "u1");
    w.value("mode", in->mode, "u1");
    w.value("dither_enable", in->dither_enable, "u1");
    export_dither_words(out, "dither_pmask", in->dither_pmask);
    w.value("offset_out", in->offset_out, "u8.2");
    w.value("offset_in", in->offset_in, "u8.4");
    return 0;
}

int drv_to_cmodel_gamma_user_dither(_isp_gamma_user_dither_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("dither_seed_enable", in->dither_seed_enable, "u1");
    export_dither_words(out, "dither_seed", in->dither_seed);
    return 0;
}

int drv_to_cmodel_gamma_user_lut(_isp_gamma_user_lut_t *in, picojson::object &out, uint8_t) {
    isp::cmodel_writer(out).array("lut", in->gam_lut, "u8.4");
    return 0;
}

#define ISP_DEF_FILE "convert/gamma/gamma.def"
#define ISP_DEF_BLOCK gamma
#include "convert/common/register_map_build.h"
