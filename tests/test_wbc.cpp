/* White-balance gain block: the register file through converters, exporters and module, and the
 * gain registers named after their first element. */
#include <gtest/gtest.h>

#include "isp_json_modules.h"
#include "tests/support/block_case.h"

namespace {

TEST(Wbc, CaseConvertsExportsAndReplays) {
    isp_test::check_block(
        {"wbc",
         {"wbc/rtl_wbc_p0.json"},
         R"({"_isp_wbc_user_ctrl_t": {"d_gain": 300, "wb_gain": [484, 256, 256, 402],
                                                        "clip_level": 65472},
                               "_isp_wbc_user_setup_t": {"offset_in": 4096, "offset_out": 2112},
                               "_isp_wbc_user_init_t": {"bayer_pattern": 2}})",
         // 300 / 2^8, {484, 256, 256, 402} / 2^8, 65472, 4096, 2112 / 2^6
         R"({"_isp_wbc_user_ctrl_t": {"clip_level": 1023, "d_gain": 1.171875,
                                   "wb_gain": [1.890625, 1, 1, 1.5703125]},
                               "_isp_wbc_user_setup_t": {"offset_in": 64, "offset_out": 33}})",
         {{"wbc", qv_isp_module_wbc_json_register, {0, 1, 2, 3}}}});
}

/* "wb_gain0" holds val0 and val1, "wb_gain2" val2 and val3; "wb_gain1" and "wb_gain3" are never
 * read, and a missing top key reports every field in read order. */
TEST(Wbc, GainRegistersAreNamedAfterTheirFirstElement) {
    EXPECT_EQ(
        isp_test::failures_of("rtl_to_drv_wbc_user_ctrl", isp_test::parse_object(R"({"isp_wbc": {
                  "wb_gain0": {"val0": 300}, "wb_gain1": {"val1": 301},
                  "wb_gain2": {"val2": 302, "val3": 303}, "wb_gain3": {"val3": 304}}})")),
        (std::vector<std::string>{"read json_obj failed: d_gain.val",
                                  "read json_obj failed: wb_gain0.val1",
                                  "read json_obj failed: clip_level.val"}));
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_wbc_user_ctrl", {}),
              (std::vector<std::string>{
                  "read json_obj failed: d_gain.val", "read json_obj failed: wb_gain0.val0",
                  "read json_obj failed: wb_gain0.val1", "read json_obj failed: wb_gain2.val2",
                  "read json_obj failed: wb_gain2.val3", "read json_obj failed: clip_level.val"}));
}

}  // namespace
