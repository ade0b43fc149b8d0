/* Input a framework or a hardware model can get wrong, fed to whole modules on the simulated
 * platform, one test per kind: grids beyond the 8-bit partition index, channel counts beyond the
 * context's six handles, case paths at and past the path limit or holding '%', files that cannot
 * be read, huge and non-finite numbers, empty objects and arrays where objects or tables belong.
 * Each must give its documented result; run under the sanitizers, none may touch memory it does
 * not own. */
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "isp_platform.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::error_line;
using isp_test::module_instance;
using isp_test::pushed;

const char wbc_file[] =
    R"({"isp_wbc": {"bayer_pattern": {"val": 2}, "offset_in": {"val": 64}, "offset_out": {"val": 128},
        "d_gain": {"val": 300}, "wb_gain0": {"val0": 256, "val1": 257}, "wb_gain2": {"val2": 258,
        "val3": 259}, "clip_level": {"val": 65472}}})";

class BadInput : public isp_test::platform_test {
  protected:
    /* The module's life over one partition of the case: create, init, deinit, destroy; returns
     * what init returned, and leaves nothing behind on the platform. */
    int32_t load(isp_test::register_fn reg, PipeContext &pipe) {
        JsonModuleHandle h{};
        h.pipe             = &pipe;
        JsonModuleOps *ops = isp_test::ops_of(reg);
        EXPECT_EQ(ops->create(&h), 0);
        const int32_t status = ops->init(&h);
        EXPECT_EQ(ops->deinit(&h), 0);
        EXPECT_EQ(ops->destroy(&h), 0);
        EXPECT_EQ(isp_sim::live_wrappers() + isp_sim::live_dma_buffers(), 0u);
        EXPECT_TRUE(isp_sim::live_allocations().empty());
        return status;
    }
    int32_t load_wbc(const std::string &case_path) {
        isp_test::pipe p(1, 1, case_path);
        return load(qv_isp_module_wbc_json_register, p.ctx);
    }
    std::string missing(const std::string &path) {
        return "\\[error\\] failed to read json file: " + path;
    }
};

/* The partition counters are 8 bits wide: 272 partitions give 16 in the register I/O record, and
 * p256..p271 read p0..p15 again into elements 0..15 of every per-partition table. */
TEST_F(BadInput, GridsOfMoreThan256PartitionsStayInTheirTables) {
    quiet_stderr();
    for (int n = 0; n < 256; ++n) {
        frame_file(0, isp_test::format("rtl_ae_stat_p%d.json", n), R"({"isp_ae_stat": {}})");
        frame_file(0, isp_test::format("rtl_dem_p%d.json", n),
                   isp_test::format(R"({"isp_dem": {"img_size": {"hsize": %d, "vsize": %d}}})",
                                    1000 + n, n));
    }
    isp_test::pipe p(17, 16, case_dir.path());
    ASSERT_EQ(load(qv_isp_module_ae_stat_json_register, p.ctx), 0);
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_regio_create")[0]
                  .record[offsetof(VinHalRegioAttr, part_num)],
              16);
    const auto init = pushed<_isp_ae_stat_user_init_t>(1);
    EXPECT_EQ(init.wr_addr0[15], 0x202855Au);
    EXPECT_EQ(init.wr_addr0[16], 0x202B060u);
    EXPECT_EQ(init.wr_addr0[255], 0x22ADAFAu);
    EXPECT_EQ(init.wr_addr1[255], 0x22AEF3Du);
    EXPECT_EQ(init.wr_addr2[255], 0x22B0380u);

    isp_sim::reset();
    ASSERT_EQ(load(qv_isp_module_demosaic_json_register, p.ctx), 0);
    const auto setup = pushed<_isp_dem_user_setup_t>(2);
    for (int n = 0; n < 256; ++n) {
        EXPECT_EQ(setup.img_size_hsize[n], 1000 + n) << n;
        EXPECT_EQ(setup.img_size_vsize[n], n) << n;
    }
}

