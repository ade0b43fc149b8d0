/* Defect pixel correction block: register files to driver structures and back to C-model
 * values. */
#include <stddef.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/dpc.h"
#include "isp_json_modules.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::clear;
using isp_test::codes;
using isp_test::fill;
using isp_test::parse_object;
using isp_test::serialized;
using isp_test::stderr_lines_of;

picojson::object fixture(int partition) {
    return isp_test::data_object("dpc/rtl_dpc_p" + std::to_string(partition) + "_chn0.json");
}

/* What the fixtures hold, written out by hand: the same calculation settings in both partition
 * files, the sizes of each partition and the other settings of partition 1. */
void fill_expected(_isp_dpc_user_calc_dp_strength_t &strength) {
    strength.calc_limit_enable = 1;
    strength.static_enable     = 1;
    strength.dp_det_th_ratio   = 40;
    strength.dp_det_m2         = 384;
    strength.dp_det_m1         = 24;
}
void fill_expected(_isp_dpc_user_setup_t &setup) {
    setup.offset_in         = 4160;  // "bp_offset"."val1"
    setup.offset_out        = 4096;
    setup.dp_cor_ch_mode    = 1;
    setup.dp_cor_clip_ratio = 48;
    setup.dp_cor_dir_wt_r2  = 24;
    fill(setup.color_limit_ratio, {128, 112, 96});
}
void fill_expected(_isp_dpc_user_calc_noise_t &noise) {
    fill(noise.noise_lut, {100, 120, 140, 160, 180, 200, 220, 240, 420});
}
void fill_expected(_isp_dpc_user_calc_wb_gain_t &wb) {
    fill(wb.wb_gain, {30, 26});
    fill(wb.inv_wb_gain, {68, 79});
}
void fill_expected(_isp_dpc_user_calc_quick_det_t &quick) {
    quick.quick_det_th_offset = 640;
    quick.quick_det_th_max    = 8192;
    quick.quick_det_th_slope  = 6;
}
void fill_expected(_isp_dpc_user_calc_dp_correct_t &correct) {
    correct.dp_cor_m5 = 20;
    correct.dp_cor_m4 = 96;
    correct.dp_cor_m3 = 112;
}
void fill_expected(_isp_dpc_user_calc_color_limit_t &limit) {
    fill(limit.margin_u, {256, 320, 384});
    fill(limit.margin_l, {64, 96, 128});
}
void fill_expected(_isp_dpc_user_init_t &init) {
    init.pic_size_h[0]    = 1920;
    init.pic_size_v[0]    = 1080;
    init.pic_size_h[1]    = 1280;
    init.pic_size_v[1]    = 720;
    init.pic_blank_h      = 160;
    init.wdma_err_ctrl    = 1;
    init.rdma_err_ctrl    = 1;
    init.sbpc_table_type  = 1;
    init.dma_burst_len_rd = 3;
    init.sbpc_load        = 32;
    init.dummy_wr_val     = 7;
    init.sbpc_qos_thr     = 8;
    init.sbpc_qos_low     = 4;
    init.sbpc_qos_high    = 12;
}

/* The bytes of the expected structure, padding included. */
template <typename T>
std::vector<uint8_t> expected() {
    return isp_test::bytes_filled<T>(fill_expected);
}

