/* Converters and exporters of the defect pixel correction block: every field and key is a row of
 * dpc.def. */
#include "blocks/dpc.h"

#include <stddef.h>

#include "convert/common/register_map.h"

namespace isp {
extern const block_map dpc_map;
}

int rtl_to_drv_dpc_user_calc_dp_strength(picojson::object &root,
                                         _isp_dpc_user_calc_dp_strength_t *out, uint8_t partition) {
    isp::read_rows(isp::dpc_map, "calc_dp_strength", root, out, partition);
    return 0;
}

int rtl_to_drv_dpc_user_setup(picojson::object &root, _isp_dpc_user_setup_t *out,
                              uint8_t partition) {
    isp::read_rows(isp::dpc_map, "setup", root, out, partition);
    return 0;
}

int rtl_to_drv_dpc_user_calc_top_control(picojson::object &root,
                                         _isp_dpc_user_calc_top_control_t *out, uint8_t partition) {
    isp::read_rows(isp::dpc_map, "calc_top_control", root, out, partition);
    return 0;
}

int rtl_to_drv_dpc_user_calc_noise(picojson::object &root, _isp_dpc_user_calc_noise_t *out,
                                   uint8_t partition) {
    isp::read_rows(isp::dpc_map, "calc_noise", root, out, partition);
    return 0;
}

int rtl_to_drv_dpc_user_calc_wb_gain(picojson::object &root, _isp_dpc_user_calc_wb_gain_t *out,
                                     uint8_t partition) {
    isp::read_rows(isp::dpc_map, "calc_wb_gain", root, out, partition);
    return 0;
}

int rtl_to_drv_dpc_user_calc_quick_det(picojson::object &root, _isp_dpc_user_calc_quick_det_t *out,
                                       uint8_t partition) {
    isp::read_rows(isp::dpc_map, "calc_quick_det", root, out, partition);
    return 0;
}

int rtl_to_drv_dpc_user_calc_dp_correct(picojson::object &root,
                                        _isp_dpc_user_calc_dp_correct_t *out, uint8_t partition) {
    isp::read_rows(isp::dpc_map, "calc_dp_correct", root, out, partition);
    return 0;
}

int rtl_to_drv_dpc_user_calc_dp_correct(picojson::object &root, _isp_dpc_user_calc_partition_t *out,
                                        uint8_t partition) {
    isp::read_rows(isp::dpc_map, "calc_partition", root, out, partition);
    return 0;
}

int rtl_to_drv_dpc_user_calc_color_limit(picojson::object &root,
                                         _isp_dpc_user_calc_color_limit_t *out, uint8_t partition) {
    isp::read_rows(isp::dpc_map, "calc_color_limit", root, out, partition);
    return 0;
}

int rtl_to_drv_dpc_user_init(picojson::object &root, _isp_dpc_user_init_t *out, uint8_t partition) {
    isp::read_rows(isp::dpc_map, "init", root, out, partition);
    return 0;
}

int drv_to_cmodel_dpc_top_control(_isp_dpc_user_calc_top_control_t *in, picojson::object &out,
                                  uint8_t partition) {
    isp::export_rows(isp::dpc_map, "calc_top_control", in, out, partition);
    return 0;
}

int drv_to_cmodel_dpc_user_calc_quick_det(_isp_dpc_user_calc_quick_det_t *in, picojson::object &out,
                                          uint8_t partition) {
    isp::export_rows(isp::dpc_map, "calc_quick_det", in, out, partition);
    return 0;
}

int drv_to_cmodel_dpc_user_calc_dp_correct(_isp_dpc_user_calc_dp_correct_t *in,
                                           picojson::object &out, uint8_t partition) {
    isp::export_rows(isp::dpc_map, "calc_dp_correct", in, out, partition);
    return 0;
}

int drv_to_cmodel_dpc_user_calc_dp_strength(_isp_dpc_user_calc_dp_strength_t *in,
                                            picojson::object &out, uint8_t partition) {
    isp::export_rows(isp::dpc_map, "calc_dp_strength", in, out, partition);
    return 0;
}

int drv_to_cmodel_dpc_user_setup(_isp_dpc_user_setup_t *in, picojson::object &out,
                                 uint8_t partition) {
    isp::export_rows(isp::dpc_map, "setup", in, out, partition);
    return 0;
}

int drv_to_cmodel_dpc_user_calc_noise(_isp_dpc_user_calc_noise_t *in, picojson::object &out,
                                      uint8_t partition) {
    isp::export_rows(isp::dpc_map, "calc_noise", in, out, partition);
    return 0;
}

int drv_to_cmodel_dpc_user_calc_wb_gain(_isp_dpc_user_calc_wb_gain_t *in, picojson::object &out,
                                        uint8_t partition) {
    isp::export_rows(isp::dpc_map, "calc_wb_gain", in, out, partition);
    return 0;
}

int drv_to_cmodel_dpc_user_calc_color_limit(_isp_dpc_user_calc_color_limit_t *in,
                                            picojson::object &out, uint8_t partition) {
    isp::export_rows(isp::dpc_map, "calc_color_limit", in, out, partition);
    return 0;
}

#define ISP_DEF_FILE "convert/dpc/dpc.def"
#define ISP_DEF_BLOCK dpc
#include "convert/common/register_map_build.h"
