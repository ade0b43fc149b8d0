/* Driver structures, converters and exporters of the colour space conversion block ("isp_csc"):
 * an RGB to YUV matrix with input and output offsets, and chroma decimation through a 7-tap
 * horizontal and a 2-tap vertical filter. */
#ifndef ISP_BLOCK_CSC_H
#define ISP_BLOCK_CSC_H

#include <stdint.h>

#include "isp_framework.h"

#define CSC_MATRIX_COEFFS 9 /* 3x3, row-major: element 3r + c is "m<r><c>" */
#define CSC_DECIMATION_H_TAPS 7
#define CSC_DECIMATION_V_TAPS 2
#define CSC_COMPONENTS 3 /* one offset register per colour component */

typedef struct _isp_csc_user_core_t {
    /* [0] "reg_csc_matrix_gp0"."m00", [1] ."m01", [2] "reg_csc_matrix_gp1"."m02", [3] ."m10",
     * [4] "reg_csc_matrix_gp2"."m11", [5] ."m12", [6] "reg_csc_matrix_gp3"."m20", [7] ."m21",
     * [8] "reg_csc_matrix_gp4"."m22"; s2.10: 0x400 = 1.0 */
    uint16_t matrix[CSC_MATRIX_COEFFS];
} _isp_csc_user_core_t;

typedef struct _isp_csc_user_setup_t {
    /* [i] "reg_csc_decimation_h01"."val0","val1", "reg_csc_decimation_h23"."val2","val3",
     * "reg_csc_decimation_h45"."val4","val5", "reg_csc_decimation_h6"."val6"; s1.5: 0x20 = 1.0 */
    uint8_t decimation_h[CSC_DECIMATION_H_TAPS];
    /* [i] "reg_csc_decimation_v"."val0","val1"; u1.1: 0x2 = 1.0 */
    uint8_t decimation_v[CSC_DECIMATION_V_TAPS];
    uint8_t input_type;  /* "reg_csc_mode"."in", u1 */
    uint8_t output_type; /* "reg_csc_mode"."out", u1 */
    /* [g] "reg_csc_offset_gp<g>"."out"; s8.2: 0x4 = 1.0 */
    uint16_t offset_out[CSC_COMPONENTS];
    /* [g] "reg_csc_offset_gp<g>"."in"; s8.2: 0x4 = 1.0 */
    uint16_t offset_in[CSC_COMPONENTS];
} _isp_csc_user_setup_t;

typedef struct _isp_csc_user_init_t {
    uint8_t cg_bypass;  /* "reg_csc_ctrl"."cg_bypass", u1 */
    uint8_t uv_seq_sel; /* "reg_csc_ctrl"."uv_seq_sel", u1 */
} _isp_csc_user_init_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_csc_user_core(picojson::object &root, _isp_csc_user_core_t *out,
                                          uint8_t partition);
ISP_JSON_API int rtl_to_drv_csc_user_setup(picojson::object &root, _isp_csc_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_csc_user_init(picojson::object &root, _isp_csc_user_init_t *out,
                                          uint8_t partition);

ISP_JSON_API int drv_to_cmodel_csc_user_core(_isp_csc_user_core_t *in, picojson::object &out,
                                             uint8_t partition);
ISP_JSON_API int drv_to_cmodel_csc_user_setup(_isp_csc_user_setup_t *in, picojson::object &out,
                                              uint8_t partition);
#endif

#endif