/* Above six the channel count is refused by every operation that uses it (sync keeps one enable
 * bit per module); below one the hardware is never touched; six use every handle. */
TEST_F(BadInput, ChannelCountsOutsideOneToSixAreRefusedOrIgnored) {
    const struct {
        const char *name;
        isp_test::register_fn reg;
        uint32_t arg;
    } channelled[] = {
        {"blc", qv_isp_module_blc_json_register, 0x8001040a},
        {"dpc", qv_isp_module_dpc_json_register, 0x8001030a},
        {"bl_det", qv_isp_module_bl_det_json_register, 0x8001300a},
    };
    for (const auto &m : channelled) {
        for (int32_t count : {7, INT32_MAX, 0, -1, INT32_MIN}) {
            SCOPED_TRACE(std::string(m.name) + " with " + std::to_string(count) + " channels");
            isp_sim::reset();
            isp_test::pipe p(1, 1, case_dir.path(), count);
            module_instance mod(m.reg, p);
            ASSERT_EQ(mod.create(), 0);
            const int32_t arg = count > 6 ? static_cast<int32_t>(m.arg) : 0;
            EXPECT_EQ(mod.init(), arg);
            EXPECT_EQ(mod.process(), arg);
            EXPECT_EQ(mod.trigger(), arg);
            EXPECT_EQ(mod.sync(), 0);
            EXPECT_EQ(mod.deinit(), arg);
            EXPECT_EQ(mod.destroy(), 0);
            std::vector<std::string> logs;
            for (const isp_sim::log_line &line : isp_sim::log_lines()) logs.push_back(line.text);
            const std::string mod_op = std::string("isp_") + m.name + "_json_mod_";
            if (count > 6)
                EXPECT_EQ(logs, (std::vector<std::string>{
                                    error_line(mod_op + "init", 151, m.arg, "invalid params."),
                                    error_line(std::string("__") + m.name + "_json_param_setup", 46,
                                               m.arg, "invalid params."),
                                    error_line(mod_op + "trigger", 244, m.arg, "invalid params."),
                                    error_line(mod_op + "deinit", 209, m.arg, "invalid params.")}));
            else
                EXPECT_TRUE(logs.empty());
            EXPECT_EQ(isp_test::names_of(isp_sim::calls()),
                      (std::vector<std::string>{"QV_OS_MEM_Calloc", "QV_OS_MEM_Free"}));
        }
    }

    isp_sim::reset();
    for (int c = 0; c < 6; ++c)
        frame_file(0, isp_test::format("rtl_bl_det_p0_chn%d.json", c), R"({"isp_bl_det": {}})");
    isp_test::pipe p(1, 1, case_dir.path(), 6);
    module_instance bl_det(qv_isp_module_bl_det_json_register, p);
    ASSERT_EQ(bl_det.create(), 0);
    quiet_stderr();
    ASSERT_EQ(bl_det.init(), 0);
    ASSERT_EQ(bl_det.trigger(), 0);
    const auto triggers = isp_sim::calls_of("vin_hal_wrapper_trigger");
    ASSERT_EQ(triggers.size(), 6u);
    for (uint32_t c = 0; c < 6; ++c) {
        EXPECT_EQ(isp_sim::wrapper(triggers[c].handle).channel, c);
        EXPECT_EQ(triggers[c].channel, c);
    }
    EXPECT_EQ(isp_test::pushes().size(), 6u * 3u);  // default, setup, init
    EXPECT_EQ(bl_det.deinit(), 0);
    EXPECT_EQ(bl_det.destroy(), 0);
}

/* Paths are cut at 254 characters (a cut path is a missing file), a case path filling its whole
 * field is not read past the field, and '%' in a case path is no format directive. */
