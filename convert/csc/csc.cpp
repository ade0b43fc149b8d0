/* Converters and C-model exporters of the colour space conversion block. */
#include "blocks/csc.h"

#include "convert/common/cmodel_writer.h"
#include "convert/common/field_reader.h"

int rtl_to_drv_csc_user_init(picojson::object &root, _isp_csc_user_init_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_csc");
    out->cg_bypass  = f.read("reg_csc_ctrl", "cg_bypass", "u1");
    out->uv_seq_sel = f.read("reg_csc_ctrl", "uv_seq_sel", "u1");
    return 0;
}

int rtl_to_drv_csc_user_core(picojson::object &root, _isp_csc_user_core_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_csc");
    /* Coefficients are packed two to a register row-major, so a register can straddle two rows;
     * the field name gives the position. Each register is read higher-numbered field first. */
    out->matrix[1] = f.read("reg_csc_matrix_gp0", "m01", "s2.10");
    out->matrix[0] = f.read("reg_csc_matrix_gp0", "m00", "s2.10");
    out->matrix[3] = f.read("reg_csc_matrix_gp1", "m10", "s2.10");
    out->matrix[2] = f.read("reg_csc_matrix_gp1", "m02", "s2.10");
    out->matrix[5] = f.read("reg_csc_matrix_gp2", "m12", "s2.10");
    out->matrix[4] = f.read("reg_csc_matrix_gp2", "m11", "s2.10");
    out->matrix[7] = f.read("reg_csc_matrix_gp3", "m21", "s2.10");
    out->matrix[6] = f.read("reg_csc_matrix_gp3", "m20", "s2.10");
    out->matrix[8] = f.read("reg_csc_matrix_gp4", "m22", "s2.10");
    return 0;
}

int rtl_to_drv_csc_user_setup(picojson::object &root, _isp_csc_user_setup_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_csc");
    /* Horizontal taps keep their index across registers ("val2" lives in "..._h23"); each
     * register is read higher-numbered tap first. */
    out->decimation_h[1] = f.read("reg_csc_decimation_h01", "val1", "s1.5");
    out->decimation_h[0] = f.read("reg_csc_decimation_h01", "val0", "s1.5");
    out->decimation_h[3] = f.read("reg_csc_decimation_h23", "val3", "s1.5");
    out->decimation_h[2] = f.read("reg_csc_decimation_h23", "val2", "s1.5");
    out->decimation_h[5] = f.read("reg_csc_decimation_h45", "val5", "s1.5");
    out->decimation_h[4] = f.read("reg_csc_decimation_h45", "val4", "s1.5");
    out->decimation_h[6] = f.read("reg_csc_decimation_h6", "val6", "s1.5");
    /* The vertical taps restart at "val0" and are unsigned; a negative value is not clipped. */
    out->decimation_v[1] = f.read("reg_csc_decimation_v", "val1", "u1.1");
    out->decimation_v[0] = f.read("reg_csc_decimation_v", "val0", "u1.1");
    out->input_type      = f.read("reg_csc_mode", "in", "u1");
    out->output_type     = f.read("reg_csc_mode", "out", "u1");
    /* Each offset register holds one component's out/in pair; the pairs split into two arrays. */
    out->offset_out[0] = f.read("reg_csc_offset_gp0", "out", "s8.2");
    out->offset_in[0]  = f.read("reg_csc_offset_gp0", "in", "s8.2");
    out->offset_out[1] = f.read("reg_csc_offset_gp1", "out", "s8.2");
    out->offset_in[1]  = f.read("reg_csc_offset_gp1", "in", "s8.2");
    out->offset_out[2] = f.read("reg_csc_offset_gp2", "out", "s8.2");
    out->offset_in[2]  = f.read("reg_csc_offset_gp2", "in", "s8.2");
    return 0;
}

int drv_to_cmodel_csc_user_core(_isp_csc_user_core_t *in, picojson::object &out, uint8_t) {
    isp::cmodel_writer(out).array("matrix", in->matrix, "s2.10");
    return 0;
}

int drv_to_cmodel_csc_user_setup(_isp_csc_user_setup_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.array("decimation_h", in->decimation_h, "s1.5");
    w.array("decimation_v", in->decimation_v, "u1.1");
    w.value("input_type", in->input_type, "u1");
    w.value("output_type", in->output_type, "u1");
    w.array("offset_out", in->offset_out, "s8.2");
    w.array("offset_in", in->offset_in, "s8.2");
    return 0;
}

#define ISP_DEF_FILE "convert/csc/csc.def"
#define ISP_DEF_BLOCK csc
#include "convert/common/register_map_build.h"
