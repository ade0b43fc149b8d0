/* Input a framework or a hardware model can get wrong, fed to whole modules on the simulated
 * platform: grids beyond the 8-bit partition index, channel counts beyond the context's six
 * handles, case paths at and past the path limit or holding '%', huge and non-finite numbers,
 * empty objects and arrays where objects or tables belong. Each must give its documented
 * result; run under the sanitizers, none may touch memory it does not own. */
#include <gtest/gtest.h>

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "isp_json.h"
#include "isp_platform.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

const char k_type_error_prefix[] = "\"type mismatch! call is<type>() before get<type>()\" && ";

/* The structure pushed with a setup command, copied out of the platform's record. */
template <typename T>
T pushed(uint32_t cmd, size_t nth = 0) {
    T value;
    isp_test::clear(value);
    for (const isp_sim::call &c : isp_sim::calls_of("vin_hal_wrapper_setup")) {
        if (c.cmd != cmd || nth-- != 0) continue;
        EXPECT_EQ(c.payload.size(), sizeof value);
        memcpy(&value, c.payload.data(), std::min(c.payload.size(), sizeof value));
        return value;
    }
    ADD_FAILURE() << "no push of command " << cmd;
    return value;
}

std::string error_line(const char *function, int line, uint32_t code, const char *text) {
    char buffer[256];
    snprintf(buffer, sizeof buffer, "[E][%32s][%4d]: Error [%x]: %s\n", function, line, code, text);
    return buffer;
}

std::vector<std::string> log_texts() {
    std::vector<std::string> texts;
    for (const isp_sim::log_line &line : isp_sim::log_lines()) texts.push_back(line.text);
    return texts;
}

/* Nothing left behind on the platform: no wrapper, context, buffer or misuse. */
void expect_platform_clean() {
    EXPECT_EQ(isp_sim::live_wrappers(), 0u);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 0u);
    EXPECT_TRUE(isp_sim::live_allocations().empty());
    EXPECT_EQ(isp_sim::problems(), std::vector<std::string>());
}

class BadInput : public testing::Test {
  protected:
    void SetUp() override {
        isp_sim::reset();
        isp_sim::set_log_echo(false);
    }
    void TearDown() override { isp_sim::set_log_echo(true); }

    isp_test::temp_dir dir;
};

/* ---- partition grids beyond the 8-bit partition index ---------------------------------- */

TEST_F(BadInput, StatisticsAddressesOfMoreThan256PartitionsStayInTheirTables) {
    for (int p = 0; p < 256; ++p)
        dir.write("cfgs/f0/rtl_ae_stat_p" + std::to_string(p) + ".json", R"({"isp_ae_stat": {}})");
    isp_test::pipe pipe(17, 16, dir.path());  // 272 partitions: p256..p271 are p0..p15 again
    JsonModuleHandle h = pipe.handle();
    JsonModuleOps *ops = nullptr;
    qv_isp_module_ae_stat_json_register(&ops);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);

    const auto regio = isp_sim::calls_of("vin_hal_wrapper_regio_create");
    ASSERT_EQ(regio.size(), 1u);
    EXPECT_EQ(regio[0].record[offsetof(VinHalRegioAttr, part_num)],
              16);  // 272 partitions, low 8 bits
    ASSERT_EQ(isp_sim::calls_of("qv_hal_sys_mem_alloc_cached")[0].phys, 0x10000000u);
    const auto init = pushed<_isp_ae_stat_user_init_t>(1);
    EXPECT_EQ(init.wr_addr0[0], 0x2000000u);
    EXPECT_EQ(init.wr_addr1[0], 0x2001443u);
    EXPECT_EQ(init.wr_addr2[0], 0x2002886u);
    EXPECT_EQ(init.wr_addr0[15], 0x202855Au);
    EXPECT_EQ(init.wr_addr0[16], 0x202B060u);
    EXPECT_EQ(init.wr_addr0[255], 0x22ADAFAu);
    EXPECT_EQ(init.wr_addr1[255], 0x22AEF3Du);
    EXPECT_EQ(init.wr_addr2[255], 0x22B0380u);

    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
    expect_platform_clean();
}