TEST(DpcConvert, PartitionFilesFillEveryGroupAndExportEachFieldOverItsScale) {
    picojson::object files[2] = {fixture(0), fixture(1)};
    _isp_dpc_user_calc_dp_strength_t strength;
    _isp_dpc_user_setup_t setup;
    _isp_dpc_user_calc_top_control_t top;
    _isp_dpc_user_calc_noise_t noise;
    _isp_dpc_user_calc_wb_gain_t wb;
    _isp_dpc_user_calc_quick_det_t quick;
    _isp_dpc_user_calc_dp_correct_t correct;
    _isp_dpc_user_calc_color_limit_t limit;
    _isp_dpc_user_init_t init;
    clear(strength), clear(setup), clear(top), clear(noise), clear(wb);
    clear(quick), clear(correct), clear(limit), clear(init);
    init.pic_size_h[2] = 0x5555;  // another partition's element stays
    EXPECT_EQ(isp_test::stderr_of([&] {
                  for (uint8_t p = 0; p < 2; ++p) {
                      EXPECT_EQ(rtl_to_drv_dpc_user_calc_dp_strength(files[p], &strength, p), 0);
                      EXPECT_EQ(rtl_to_drv_dpc_user_setup(files[p], &setup, p), 0);
                      EXPECT_EQ(rtl_to_drv_dpc_user_calc_top_control(files[p], &top, p), 0);
                      EXPECT_EQ(rtl_to_drv_dpc_user_calc_noise(files[p], &noise, p), 0);
                      EXPECT_EQ(rtl_to_drv_dpc_user_calc_wb_gain(files[p], &wb, p), 0);
                      EXPECT_EQ(rtl_to_drv_dpc_user_calc_quick_det(files[p], &quick, p), 0);
                      EXPECT_EQ(rtl_to_drv_dpc_user_calc_dp_correct(files[p], &correct, p), 0);
                      EXPECT_EQ(rtl_to_drv_dpc_user_calc_color_limit(files[p], &limit, p), 0);
                      EXPECT_EQ(rtl_to_drv_dpc_user_init(files[p], &init, p), 0);
                  }
              }),
              "");
    EXPECT_EQ(bytes_of(strength), expected<_isp_dpc_user_calc_dp_strength_t>());
    EXPECT_EQ(bytes_of(setup), expected<_isp_dpc_user_setup_t>());
    EXPECT_EQ(top.quick_det_enable, 1u);
    EXPECT_EQ(bytes_of(noise), expected<_isp_dpc_user_calc_noise_t>());
    EXPECT_EQ(bytes_of(wb), expected<_isp_dpc_user_calc_wb_gain_t>());
    EXPECT_EQ(bytes_of(quick), expected<_isp_dpc_user_calc_quick_det_t>());
    EXPECT_EQ(bytes_of(correct), expected<_isp_dpc_user_calc_dp_correct_t>());
    EXPECT_EQ(bytes_of(limit), expected<_isp_dpc_user_calc_color_limit_t>());
    EXPECT_EQ(init.pic_size_h[2], 0x5555u);
    init.pic_size_h[2] = 0;
    EXPECT_EQ(bytes_of(init), expected<_isp_dpc_user_init_t>());

    picojson::object out;
    drv_to_cmodel_dpc_user_calc_dp_strength(&strength, out, 0);
    drv_to_cmodel_dpc_top_control(&top, out, 0);
    drv_to_cmodel_dpc_user_calc_quick_det(&quick, out, 0);
    drv_to_cmodel_dpc_user_calc_dp_correct(&correct, out, 0);
    EXPECT_EQ(serialized(out),
              R"({"calc_limit_enable":1,"dp_cor_m3":0.875,"dp_cor_m4":0.75,"dp_cor_m5":1.25,)"
              R"("dp_det_m1":1.5,"dp_det_m2":1.5,"dp_det_mode":0,"dp_det_th_ratio":0.625,)"
              R"("quick_det_enable":1,"quick_det_th_max":128,"quick_det_th_offset":10,)"
              R"("quick_det_th_slope":0.375,"static_enable":1})");
    picojson::object tables;
    drv_to_cmodel_dpc_user_setup(&setup, tables, 0);
    drv_to_cmodel_dpc_user_calc_noise(&noise, tables, 0);
    drv_to_cmodel_dpc_user_calc_wb_gain(&wb, tables, 0);
    drv_to_cmodel_dpc_user_calc_color_limit(&limit, tables, 0);
    EXPECT_EQ(serialized(tables),
              R"({"color_limit_ratio":[1,0.875,0.75],"dp_cor_ch_mode":1,"dp_cor_clip_ratio":0.75,)"
              R"("dp_cor_dir_wt_r2":1.5,"inv_wb_gain":[0.53125,0.6171875],"margin_l":[1,1.5,2],)"
              R"("margin_u":[4,5,6],"noise_lut":[1.5625,1.875,2.1875,2.5,2.8125,3.125,3.4375,)"
              R"(3.75,6.5625],"offset_in":65,"offset_out":64,"wb_gain":[1.875,1.625]})");
}

TEST(DpcConvert, PartitionOverloadPlacesEachTableByPartition) {
    picojson::object p0 = fixture(0), p1 = fixture(1);
    _isp_dpc_user_calc_partition_t part{};
    rtl_to_drv_dpc_user_calc_dp_correct(p0, &part, 0);
    rtl_to_drv_dpc_user_calc_dp_correct(p1, &part, 1);
    rtl_to_drv_dpc_user_calc_dp_correct(p0, &part, 255);
    EXPECT_EQ(part.sbpc_pos_base_h_addr[0], 1u);
    EXPECT_EQ(part.sbpc_pos_base_l_addr[0], 0x10000000u);
    EXPECT_EQ(part.sbpc_pos_length[0], 4096u);
    EXPECT_EQ(part.sbpc_pos_base_h_addr[1], 0u);
    EXPECT_EQ(part.sbpc_pos_base_l_addr[1], 0x10001000u);
    EXPECT_EQ(part.sbpc_pos_length[1], 2048u);
    EXPECT_EQ(part.sbpc_pos_base_l_addr[255], 0x10000000u);
    EXPECT_EQ(part.sbpc_pos_length[2], 0u);
}

