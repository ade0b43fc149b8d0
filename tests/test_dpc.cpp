/* Defect pixel correction block: two partition files through converters, exporters and module,
 * the "bp_" registers behind the "dp_" members, the crossed read order and a noise group that is
 * not an array. */
#include <gtest/gtest.h>

#include "isp_json_modules.h"
#include "tests/support/block_case.h"

namespace {

TEST(Dpc, CaseConvertsExportsAndReplays) {
    /* the same settings in both files but for the sizes and table positions of each partition */
    isp_test::check_block(
        {"dpc",
         {"dpc/rtl_dpc_p0_chn0.json", "dpc/rtl_dpc_p1_chn0.json"},
         R"({"_isp_dpc_user_calc_dp_strength_t": {"calc_limit_enable": 1, "static_enable": 1,
                 "dp_det_th_ratio": 40, "dp_det_m2": 384, "dp_det_m1": 24},
             "_isp_dpc_user_setup_t": {"offset_in": 4160, "offset_out": 4096, "dp_cor_ch_mode": 1,
                 "dp_cor_clip_ratio": 48, "dp_cor_dir_wt_r2": 24, "color_limit_ratio": [128, 112, 96]},
             "_isp_dpc_user_calc_top_control_t": {"quick_det_enable": 1},
             "_isp_dpc_user_calc_noise_t": {"noise_lut": [100, 120, "...", 240, 420]},
             "_isp_dpc_user_calc_wb_gain_t": {"wb_gain": [30, 26], "inv_wb_gain": [68, 79]},
             "_isp_dpc_user_calc_quick_det_t": {"quick_det_th_offset": 640, "quick_det_th_max": 8192,
                 "quick_det_th_slope": 6},
             "_isp_dpc_user_calc_dp_correct_t": {"dp_cor_m5": 20, "dp_cor_m4": 96, "dp_cor_m3": 112},
             "_isp_dpc_user_calc_color_limit_t": {"margin_u": [256, 320, 384], "margin_l": [64, 96, 128]},
             "_isp_dpc_user_init_t": {"pic_size_h": [1920, 1280], "pic_size_v": [1080, 720],
                 "pic_blank_h": 160, "wdma_err_ctrl": 1, "rdma_err_ctrl": 1, "sbpc_table_type": 1,
                 "dma_burst_len_rd": 3, "sbpc_load": 32, "dummy_wr_val": 7, "sbpc_qos_thr": 8,
                 "sbpc_qos_low": 4, "sbpc_qos_high": 12},
             "_isp_dpc_user_calc_partition_t": {"sbpc_pos_base_h_addr": [1, 0],
                 "sbpc_pos_base_l_addr": [268435456, 268439552], "sbpc_pos_length": [4096, 2048]}})",
         // "offset_in" is "bp_offset"."val1" over 2^6
         R"({"_isp_dpc_user_calc_dp_strength_t": {"calc_limit_enable": 1, "dp_det_m1": 1.5,
                 "dp_det_m2": 1.5, "dp_det_mode": 0, "dp_det_th_ratio": 0.625, "static_enable": 1},
             "_isp_dpc_user_calc_top_control_t": {"quick_det_enable": 1},
             "_isp_dpc_user_calc_quick_det_t": {"quick_det_th_max": 128, "quick_det_th_offset": 10,
                 "quick_det_th_slope": 0.375},
             "_isp_dpc_user_calc_dp_correct_t": {"dp_cor_m3": 0.875, "dp_cor_m4": 0.75,
                 "dp_cor_m5": 1.25},
             "_isp_dpc_user_setup_t": {"color_limit_ratio": [1, 0.875, 0.75], "dp_cor_ch_mode": 1,
                 "dp_cor_clip_ratio": 0.75, "dp_cor_dir_wt_r2": 1.5, "offset_in": 65,
                 "offset_out": 64},
             "_isp_dpc_user_calc_noise_t": {"noise_lut": [1.5625, 1.875, "...", 3.75, 6.5625]},
             "_isp_dpc_user_calc_wb_gain_t": {"inv_wb_gain": [0.53125, 0.6171875],
                 "wb_gain": [1.875, 1.625]},
             "_isp_dpc_user_calc_color_limit_t": {"margin_l": [1, 1.5, 2], "margin_u": [4, 5, 6]}})",
         {{"dpc", qv_isp_module_dpc_json_register, {0, 2, 4, 5, 6, 7, 8, 9, 10}}}});
}

TEST(Dpc, FieldsReportInCrossedReadOrderUnderTheirBpNames) {
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_dpc_user_calc_dp_strength",
                                    isp_test::parse_object(R"({"isp_dpc": {
                  "bpc_ctrl": {"calc_limit_enable": 1, "dp_det_mode": 1, "static_enable": 1},
                  "dp_det": {"th_ratio": 40, "m2": 384, "m1": 24}, "bp_det": {"th_ratio": 41}}})")),
              isp_test::failed({{"bpc_ctrl", {"bp_det_mode"}}, {"bp_det", {"m2", "m1"}}}));
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_dpc_user_setup", {}),
              isp_test::failed({{"bp_offset", {"val1", "val0"}},
                                {"bp_cor", {"ch_mode", "clip_ratio", "dir_wt_r2"}},
                                {"color_limit_ratio", {"val2", "val1", "val0"}}}));
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_dpc_user_calc_wb_gain", {}),
              isp_test::failed({{"wb_gain", {"val1", "val0"}}, {"inv_wb_gain", {"val1", "val0"}}}));
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_dpc_user_calc_color_limit", {}),
              isp_test::failed({{"margin_u0", {"val1", "val0"}},
                                {"margin_u1", {"val2"}},
                                {"margin_l0", {"val1", "val0"}},
                                {"margin_l1", {"val2"}}}));
    /* a noise group that is not an array fails its eight entries, each element's odd one first */
    picojson::object root = isp_test::data_object("dpc/rtl_dpc_p0_chn0.json");
    root["isp_dpc"].get<picojson::object>()["noise_lut_grp"] = picojson::value(picojson::object());
    std::vector<std::string> noise;
    for (int k = 0; k < 4; ++k)
        isp_test::add_failed(noise, "noise_lut_odd", {"val"}),
            isp_test::add_failed(noise, "noise_lut_even", {"val"});
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_dpc_user_calc_noise", root), noise);
}

}  // namespace