TEST_F(BadInput, PerPartitionSizesOfMoreThan256PartitionsFillEveryElementOnce) {
    for (int p = 0; p < 256; ++p)
        dir.write("cfgs/f0/rtl_dem_p" + std::to_string(p) + ".json",
                  R"({"isp_dem": {"img_size": {"hsize": )" + std::to_string(1000 + p) +
                      R"(, "vsize": )" + std::to_string(p) + "}}}");
    isp_test::pipe pipe(17, 16, dir.path());  // 272 partitions: p256..p271 are p0..p15 again
    JsonModuleHandle h = pipe.handle();
    JsonModuleOps *ops = nullptr;
    qv_isp_module_demosaic_json_register(&ops);
    ASSERT_EQ(ops->create(&h), 0);
    testing::internal::CaptureStderr();
    const int32_t status = ops->init(&h);
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(status, 0);

    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_regio_create")[0]
                  .record[offsetof(VinHalRegioAttr, part_num)],
              16);
    const auto setup = pushed<_isp_dem_user_setup_t>(2);
    for (int p = 0; p < 256; ++p) {
        EXPECT_EQ(setup.img_size_hsize[p], 1000 + p) << p;
        EXPECT_EQ(setup.img_size_vsize[p], p) << p;
    }
    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
    expect_platform_clean();
}

/* ---- channel counts --------------------------------------------------------------------- */

struct channelled_module {
    const char *name;
    int32_t (*reg)(JsonModuleOps **);
    const char *file;
    uint32_t code_arg;
};

const channelled_module channelled[] = {
    {"blc", qv_isp_module_blc_json_register, "rtl_blc_p0_chn%d.json", 0x8001040a},
    {"dpc", qv_isp_module_dpc_json_register, "rtl_dpc_p0_chn%d.json", 0x8001030a},
    {"bl_det", qv_isp_module_bl_det_json_register, "rtl_bl_det_p0_chn%d.json", 0x8001300a},
};

TEST_F(BadInput, ChannelCountsAboveSixAreRefusedByEveryOperationThatUsesThem) {
    for (const channelled_module &m : channelled) {
        for (int32_t count : {7, 64, INT32_MAX}) {
            SCOPED_TRACE(std::string(m.name) + " with " + std::to_string(count) + " channels");
            isp_sim::reset();
            isp_test::pipe pipe(1, 1, dir.path(), count);
            JsonModuleHandle h = pipe.handle();
            JsonModuleOps *ops = nullptr;
            m.reg(&ops);
            ASSERT_EQ(ops->create(&h), 0);
            const int32_t arg = static_cast<int32_t>(m.code_arg);
            EXPECT_EQ(ops->init(&h), arg);
            EXPECT_EQ(ops->process(&h), arg);
            EXPECT_EQ(ops->trigger(&h), arg);
            EXPECT_EQ(ops->sync(&h), 0);  // the enable bit is one per module, not per channel
            EXPECT_EQ(ops->deinit(&h), arg);
            EXPECT_EQ(ops->destroy(&h), 0);

            const std::string mod = m.name;
            EXPECT_EQ(log_texts(), (std::vector<std::string>{
                                       error_line(("isp_" + mod + "_json_mod_init").c_str(), 151,
                                                  m.code_arg, "invalid params."),
                                       error_line(("__" + mod + "_json_param_setup").c_str(), 46,
                                                  m.code_arg, "invalid params."),
                                       error_line(("isp_" + mod + "_json_mod_trigger").c_str(), 244,
                                                  m.code_arg, "invalid params."),
                                       error_line(("isp_" + mod + "_json_mod_deinit").c_str(), 209,
                                                  m.code_arg, "invalid params."),
                                   }));
            EXPECT_TRUE(isp_sim::calls_of("vin_hal_wrapper_create").empty());
            expect_platform_clean();
        }
    }
}

