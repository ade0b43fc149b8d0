/* Converters and exporters of the black level and linearisation block: every field and plain key
 * is a row of blc.def; the knot pairs and the crossed and two-level exports are written here. */
#include "blocks/blc.h"

#include <stddef.h>

#include <vector>

#include "convert/common/cmodel_writer.h"
#include "convert/common/field_reader.h"
#include "convert/common/register_map.h"

namespace isp {
extern const block_map blc_map;
}

namespace {

const char *const y_group[BLC_CHANNELS]    = {"grp1", "grp2", "grp3", "grp4"};
const char *const y_register[BLC_CHANNELS] = {"lin_lut_y0", "lin_lut_y1", "lin_lut_y2",
                                              "lin_lut_y3"};

/* The knots of one table held in its group, knot i stored at knot[i * stride]. Each element of
 * the group carries two knots seven apart, knot k in "low" and knot k + 7 in "high", and the
 * high half is read first. */
void read_knot_pairs(const isp::field_reader &f, const char *group, const char *reg, uint16_t *knot,
                     size_t stride) {
    for (size_t k = 0; k < BLC_LIN_KNOT_PAIRS; ++k) {
        knot[(k + BLC_LIN_KNOT_PAIRS) * stride] = f.read(group, k, reg, "high", "u8.6");
        knot[k * stride]                        = f.read(group, k, reg, "low", "u8.6");
    }
}

void read_x_knot_pairs(const isp::field_reader &f, void *out, uint8_t) {
    read_knot_pairs(f, "grp0", "lin_lut_x", static_cast<_isp_blc_user_lin_t *>(out)->lin_lut_x, 1);
}

/* Channel c of lin_lut_y, which is knot-major. */
template <size_t C>
void read_y_knot_pairs(const isp::field_reader &f, void *out, uint8_t) {
    read_knot_pairs(f, y_group[C], y_register[C],
                    &static_cast<_isp_blc_user_lin_t *>(out)->lin_lut_y[C], BLC_CHANNELS);
}

/* The dither words are stored 16-bit word first but exported 15-bit word first. */
void write_dither_words(picojson::object &out, const char *key,
                        const uint16_t (&words)[BLC_DITHER_WORDS]) {
    const std::vector<double> values = {regval_to_float(words[1], "u15"),
                                        regval_to_float(words[0], "u16")};

    out[key] = json::createArray1D<double>(values);
}

}  // namespace

int rtl_to_drv_blc_user_lin(picojson::object &root, _isp_blc_user_lin_t *out, uint8_t partition) {
    isp::read_rows(isp::blc_map, "lin", root, out, partition);
    return 0;
}

int rtl_to_drv_blc_user_common(picojson::object &root, _isp_blc_user_common_t *out,
                               uint8_t partition) {
    isp::read_rows(isp::blc_map, "common", root, out, partition);
    return 0;
}

int rtl_to_drv_blc_user_dither(picojson::object &root, _isp_blc_user_dither_t *out,
                               uint8_t partition) {
    isp::read_rows(isp::blc_map, "dither", root, out, partition);
    return 0;
}

int rtl_to_drv_blc_user_setup(picojson::object &root, _isp_blc_user_setup_t *out,
                              uint8_t partition) {
    isp::read_rows(isp::blc_map, "setup", root, out, partition);
    return 0;
}

int rtl_to_drv_blc_user_init(picojson::object &root, _isp_blc_user_init_t *out, uint8_t partition) {
    isp::read_rows(isp::blc_map, "init", root, out, partition);
    return 0;
}

int rtl_to_drv_blc_kernel_gbl(picojson::object &root, _isp_blc_kernel_gbl_t *out,
                              uint8_t partition) {
    isp::read_rows(isp::blc_map, "kernel_gbl", root, out, partition);
    return 0;
}

int rtl_to_drv_blc_kernel_sbl(picojson::object &root, _isp_blc_kernel_sbl_t *out,
                              uint8_t partition) {
    isp::read_rows(isp::blc_map, "kernel_sbl", root, out, partition);
    return 0;
}

int rtl_to_drv_blc_kernel_ctrl(picojson::object &root, _isp_blc_kernel_ctrl_t *out,
                               uint8_t partition) {
    isp::read_rows(isp::blc_map, "kernel_ctrl", root, out, partition);
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

int drv_to_cmodel_blc_user_lin(_isp_blc_user_lin_t *in, picojson::object &out, uint8_t partition) {
    isp::export_rows(isp::blc_map, "lin", in, out, partition);
    const isp::cmodel_writer w(out);
    w.table("lin_lut_y", in->lin_lut_y, BLC_LIN_KNOTS, BLC_CHANNELS, "u8.6");
    w.table("lin_lut_slope", in->lin_lut_slope, BLC_LIN_SEGMENTS, BLC_CHANNELS, "u12.8");
    return 0;
}

int drv_to_cmodel_blc_user_common(_isp_blc_user_common_t *in, picojson::object &out,
                                  uint8_t partition) {
    isp::export_rows(isp::blc_map, "common", in, out, partition);
    return 0;
}

int drv_to_cmodel_blc_user_dither(_isp_blc_user_dither_t *in, picojson::object &out,
                                  uint8_t partition) {
    isp::export_rows(isp::blc_map, "dither", in, out, partition);
    write_dither_words(out, "dither_seed", in->dither_seed);
    return 0;
}

int drv_to_cmodel_blc_user_setup(_isp_blc_user_setup_t *in, picojson::object &out, uint8_t) {
    write_dither_words(out, "dither_pmask", in->dither_pmask);
    return 0;
}

int drv_to_cmodel_blc_kernel_gbl(_isp_blc_kernel_gbl_t *in, picojson::object &out,
                                 uint8_t partition) {
    isp::export_rows(isp::blc_map, "kernel_gbl", in, out, partition);
    return 0;
}

int drv_to_cmodel_blc_kernel_sbl(_isp_blc_kernel_sbl_t *in, picojson::object &out,
                                 uint8_t partition) {
    isp::export_rows(isp::blc_map, "kernel_sbl", in, out, partition);
    return 0;
}

int drv_to_cmodel_blc_kernel_ctrl(_isp_blc_kernel_ctrl_t *in, picojson::object &out,
                                  uint8_t partition) {
    isp::export_rows(isp::blc_map, "kernel_ctrl", in, out, partition);
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
