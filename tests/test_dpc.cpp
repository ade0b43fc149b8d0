/* Defect pixel correction block: register files to driver structures and back to C-model
 * values. */
#include <stddef.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/dpc.h"
#include "isp_json_modules.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::clear;
using isp_test::fill;
using isp_test::parse_object;
using isp_test::split_lines;

picojson::object fixture(int partition) {
    return parse_object(isp_test::read_file(std::string(ISP_TEST_DATA_DIR "/dpc/rtl_dpc_p") +
                                            std::to_string(partition) + "_chn0.json"));
}

std::string serialized(const picojson::object &object) {
    return picojson::value(object).serialize();
}

template <typename T, size_t N>
std::vector<uint32_t> codes(const T (&member)[N]) {
    return std::vector<uint32_t>(member, member + N);
}

/* Runs fn with standard error captured and returns what it printed. */
template <typename Fn>
std::string stderr_of(Fn fn) {
    testing::internal::CaptureStderr();
    fn();
    return testing::internal::GetCapturedStderr();
}

TEST(DpcConvert, CalcGroupsFromRegisterFile) {
    picojson::object root = fixture(0);
    _isp_dpc_user_calc_dp_strength_t strength{};
    _isp_dpc_user_calc_top_control_t top{};
    _isp_dpc_user_calc_quick_det_t quick{};
    _isp_dpc_user_calc_dp_correct_t correct{};
    _isp_dpc_user_calc_wb_gain_t wb{};
    _isp_dpc_user_calc_color_limit_t limit{};
    _isp_dpc_user_calc_noise_t noise{};
    const std::string messages = stderr_of([&] {
        EXPECT_EQ(rtl_to_drv_dpc_user_calc_dp_strength(root, &strength, 0), 0);
        EXPECT_EQ(rtl_to_drv_dpc_user_calc_top_control(root, &top, 0), 0);
        EXPECT_EQ(rtl_to_drv_dpc_user_calc_quick_det(root, &quick, 0), 0);
        EXPECT_EQ(rtl_to_drv_dpc_user_calc_dp_correct(root, &correct, 0), 0);
        EXPECT_EQ(rtl_to_drv_dpc_user_calc_wb_gain(root, &wb, 0), 0);
        EXPECT_EQ(rtl_to_drv_dpc_user_calc_color_limit(root, &limit, 0), 0);
        EXPECT_EQ(rtl_to_drv_dpc_user_calc_noise(root, &noise, 0), 0);
    });
    EXPECT_EQ(messages, "");

    EXPECT_EQ(strength.calc_limit_enable, 1u);
    EXPECT_EQ(strength.dp_det_mode, 0u);
    EXPECT_EQ(strength.static_enable, 1u);
    EXPECT_EQ(strength.dp_det_th_ratio, 40u);
    EXPECT_EQ(strength.dp_det_m2, 384u);
    EXPECT_EQ(strength.dp_det_m1, 24u);
    EXPECT_EQ(top.quick_det_enable, 1u);
    EXPECT_EQ(quick.quick_det_th_offset, 640u);
    EXPECT_EQ(quick.quick_det_th_max, 8192u);
    EXPECT_EQ(quick.quick_det_th_slope, 6u);
    EXPECT_EQ(correct.dp_cor_m5, 20u);
    EXPECT_EQ(correct.dp_cor_m4, 96u);
    EXPECT_EQ(correct.dp_cor_m3, 112u);
    EXPECT_EQ(codes(wb.wb_gain), (std::vector<uint32_t>{30, 26}));
    EXPECT_EQ(codes(wb.inv_wb_gain), (std::vector<uint32_t>{68, 79}));
    EXPECT_EQ(codes(limit.margin_u), (std::vector<uint32_t>{256, 320, 384}));
    EXPECT_EQ(codes(limit.margin_l), (std::vector<uint32_t>{64, 96, 128}));
    EXPECT_EQ(codes(noise.noise_lut),
              (std::vector<uint32_t>{100, 120, 140, 160, 180, 200, 220, 240, 420}));
}

TEST(DpcConvert, SetupTakesInputOffsetFromVal1) {
    picojson::object root = fixture(0);
    _isp_dpc_user_setup_t setup{};
    EXPECT_EQ(stderr_of([&] { rtl_to_drv_dpc_user_setup(root, &setup, 0); }), "");
    EXPECT_EQ(setup.offset_in, 4160u);
    EXPECT_EQ(setup.offset_out, 4096u);
    EXPECT_EQ(setup.dp_cor_ch_mode, 1u);
    EXPECT_EQ(setup.dp_cor_clip_ratio, 48u);
    EXPECT_EQ(setup.dp_cor_dir_wt_r2, 24u);
    EXPECT_EQ(codes(setup.color_limit_ratio), (std::vector<uint32_t>{128, 112, 96}));
}

