/* Converters and exporters of the white-balance gain block. */
#include "blocks/wbc.h"

#include "convert/common/cmodel_writer.h"
#include "convert/common/field_reader.h"

int rtl_to_drv_wbc_user_ctrl(picojson::object &root, _isp_wbc_user_ctrl_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_wbc");
    out->d_gain = f.read("d_gain", "val", "u10.8");
    /* The gain registers are named after their first element: "wb_gain0" carries gains 0 and 1,
     * "wb_gain2" gains 2 and 3; there is no "wb_gain1" or "wb_gain3". */
    out->wb_gain[0] = f.read("wb_gain0", "val0", "u4.8");
    out->wb_gain[1] = f.read("wb_gain0", "val1", "u4.8");
    out->wb_gain[2] = f.read("wb_gain2", "val2", "u4.8");
    out->wb_gain[3] = f.read("wb_gain2", "val3", "u4.8");
    out->clip_level = f.read("clip_level", "val", "u14.6");
    return 0;
}

int rtl_to_drv_wbc_user_setup(picojson::object &root, _isp_wbc_user_setup_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_wbc");
    out->offset_in  = f.read("offset_in", "val", "u14.6");
    out->offset_out = f.read("offset_out", "val", "u14.6");
    return 0;
}

int rtl_to_drv_wbc_user_init(picojson::object &root, _isp_wbc_user_init_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_wbc");
    out->bayer_pattern = f.read("bayer_pattern", "val", "u2");
    return 0;
}

int drv_to_cmodel_wbc_user_ctrl(_isp_wbc_user_ctrl_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("d_gain", in->d_gain, "u10.8");
    w.array("wb_gain", in->wb_gain, "u4.8");
    w.value("clip_level", in->clip_level, "u14.6");
    return 0;
}

int drv_to_cmodel_wbc_user_setup(_isp_wbc_user_setup_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("offset_in", in->offset_in, "u14.6");
    w.value("offset_out", in->offset_out, "u14.6");
    return 0;
}
