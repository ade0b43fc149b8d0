/* The colour-correction module end to end on the simulated platform: lifecycle, wrapper records,
 * the case-file loader over a partition grid and frames, and every status code and log line. */
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "isp_json.h"
#include "isp_platform.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

const int32_t k_arg_code  = static_cast<int32_t>(0x8001180Au);
const int32_t k_hw_code   = static_cast<int32_t>(0x80011980u);
const int32_t k_null_code = static_cast<int32_t>(0x8001010Bu);
const uint32_t k_tag      = 0x1B010101;

/* A clc register file whose partition size tells which file it came from. */
std::string clc_file(int h, int v) {
    return R"({"isp_clc": {"clc_ctrl2": {"manual_clk_en": 1}, "part_size": {"h": )" +
           std::to_string(h) + R"(, "v": )" + std::to_string(v) +
           R"(}, "offset": {"val0": 16, "val1": 32}, "clc_ctrl1": {"mode": 1}}})";
}

/* The partition sizes reached through the init group's pointers, read while it is pushed. */
struct size_capture {
    std::vector<std::vector<uint16_t>> h, v;
    explicit size_capture(size_t partitions) {
        isp_sim::on_setup([this, partitions](uint32_t, const VinHalSetupCmd *cmd) {
            if (cmd->cmd != 3 || !cmd->data) return;
            const auto *init = static_cast<const _isp_clc_user_init_t *>(cmd->data);
            h.emplace_back(init->part_size_h, init->part_size_h + partitions);
            v.emplace_back(init->part_size_v, init->part_size_v + partitions);
        });
    }
    ~size_capture() { isp_sim::on_setup(nullptr); }
};

std::string error_line(const char *function, const char *line, const char *code, const char *text) {
    char buffer[256];
    snprintf(buffer, sizeof buffer, "[E][%32s][%4s]: Error [%s]: %s\n", function, line, code, text);
    return buffer;
}

class CcModule : public testing::Test {
  protected:
    void SetUp() override {
        isp_sim::reset();
        isp_sim::set_log_echo(false);
        qv_isp_module_cc_json_register(&ops);
    }
    void TearDown() override { isp_sim::set_log_echo(true); }

    /* A two-frame case over a grid, each file's size naming frame and partition. */
    std::string write_case(int part_h, int part_v, int frames = 2) {
        for (int f = 0; f < frames; ++f)
            for (int p = 0; p < part_h * part_v; ++p)
                dir.write("cfgs/f" + std::to_string(f) + "/rtl_clc_p" + std::to_string(p) + ".json",
                          clc_file(1000 * (f + 1) + p, 10 + p));
        return dir.path();
    }

    std::vector<uint32_t> pushed_commands() const {
        std::vector<uint32_t> cmds;
        for (const auto &c : isp_sim::calls_of("vin_hal_wrapper_setup")) cmds.push_back(c.cmd);
        return cmds;
    }

    std::string last_log() const {
        const auto &lines = isp_sim::log_lines();
        return lines.empty() ? "" : lines.back().text;
    }

    JsonModuleOps *ops = nullptr;
    isp_test::temp_dir dir;
};

TEST_F(CcModule, RegistrationFillsTheTableWithProcessInBothSlots) {
    JsonModuleOps *again = nullptr;
    EXPECT_EQ(qv_isp_module_cc_json_register(&again), 0);
    EXPECT_EQ(again, ops);
    EXPECT_EQ(ops->create, &isp_cc_json_mod_create);
    EXPECT_EQ(ops->destroy, &isp_cc_json_mod_destroy);
    EXPECT_EQ(ops->init, &isp_cc_json_mod_init);
    EXPECT_EQ(ops->deinit, &isp_cc_json_mod_deinit);
    EXPECT_EQ(ops->process, &isp_cc_json_mod_process);
    EXPECT_EQ(ops->process2, &isp_cc_json_mod_process);
    EXPECT_EQ(ops->trigger, &isp_cc_json_mod_trigger);
    EXPECT_EQ(ops->sync, &isp_cc_json_mod_sync);
    EXPECT_EQ(ops->ctrl(nullptr, 7, nullptr), 0);
    EXPECT_EQ(ops->set_param(nullptr, nullptr), 0);
    EXPECT_EQ(ops->get_param(nullptr, nullptr), 0);
    EXPECT_TRUE(isp_sim::log_lines().empty());  // only ae_stat announces itself
}