TEST(DpcConvert, InitKeepsEachPartitionsSizeAndTheLastPartitionsSettings) {
    picojson::object p0 = fixture(0);
    picojson::object p1 = fixture(1);
    _isp_dpc_user_init_t init{};
    init.pic_size_h[2] = 0x5555;
    rtl_to_drv_dpc_user_init(p0, &init, 0);
    rtl_to_drv_dpc_user_init(p1, &init, 1);
    EXPECT_EQ(init.pic_size_h[0], 1920u);
    EXPECT_EQ(init.pic_size_v[0], 1080u);
    EXPECT_EQ(init.pic_size_h[1], 1280u);
    EXPECT_EQ(init.pic_size_v[1], 720u);
    EXPECT_EQ(init.pic_size_h[2], 0x5555u);
    EXPECT_EQ(init.pic_blank_h, 160u);
    EXPECT_EQ(init.hdr_dgst_en, 0u);
    EXPECT_EQ(init.wdma_err_ctrl, 1u);
    EXPECT_EQ(init.rdma_err_ctrl, 1u);
    EXPECT_EQ(init.sbpc_table_type, 1u);
    EXPECT_EQ(init.bayer_pat, 0u);
    EXPECT_EQ(init.dma_burst_len_rd, 3u);
    EXPECT_EQ(init.sbpc_load, 32u);
    EXPECT_EQ(init.dummy_wr_val, 7u);
    EXPECT_EQ(init.sbpc_qos_thr, 8u);
    EXPECT_EQ(init.sbpc_qos_low, 4u);
    EXPECT_EQ(init.sbpc_qos_high, 12u);
}

TEST(DpcConvert, PartitionOverloadPlacesEachTableByPartition) {
    picojson::object p0 = fixture(0);
    picojson::object p1 = fixture(1);
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
    picojson::object root = fixture(0);
    picojson::object &top = root["isp_dpc"].get<picojson::object>();

    top["noise_lut_grp"] = picojson::value(picojson::object());
    _isp_dpc_user_calc_noise_t noise{};
    const std::vector<std::string> expected = {
        "read json_obj failed: noise_lut_odd.val", "read json_obj failed: noise_lut_even.val",
        "read json_obj failed: noise_lut_odd.val", "read json_obj failed: noise_lut_even.val",
        "read json_obj failed: noise_lut_odd.val", "read json_obj failed: noise_lut_even.val",
        "read json_obj failed: noise_lut_odd.val", "read json_obj failed: noise_lut_even.val"};
    EXPECT_EQ(split_lines(stderr_of([&] { rtl_to_drv_dpc_user_calc_noise(root, &noise, 0); })),
              expected);
    EXPECT_EQ(codes(noise.noise_lut), (std::vector<uint32_t>{0, 0, 0, 0, 0, 0, 0, 0, 420}));
}

TEST(DpcConvert, MissingTopKeyReportsFieldsInConversionOrder) {
    picojson::object root;
    _isp_dpc_user_setup_t setup{};
    _isp_dpc_user_calc_wb_gain_t wb{};
    _isp_dpc_user_calc_color_limit_t limit{};
    const std::string messages              = stderr_of([&] {
        rtl_to_drv_dpc_user_setup(root, &setup, 0);
        rtl_to_drv_dpc_user_calc_wb_gain(root, &wb, 0);
        rtl_to_drv_dpc_user_calc_color_limit(root, &limit, 0);
    });
    const std::vector<std::string> expected = {"read json_obj failed: bp_offset.val1",
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
                                               "read json_obj failed: margin_l1.val2"};
    EXPECT_EQ(split_lines(messages), expected);
    EXPECT_TRUE(root["isp_dpc"].is<picojson::null>());
}

TEST(DpcConvert, RegistersSpelledWithDpPrefixAreNotRead) {
    picojson::object root = parse_object(R"({"isp_dpc": {
        "bpc_ctrl": {"calc_limit_enable": 1, "dp_det_mode": 1, "static_enable": 1},
        "dp_det": {"th_ratio": 40, "m2": 384, "m1": 24},
        "bp_det": {"th_ratio": 41}}})");
    _isp_dpc_user_calc_dp_strength_t strength{};
    const std::vector<std::string> expected = {"read json_obj failed: bpc_ctrl.bp_det_mode",
                                               "read json_obj failed: bp_det.m2",
                                               "read json_obj failed: bp_det.m1"};
    EXPECT_EQ(
        split_lines(stderr_of([&] { rtl_to_drv_dpc_user_calc_dp_strength(root, &strength, 0); })),
        expected);
    EXPECT_EQ(strength.dp_det_mode, 0u);
    EXPECT_EQ(strength.dp_det_th_ratio, 41u);
    EXPECT_EQ(strength.dp_det_m2, 0u);
}

