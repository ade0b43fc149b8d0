/* White-balance gain block: register files to driver structures and back to C-model values. */

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/wbc.h"
#include "isp_json_modules.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::clear;
using isp_test::parse_object;
using isp_test::split_lines;

picojson::object fixture() {
    return parse_object(isp_test::read_file(ISP_TEST_DATA_DIR "/wbc/rtl_wbc_p0.json"));
}

std::string serialized(const picojson::object &object) {
    return picojson::value(object).serialize();
}

TEST(WbcConvert, RegisterFileFillsEveryGroup) {
    picojson::object root = fixture();
    _isp_wbc_user_ctrl_t ctrl{};
    _isp_wbc_user_setup_t setup{};
    _isp_wbc_user_init_t init{};
    testing::internal::CaptureStderr();
    EXPECT_EQ(rtl_to_drv_wbc_user_ctrl(root, &ctrl, 0), 0);
    EXPECT_EQ(rtl_to_drv_wbc_user_setup(root, &setup, 0), 0);
    EXPECT_EQ(rtl_to_drv_wbc_user_init(root, &init, 0), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    EXPECT_EQ(ctrl.d_gain, 300u);
    EXPECT_EQ(ctrl.wb_gain[0], 484u);
    EXPECT_EQ(ctrl.wb_gain[1], 256u);
    EXPECT_EQ(ctrl.wb_gain[2], 256u);
    EXPECT_EQ(ctrl.wb_gain[3], 402u);
    EXPECT_EQ(ctrl.clip_level, 65472u);
    EXPECT_EQ(setup.offset_in, 4096u);
    EXPECT_EQ(setup.offset_out, 2112u);
    EXPECT_EQ(init.bayer_pattern, 2u);
}

TEST(WbcConvert, MissingTopKeyReportsEveryFieldInOrder) {
    picojson::object root = parse_object(R"({"isp_blc": {}})");
    _isp_wbc_user_ctrl_t ctrl;
    ctrl.d_gain     = 1;
    ctrl.wb_gain[0] = ctrl.wb_gain[1] = ctrl.wb_gain[2] = ctrl.wb_gain[3] = 1;
    ctrl.clip_level                                                       = 1;
    testing::internal::CaptureStderr();
    rtl_to_drv_wbc_user_ctrl(root, &ctrl, 0);
    const std::vector<std::string> expected = {
        "read json_obj failed: d_gain.val",    "read json_obj failed: wb_gain0.val0",
        "read json_obj failed: wb_gain0.val1", "read json_obj failed: wb_gain2.val2",
        "read json_obj failed: wb_gain2.val3", "read json_obj failed: clip_level.val"};
    EXPECT_EQ(split_lines(testing::internal::GetCapturedStderr()), expected);
    EXPECT_EQ(ctrl.d_gain, 0u);
    EXPECT_EQ(ctrl.wb_gain[0] | ctrl.wb_gain[1] | ctrl.wb_gain[2] | ctrl.wb_gain[3], 0u);
    EXPECT_EQ(ctrl.clip_level, 0u);
    // the look-up leaves a null top entry behind
    ASSERT_EQ(root.count("isp_wbc"), 1u);
    EXPECT_TRUE(root["isp_wbc"].is<picojson::null>());
}

TEST(WbcConvert, GainRegistersAreNamedAfterTheirFirstElement) {
    picojson::object root = parse_object(R"({"isp_wbc": {
        "wb_gain0": {"val0": 300},
        "wb_gain1": {"val1": 301},
        "wb_gain2": {"val2": 302, "val3": 303},
        "wb_gain3": {"val3": 304}}})");
    _isp_wbc_user_ctrl_t ctrl{};
    testing::internal::CaptureStderr();
    rtl_to_drv_wbc_user_ctrl(root, &ctrl, 0);
    const std::vector<std::string> expected = {"read json_obj failed: d_gain.val",
                                               "read json_obj failed: wb_gain0.val1",
                                               "read json_obj failed: clip_level.val"};
    EXPECT_EQ(split_lines(testing::internal::GetCapturedStderr()), expected);
    EXPECT_EQ(ctrl.wb_gain[0], 300u);
    EXPECT_EQ(ctrl.wb_gain[1], 0u);
    EXPECT_EQ(ctrl.wb_gain[2], 302u);
    EXPECT_EQ(ctrl.wb_gain[3], 303u);
}