TEST_F(CcModule, CreateTwiceKeepsTheContextAndDestroyFreesItUnderItsTag) {
    isp_test::pipe pipe(1, 1, dir.path());
    JsonModuleHandle h = pipe.handle();
    ASSERT_EQ(ops->create(&h), 0);
    void *first = h.priv;
    ASSERT_NE(first, nullptr);
    const auto alloc = isp_sim::calls_of("QV_OS_MEM_Calloc");
    ASSERT_EQ(alloc.size(), 1u);
    EXPECT_EQ(alloc[0].tag, k_tag);
    EXPECT_EQ(alloc[0].size, 12u);  // wrapper handle, frame index, last-frame flag

    EXPECT_EQ(ops->create(&h), 0);
    EXPECT_EQ(h.priv, first);
    ASSERT_EQ(isp_sim::log_lines().size(), 1u);
    EXPECT_EQ(isp_sim::log_lines()[0].level, 4);
    EXPECT_EQ(last_log(),
              "[W][          isp_cc_json_mod_create][ 120]: cc context already calloc!\n");

    EXPECT_EQ(ops->destroy(&h), 0);
    EXPECT_EQ(h.priv, nullptr);
    EXPECT_EQ(ops->destroy(&h), 0);  // nothing left to free
    EXPECT_EQ(isp_sim::calls_of("QV_OS_MEM_Free").size(), 1u);
    EXPECT_EQ(isp_sim::live_allocations()[k_tag], 0);
    EXPECT_TRUE(isp_sim::problems().empty());
}

TEST_F(CcModule, CreateReportsAllocationFailure) {
    isp_test::pipe pipe(1, 1, dir.path());
    JsonModuleHandle h = pipe.handle();
    isp_sim::fail_call("QV_OS_MEM_Calloc", 1);
    EXPECT_EQ(ops->create(&h), static_cast<int32_t>(0x80011918u));
    EXPECT_EQ(h.priv, nullptr);
    EXPECT_EQ(last_log(),
              error_line("isp_cc_json_mod_create", " 118", "80011918", "Isp cc malloc failed."));
}

TEST_F(CcModule, InitCreatesTheWrapperWithDocumentedRecordsThenLoadsFrameZero) {
    isp_test::pipe pipe(3, 2, write_case(3, 2));
    pipe.ctx.pipe_id   = 1;
    JsonModuleHandle h = pipe.handle();
    size_capture sizes(6);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);

    const auto created = isp_sim::calls_of("vin_hal_wrapper_create");
    ASSERT_EQ(created.size(), 1u);
    VinHalWrapperAttr attr;
    ASSERT_EQ(created[0].record.size(), sizeof attr);
    memcpy(&attr, created[0].record.data(), sizeof attr);
    EXPECT_EQ(attr.type, 21u);
    EXPECT_EQ(attr.reserved, 0u);
    EXPECT_EQ(attr.mode, 2u);
    EXPECT_EQ(attr.register_func, &isp_plat_hal_register_func);
    EXPECT_EQ(attr.pipe_attr, &pipe.ctx.attr);

    const uint32_t handle = *static_cast<uint32_t *>(h.priv);
    EXPECT_EQ(created[0].handle, handle);
    const auto regio = isp_sim::calls_of("vin_hal_wrapper_regio_create");
    ASSERT_EQ(regio.size(), 1u);
    VinHalRegioAttr expected;
    memset(&expected, 0, sizeof expected);
    expected.pipe_id       = 1;
    expected.mode          = 1;
    expected.reg_base      = 0x2400000;
    expected.block_code[0] = 2;
    expected.block_code[1] = 15;
    expected.regdesc_get   = &qv_regio_regdesc_get_plat;
    expected.part_num      = 6;
    expected.depth[0]      = 200;
    expected.depth[1]      = 10;
    expected.flag          = 1;
    expected.param[0]      = 2;
    expected.param[1]      = 4;
    strcpy(expected.name, "mod_clc");
    ASSERT_EQ(regio[0].record.size(), sizeof expected);
    EXPECT_EQ(memcmp(regio[0].record.data(), &expected, sizeof expected), 0);

    /* default parameters first, then frame 0's groups in push order */
    const auto pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 4u);
    EXPECT_EQ(pushes[0].cmd, 0u);
    EXPECT_FALSE(pushes[0].has_data);
    EXPECT_EQ(pushed_commands(), (std::vector<uint32_t>{0, 3, 1, 2}));
    EXPECT_EQ(pipe.ctx.wrapper_slot[15], h.priv);

    /* partitions in row order: p increases along the horizontal count first */
    ASSERT_EQ(sizes.h.size(), 1u);
    EXPECT_EQ(sizes.h[0], (std::vector<uint16_t>{1000, 1001, 1002, 1003, 1004, 1005}));
    EXPECT_EQ(sizes.v[0], (std::vector<uint16_t>{10, 11, 12, 13, 14, 15}));

    _isp_clc_user_clc_setup_t setup;
    ASSERT_EQ(pushes[2].payload.size(), sizeof setup);
    memcpy(&setup, pushes[2].payload.data(), sizeof setup);
    EXPECT_EQ(setup.offset_out, 16);
    EXPECT_EQ(setup.offset_in, 32);
    EXPECT_EQ(setup.mode, 1);

    const JsonModuleContext *ctx = static_cast<JsonModuleContext *>(h.priv);
    EXPECT_EQ(ctx->frame, 1);  // f1 exists: the next load reads it
    EXPECT_EQ(ctx->last_frame, 0u);
}

