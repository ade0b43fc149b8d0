/* Converters and C-model exporter of the dynamic range compression block. */
#include "blocks/hdrc.h"

#include <stddef.h>

#include "convert/common/cmodel_writer.h"
#include "convert/common/field_reader.h"

int rtl_to_drv_hdrc_user_setup(picojson::object &root, _isp_hdrc_user_setup_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_hdrc");
    out->dither_seed_enable = f.read("hdrc_ctrl", "dither_seed_en", "u1.0");
    out->dither_enable      = f.read("hdrc_ctrl", "dither_en", "u1");
    out->affine_k           = f.read("glb_val", "affine_k", "u7.9");
    out->clip_level         = f.read("glb_val", "clip_level", "u10.6");
    out->offset_in[3]       = f.read("offset_in3", "val", "u14.6");
    out->offset_in[2]       = f.read("offset_in2", "val", "u14.6");
    out->offset_in[1]       = f.read("offset_in1", "val", "u14.6");
    out->offset_in[0]       = f.read("offset_in0", "val", "u14.6");
    out->offset_out         = f.read("offset_out", "val", "u10.6");
    out->dither_seed[1]     = f.read("dither_seed", "val1", "u16.0");
    out->dither_seed[0]     = f.read("dither_seed", "val0", "u16.0");
    out->dither_pmask_16bit = f.read("dither_pmask", "val_16bit", "u16.0");
    /* The 15-bit mask word is encoded with the 16-bit format, like its companion. */
    out->dither_pmask_15bit = f.read("dither_pmask", "val_15bit", "u16.0");
    out->lut_max            = f.read("lut_max", "val", "u10.6");
    return 0;
}

int rtl_to_drv_hdrc_user_hdrc_lut(picojson::object &root, _isp_hdrc_user_hdrc_lut_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_hdrc");
    /* The whole curve is read before any word is packed; the spare entry stays 0. */
    uint32_t entry[HDRC_LUT_ENTRIES + 1] = {};
    for (size_t i = 0; i < HDRC_LUT_ENTRIES; ++i) entry[i] = f.raw_number("hdrc_lut", i);
    /* Entries are not masked: one wider than 16 bits spills into its neighbour's half. */
    for (size_t i = 0; i < HDRC_LUT_WORDS - 1; ++i)
        out->hdrc_lut[i] = entry[2 * i] | entry[2 * i + 1] << 16;
    out->hdrc_lut[HDRC_LUT_WORDS - 1] = entry[HDRC_LUT_ENTRIES - 1];
    return 0;
}

int rtl_to_drv_hdrc_glb_ctl(picojson::object &root, _isp_hdrc_user_glb_ctrl_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_hdrc");
    out->manual_clk_en = f.read("glb_ctrl", "manual_clk_en", "u1");
    out->bayer_pat     = f.read("glb_ctrl", "bayer_pat", "u8");
    return 0;
}

/* Writes no "lut_max". The C model also expects the curve under "hdrc_lut", but the setup group
 * does not carry it, so that array holds 257 zeros. */
int drv_to_cmodel_hdrc_user_setup(_isp_hdrc_user_setup_t *in, picojson::object &out, uint8_t) {
    static const uint16_t no_curve[HDRC_LUT_ENTRIES] = {};
    const isp::cmodel_writer w(out);
    w.value("dither_seed_enable", in->dither_seed_enable, "u1.0");
    w.value("dither_enable", in->dither_enable, "u1");
    w.value("affine_k", in->affine_k, "u7.9");
    w.value("clip_level", in->clip_level, "u10.6");
    w.array("offset_in", in->offset_in, "u14.6");
    w.value("offset_out", in->offset_out, "u10.6");
    w.array("dither_seed", in->dither_seed, "u16.0");
    w.value("dither_pmask_16bit", in->dither_pmask_16bit, "u16.0");
    w.value("dither_pmask_15bit", in->dither_pmask_15bit, "u16.0");
    w.array("hdrc_lut", no_curve, "u16.0");
    return 0;
}

#define ISP_DEF_FILE "convert/hdrc/hdrc.def"
#define ISP_DEF_BLOCK hdrc
#include "convert/common/register_map_build.h"