TEST_F(BadInput, SixChannelsUseEverySlotOfTheContext) {
    for (int c = 0; c < 6; ++c)
        dir.write("cfgs/f0/rtl_bl_det_p0_chn" + std::to_string(c) + ".json",
                  R"({"isp_bl_det": {}})");
    isp_test::pipe pipe(1, 1, dir.path(), 6);
    JsonModuleHandle h = pipe.handle();
    JsonModuleOps *ops = nullptr;
    qv_isp_module_bl_det_json_register(&ops);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);
    ASSERT_EQ(ops->trigger(&h), 0);

    const auto wrappers = isp_sim::calls_of("vin_hal_wrapper_create");
    const auto triggers = isp_sim::calls_of("vin_hal_wrapper_trigger");
    ASSERT_EQ(wrappers.size(), 6u);
    ASSERT_EQ(triggers.size(), 6u);
    for (uint32_t c = 0; c < 6; ++c) {
        EXPECT_EQ(isp_sim::wrapper(wrappers[c].handle).channel, c);
        EXPECT_EQ(triggers[c].handle, wrappers[c].handle);
        EXPECT_EQ(triggers[c].channel, c);
    }
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_setup").size(), 6u * 3u);  // default, setup, init
    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
    expect_platform_clean();
}

TEST_F(BadInput, NegativeChannelCountsLoadAndTriggerNothing) {
    for (const channelled_module &m : channelled) {
        for (int32_t count : {-1, INT32_MIN}) {
            SCOPED_TRACE(std::string(m.name) + " with " + std::to_string(count) + " channels");
            isp_sim::reset();
            isp_test::pipe pipe(1, 1, dir.path(), count);
            JsonModuleHandle h = pipe.handle();
            JsonModuleOps *ops = nullptr;
            m.reg(&ops);
            ASSERT_EQ(ops->create(&h), 0);
            EXPECT_EQ(ops->init(&h), 0);
            EXPECT_EQ(ops->process(&h), 0);
            EXPECT_EQ(ops->trigger(&h), 0);
            EXPECT_EQ(ops->deinit(&h), 0);
            EXPECT_EQ(ops->destroy(&h), 0);
            EXPECT_TRUE(isp_sim::log_lines().empty());
            EXPECT_EQ(isp_sim::calls().size(), 2u);  // the context's allocation and free
            expect_platform_clean();
        }
    }
}

/* ---- case paths ------------------------------------------------------------------------- */

const char k_wbc_file[] =
    R"({"isp_wbc": {"bayer_pattern": {"val": 2}, "offset_in": {"val": 64}, "offset_out": {"val": 128},
        "d_gain": {"val": 300}, "wb_gain0": {"val0": 256, "val1": 257}, "wb_gain2": {"val2": 258,
        "val3": 259}, "clip_level": {"val": 65472}}})";

/* Writes the wbc file of partition 0 under case, runs init and returns its status. */
int32_t load_wbc(PipeContext &ctx) {
    JsonModuleHandle h{};
    h.pipe             = &ctx;
    JsonModuleOps *ops = nullptr;
    qv_isp_module_wbc_json_register(&ops);
    ops->create(&h);
    const int32_t status = ops->init(&h);
    ops->deinit(&h);
    ops->destroy(&h);
    return status;
}

/* A case directory whose path has exactly length characters, under the test's directory. */
std::string case_of_length(const isp_test::temp_dir &dir, size_t length) {
    const size_t base = dir.path().size() + 1;
    if (length <= base) return "";
    std::string path = dir.path() + "/" + std::string(length - base, 'c');
    dir.write(path.substr(dir.path().size() + 1) + "/cfgs/f0/rtl_wbc_p0.json", k_wbc_file);
    return path;
}