TEST(WbcConvert, FractionalValuesAreTruncatedBeforeEncoding) {
    picojson::object root = parse_object(R"({"isp_wbc": {
        "d_gain": {"val": 256.7}, "wb_gain0": {"val0": 255.99, "val1": 1},
        "wb_gain2": {"val2": 2, "val3": 3}, "clip_level": {"val": 64.5}}})");
    _isp_wbc_user_ctrl_t ctrl{};
    rtl_to_drv_wbc_user_ctrl(root, &ctrl, 0);
    EXPECT_EQ(ctrl.d_gain, 256u);
    EXPECT_EQ(ctrl.wb_gain[0], 255u);
    EXPECT_EQ(ctrl.clip_level, 64u);
}

TEST(WbcExport, CtrlAndSetupGiveRealValues) {
    _isp_wbc_user_ctrl_t ctrl   = {256, {256, 384, 512, 256}, 65472};
    _isp_wbc_user_setup_t setup = {4096, 32};
    picojson::object out;
    EXPECT_EQ(drv_to_cmodel_wbc_user_ctrl(&ctrl, out, 0), 0);
    EXPECT_EQ(serialized(out), R"({"clip_level":1023,"d_gain":1,"wb_gain":[1,1.5,2,1]})");
    picojson::object setup_out;
    EXPECT_EQ(drv_to_cmodel_wbc_user_setup(&setup, setup_out, 0), 0);
    EXPECT_EQ(serialized(setup_out), R"({"offset_in":64,"offset_out":0.5})");
}

TEST(WbcExport, ConvertedFileExportsEachFieldOverItsScale) {
    picojson::object root = fixture();
    _isp_wbc_user_ctrl_t ctrl{};
    _isp_wbc_user_setup_t setup{};
    rtl_to_drv_wbc_user_ctrl(root, &ctrl, 0);
    rtl_to_drv_wbc_user_setup(root, &setup, 0);
    picojson::object out;
    drv_to_cmodel_wbc_user_ctrl(&ctrl, out, 0);
    drv_to_cmodel_wbc_user_setup(&setup, out, 0);
    // 300 / 2^8, {484, 256, 256, 402} / 2^8, 65472 / 2^6, 4096 / 2^6, 2112 / 2^6
    EXPECT_EQ(serialized(out),
              R"({"clip_level":1023,"d_gain":1.171875,"offset_in":64,"offset_out":33,)"
              R"("wb_gain":[1.890625,1,1,1.5703125]})");
}

TEST(WbcModule, ReplaysTheLastPartitionsGroupsInCommandOrder) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_wbc_p0.json",
              isp_test::read_file(ISP_TEST_DATA_DIR "/wbc/rtl_wbc_p0.json"));
    dir.write("cfgs/f0/rtl_wbc_p1.json", R"({"isp_wbc": {
        "bayer_pattern": {"val": 1}, "clip_level": {"val": 60000}, "d_gain": {"val": 512},
        "offset_in": {"val": 64}, "offset_out": {"val": 128},
        "wb_gain0": {"val0": 500, "val1": 260}, "wb_gain2": {"val2": 261, "val3": 390}}})");
    isp_sim::reset();
    isp_sim::set_log_echo(false);
    isp_test::pipe p(2, 1, dir.path());
    JsonModuleHandle h = p.handle();
    JsonModuleOps *ops = nullptr;
    ASSERT_EQ(qv_isp_module_wbc_json_register(&ops), 0);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);

    _isp_wbc_user_ctrl_t ctrl;
    clear(ctrl);
    ctrl.d_gain     = 512;
    ctrl.wb_gain[0] = 500;
    ctrl.wb_gain[1] = 260;
    ctrl.wb_gain[2] = 261;
    ctrl.wb_gain[3] = 390;
    ctrl.clip_level = 60000;
    _isp_wbc_user_setup_t setup;
    clear(setup);
    setup.offset_in  = 64;
    setup.offset_out = 128;
    _isp_wbc_user_init_t init;
    clear(init);
    init.bayer_pattern = 1;

    const std::vector<isp_sim::call> pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 4u);  // the default parameters, then ctrl, setup, init
    EXPECT_EQ(pushes[0].cmd, 0u);
    EXPECT_EQ(pushes[1].cmd, 1u);
    EXPECT_EQ(pushes[1].payload, bytes_of(ctrl));
    EXPECT_EQ(pushes[2].cmd, 2u);
    EXPECT_EQ(pushes[2].payload, bytes_of(setup));
    EXPECT_EQ(pushes[3].cmd, 3u);
    EXPECT_EQ(pushes[3].payload, bytes_of(init));

    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
    EXPECT_TRUE(isp_sim::problems().empty());
}

}  // namespace
