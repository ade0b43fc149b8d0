/* Converters and C-model exporter of the dynamic range compression block: the fields and keys are
 * rows of hdrc.def; the packed curve and the exporter's empty curve are written out here. */
#include "blocks/hdrc.h"

#include <stddef.h>

#include "convert/common/cmodel_writer.h"
#include "convert/common/register_map.h"

namespace isp {
extern const block_map hdrc_map;
}

namespace {

/* The whole curve is read before any word is packed, so a curve that fails to read leaves every
 * word as it was; the spare entry stays 0. */
void read_packed_curve(const isp::field_reader &f, void *out, uint8_t) {
    uint32_t *word                       = static_cast<_isp_hdrc_user_hdrc_lut_t *>(out)->hdrc_lut;
    uint32_t entry[HDRC_LUT_ENTRIES + 1] = {};
    for (size_t i = 0; i < HDRC_LUT_ENTRIES; ++i) entry[i] = f.raw_number("hdrc_lut", i);
    /* Entries are not masked: one wider than 16 bits spills into its neighbour's half. */
    for (size_t i = 0; i < HDRC_LUT_WORDS - 1; ++i) word[i] = entry[2 * i] | entry[2 * i + 1] << 16;
    word[HDRC_LUT_WORDS - 1] = entry[HDRC_LUT_ENTRIES - 1];
}

}  // namespace

int rtl_to_drv_hdrc_user_setup(picojson::object &root, _isp_hdrc_user_setup_t *out,
                               uint8_t partition) {
    isp::read_rows(isp::hdrc_map, "setup", root, out, partition);
    return 0;
}

int rtl_to_drv_hdrc_user_hdrc_lut(picojson::object &root, _isp_hdrc_user_hdrc_lut_t *out,
                                  uint8_t partition) {
    isp::read_rows(isp::hdrc_map, "hdrc_lut", root, out, partition);
    return 0;
}

int rtl_to_drv_hdrc_glb_ctl(picojson::object &root, _isp_hdrc_user_glb_ctrl_t *out,
                            uint8_t partition) {
    isp::read_rows(isp::hdrc_map, "glb_ctrl", root, out, partition);
    return 0;
}

/* Writes no "lut_max". The C model also expects the curve under "hdrc_lut", but the setup group
 * does not carry it, so that array holds 257 zeros. */
int drv_to_cmodel_hdrc_user_setup(_isp_hdrc_user_setup_t *in, picojson::object &out,
                                  uint8_t partition) {
    static const uint16_t no_curve[HDRC_LUT_ENTRIES] = {};
    isp::export_rows(isp::hdrc_map, "setup", in, out, partition);
    isp::cmodel_writer(out).array("hdrc_lut", no_curve, "u16.0");
    return 0;
}

#define ISP_DEF_FILE "convert/hdrc/hdrc.def"
#define ISP_DEF_BLOCK hdrc
#include "convert/common/register_map_build.h"