TEST_F(BadInput, PathsAreCutAt254CharactersAndACutPathIsAMissingFile) {
    const size_t suffix    = strlen("/cfgs/f0/rtl_wbc_p0.json");
    const std::string fits = case_of_length(dir, 254 - suffix);
    const std::string cut  = case_of_length(dir, 255 - suffix);
    if (fits.empty()) GTEST_SKIP() << "temporary directory too long: " << dir.path();

    isp_test::pipe fitting(1, 1, fits);
    EXPECT_EQ(load_wbc(fitting.ctx), 0);
    const auto ctrl = pushed<_isp_wbc_user_ctrl_t>(1);
    EXPECT_EQ(ctrl.d_gain, 300u);
    EXPECT_EQ(ctrl.wb_gain[3], 259u);

    isp_test::pipe cutting(1, 1, cut);
    const std::string shown = (cut + "/cfgs/f0/rtl_wbc_p0.json").substr(0, 254);
    EXPECT_EQ(shown.substr(shown.size() - 15), "/rtl_wbc_p0.jso");
    EXPECT_DEATH(load_wbc(cutting.ctx), "\\[error\\] failed to read json file: " + shown + "\n");
}

TEST_F(BadInput, CasePathFillingItsWholeFieldIsNotReadPastTheField) {
    /* No terminator: the framework's record in a heap block of its own size, so reading past
     * the field would leave the block. */
    std::unique_ptr<PipeContext> ctx(new PipeContext());
    IspRegShadow shadow{};
    ctx->attr.part_h   = 1;
    ctx->attr.part_v   = 1;
    ctx->reg_shadow    = &shadow;
    ctx->channel_count = 1;
    /* the padding after the field too, as a record of the target (no padding) would have it */
    memset(ctx->case_path, 'x', sizeof(PipeContext) - offsetof(PipeContext, case_path));
    EXPECT_DEATH(load_wbc(*ctx),
                 "\\[error\\] failed to read json file: " + std::string(254, 'x') + "\n");
}

TEST_F(BadInput, PercentSignsInTheCasePathAreNotFormatDirectives) {
    const std::string case_path = dir.path() + "/100%s%n%d%%x";
    dir.write("100%s%n%d%%x/cfgs/f0/rtl_wbc_p0.json", k_wbc_file);
    dir.mkdir("100%s%n%d%%x/cfgs/f1");
    dir.write("100%s%n%d%%x/cfgs/f1/rtl_wbc_p0.json", k_wbc_file);

    isp_test::pipe pipe(1, 1, case_path);
    JsonModuleHandle h = pipe.handle();
    JsonModuleOps *ops = nullptr;
    qv_isp_module_wbc_json_register(&ops);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);  // frame 0, and f1 is found
    EXPECT_EQ(static_cast<JsonModuleContext *>(h.priv)->frame, 1);
    EXPECT_EQ(pushed<_isp_wbc_user_init_t>(3).bayer_pattern, 2);
    EXPECT_EQ(ops->trigger(&h), 0);

    isp_test::pipe two(2, 1, case_path);
    EXPECT_DEATH(load_wbc(two.ctx),
                 "\\[error\\] failed to read json file: " + case_path + "/cfgs/f0/rtl_wbc_p1.json");
    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
}

TEST_F(BadInput, RegisterFileThatIsADirectoryHasNoTextAndEndsTheProcess) {
    dir.mkdir("cfgs/f0/rtl_wbc_p0.json");
    isp_test::pipe pipe(1, 1, dir.path());
    EXPECT_DEATH(load_wbc(pipe.ctx),
                 "\\[error\\] readFile cannot parse jsonsyntax error at line 1 near: \n");
}

/* ---- numbers ---------------------------------------------------------------------------- */