TEST_F(CcModule, FramesAdvanceThenFreezeOnTheLastDirectory) {
    isp_test::pipe pipe(1, 1, write_case(1, 1));
    JsonModuleHandle h = pipe.handle();
    size_capture sizes(1);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);
    ASSERT_EQ(ops->process(&h), 0);
    const JsonModuleContext *ctx = static_cast<JsonModuleContext *>(h.priv);
    EXPECT_EQ(ctx->frame, 1);
    EXPECT_EQ(ctx->last_frame, 1u);
    ASSERT_EQ(ops->process2(&h), 0);
    ASSERT_EQ(sizes.h.size(), 3u);
    EXPECT_EQ(sizes.h[0][0], 1000);
    EXPECT_EQ(sizes.h[1][0], 2000);
    EXPECT_EQ(sizes.h[2][0], 2000);
    EXPECT_EQ(ctx->frame, 1);
}

TEST_F(CcModule, MoreThan256PartitionsWrapTheFileIndex) {
    for (int p = 0; p < 256; ++p)
        dir.write("cfgs/f0/rtl_clc_p" + std::to_string(p) + ".json", clc_file(p, 1));
    isp_test::pipe pipe(17, 16, dir.path());  // 272 partitions: p256..p271 read p0..p15
    JsonModuleHandle h = pipe.handle();
    size_capture sizes(272);
    ASSERT_EQ(ops->create(&h), 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(ops->init(&h), 0);
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(sizes.h.size(), 1u);
    EXPECT_EQ(sizes.h[0][255], 255);
    EXPECT_EQ(sizes.h[0][0], 0);
    EXPECT_EQ(sizes.h[0][15], 15);
    EXPECT_EQ(sizes.h[0][16], 16);  // elements past 255 are never written
    EXPECT_EQ(sizes.h[0][256], 0);
}

TEST_F(CcModule, LoaderChecksPointersCasePathAndGrid) {
    isp_test::pipe pipe(0, 2, write_case(1, 1));
    JsonModuleHandle h = pipe.handle();
    EXPECT_EQ(ops->process(nullptr), k_null_code);
    EXPECT_EQ(last_log(), "[E][           __cc_json_param_setup][  46]: Error: Pointer is null!\n");
    EXPECT_EQ(ops->process(&h), k_null_code);  // no context yet
    EXPECT_EQ(last_log(), "[E][           __cc_json_param_setup][  48]: Error: Pointer is null!\n");
    ASSERT_EQ(ops->create(&h), 0);
    JsonModuleHandle no_pipe = h;
    no_pipe.pipe             = nullptr;
    EXPECT_EQ(ops->process(&no_pipe), k_null_code);
    EXPECT_EQ(last_log(), "[E][           __cc_json_param_setup][  47]: Error: Pointer is null!\n");

    EXPECT_EQ(ops->process(&h), static_cast<int32_t>(0x8001190Au));
    EXPECT_EQ(last_log(),
              error_line("__cc_json_param_setup", "  58", "8001190a", "partition err!!!."));
    pipe.ctx.case_path[0] = '\0';
    EXPECT_EQ(ops->process(&h), -1);
    EXPECT_EQ(last_log(), "[E][           __cc_json_param_setup][  52]: case path invalid.\n");
    EXPECT_TRUE(isp_sim::calls_of("vin_hal_wrapper_setup").empty());
    for (const auto &line : isp_sim::log_lines()) {
        EXPECT_EQ(line.level, 3);
        EXPECT_EQ(line.tag, "ISP");
        EXPECT_EQ(line.flag, 1);
    }
}

TEST_F(CcModule, PushStopsAtTheFirstFailureWithItsMessage) {
    isp_test::pipe pipe(1, 1, write_case(1, 1));
    JsonModuleHandle h = pipe.handle();
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);
    isp_sim::fail_call("vin_hal_wrapper_setup", 2);
    EXPECT_EQ(ops->process(&h), k_hw_code);
    EXPECT_EQ(pushed_commands(), (std::vector<uint32_t>{0, 3, 1, 2, 3, 1}));
    EXPECT_EQ(last_log(), error_line("__cc_json_param_setup", " 100", "80011980",
                                     "Isp clc clc_setup hal setup failed."));
    /* the frame advance is not undone by the failed push */
    EXPECT_EQ(static_cast<JsonModuleContext *>(h.priv)->last_frame, 1u);
    isp_sim::fail_call("vin_hal_wrapper_setup", 3);
    EXPECT_EQ(ops->process(&h), k_hw_code);
    EXPECT_EQ(last_log(), error_line("__cc_json_param_setup", " 106", "80011980",
                                     "Isp clc clc hal setup failed."));
    isp_sim::fail_call("vin_hal_wrapper_setup", 1);
    EXPECT_EQ(ops->process(&h), k_hw_code);
    EXPECT_EQ(last_log(), error_line("__cc_json_param_setup", "  94", "80011980",
                                     "Isp clc init hal setup failed."));
}

