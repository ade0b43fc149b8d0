/* Driver structures, converters and exporters of the colour correction block ("isp_clc"):
 * eight colour matrices with saturation mitigation through two piecewise-linear curves. */
#ifndef ISP_BLOCK_CLC_H
#define ISP_BLOCK_CLC_H

#include <stdint.h>

#define CLC_MATRIX_COUNT 8
#define CLC_MATRIX_COEFFS 12
#define CLC_MATRIX_PASSES 6 /* elements of "matrix_list": one coefficient of each half per pass */
#define CLC_HR_LPF_TAPS 5
#define CLC_RATIO_LUT_SIZE 8
#define CLC_CURVE_KNEES 8
#define CLC_CURVE_SLOPES 9

/* Partition sizes are reached through pointers: the wrapper takes the structure as it stands,
 * and the arrays are provided by the module, one element per partition of the grid. */
typedef struct _isp_clc_user_init_t {
    uint8_t manual_clk_en; /* "clc_ctrl2"."manual_clk_en", u1 */
    uint16_t *part_size_h; /* [partition] "part_size"."h", u14 */
    uint16_t *part_size_v; /* [partition] "part_size"."v", u14 */
} _isp_clc_user_init_t;

typedef struct _isp_clc_user_clc_setup_t {
    uint16_t offset_out;              /* "offset"."val0", u8.4 */
    uint16_t offset_in;               /* "offset"."val1", u8.4 */
    uint8_t mode;                     /* "clc_ctrl1"."mode", u1 */
    uint16_t hr_lpf[CLC_HR_LPF_TAPS]; /* "hr_lpf0"."val0".."val2", "hr_lpf1"."val0","val1"; s1.7 */
} _isp_clc_user_clc_setup_t;

typedef struct _isp_clc_user_clc_t {
    uint8_t sat_mit_enable; /* "clc_ctrl0"."sat_mit_enable", u1 */
    /* matrix n, coefficient k: "matrix_list"[k % 6]."matrix_list<n>"."val0" (k < 6) or "val1"
     * (k >= 6); s3.8: 0x100 = 1.0 */
    uint16_t matrix_list[CLC_MATRIX_COUNT][CLC_MATRIX_COEFFS];
    uint8_t sat_mit_ratio_lower_lut[CLC_RATIO_LUT_SIZE]; /* "sat_mit_ratio_lower_lut0/1"."val0".."val3",
                                                            u1.7 */
    uint8_t sat_mit_ratio_upper_lut[CLC_RATIO_LUT_SIZE]; /* "sat_mit_ratio_upper_lut0/1"."val0".."val3",
                                                            u1.7 */
    uint16_t sat_mit_lower_lut_x[CLC_CURVE_KNEES]; /* "lower_lut"[2i]."sat_mit_lower_lut", s8.4 */
    uint16_t sat_mit_lower_lut_y[CLC_CURVE_KNEES]; /* "lower_lut"[2i+1]."sat_mit_lower_lut", s8.4 */
    uint16_t sat_mit_upper_lut_x[CLC_CURVE_KNEES]; /* "upper_lut"[2i]."sat_mit_upper_lut", u9.4 */
    uint16_t sat_mit_upper_lut_y[CLC_CURVE_KNEES]; /* "upper_lut"[2i+1]."sat_mit_upper_lut", u8.4 */
    uint8_t sat_mit_lower_lut_slope[CLC_CURVE_SLOPES]; /* "sat_mit_lower_lut_slope0..2", u1.7 */
    uint8_t sat_mit_upper_lut_slope[CLC_CURVE_SLOPES]; /* "sat_mit_upper_lut_slope0..2", u1.7 */
} _isp_clc_user_clc_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_clc_user_init(picojson::object &root, _isp_clc_user_init_t *out,
                                          uint8_t partition);
ISP_JSON_API int rtl_to_drv_clc_user_clc_setup(picojson::object &root,
                                               _isp_clc_user_clc_setup_t *out, uint8_t partition);
ISP_JSON_API int rtl_to_drv_clc_user_clc(picojson::object &root, _isp_clc_user_clc_t *out,
                                         uint8_t partition);

ISP_JSON_API int drv_to_cmodel_clc_user_clc_setup(_isp_clc_user_clc_setup_t *in,
                                                  picojson::object &out, uint8_t partition);
ISP_JSON_API int drv_to_cmodel_clc_user_clc(_isp_clc_user_clc_t *in, picojson::object &out,
                                            uint8_t partition);
#endif

#endif