TEST_F(BadInput, HugeNumbersSaturateBeforeEncodingAndInRawCurves) {
    dir.write("cfgs/f0/rtl_wbc_p0.json",
              R"({"isp_wbc": {"bayer_pattern": {"val": 1e12}, "offset_in": {"val": -1e300},
                  "offset_out": {"val": 1e-300}, "d_gain": {"val": 1e300},
                  "wb_gain0": {"val0": -1e300, "val1": 4294967296},
                  "wb_gain2": {"val2": -2147483649, "val3": 2147483647.9},
                  "clip_level": {"val": -2147483649}}})");
    std::string lut = "1e300, -1e300, 4294967296, 4294967295.9, -0.9";
    for (int i = 5; i < 513; ++i) lut += ", " + std::to_string(i);
    dir.write("cfgs/f0/rtl_hidrc_p0.json", R"({"isp_hidrc": {"hidrc_lut": [)" + lut + "]}}");
    isp_test::pipe pipe(1, 1, dir.path());
    JsonModuleHandle h = pipe.handle();

    JsonModuleOps *wbc = nullptr;
    qv_isp_module_wbc_json_register(&wbc);
    ASSERT_EQ(wbc->create(&h), 0);
    ASSERT_EQ(wbc->init(&h), 0);
    const auto ctrl  = pushed<_isp_wbc_user_ctrl_t>(1);
    const auto setup = pushed<_isp_wbc_user_setup_t>(2);
    EXPECT_EQ(pushed<_isp_wbc_user_init_t>(3).bayer_pattern, 0xFF);  // 0x7FFFFFFF in 8 bits
    EXPECT_EQ(setup.offset_in, 0x80000000u);  // magnitude of INT32_MIN, unsigned format
    EXPECT_EQ(setup.offset_out, 0u);
    EXPECT_EQ(ctrl.d_gain, 0x7FFFFFFFu);
    EXPECT_EQ(ctrl.wb_gain[0], 0u);  // 0x80000000 in 16 bits
    EXPECT_EQ(ctrl.wb_gain[1], 0xFFFFu);
    EXPECT_EQ(ctrl.wb_gain[2], 0u);
    EXPECT_EQ(ctrl.wb_gain[3], 0xFFFFu);
    EXPECT_EQ(ctrl.clip_level, 0x80000000u);
    EXPECT_EQ(wbc->deinit(&h), 0);
    EXPECT_EQ(wbc->destroy(&h), 0);
    expect_platform_clean();

    isp_sim::reset();
    JsonModuleOps *hidrc = nullptr;
    qv_isp_module_hidrc_json_register(&hidrc);
    ASSERT_EQ(hidrc->create(&h), 0);
    testing::internal::CaptureStderr();
    ASSERT_EQ(hidrc->init(&h), 0);
    testing::internal::GetCapturedStderr();
    const auto curve = pushed<_isp_hidrc_user_hidrc_lut_t>(2);
    EXPECT_EQ(curve.hidrc_lut[0], 0xFFFFFFFFu);
    EXPECT_EQ(curve.hidrc_lut[1], 0u);
    EXPECT_EQ(curve.hidrc_lut[2], 0xFFFFFFFFu);
    EXPECT_EQ(curve.hidrc_lut[3], 0xFFFFFFFFu);
    EXPECT_EQ(curve.hidrc_lut[4], 0u);
    EXPECT_EQ(curve.hidrc_lut[512], 512u);
    EXPECT_EQ(hidrc->deinit(&h), 0);
    EXPECT_EQ(hidrc->destroy(&h), 0);
    expect_platform_clean();
}

TEST_F(BadInput, NonFiniteNumbersRaiseOverflowOutOfInitAndLeaveTheModuleUsable) {
    dir.write("cfgs/f0/rtl_wbc_p0.json", R"({"isp_wbc": {"d_gain": {"val": 1e400}}})");
    isp_test::pipe pipe(1, 1, dir.path());
    JsonModuleHandle h = pipe.handle();
    JsonModuleOps *ops = nullptr;
    qv_isp_module_wbc_json_register(&ops);
    ASSERT_EQ(ops->create(&h), 0);
    try {
        ops->init(&h);
        ADD_FAILURE() << "no exception";
    } catch (const std::overflow_error &e) {
        EXPECT_STREQ(e.what(), "");  // picojson holds no infinity
    }
    EXPECT_TRUE(isp_sim::calls_of("vin_hal_wrapper_setup").size() == 1u);  // defaults only
    dir.write("cfgs/f0/rtl_wbc_p0.json", k_wbc_file);
    EXPECT_EQ(ops->process(&h), 0);
    EXPECT_EQ(pushed<_isp_wbc_user_ctrl_t>(1).d_gain, 300u);
    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);

    dir.write("cfgs/f0/rtl_hidrc_p0.json", R"({"isp_hidrc": {"hidrc_lut": [0, -1e999]}})");
    qv_isp_module_hidrc_json_register(&ops);
    ASSERT_EQ(ops->create(&h), 0);
    EXPECT_THROW(ops->init(&h), std::overflow_error);
    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
    expect_platform_clean();
}

