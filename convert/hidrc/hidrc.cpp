/* Converters and C-model exporter of the inverse dynamic range compression block. */
#include "blocks/hidrc.h"

#include <stddef.h>

#include "convert/common/cmodel_writer.h"
#include "convert/common/field_reader.h"

int rtl_to_drv_hidrc_user_setup(picojson::object &root, _isp_hidrc_user_setup_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_hidrc");
    out->affine_k      = f.read("affine_k", "val", "u1.11");
    out->lut_inv_mode  = f.read("lut_inv_mode", "val", "u1");
    out->offset_in     = f.read("offset_in", "val", "u10.6");
    out->offset_out[3] = f.read("offset_out3", "val", "u14.6");
    out->offset_out[2] = f.read("offset_out2", "val", "u14.6");
    out->offset_out[1] = f.read("offset_out1", "val", "u14.6");
    out->offset_out[0] = f.read("offset_out0", "val", "u14.6");
    return 0;
}

int rtl_to_drv_hidrc_user_hidrc_lut(picojson::object &root, _isp_hidrc_user_hidrc_lut_t *out,
                                    uint8_t) {
    const isp::field_reader f(root, "isp_hidrc");
    /* The curve holds register values as they are, one per word, with no format to apply. */
    for (size_t i = 0; i < HIDRC_LUT_ENTRIES; ++i) out->hidrc_lut[i] = f.raw_number("hidrc_lut", i);
    return 0;
}

int drv_to_cmodel_hidrc_user_setup(_isp_hidrc_user_setup_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("affine_k", in->affine_k, "u1.11");
    w.value("lut_inv_mode", in->lut_inv_mode, "u1");
    w.value("offset_in", in->offset_in, "u10.6");
    w.array("offset_out", in->offset_out, "u14.6");
    return 0;
}

#define ISP_DEF_FILE "convert/hidrc/hidrc.def"
#define ISP_DEF_BLOCK hidrc
#include "convert/common/register_map_build.h"