TEST_F(BadInput, CasePathsAreCutAtTheLimitAndTakenLiterally) {
    const std::string file    = "/cfgs/f0/rtl_wbc_p0.json";
    const auto case_of_length = [&](size_t length) {
        const std::string path =
            case_dir.path() + "/" + std::string(length - case_dir.path().size() - 1, 'c');
        case_dir.write(path.substr(case_dir.path().size() + 1) + file, wbc_file);
        return path;
    };
    if (case_dir.path().size() + 2 + file.size() > 254) GTEST_SKIP() << case_dir.path();
    EXPECT_EQ(load_wbc(case_of_length(254 - file.size())), 0);
    EXPECT_EQ(pushed<_isp_wbc_user_ctrl_t>(1).d_gain, 300u);
    const std::string cut   = case_of_length(255 - file.size());
    const std::string shown = (cut + file).substr(0, 254);
    EXPECT_EQ(shown.substr(shown.size() - 15), "/rtl_wbc_p0.jso");
    EXPECT_DEATH(load_wbc(cut), missing(shown) + "\n");

    /* no terminator: the record in a heap block of its own size, the padding after the field
     * filled too, as a record of the target (no padding) would have it */
    std::unique_ptr<PipeContext> whole(new PipeContext());
    IspRegShadow shadow{};
    whole->attr          = IspPipeAttr{1, 1};
    whole->reg_shadow    = &shadow;
    whole->channel_count = 1;
    memset(whole->case_path, 'x', sizeof(PipeContext) - offsetof(PipeContext, case_path));
    EXPECT_DEATH(load(qv_isp_module_wbc_json_register, *whole),
                 missing(std::string(254, 'x')) + "\n");

    const std::string percent = case_dir.path() + "/100%s%n%d%%x";
    case_dir.write("100%s%n%d%%x" + file, wbc_file);
    case_dir.write("100%s%n%d%%x/cfgs/f1/rtl_wbc_p0.json", wbc_file);
    isp_sim::reset();
    isp_test::pipe p(1, 1, percent);
    module_instance wbc(qv_isp_module_wbc_json_register, p);
    ASSERT_EQ(wbc.create(), 0);
    ASSERT_EQ(wbc.init(), 0);
    EXPECT_EQ(wbc.context<JsonModuleContext>()->frame, 1);  // f1 is found
    EXPECT_EQ(pushed<_isp_wbc_user_init_t>(3).bayer_pattern, 2);
    p.ctx.attr = IspPipeAttr{2, 1};
    EXPECT_DEATH(wbc.process(), missing(percent + "/cfgs/f1/rtl_wbc_p1.json"));
    EXPECT_EQ(wbc.deinit(), 0);
    EXPECT_EQ(wbc.destroy(), 0);
}

/* A register file that is a directory, or holds NaN, is no JSON: the process ends. */
TEST_F(BadInput, ARegisterFileThatIsNotJsonEndsTheProcess) {
    case_dir.mkdir("dir/cfgs/f0/rtl_wbc_p0.json");
    EXPECT_DEATH(load_wbc(case_dir.path() + "/dir"),
                 "\\[error\\] readFile cannot parse jsonsyntax error at line 1 near: \n");
    frame_file(0, "rtl_wbc_p0.json", R"({"isp_wbc": {"d_gain": {"val": NaN}}})");
    EXPECT_DEATH(
        load_wbc(case_dir.path()),
        "\\[error\\] readFile cannot parse jsonsyntax error at line 1 near: NaN\\}\\}\\}\n");
}

/* Numbers beyond 32 bits saturate before they are encoded; numbers beyond a double raise
 * overflow out of init (fields and raw-number curves alike) and leave the module usable. */