TEST_F(BadInput, NotANumberIsNotJsonAndEndsTheProcess) {
    dir.write("cfgs/f0/rtl_wbc_p0.json", R"({"isp_wbc": {"d_gain": {"val": NaN}}})");
    isp_test::pipe pipe(1, 1, dir.path());
    EXPECT_DEATH(
        load_wbc(pipe.ctx),
        "\\[error\\] readFile cannot parse jsonsyntax error at line 1 near: NaN\\}\\}\\}\n");
}

/* ---- empty objects and arrays ----------------------------------------------------------- */

TEST_F(BadInput, EmptyObjectsAndArraysWhereObjectsBelongReadAsMissingFields) {
    const std::string files[] = {
        "{}",
        R"({"isp_wbc": {}})",
        R"({"isp_wbc": []})",
        R"({"isp_wbc": {"d_gain": [], "wb_gain0": {}, "wb_gain2": [[]], "clip_level": {"val": {}},
            "offset_in": {"val": []}, "offset_out": null, "bayer_pattern": {"val": ""}}})",
    };
    const std::string all_missing =
        "read json_obj failed: d_gain.val\n"
        "read json_obj failed: wb_gain0.val0\n"
        "read json_obj failed: wb_gain0.val1\n"
        "read json_obj failed: wb_gain2.val2\n"
        "read json_obj failed: wb_gain2.val3\n"
        "read json_obj failed: clip_level.val\n"
        "read json_obj failed: offset_in.val\n"
        "read json_obj failed: offset_out.val\n"
        "read json_obj failed: bayer_pattern.val\n";
    for (const std::string &file : files) {
        SCOPED_TRACE(file);
        isp_sim::reset();
        dir.write("cfgs/f0/rtl_wbc_p0.json", file);
        isp_test::pipe pipe(1, 1, dir.path());
        testing::internal::CaptureStderr();
        EXPECT_EQ(load_wbc(pipe.ctx), 0);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), all_missing);
        for (const isp_sim::call &c : isp_sim::calls_of("vin_hal_wrapper_setup"))
            EXPECT_EQ(c.payload, std::vector<uint8_t>(c.payload.size(), 0)) << c.cmd;
        expect_platform_clean();
    }
}

TEST_F(BadInput, EmptyContainersWhereCurvesBelongRaiseTheirTypeError) {
    const struct {
        const char *file;
        const char *check;
    } cases[] = {
        {"[]", "is<object>()"},
        {R"({"isp_hidrc": []})", "is<object>()"},
        {R"({"isp_hidrc": {"hidrc_lut": {}}})", "is<array>()"},
        {R"({"isp_hidrc": {"hidrc_lut": []}})", "is<double>()"},
        {R"({"isp_hidrc": {"hidrc_lut": [[]]}})", "is<double>()"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.file);
        isp_sim::reset();
        dir.write("cfgs/f0/rtl_hidrc_p0.json", c.file);
        isp_test::pipe pipe(1, 1, dir.path());
        JsonModuleHandle h = pipe.handle();
        JsonModuleOps *ops = nullptr;
        qv_isp_module_hidrc_json_register(&ops);
        ASSERT_EQ(ops->create(&h), 0);
        testing::internal::CaptureStderr();
        try {
            ops->init(&h);
            ADD_FAILURE() << "no exception";
        } catch (const std::runtime_error &e) {
            EXPECT_EQ(e.what(), std::string(k_type_error_prefix) + c.check);
        }
        testing::internal::GetCapturedStderr();
        EXPECT_TRUE(isp_sim::calls_of("vin_hal_wrapper_setup").size() == 1u);  // defaults only
        EXPECT_EQ(ops->deinit(&h), 0);
        EXPECT_EQ(ops->destroy(&h), 0);
        expect_platform_clean();
    }
}

}  // namespace
