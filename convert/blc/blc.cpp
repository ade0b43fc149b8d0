/* Converters and exporters of the black level and linearisation block. */
#include "blocks/blc.h"

#include <stddef.h>

#include <vector>

#include "convert/common/cmodel_writer.h"
#include "convert/common/field_reader.h"

namespace {

const char *const y_group[BLC_CHANNELS]         = {"grp1", "grp2", "grp3", "grp4"};
const char *const y_register[BLC_CHANNELS]      = {"lin_lut_y0", "lin_lut_y1", "lin_lut_y2",
                                                   "lin_lut_y3"};
const char *const y_last_register[BLC_CHANNELS] = {"lin_lut_y0_14", "lin_lut_y1_14",
                                                   "lin_lut_y2_14", "lin_lut_y3_14"};
const char *const slope_group[BLC_CHANNELS]     = {"grp5", "grp6", "grp7", "grp8"};
const char *const slope_register[BLC_CHANNELS]  = {"lin_lut_slope0", "lin_lut_slope1",
                                                   "lin_lut_slope2", "lin_lut_slope3"};

/* One knot table, knot i stored at knot[i * stride]. Each element of the group carries two
 * knots seven apart, knot k in "low" and knot k + 7 in "high", and the high half is read first;
 * the fifteenth knot has a register of its own outside the group. */
void read_knots(const isp::field_reader &f, const char *group, const char *reg,
                const char *last_reg, uint16_t *knot, size_t stride) {
    for (size_t k = 0; k < BLC_LIN_KNOT_PAIRS; ++k) {
        knot[(k + BLC_LIN_KNOT_PAIRS) * stride] = f.read(group, k, reg, "high", "u8.6");
        knot[k * stride]                        = f.read(group, k, reg, "low", "u8.6");
    }
    knot[(BLC_LIN_KNOTS - 1) * stride] = f.read(last_reg, "low", "u8.6");
}

/* Four Bayer-channel black levels, element k of the group for channel k. */
void read_levels(const isp::field_reader &f, const char *group, const char *reg, uint32_t *level) {
    for (size_t k = 0; k < BLC_CHANNELS; ++k) level[k] = f.read(group, k, reg, "value", "u8.10");
}

/* The dither words are stored 16-bit word first but exported 15-bit word first. */
void write_dither_words(picojson::object &out, const char *key,
                        const uint16_t (&words)[BLC_DITHER_WORDS]) {
    const std::vector<double> values = {regval_to_float(words[1], "u15"),
                                        regval_to_float(words[0], "u16")};

    out[key] = json::createArray1D<double>(values);
}

}  // namespace

int rtl_to_drv_blc_user_lin(picojson::object &root, _isp_blc_user_lin_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_blc");
    read_knots(f, "grp0", "lin_lut_x", "lin_lut_x_14", out->lin_lut_x, 1);
    for (size_t c = 0; c < BLC_CHANNELS; ++c)
        read_knots(f, y_group[c], y_register[c], y_last_register[c], &out->lin_lut_y[c],
                   BLC_CHANNELS);
    for (size_t c = 0; c < BLC_CHANNELS; ++c)
        for (size_t s = 0; s < BLC_LIN_SEGMENTS; ++s)
            out->lin_lut_slope[s * BLC_CHANNELS + c] =
                f.read(slope_group[c], s, slope_register[c], "value", "u12.8");
    return 0;
}

int rtl_to_drv_blc_user_common(picojson::object &root, _isp_blc_user_common_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_blc");
    out->dgain         = f.read("dgain", "val", "u1.8");
    out->dither_enable = f.read("dither", "enable", "u1");
    return 0;
}

int rtl_to_drv_blc_user_dither(picojson::object &root, _isp_blc_user_dither_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_blc");
    out->dither_seed_enable = f.read("dither", "seed_enable", "u1");
    /* Element 1 holds the 15-bit word, element 0 the 16-bit one; the 15-bit word is read first. */
    out->dither_seed[1] = f.read("dither_seed", "val15", "u15");
    out->dither_seed[0] = f.read("dither_seed", "val16", "u16");
    return 0;
}

