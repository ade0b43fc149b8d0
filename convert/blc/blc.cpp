/* Converters and exporters of the black level and linearisation block: every field and plain key
 * is a row of blc.def; the crossed and two-level exports are written here. */
#include "blocks/blc.h"

#include <stddef.h>

#include <vector>

#include "convert/common/cmodel_writer.h"
#include "convert/common/register_map.h"

namespace isp {
extern const block_map blc_map;
}

namespace {

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
