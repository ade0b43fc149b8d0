/* White-balance gain block: register files to driver structures and back to C-model values. */
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/wbc.h"
#include "isp_json_modules.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::clear;
using isp_test::codes;
using isp_test::parse_object;
using isp_test::serialized;
using isp_test::stderr_lines_of;

TEST(WbcConvert, RegisterFileFillsEveryGroupAndExportsEachFieldOverItsScale) {
    picojson::object root = isp_test::data_object("wbc/rtl_wbc_p0.json");
    _isp_wbc_user_ctrl_t ctrl{};
    _isp_wbc_user_setup_t setup{};
    _isp_wbc_user_init_t init{};
    EXPECT_EQ(isp_test::stderr_of([&] {
                  EXPECT_EQ(rtl_to_drv_wbc_user_ctrl(root, &ctrl, 0), 0);
                  EXPECT_EQ(rtl_to_drv_wbc_user_setup(root, &setup, 0), 0);
                  EXPECT_EQ(rtl_to_drv_wbc_user_init(root, &init, 0), 0);
              }),
              "");
    EXPECT_EQ(ctrl.d_gain, 300u);
    EXPECT_EQ(codes(ctrl.wb_gain), (std::vector<uint32_t>{484, 256, 256, 402}));
    EXPECT_EQ(ctrl.clip_level, 65472u);
    EXPECT_EQ(setup.offset_in, 4096u);
    EXPECT_EQ(setup.offset_out, 2112u);
    EXPECT_EQ(init.bayer_pattern, 2u);

    picojson::object out = parse_object(R"({"d_gain": "stale", "kept": true})");
    EXPECT_EQ(drv_to_cmodel_wbc_user_ctrl(&ctrl, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_wbc_user_setup(&setup, out, 0), 0);
    // 300 / 2^8, {484, 256, 256, 402} / 2^8, 65472 / 2^6, 4096 / 2^6, 2112 / 2^6
    EXPECT_EQ(serialized(out),
              R"({"clip_level":1023,"d_gain":1.171875,"kept":true,"offset_in":64,"offset_out":33,)"
              R"("wb_gain":[1.890625,1,1,1.5703125]})");
}

TEST(WbcConvert, MissingTopKeyReportsEveryFieldInOrder) {
    picojson::object root     = parse_object(R"({"isp_blc": {}})");
    _isp_wbc_user_ctrl_t ctrl = {1, {1, 1, 1, 1}, 1};
    EXPECT_EQ(stderr_lines_of([&] { rtl_to_drv_wbc_user_ctrl(root, &ctrl, 0); }),
              (std::vector<std::string>{
                  "read json_obj failed: d_gain.val", "read json_obj failed: wb_gain0.val0",
                  "read json_obj failed: wb_gain0.val1", "read json_obj failed: wb_gain2.val2",
                  "read json_obj failed: wb_gain2.val3", "read json_obj failed: clip_level.val"}));
    EXPECT_EQ(ctrl.d_gain, 0u);
    EXPECT_EQ(codes(ctrl.wb_gain), (std::vector<uint32_t>{0, 0, 0, 0}));
    EXPECT_EQ(ctrl.clip_level, 0u);
    // the look-up leaves a null top entry behind
    EXPECT_TRUE(root.at("isp_wbc").is<picojson::null>());
}

/* "wb_gain0" holds val0 and val1, "wb_gain2" val2 and val3: the pair is named after its first
 * element, and the registers "wb_gain1" and "wb_gain3" are never read. */
TEST(WbcConvert, GainRegistersAreNamedAfterTheirFirstElement) {
    picojson::object root = parse_object(R"({"isp_wbc": {
        "wb_gain0": {"val0": 300}, "wb_gain1": {"val1": 301},
        "wb_gain2": {"val2": 302, "val3": 303}, "wb_gain3": {"val3": 304}}})");
    _isp_wbc_user_ctrl_t ctrl{};
    EXPECT_EQ(stderr_lines_of([&] { rtl_to_drv_wbc_user_ctrl(root, &ctrl, 0); }),
              (std::vector<std::string>{"read json_obj failed: d_gain.val",
                                        "read json_obj failed: wb_gain0.val1",
                                        "read json_obj failed: clip_level.val"}));
    EXPECT_EQ(codes(ctrl.wb_gain), (std::vector<uint32_t>{300, 0, 302, 303}));
}

TEST(WbcModule, ReplaysTheLastPartitionsGroupsInCommandOrder) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_wbc_p0.json", isp_test::data_text("wbc/rtl_wbc_p0.json"));
    dir.write("cfgs/f0/rtl_wbc_p1.json", R"({"isp_wbc": {
        "bayer_pattern": {"val": 1}, "clip_level": {"val": 60000}, "d_gain": {"val": 512},
        "offset_in": {"val": 64}, "offset_out": {"val": 128},
        "wb_gain0": {"val0": 500, "val1": 260}, "wb_gain2": {"val2": 261, "val3": 390}}})");
    const std::vector<isp_sim::call> pushes =
        isp_test::replay(qv_isp_module_wbc_json_register, dir, 2);

    _isp_wbc_user_ctrl_t ctrl;
    clear(ctrl);
    ctrl.d_gain = 512;
    isp_test::fill(ctrl.wb_gain, {500, 260, 261, 390});
    ctrl.clip_level = 60000;
    _isp_wbc_user_setup_t setup;
    clear(setup);
    setup.offset_in  = 64;
    setup.offset_out = 128;
    _isp_wbc_user_init_t init;
    clear(init);
    init.bayer_pattern = 1;
    // the default parameters, then ctrl, setup, init
    ASSERT_EQ(isp_test::commands_of(pushes), (std::vector<uint32_t>{0, 1, 2, 3}));
    EXPECT_EQ(pushes[1].payload, bytes_of(ctrl));
    EXPECT_EQ(pushes[2].payload, bytes_of(setup));
    EXPECT_EQ(pushes[3].payload, bytes_of(init));
}

}  // namespace