TEST_F(CcModule, InitFailuresAreNotRolledBack) {
    isp_test::pipe pipe(1, 1, write_case(1, 1));
    JsonModuleHandle h = pipe.handle();
    ASSERT_EQ(ops->create(&h), 0);

    isp_sim::fail_call("vin_hal_wrapper_create", 1);
    EXPECT_EQ(ops->init(&h), k_hw_code);
    EXPECT_EQ(last_log(), error_line("isp_cc_json_mod_init", " 163", "80011980",
                                     "Isp cc hal wrapper create failed."));

    isp_sim::fail_call("vin_hal_wrapper_regio_create", 1);
    EXPECT_EQ(ops->init(&h), k_hw_code);
    EXPECT_EQ(last_log(), error_line("isp_cc_json_mod_init", " 183", "80011980",
                                     "Isp clc hal wrapper regio create failed."));
    EXPECT_EQ(pipe.ctx.wrapper_slot[15], nullptr);
    EXPECT_EQ(isp_sim::live_wrappers(), 1u);  // the wrapper stays created

    isp_sim::fail_call("vin_hal_wrapper_setup", 1);
    EXPECT_EQ(ops->init(&h), k_hw_code);
    EXPECT_EQ(last_log(), error_line("isp_cc_json_mod_init", " 190", "80011980",
                                     "Isp clc hal setup dft param failed."));
    EXPECT_EQ(pipe.ctx.wrapper_slot[15], nullptr);

    JsonModuleHandle bad = h;
    bad.pipe             = nullptr;
    EXPECT_EQ(ops->init(&bad), k_arg_code);
    EXPECT_EQ(last_log(),
              error_line("isp_cc_json_mod_init", " 151", "8001180a", "invalid params."));
}