int rtl_to_drv_blc_user_setup(picojson::object &root, _isp_blc_user_setup_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_blc");
    /* Crossed like the dither seed: element 1 is "val15", element 0 "val16". */
    out->dither_pmask[1] = f.read("dither_pmask", "val15", "u15");
    out->dither_pmask[0] = f.read("dither_pmask", "val16", "u16");
    return 0;
}

int rtl_to_drv_blc_user_init(picojson::object &root, _isp_blc_user_init_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_blc");
    /* The register files of this block spell the field "patten". */
    out->bayer_patten = f.read("bayer", "patten", "u2");
    return 0;
}

int rtl_to_drv_blc_kernel_gbl(picojson::object &root, _isp_blc_kernel_gbl_t *out, uint8_t) {
    read_levels(isp::field_reader(root, "isp_blc"), "grp10", "gbl_val", out->gbl_val);
    return 0;
}

int rtl_to_drv_blc_kernel_sbl(picojson::object &root, _isp_blc_kernel_sbl_t *out, uint8_t) {
    read_levels(isp::field_reader(root, "isp_blc"), "grp9", "sbl_val", out->sbl_val);
    return 0;
}

int rtl_to_drv_blc_kernel_ctrl(picojson::object &root, _isp_blc_kernel_ctrl_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_blc");
    out->sbl_corr_enable = f.read("blc", "sbl_corr_enable", "u1");
    out->gbl_corr_enable = f.read("blc", "gbl_corr_enable", "u1");
    out->lin_enable      = f.read("blc", "lin_enable", "u1");
    out->offset_out      = f.read("offset", "out", "u8.6");
    return 0;
}

/* The black levels reach the hardware through the kernel groups: the user groups have their
 * entry points but nothing to carry. */
int rtl_to_drv_blc_user_gbl(picojson::object &, _isp_blc_user_gbl_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_blc_user_sbl(picojson::object &, _isp_blc_user_sbl_t *, uint8_t) {
    return 0;
}

int drv_to_cmodel_blc_user_lin(_isp_blc_user_lin_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.array("lin_lut_x", in->lin_lut_x, "u8.6");
    w.table("lin_lut_y", in->lin_lut_y, BLC_LIN_KNOTS, BLC_CHANNELS, "u8.6");
    w.table("lin_lut_slope", in->lin_lut_slope, BLC_LIN_SEGMENTS, BLC_CHANNELS, "u12.8");
    return 0;
}

int drv_to_cmodel_blc_user_common(_isp_blc_user_common_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("dgain", in->dgain, "u1.8");
    w.value("dither_enable", in->dither_enable, "u1");
    return 0;
}

int drv_to_cmodel_blc_user_dither(_isp_blc_user_dither_t *in, picojson::object &out, uint8_t) {
    isp::cmodel_writer(out).value("dither_seed_enable", in->dither_seed_enable, "u1");
    write_dither_words(out, "dither_seed", in->dither_seed);
    return 0;
}

int drv_to_cmodel_blc_user_setup(_isp_blc_user_setup_t *in, picojson::object &out, uint8_t) {
    write_dither_words(out, "dither_pmask", in->dither_pmask);
    return 0;
}

int drv_to_cmodel_blc_kernel_gbl(_isp_blc_kernel_gbl_t *in, picojson::object &out, uint8_t) {
    isp::cmodel_writer(out).array("gbl_val", in->gbl_val, "u8.10");
    return 0;
}

int drv_to_cmodel_blc_kernel_sbl(_isp_blc_kernel_sbl_t *in, picojson::object &out, uint8_t) {
    isp::cmodel_writer(out).array("sbl_val", in->sbl_val, "u8.10");
    return 0;
}

int drv_to_cmodel_blc_kernel_ctrl(_isp_blc_kernel_ctrl_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("sbl_corr_enable", in->sbl_corr_enable, "u1");
    w.value("gbl_corr_enable", in->gbl_corr_enable, "u1");
    w.value("lin_enable", in->lin_enable, "u1");
    w.value("offset_out", in->offset_out, "u8.6");
    return 0;
}

int drv_to_cmodel_blc_user_gbl(_isp_blc_user_gbl_t *, picojson::object &, uint8_t) {
    return 0;
}

int drv_to_cmodel_blc_user_sbl(_isp_blc_user_sbl_t *, picojson::object &, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/blc/blc.def"
#define ISP_DEF_BLOCK blc
#include "convert/common/register_map_build.h"