TEST_F(BadInput, HugeNumbersSaturateAndInfiniteOnesRaiseOverflow) {
    quiet_stderr();
    frame_file(0, "rtl_wbc_p0.json",
               R"({"isp_wbc": {"bayer_pattern": {"val": 1e12}, "offset_in": {"val": -1e300},
                   "offset_out": {"val": 1e-300}, "d_gain": {"val": 1e300},
                   "wb_gain0": {"val0": -1e300, "val1": 4294967296},
                   "wb_gain2": {"val2": -2147483649, "val3": 2147483647.9},
                   "clip_level": {"val": -2147483649}}})");
    isp_test::pipe p(1, 1, case_dir.path());
    ASSERT_EQ(load(qv_isp_module_wbc_json_register, p.ctx), 0);
    const auto ctrl  = pushed<_isp_wbc_user_ctrl_t>(1);
    const auto setup = pushed<_isp_wbc_user_setup_t>(2);
    EXPECT_EQ(pushed<_isp_wbc_user_init_t>(3).bayer_pattern, 0xFF);  // 0x7FFFFFFF in 8 bits
    EXPECT_EQ(setup.offset_in, 0x80000000u);  // magnitude of INT32_MIN, unsigned format
    EXPECT_EQ(setup.offset_out, 0u);
    EXPECT_EQ(ctrl.d_gain, 0x7FFFFFFFu);
    EXPECT_EQ(isp_test::codes(ctrl.wb_gain), (std::vector<uint32_t>{0, 0xFFFF, 0, 0xFFFF}));
    EXPECT_EQ(ctrl.clip_level, 0x80000000u);

    isp_sim::reset();
    frame_file(0, "rtl_wbc_p0.json", R"({"isp_wbc": {"d_gain": {"val": 1e400}}})");
    frame_file(0, "rtl_hidrc_p0.json", R"({"isp_hidrc": {"hidrc_lut": [0, -1e999]}})");
    module_instance wbc(qv_isp_module_wbc_json_register, p);
    ASSERT_EQ(wbc.create(), 0);
    EXPECT_THROW(wbc.init(), std::overflow_error);
    EXPECT_EQ(isp_test::pushes().size(), 1u);  // defaults only
    frame_file(0, "rtl_wbc_p0.json", wbc_file);
    EXPECT_EQ(wbc.process(), 0);
    EXPECT_EQ(pushed<_isp_wbc_user_ctrl_t>(1).d_gain, 300u);
    EXPECT_EQ(wbc.deinit(), 0);
    EXPECT_EQ(wbc.destroy(), 0);
    EXPECT_THROW(load(qv_isp_module_hidrc_json_register, p.ctx), std::overflow_error);
}

/* Empty objects and arrays where objects belong read as missing fields (zero encodings); where
 * curves belong they raise picojson's type error (RawTables, and the pattern module's test). */
TEST_F(BadInput, EmptyContainersReadAsMissingFieldsOrRaiseTheirTypeError) {
    const std::string files[] = {
        "{}",
        R"({"isp_wbc": []})",
        R"({"isp_wbc": {"d_gain": [], "wb_gain0": {}, "wb_gain2": [[]], "clip_level": {"val": {}},
            "offset_in": {"val": []}, "offset_out": null, "bayer_pattern": {"val": ""}}})",
    };
    for (const std::string &file : files) {
        SCOPED_TRACE(file);
        isp_sim::reset();
        frame_file(0, "rtl_wbc_p0.json", file);
        const std::string said =
            isp_test::stderr_of([&] { EXPECT_EQ(load_wbc(case_dir.path()), 0); });
        EXPECT_EQ(said,
                  "read json_obj failed: d_gain.val\nread json_obj failed: wb_gain0.val0\n"
                  "read json_obj failed: wb_gain0.val1\nread json_obj failed: wb_gain2.val2\n"
                  "read json_obj failed: wb_gain2.val3\nread json_obj failed: clip_level.val\n"
                  "read json_obj failed: offset_in.val\nread json_obj failed: offset_out.val\n"
                  "read json_obj failed: bayer_pattern.val\n");
        for (const isp_sim::call &c : isp_test::pushes())
            EXPECT_EQ(c.payload, std::vector<uint8_t>(c.payload.size(), 0)) << c.cmd;
    }
}

}  // namespace
