/* Dynamic range compression block: the register file through converters, exporters and module,
 * the curve packed two raw entries to a word without masking, and the read order. */
#include <gtest/gtest.h>

#include "blocks/hdrc.h"
#include "isp_json_modules.h"
#include "tests/support/block_case.h"

namespace {

TEST(Hdrc, CaseConvertsExportsAndReplays) {
    /* entry i of the curve is 255 i: word k is 510 k | (510 k + 255) << 16, entry 256 alone */
    isp_test::check_block(
        {"hdrc",
         {"hdrc/rtl_hdrc_p0.json"},
         R"({"_isp_hdrc_user_setup_t": {"dither_seed_enable": 1, "dither_enable": 1,
                 "affine_k": 640, "clip_level": 65472,
                 "offset_in": [262144, 266240, 270336, 274432], "offset_out": 1024,
                 "dither_seed": [4951, 9320], "dither_pmask_16bit": 46080,
                 "dither_pmask_15bit": 24576, "lut_max": 65535},
             "_isp_hdrc_user_glb_ctrl_t": {"manual_clk_en": 1, "bayer_pat": 2},
             "_isp_hdrc_user_hdrc_lut_t": {"hdrc_lut": [16711680, 50135550, "...", 65280]}})",
         // no "lut_max"; the curve key all zeros: the setup group does not carry the curve
         R"({"_isp_hdrc_user_setup_t": {"affine_k": 1.25, "clip_level": 1023, "dither_enable": 1,
                 "dither_pmask_15bit": 24576, "dither_pmask_16bit": 46080,
                 "dither_seed": [4951, 9320], "dither_seed_enable": 1, "hdrc_lut": [0, 0, "..."],
                 "offset_in": [4096, 4160, 4224, 4288], "offset_out": 16}})",
         {{"hdrc", qv_isp_module_hdrc_json_register, {0, 1, 3, 4}}}});
}

TEST(Hdrc, CurveEntriesAreRawSaturatedAndNotMasked) {
    picojson::object root = isp_test::data_object("hdrc/rtl_hdrc_p0.json");
    picojson::array &curve =
        root["isp_hdrc"].get<picojson::object>()["hdrc_lut"].get<picojson::array>();
    const double entries[] = {1.0, 2.9, 131071.0, 0.0, -5.0, 1.0};
    for (size_t i = 0; i < 6; ++i) curve[i] = picojson::value(entries[i]);
    curve[256] = picojson::value(1e12);
    _isp_hdrc_user_hdrc_lut_t lut;
    isp_test::copy_bytes(isp_test::convert_named("rtl_to_drv_hdrc_user_hdrc_lut", root).bytes, lut);
    EXPECT_EQ(lut.hdrc_lut[0], 0x00020001u);
    EXPECT_EQ(lut.hdrc_lut[1], 0x0001FFFFu);  // entry 2 spills into entry 3's half
    EXPECT_EQ(lut.hdrc_lut[2], 0x00010000u);
    EXPECT_EQ(lut.hdrc_lut[128], 0xFFFFFFFFu);
}

TEST(Hdrc, FieldsReportInReadOrder) {
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_hdrc_user_setup", {}),
              isp_test::failed({{"hdrc_ctrl", {"dither_seed_en", "dither_en"}},
                                {"glb_val", {"affine_k", "clip_level"}},
                                {"offset_in3", {"val"}},
                                {"offset_in2", {"val"}},
                                {"offset_in1", {"val"}},
                                {"offset_in0", {"val"}},
                                {"offset_out", {"val"}},
                                {"dither_seed", {"val1", "val0"}},
                                {"dither_pmask", {"val_16bit", "val_15bit"}},
                                {"lut_max", {"val"}}}));
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_hdrc_glb_ctl", {}),
              isp_test::failed({{"glb_ctrl", {"manual_clk_en", "bayer_pat"}}}));
}

}  // namespace