TEST(DpcConvert, NoiseGroupThatIsNotAnArrayFailsItsEightEntries) {
    picojson::object root                                    = fixture(0);
    root["isp_dpc"].get<picojson::object>()["noise_lut_grp"] = picojson::value(picojson::object());
    _isp_dpc_user_calc_noise_t noise{};
    std::vector<std::string> expected;  // each element's odd entry first
    for (int k = 0; k < 4; ++k) {
        isp_test::add_failed(expected, "noise_lut_odd", {"val"});
        isp_test::add_failed(expected, "noise_lut_even", {"val"});
    }
    EXPECT_EQ(stderr_lines_of([&] { rtl_to_drv_dpc_user_calc_noise(root, &noise, 0); }), expected);
    EXPECT_EQ(codes(noise.noise_lut), (std::vector<uint32_t>{0, 0, 0, 0, 0, 0, 0, 0, 420}));
}

/* "bp_" registers feed the "dp_" members; the offsets are read crossed, input from "val1". */
TEST(DpcConvert, MissingTopKeyReportsFieldsInConversionOrder) {
    picojson::object root;
    _isp_dpc_user_setup_t setup{};
    _isp_dpc_user_calc_wb_gain_t wb{};
    _isp_dpc_user_calc_color_limit_t limit{};
    EXPECT_EQ(stderr_lines_of([&] {
                  rtl_to_drv_dpc_user_setup(root, &setup, 0);
                  rtl_to_drv_dpc_user_calc_wb_gain(root, &wb, 0);
                  rtl_to_drv_dpc_user_calc_color_limit(root, &limit, 0);
              }),
              (std::vector<std::string>{
                  "read json_obj failed: bp_offset.val1",
                  "read json_obj failed: bp_offset.val0",
                  "read json_obj failed: bp_cor.ch_mode",
                  "read json_obj failed: bp_cor.clip_ratio",
                  "read json_obj failed: bp_cor.dir_wt_r2",
                  "read json_obj failed: color_limit_ratio.val2",
                  "read json_obj failed: color_limit_ratio.val1",
                  "read json_obj failed: color_limit_ratio.val0",
                  "read json_obj failed: wb_gain.val1",
                  "read json_obj failed: wb_gain.val0",
                  "read json_obj failed: inv_wb_gain.val1",
                  "read json_obj failed: inv_wb_gain.val0",
                  "read json_obj failed: margin_u0.val1",
                  "read json_obj failed: margin_u0.val0",
                  "read json_obj failed: margin_u1.val2",
                  "read json_obj failed: margin_l0.val1",
                  "read json_obj failed: margin_l0.val0",
                  "read json_obj failed: margin_l1.val2",
              }));
    EXPECT_TRUE(root["isp_dpc"].is<picojson::null>());
}

TEST(DpcConvert, RegistersSpelledWithDpPrefixAreNotRead) {
    picojson::object root = parse_object(R"({"isp_dpc": {
        "bpc_ctrl": {"calc_limit_enable": 1, "dp_det_mode": 1, "static_enable": 1},
        "dp_det": {"th_ratio": 40, "m2": 384, "m1": 24},
        "bp_det": {"th_ratio": 41}}})");
    _isp_dpc_user_calc_dp_strength_t strength{};
    EXPECT_EQ(stderr_lines_of([&] { rtl_to_drv_dpc_user_calc_dp_strength(root, &strength, 0); }),
              (std::vector<std::string>{"read json_obj failed: bpc_ctrl.bp_det_mode",
                                        "read json_obj failed: bp_det.m2",
                                        "read json_obj failed: bp_det.m1"}));
    EXPECT_EQ(strength.dp_det_mode, 0u);
    EXPECT_EQ(strength.dp_det_th_ratio, 41u);
    EXPECT_EQ(strength.dp_det_m2, 0u);
}

TEST(DpcModule, ReplaysEightGroupsAndKeepsTopControlToItself) {
    isp_test::temp_dir dir;
    for (const char *name : {"rtl_dpc_p0_chn0.json", "rtl_dpc_p1_chn0.json"})
        dir.write(std::string("cfgs/f0/") + name, isp_test::data_text(std::string("dpc/") + name));
    const std::vector<isp_sim::call> pushes =
        isp_test::replay(qv_isp_module_dpc_json_register, dir, 2);
    // the default parameters, then eight groups
    ASSERT_EQ(isp_test::commands_of(pushes), (std::vector<uint32_t>{0, 2, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(pushes[1].payload, expected<_isp_dpc_user_calc_dp_strength_t>());
    EXPECT_EQ(pushes[2].payload, expected<_isp_dpc_user_setup_t>());
    EXPECT_EQ(pushes[3].payload, expected<_isp_dpc_user_calc_noise_t>());
    EXPECT_EQ(pushes[4].payload, expected<_isp_dpc_user_calc_wb_gain_t>());
    EXPECT_EQ(pushes[5].payload, expected<_isp_dpc_user_calc_quick_det_t>());
    EXPECT_EQ(pushes[6].payload, expected<_isp_dpc_user_calc_dp_correct_t>());
    EXPECT_EQ(pushes[7].payload, expected<_isp_dpc_user_calc_color_limit_t>());
    EXPECT_EQ(pushes[8].payload, expected<_isp_dpc_user_init_t>());
}

}  // namespace
