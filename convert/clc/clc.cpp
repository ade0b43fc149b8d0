/* Converters and exporters of the colour correction block. */
#include "blocks/clc.h"

#include "convert/common/cmodel_writer.h"
#include "convert/common/field_reader.h"

namespace {

const char *const matrix_register[CLC_MATRIX_COUNT] = {
    "matrix_list0", "matrix_list1", "matrix_list2", "matrix_list3",
    "matrix_list4", "matrix_list5", "matrix_list6", "matrix_list7"};

/* Two registers of four fields fill eight elements; fields are read from "val3" down. */
void read_ratio_lut(const isp::field_reader &f, const char *reg0, const char *reg1, uint8_t *lut) {
    lut[3] = f.read(reg0, "val3", "u1.7");
    lut[2] = f.read(reg0, "val2", "u1.7");
    lut[1] = f.read(reg0, "val1", "u1.7");
    lut[0] = f.read(reg0, "val0", "u1.7");
    lut[7] = f.read(reg1, "val3", "u1.7");
    lut[6] = f.read(reg1, "val2", "u1.7");
    lut[5] = f.read(reg1, "val1", "u1.7");
    lut[4] = f.read(reg1, "val0", "u1.7");
}

/* Nine slopes: two registers of four and a third holding "val0" alone. */
void read_slopes(const isp::field_reader &f, const char *reg0, const char *reg1, const char *reg2,
                 uint8_t *slope) {
    read_ratio_lut(f, reg0, reg1, slope);
    slope[8] = f.read(reg2, "val0", "u1.7");
}

}  // namespace

int rtl_to_drv_clc_user_init(picojson::object &root, _isp_clc_user_init_t *out, uint8_t partition) {
    const isp::field_reader f(root, "isp_clc");
    out->manual_clk_en          = f.read("clc_ctrl2", "manual_clk_en", "u1");
    out->part_size_h[partition] = f.read("part_size", "h", "u14");
    out->part_size_v[partition] = f.read("part_size", "v", "u14");
    return 0;
}

int rtl_to_drv_clc_user_clc_setup(picojson::object &root, _isp_clc_user_clc_setup_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_clc");
    /* "val0" of "offset" is the output offset, "val1" the input offset */
    out->offset_out = f.read("offset", "val0", "u8.4");
    out->offset_in  = f.read("offset", "val1", "u8.4");
    out->mode       = f.read("clc_ctrl1", "mode", "u1");
    out->hr_lpf[2]  = f.read("hr_lpf0", "val2", "s1.7");
    out->hr_lpf[1]  = f.read("hr_lpf0", "val1", "s1.7");
    out->hr_lpf[0]  = f.read("hr_lpf0", "val0", "s1.7");
    out->hr_lpf[4]  = f.read("hr_lpf1", "val1", "s1.7");
    out->hr_lpf[3]  = f.read("hr_lpf1", "val0", "s1.7");
    return 0;
}

int rtl_to_drv_clc_user_clc(picojson::object &root, _isp_clc_user_clc_t *out, uint8_t) {
    const isp::field_reader f(root, "isp_clc");
    out->sat_mit_enable = f.read("clc_ctrl0", "sat_mit_enable", "u1");
    /* Each element of "matrix_list" carries coefficient k of every matrix in "val0" and
     * coefficient k + 6 in "val1"; the second half is read first. */
    for (size_t k = 0; k < CLC_MATRIX_PASSES; ++k) {
        for (size_t n = 0; n < CLC_MATRIX_COUNT; ++n) {
            out->matrix_list[n][k + 6] =
                f.read("matrix_list", k, matrix_register[n], "val1", "s3.8");
            out->matrix_list[n][k] = f.read("matrix_list", k, matrix_register[n], "val0", "s3.8");
        }
    }
    read_ratio_lut(f, "sat_mit_ratio_lower_lut0", "sat_mit_ratio_lower_lut1",
                   out->sat_mit_ratio_lower_lut);
    read_ratio_lut(f, "sat_mit_ratio_upper_lut0", "sat_mit_ratio_upper_lut1",
                   out->sat_mit_ratio_upper_lut);
    /* The curves interleave x and y; the lower one is signed in both, the upper one has an
     * unsigned x of one more integer bit than its y. */
    for (size_t k = 0; k < 2 * CLC_CURVE_KNEES; ++k) {
        uint16_t *lower = k % 2 == 0 ? out->sat_mit_lower_lut_x : out->sat_mit_lower_lut_y;
        lower[k / 2]    = f.read_element("lower_lut", k, "sat_mit_lower_lut", "s8.4");
    }
    for (size_t k = 0; k < 2 * CLC_CURVE_KNEES; ++k) {
        if (k % 2 == 0)
            out->sat_mit_upper_lut_x[k / 2] =
                f.read_element("upper_lut", k, "sat_mit_upper_lut", "u9.4");
        else
            out->sat_mit_upper_lut_y[k / 2] =
                f.read_element("upper_lut", k, "sat_mit_upper_lut", "u8.4");
    }
    read_slopes(f, "sat_mit_lower_lut_slope0", "sat_mit_lower_lut_slope1",
                "sat_mit_lower_lut_slope2", out->sat_mit_lower_lut_slope);
    read_slopes(f, "sat_mit_upper_lut_slope0", "sat_mit_upper_lut_slope1",
                "sat_mit_upper_lut_slope2", out->sat_mit_upper_lut_slope);
    return 0;
}

int drv_to_cmodel_clc_user_clc_setup(_isp_clc_user_clc_setup_t *in, picojson::object &out,
                                     uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("offset_out", in->offset_out, "u8.4");
    w.value("offset_in", in->offset_in, "u8.4");
    w.value("mode", in->mode, "u1");
    w.array("hr_lpf", in->hr_lpf, "s1.7");
    return 0;
}

int drv_to_cmodel_clc_user_clc(_isp_clc_user_clc_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("sat_mit_enable", in->sat_mit_enable, "u1");
    /* one flat array: matrix 0 first, each matrix's twelve coefficients in element order */
    w.array("matrix_list", &in->matrix_list[0][0], CLC_MATRIX_COUNT * CLC_MATRIX_COEFFS, "s3.8");
    w.array("sat_mit_ratio_lower_lut", in->sat_mit_ratio_lower_lut, "u1.7");
    w.array("sat_mit_ratio_upper_lut", in->sat_mit_ratio_upper_lut, "u1.7");
    w.array("sat_mit_lower_lut_x", in->sat_mit_lower_lut_x, "s8.4");
    w.array("sat_mit_lower_lut_y", in->sat_mit_lower_lut_y, "s8.4");
    w.array("sat_mit_upper_lut_x", in->sat_mit_upper_lut_x, "u9.4");
    w.array("sat_mit_upper_lut_y", in->sat_mit_upper_lut_y, "u8.4");
    w.array("sat_mit_lower_lut_slope", in->sat_mit_lower_lut_slope, "u1.7");
    w.array("sat_mit_upper_lut_slope", in->sat_mit_upper_lut_slope, "u1.7");
    return 0;
}

#define ISP_DEF_FILE "convert/clc/clc.def"
#define ISP_DEF_BLOCK clc
#include "convert/common/register_map_build.h"