TEST_F(CcModule, TriggerAndSync) {
    isp_test::pipe pipe(1, 1, write_case(1, 1));
    JsonModuleHandle h = pipe.handle(0xCAFE);
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);
    ASSERT_EQ(ops->trigger(&h), 0);
    const auto triggers = isp_sim::calls_of("vin_hal_wrapper_trigger");
    ASSERT_EQ(triggers.size(), 1u);
    EXPECT_EQ(triggers[0].handle, *static_cast<uint32_t *>(h.priv));
    EXPECT_EQ(triggers[0].mode, 1u);
    EXPECT_EQ(triggers[0].arg, 0xCAFEu);
    EXPECT_EQ(triggers[0].channel, 0u);

    isp_sim::fail_call("vin_hal_wrapper_trigger", 1);
    EXPECT_EQ(ops->trigger(&h), k_hw_code);
    EXPECT_EQ(last_log(), error_line("isp_cc_json_mod_trigger", " 255", "80011980",
                                     "Isp cc hal trigger failed."));
    pipe.ctx.case_path[0] = '\0';
    EXPECT_EQ(ops->trigger(&h), -1);
    EXPECT_EQ(last_log(), "[E][         isp_cc_json_mod_trigger][ 250]: case path invalid.\n");
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_trigger").size(), 2u);
    EXPECT_EQ(ops->trigger(nullptr), k_arg_code);
    EXPECT_EQ(last_log(),
              error_line("isp_cc_json_mod_trigger", " 244", "8001180a", "invalid params."));

    /* bypass bit 8 mirrors inverted into enable bit 13; the other bits stay */
    pipe.shadow.module_enable = 0xFFFFFFFF;
    pipe.ctx.bypass[1]        = 0x01;
    EXPECT_EQ(ops->sync(&h), 0);
    EXPECT_EQ(pipe.shadow.module_enable, 0xFFFFDFFFu);
    pipe.shadow.module_enable = 0;
    pipe.ctx.bypass[1]        = 0xFE;
    EXPECT_EQ(ops->sync(&h), 0);
    EXPECT_EQ(pipe.shadow.module_enable, 0x00002000u);
    EXPECT_EQ(ops->sync(nullptr), k_arg_code);
    EXPECT_EQ(last_log(),
              error_line("isp_cc_json_mod_sync", " 266", "8001180a", "invalid params."));
}

TEST_F(CcModule, DeinitDestroysTheWrapperOnceAndClearsTheSlot) {
    isp_test::pipe pipe(1, 1, write_case(1, 1));
    JsonModuleHandle h = pipe.handle();
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);
    const uint32_t handle = *static_cast<uint32_t *>(h.priv);

    isp_sim::fail_call("vin_hal_wrapper_regio_destroy", 1);
    EXPECT_EQ(ops->deinit(&h), k_hw_code);
    EXPECT_EQ(last_log(), error_line("isp_cc_json_mod_deinit", " 217", "80011980",
                                     "Isp clc hal regio destroy failed."));
    EXPECT_EQ(pipe.ctx.wrapper_slot[15], h.priv);  // nothing undone, nothing cleared

    EXPECT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(*static_cast<uint32_t *>(h.priv), 0u);
    EXPECT_EQ(pipe.ctx.wrapper_slot[15], nullptr);
    EXPECT_FALSE(isp_sim::wrapper(handle).exists);
    EXPECT_EQ(ops->deinit(&h), 0);  // slot empty: nothing to do
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_destroy").size(), 1u);

    ASSERT_EQ(ops->init(&h), 0);  // a new wrapper, since the slot was cleared
    isp_sim::fail_call("vin_hal_wrapper_destroy", 1);
    EXPECT_EQ(ops->deinit(&h), k_hw_code);
    EXPECT_EQ(last_log(), error_line("isp_cc_json_mod_deinit", " 221", "80011980",
                                     "Isp clc hal destroy failed."));
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_create").size(), 2u);
    EXPECT_EQ(ops->deinit(nullptr), k_arg_code);
    EXPECT_EQ(last_log(),
              error_line("isp_cc_json_mod_deinit", " 209", "8001180a", "invalid params."));
    EXPECT_EQ(ops->destroy(&h), 0);
}

TEST_F(CcModule, RootThatIsNotAnObjectRaisesPicojsonTypeError) {
    dir.write("cfgs/f0/rtl_clc_p0.json", "[1, 2, 3]");
    isp_test::pipe pipe(1, 1, dir.path());
    JsonModuleHandle h = pipe.handle();
    ASSERT_EQ(ops->create(&h), 0);
    try {
        ops->init(&h);
        FAIL() << "no exception";
    } catch (const std::runtime_error &e) {
        EXPECT_STREQ(e.what(),
                     "\"type mismatch! call is<type>() before get<type>()\" && is<object>()");
    }
}

TEST_F(CcModule, MissingRegisterFileAbortsWithItsPath) {
    isp_test::pipe pipe(2, 1, write_case(1, 1));  // p1 does not exist
    JsonModuleHandle h = pipe.handle();
    ASSERT_EQ(ops->create(&h), 0);
    const std::string missing = dir.path() + "/cfgs/f0/rtl_clc_p1.json";
    EXPECT_DEATH(ops->init(&h), "\\[error\\] failed to read json file: " + missing);
}

}  // namespace