TEST(DpcExport, ConvertedFileExportsEachFieldOverItsScale) {
    picojson::object root = fixture(0);
    _isp_dpc_user_calc_dp_strength_t strength{};
    _isp_dpc_user_setup_t setup{};
    _isp_dpc_user_calc_top_control_t top{};
    _isp_dpc_user_calc_noise_t noise{};
    _isp_dpc_user_calc_wb_gain_t wb{};
    _isp_dpc_user_calc_quick_det_t quick{};
    _isp_dpc_user_calc_dp_correct_t correct{};
    _isp_dpc_user_calc_color_limit_t limit{};
    rtl_to_drv_dpc_user_calc_dp_strength(root, &strength, 0);
    rtl_to_drv_dpc_user_setup(root, &setup, 0);
    rtl_to_drv_dpc_user_calc_top_control(root, &top, 0);
    rtl_to_drv_dpc_user_calc_noise(root, &noise, 0);
    rtl_to_drv_dpc_user_calc_wb_gain(root, &wb, 0);
    rtl_to_drv_dpc_user_calc_quick_det(root, &quick, 0);
    rtl_to_drv_dpc_user_calc_dp_correct(root, &correct, 0);
    rtl_to_drv_dpc_user_calc_color_limit(root, &limit, 0);

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

TEST(DpcModule, ReplaysEightGroupsAndKeepsTopControlToItself) {
    isp_test::temp_dir dir;
    for (const char *name : {"rtl_dpc_p0_chn0.json", "rtl_dpc_p1_chn0.json"})
        dir.write(std::string("cfgs/f0/") + name,
                  isp_test::read_file(std::string(ISP_TEST_DATA_DIR "/dpc/") + name));
    isp_sim::reset();
    isp_sim::set_log_echo(false);
    isp_test::pipe p(2, 1, dir.path(), 1);
    JsonModuleHandle h = p.handle();
    JsonModuleOps *ops = nullptr;
    ASSERT_EQ(qv_isp_module_dpc_json_register(&ops), 0);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);

    _isp_dpc_user_calc_dp_strength_t strength;
    clear(strength);
    strength.calc_limit_enable = 1;
    strength.static_enable     = 1;
    strength.dp_det_th_ratio   = 40;
    strength.dp_det_m2         = 384;
    strength.dp_det_m1         = 24;
    _isp_dpc_user_setup_t setup;
    clear(setup);
    setup.offset_in         = 4160;
    setup.offset_out        = 4096;
    setup.dp_cor_ch_mode    = 1;
    setup.dp_cor_clip_ratio = 48;
    setup.dp_cor_dir_wt_r2  = 24;
    fill(setup.color_limit_ratio, {128, 112, 96});
    _isp_dpc_user_calc_noise_t noise;
    clear(noise);
    fill(noise.noise_lut, {100, 120, 140, 160, 180, 200, 220, 240, 420});
    _isp_dpc_user_calc_wb_gain_t wb;
    clear(wb);
    fill(wb.wb_gain, {30, 26});
    fill(wb.inv_wb_gain, {68, 79});
    _isp_dpc_user_calc_quick_det_t quick;
    clear(quick);
    quick.quick_det_th_offset = 640;
    quick.quick_det_th_max    = 8192;
    quick.quick_det_th_slope  = 6;
    _isp_dpc_user_calc_dp_correct_t correct;
    clear(correct);
    correct.dp_cor_m5 = 20;
    correct.dp_cor_m4 = 96;
    correct.dp_cor_m3 = 112;
    _isp_dpc_user_calc_color_limit_t limit;
    clear(limit);
    fill(limit.margin_u, {256, 320, 384});
    fill(limit.margin_l, {64, 96, 128});
    _isp_dpc_user_init_t init;
    clear(init);
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

    const std::vector<isp_sim::call> pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 9u);  // the default parameters, then eight groups
    const std::vector<uint32_t> commands             = {0, 2, 4, 5, 6, 7, 8, 9, 10};
    const std::vector<std::vector<uint8_t>> payloads = {{},
                                                        bytes_of(strength),
                                                        bytes_of(setup),
                                                        bytes_of(noise),
                                                        bytes_of(wb),
                                                        bytes_of(quick),
                                                        bytes_of(correct),
                                                        bytes_of(limit),
                                                        bytes_of(init)};
    for (size_t i = 0; i < pushes.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(pushes[i].cmd, commands[i]);
        EXPECT_EQ(pushes[i].payload, payloads[i]);
    }

    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
    EXPECT_TRUE(isp_sim::problems().empty());
}

}  // namespace
