/* Every row of the module table driven through its whole life on the simulated platform, the
 * row's constants checked as the records show them; a few rows and the operations' source lines
 * written out by hand as the independent check of the table. */
#include <dlfcn.h>
#include <stdint.h>
#include <string.h>

#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "isp_platform.h"
#include "isp_sim.h"
#include "modules/tables.h"
#include "tests/support/test_support.h"

namespace {

using isp::enable_update;
using isp::module_kind;
using isp_test::calls_since;
using isp_test::error_line;
using isp_test::expect_log;
using isp_test::format;
using isp_test::names_of;

/* Source lines of the operations' reports, as documented (the walks do not take the table's). */
struct op_lines {
    int create_alloc, create_warn;
    int deinit_invalid, deinit_regio, deinit_destroy;
    int init_invalid, init_create, init_regio, init_default;
    int trigger_invalid, trigger_case, trigger_fail;
    int sync_invalid;
};
const op_lines cc_lines     = {118, 120, 209, 217, 221, 151, 163, 183, 190, 244, 250, 255, 266};
const op_lines dehaze_lines = {132, 134, 223, 231, 235, 165, 177, 197, 204, 258, 264, 269, 280};
/* The parameter loader's lines, the same in every module; group i is pushed at 94 + 6 i. */
const int load_null_handle = 46, load_null_pipe = 47, load_null_context = 48;
const int load_case_path = 52, load_grid = 58;
const uint32_t null_pointer_code = 0x8001010B;
const uint8_t walk_pipe_id       = 2;
const uint32_t walk_trigger      = 0x5A5A1234;

/* A register file of the block holding no register, except the raw-number curves and meshes,
 * which have no default and must be there. */
std::string register_file(const std::string &block) {
    auto zeros = [](const char *key, size_t count) {
        std::string array = std::string("\"") + key + "\": [0";
        for (size_t i = 1; i < count; ++i) array += ", 0";
        return array + "]";
    };
    std::string body;
    if (block == "lsc")
        body = zeros("rr_mesh", 285) + ", " + zeros("gr_mesh", 285) + ", " + zeros("gb_mesh", 285) +
               ", " + zeros("bb_mesh", 285);
    else if (block == "hidrc")
        body = zeros("hidrc_lut", 513);
    else if (block == "hdrc")
        body = zeros("hdrc_lut", 257);
    return "{\"isp_" + block + "\": {" + body + "}}";
}

class Catalogue : public isp_test::platform_test,
                  public testing::WithParamInterface<const isp::module_desc *> {
  protected:
    /* the register files carry no fields, so the converters report every one they miss */
    void SetUp() override {
        platform_test::SetUp();
        quiet_stderr();
    }

    const isp::module_desc &m() const { return *GetParam(); }
    const op_lines &lines() const {
        return std::string(m().name) == "dehaze" ? dehaze_lines : cc_lines;
    }
    bool is(module_kind kind) const { return m().kind == kind; }
    size_t slot() const { return m().wrapper_type - 6; }
    uint32_t arg() const { return static_cast<uint32_t>(m().code_arg); }
    uint32_t hw() const { return static_cast<uint32_t>(m().code_hw); }
    isp::registration_fn reg() const { return isp::registration_of(m()); }
    std::string op(const char *operation) const {
        return std::string("isp_") + m().name + "_json_mod_" + operation;
    }
    std::string loader() const { return std::string("__") + m().name + "_json_param_setup"; }
    std::string invalid(const char *operation, int line) const {
        return error_line(op(operation), line, arg(), "invalid params.");
    }
    std::vector<const isp::group_desc *> pushed_groups() const {
        std::vector<const isp::group_desc *> groups;
        for (const isp::group_desc &g : m().groups)
            if (g.cmd != 0) groups.push_back(&g);
        return groups;
    }
    /* Every group pushed to wrapper in the table's order. */
    isp_test::push_list groups_to(uint32_t wrapper) const {
        isp_test::push_list list;
        for (const isp::group_desc *g : pushed_groups()) list.emplace_back(wrapper, g->cmd);
        return list;
    }

    /* Frames f0 and f1 of a case over two partitions, each file holding the block's empty
     * object; the pattern module's files lie in the case directory itself. */
    void write_case() const {
        const std::string content = register_file(m().block);
        for (int frame = 0; frame < 2; ++frame)
            for (int p = 0; p < 2; ++p)
                case_dir.write(isp::relative_file(m(), frame, p, 0), content);
    }

    /* frame index and last-frame flag, wherever the module's context keeps them */
    std::pair<int32_t, uint32_t> frame_of(const isp_test::module_instance &mod) const {
        if (is(module_kind::channelled))
            return {mod.context<JsonChnContext>()->frame,
                    mod.context<JsonChnContext>()->last_frame};
        return {mod.context<JsonModuleContext>()->frame,
                mod.context<JsonModuleContext>()->last_frame};
    }
    /* Sets every bypass bit but the module's, or only the module's. */
    void set_bypass(isp_test::pipe &p, bool module_bit_set) const {
        const int bit = m().enable == enable_update::none ? 0 : m().bypass_bit;
        memset(p.ctx.bypass, module_bit_set ? 0x00 : 0xFF, sizeof p.ctx.bypass);
        p.ctx.bypass[bit / 8] ^= static_cast<uint8_t>(1u << (bit % 8));
    }
    /* The enable bits expected: the module's bit set or cleared, the others kept. */
    uint32_t with_bit(uint32_t others, bool on) const {
        if (m().enable == enable_update::none) return others;  // ainr keeps no enable bit
        const uint32_t bit = 1u << m().enable_bit;
        return on ? others | bit : others & ~bit;
    }

    /* The pipe of every walk: a 2 x 1 grid on the case with frames f0 and f1. */
    isp_test::pipe make_pipe() const { return isp_test::pipe(2, 1, case_dir.path(), 1); }
};

/* register -> create -> init -> process -> deinit -> destroy, and every constant of the module
 * as it shows in the records. */
TEST_P(Catalogue, WholeLifecycleShowsEveryConstant) {
    write_case();
    isp_test::pipe p = make_pipe();
    p.ctx.pipe_id    = walk_pipe_id;
    isp_test::module_instance mod(reg(), p, walk_trigger);
    ASSERT_NE(mod.ops, nullptr);
    const size_t logs         = isp_sim::log_lines().size();
    const bool stat           = is(module_kind::statistics);
    const size_t context_size = stat                          ? sizeof(JsonStatContext)
                                : is(module_kind::channelled) ? sizeof(JsonChnContext)
                                                              : sizeof(JsonModuleContext);

    /* create: one zero-filled context under the module's tag */
    size_t mark = isp_sim::calls().size();
    ASSERT_EQ(mod.create(), 0);
    std::vector<isp_sim::call> calls = calls_since(mark);
    ASSERT_EQ(names_of(calls), std::vector<std::string>{"QV_OS_MEM_Calloc"});
    EXPECT_EQ(calls[0].tag, m().mem_tag);
    EXPECT_EQ(calls[0].size, context_size);
    EXPECT_EQ(std::vector<uint8_t>(mod.context<uint8_t>(), mod.context<uint8_t>() + context_size),
              std::vector<uint8_t>(context_size, 0));
    EXPECT_EQ(isp_sim::live_allocations(), (std::map<uint32_t, int>{{m().mem_tag, 1}}));
    /* sync needs no init: the bypass bit, inverted, into the enable bit and nowhere else */
    for (const bool bypassed : {false, true}) {
        const uint32_t others  = bypassed ? 0xFFFFFFFF : 0;
        p.shadow.module_enable = others;
        set_bypass(p, bypassed);
        if (m().enable != enable_update::in_sync) continue;
        ASSERT_EQ(mod.sync(), 0);
        EXPECT_EQ(p.shadow.module_enable, with_bit(others, !bypassed));
    }

    /* init: wrapper, register I/O, default parameters, [statistics buffer], frame 0 */
    mark = isp_sim::calls().size();
    ASSERT_EQ(mod.init(), 0);
    calls                             = calls_since(mark);
    std::vector<std::string> expected = {"vin_hal_wrapper_create", "vin_hal_wrapper_regio_create",
                                         "vin_hal_wrapper_setup"};
    if (stat) expected.push_back("qv_hal_sys_mem_alloc_cached");
    const size_t before_groups = expected.size();
    expected.insert(expected.end(), pushed_groups().size(), "vin_hal_wrapper_setup");
    ASSERT_EQ(names_of(calls), expected);

    VinHalWrapperAttr attr;
    isp_test::copy_bytes(calls[0].record, attr);
    EXPECT_EQ(attr.type, m().wrapper_type);
    EXPECT_EQ(attr.reserved, 0u);
    EXPECT_EQ(attr.mode, 2u);
    EXPECT_EQ(attr.register_func, &isp_plat_hal_register_func);
    EXPECT_EQ(attr.pipe_attr, &p.ctx.attr);
    const uint32_t wrapper = calls[0].handle;
    EXPECT_EQ(mod.wrapper(), wrapper);

    /* the register I/O record byte for byte, every reserved byte zero */
    VinHalRegioAttr regio;
    isp_test::clear(regio);
    regio.pipe_id       = walk_pipe_id;
    regio.mode          = 1;
    regio.reg_base      = 0x2400000;
    regio.block_code[0] = m().block_code[0];
    regio.block_code[1] = m().block_code[1];
    regio.regdesc_get   = &qv_regio_regdesc_get_plat;
    regio.part_num      = 2;
    regio.depth[0]      = m().depth[0];
    regio.depth[1]      = m().depth[1];
    regio.flag          = 1;
    regio.param[0]      = 2;
    regio.param[1]      = 4;
    strncpy(regio.name, (std::string("mod_") + m().block).c_str(), sizeof regio.name - 1);
    EXPECT_EQ(calls[1].handle, wrapper);
    EXPECT_EQ(calls[1].record, isp_test::bytes_of(regio));
    EXPECT_EQ(calls[2].handle, wrapper);
    EXPECT_EQ(calls[2].cmd, 0u);
    EXPECT_FALSE(calls[2].has_data);
    if (stat) {
        const JsonStatContext *ctx = mod.context<JsonStatContext>();
        const bool ae              = std::string(m().name) == "ae_stat";
        EXPECT_EQ(calls[3].pipe_id, walk_pipe_id);
        EXPECT_EQ(calls[3].align, 128u);
        EXPECT_EQ(calls[3].size, ae ? 264336u : 456720u);
        EXPECT_EQ(calls[3].name, ae ? "vin_ae_stat2x3" : "vin_awb_stat2x3");
        EXPECT_EQ(ctx->area_size, ae ? 88112u : 152240u);
        EXPECT_EQ(ctx->area_count, 3u);
        EXPECT_EQ(ctx->phys, 0x10000000u);
        EXPECT_NE(ctx->virt, nullptr);
    }
    EXPECT_EQ(
        isp_test::pushes_of(std::vector<isp_sim::call>(calls.begin() + before_groups, calls.end())),
        groups_to(wrapper));
    for (size_t s = 0; s < ISP_WRAPPER_SLOTS; ++s)
        EXPECT_EQ(p.ctx.wrapper_slot[s], s == slot() ? mod.h.priv : nullptr) << s;
    EXPECT_TRUE(isp_sim::wrapper(wrapper).exists && isp_sim::wrapper(wrapper).regio);
    /* the first load moved on to f1; the pattern module has no frames */
    const bool frames = !is(module_kind::pattern);
    EXPECT_EQ(frame_of(mod), std::make_pair(frames ? 1 : 0, 0u));

    /* process, through both processing slots: the groups again, f1 now the last frame */
    for (JsonModuleOp process : {mod.ops->process, mod.ops->process2}) {
        mark = isp_sim::calls().size();
        ASSERT_EQ(process(&mod.h), 0);
        EXPECT_EQ(isp_test::pushes_of(calls_since(mark)), groups_to(wrapper));
        EXPECT_EQ(frame_of(mod), frames ? std::make_pair(1, 1u) : std::make_pair(0, 0u));
    }

    /* trigger: the wrapper with mode 1 and the handle's argument; the enable bit as sync does
     * for the modules that keep it there; a module started by another never triggers */
    for (const bool bypassed : {false, true}) {
        const uint32_t others  = bypassed ? 0xFFFFFFFF : 0;
        p.shadow.module_enable = others;
        set_bypass(p, bypassed);
        mark = isp_sim::calls().size();
        ASSERT_EQ(mod.trigger(), 0);
        calls = calls_since(mark);
        EXPECT_EQ(p.shadow.module_enable,
                  m().enable == enable_update::in_trigger ? with_bit(others, !bypassed) : others);
        if (m().trigger_noop) {
            EXPECT_TRUE(calls.empty());
            continue;
        }
        ASSERT_EQ(names_of(calls), std::vector<std::string>{"vin_hal_wrapper_trigger"});
        EXPECT_EQ(calls[0].handle, wrapper);
        EXPECT_EQ(calls[0].mode, 1u);
        EXPECT_EQ(calls[0].arg, walk_trigger);
        EXPECT_EQ(calls[0].channel, 0u);
    }

    /* deinit: register I/O and wrapper destroyed, [buffer freed], slot and handle cleared */
    const uint64_t phys = stat ? mod.context<JsonStatContext>()->phys : 0;
    mark                = isp_sim::calls().size();
    ASSERT_EQ(mod.deinit(), 0);
    calls    = calls_since(mark);
    expected = {"vin_hal_wrapper_regio_destroy", "vin_hal_wrapper_destroy"};
    if (stat) expected.push_back("QV_SYS_MemFree");
    ASSERT_EQ(names_of(calls), expected);
    EXPECT_EQ(calls[0].handle, wrapper);
    EXPECT_EQ(calls[1].handle, wrapper);
    if (stat) {
        EXPECT_EQ(calls[2].phys, phys);
        EXPECT_EQ(mod.context<JsonStatContext>()->phys, 0u);
        EXPECT_EQ(mod.context<JsonStatContext>()->virt, nullptr);
    }
    EXPECT_EQ(mod.wrapper(), 0u);
    EXPECT_EQ(p.ctx.wrapper_slot[slot()], nullptr);
    EXPECT_EQ(isp_sim::live_wrappers() + isp_sim::live_dma_buffers(), 0u);
    /* a second deinit finds the slot empty: nothing is destroyed or freed twice */
    mark = isp_sim::calls().size();
    ASSERT_EQ(mod.deinit(), 0);
    EXPECT_TRUE(calls_since(mark).empty());

    /* destroy: the context freed under the same tag, once */
    mark = isp_sim::calls().size();
    ASSERT_EQ(mod.destroy(), 0);
    ASSERT_EQ(mod.destroy(), 0);
    EXPECT_EQ(mod.h.priv, nullptr);
    calls = calls_since(mark);
    ASSERT_EQ(names_of(calls), std::vector<std::string>{"QV_OS_MEM_Free"});
    EXPECT_EQ(calls[0].tag, m().mem_tag);
    EXPECT_TRUE(isp_sim::live_allocations().empty());
    EXPECT_EQ(isp_sim::log_lines().size(), logs);  // a clean life reports nothing
}

TEST_P(Catalogue, RegistrationFillsEverySlotWithTheExportedOperation) {
    JsonModuleOps *ops = isp_test::ops_of(reg());
    ASSERT_NE(ops, nullptr);
    const char *names[] = {"create",  "destroy", "init", "deinit",    "process",  "process",
                           "trigger", "sync",    "ctrl", "set_param", "get_param"};
    void *slots[11];
    static_assert(sizeof slots == sizeof *ops, "eleven slots");
    memcpy(slots, ops, sizeof slots);
    for (size_t i = 0; i < 11; ++i) {
        EXPECT_EQ(slots[i], dlsym(RTLD_DEFAULT, op(names[i]).c_str())) << names[i];
        /* only the modules without a sync operation leave a slot empty */
        EXPECT_EQ(slots[i] != nullptr, i != 7 || m().enable == enable_update::in_sync) << names[i];
    }
    /* registering again hands out the same table; the three no-op entries ignore everything */
    EXPECT_EQ(isp_test::ops_of(reg()), ops);
    int dummy = 0;
    EXPECT_EQ(ops->ctrl(nullptr, 0xFFFFFFFF, &dummy), 0);
    EXPECT_EQ(ops->set_param(nullptr, nullptr), 0);
    EXPECT_EQ(ops->get_param(nullptr, &dummy), 0);
    EXPECT_TRUE(isp_sim::calls().empty());
}

/* Null handles, contexts and pipes, an empty case path and an empty grid, through every
 * operation: each refused with its code and line before any platform call. */
TEST_P(Catalogue, BadHandlesCasePathsAndGridsAreRefusedBeforeAnyPlatformCall) {
    write_case();
    isp_test::pipe p = make_pipe();
    isp_test::module_instance mod(reg(), p);
    size_t logs     = isp_sim::log_lines().size();  // after ae_stat's banner
    const auto next = [&](const std::string &text) { expect_log(logs++, text); };
    const bool sync = m().enable == enable_update::in_sync;
    /* each refusal: the argument code and "invalid params." from the operation, the null
     * pointer code and its own report from the loader */
    const auto refused = [&](JsonModuleOp op, JsonModuleHandle *h, const char *name, int line) {
        EXPECT_EQ(static_cast<uint32_t>(op(h)), arg()) << name;
        next(invalid(name, line));
    };
    const auto load_refused = [&](JsonModuleHandle *h, int line) {
        EXPECT_EQ(static_cast<uint32_t>(mod.ops->process(h)), null_pointer_code);
        next(format("[E][%32s][%4d]: Error: Pointer is null!\n", loader().c_str(), line));
    };
    /* a null handle, then a handle without a context */
    for (JsonModuleHandle *h : {static_cast<JsonModuleHandle *>(nullptr), &mod.h}) {
        refused(mod.ops->init, h, "init", lines().init_invalid);
        refused(mod.ops->deinit, h, "deinit", lines().deinit_invalid);
        if (m().trigger_noop)
            EXPECT_EQ(mod.ops->trigger(h), 0);  // this block is started by another
        else
            refused(mod.ops->trigger, h, "trigger", lines().trigger_invalid);
        if (sync) refused(mod.ops->sync, h, "sync", lines().sync_invalid);
        load_refused(h, h ? load_null_context : load_null_handle);
    }
    /* created, never initialised: deinit has nothing to do */
    ASSERT_EQ(mod.create(), 0);
    EXPECT_EQ(mod.deinit(), 0);
    /* a context without a pipe */
    JsonModuleHandle no_pipe = mod.h;
    no_pipe.pipe             = nullptr;
    refused(mod.ops->init, &no_pipe, "init", lines().init_invalid);
    if (sync) refused(mod.ops->sync, &no_pipe, "sync", lines().sync_invalid);
    load_refused(&no_pipe, load_null_pipe);
    EXPECT_EQ(names_of(isp_sim::calls()), std::vector<std::string>{"QV_OS_MEM_Calloc"});
    EXPECT_EQ(p.shadow.module_enable, 0u);

    /* an empty case path: -1 before any file is touched; with the bypass bit clear, a trigger
     * that went on would set the enable bit */
    ASSERT_EQ(mod.init(), 0);
    const auto frame   = frame_of(mod);
    p.ctx.case_path[0] = '\0';
    set_bypass(p, false);
    size_t mark = isp_sim::calls().size();
    EXPECT_EQ(mod.process(), -1);
    next(format("[E][%32s][%4d]: case path invalid.\n", loader().c_str(), load_case_path));
    if (m().trigger_noop) {
        EXPECT_EQ(mod.trigger(), 0);
    } else {
        EXPECT_EQ(mod.trigger(), -1);
        next(format("[E][%32s][%4d]: case path invalid.\n", op("trigger").c_str(),
                    lines().trigger_case));
    }
    EXPECT_TRUE(calls_since(mark).empty());
    EXPECT_EQ(frame_of(mod), frame);
    EXPECT_EQ(p.shadow.module_enable, 0u);
    strncpy(p.ctx.case_path, case_dir.path().c_str(), sizeof p.ctx.case_path - 1);

    /* an empty grid: refused by the modules that check it, loaded as nothing by the others */
    for (const IspPipeAttr grid : {IspPipeAttr{0, 1}, IspPipeAttr{2, 0}}) {
        SCOPED_TRACE(std::to_string(grid.part_h) + " x " + std::to_string(grid.part_v));
        p.ctx.attr = grid;
        mark       = isp_sim::calls().size();
        if (m().code_grid != 0) {
            EXPECT_EQ(mod.process(), m().code_grid);
            next(error_line(loader(), load_grid, static_cast<uint32_t>(m().code_grid),
                            "partition err!!!."));
            EXPECT_TRUE(calls_since(mark).empty());
        } else {
            EXPECT_EQ(mod.process(), 0);
            EXPECT_EQ(isp_test::pushes_of(calls_since(mark)), groups_to(mod.wrapper()));
        }
    }
    EXPECT_EQ(isp_sim::log_lines().size(), logs);
    p.ctx.attr = IspPipeAttr{2, 1};
    EXPECT_EQ(mod.deinit(), 0);
    EXPECT_EQ(mod.destroy(), 0);
}

/* Each platform call failing once: the operation's code, message and line, and nothing rolled
 * back. */
TEST_P(Catalogue, EachFailingPlatformCallIsReportedAndNothingIsRolledBack) {
    write_case();
    const std::string name = m().name, block = std::string("Isp ") + m().block;
    {
        SCOPED_TRACE("QV_OS_MEM_Calloc");
        isp_test::pipe p = make_pipe();
        isp_test::module_instance mod(reg(), p);
        const size_t logs    = isp_sim::log_lines().size();
        const uint32_t alloc = static_cast<uint32_t>(m().code_alloc);
        isp_sim::fail_call("QV_OS_MEM_Calloc", 1);
        EXPECT_EQ(static_cast<uint32_t>(mod.create()), alloc);
        EXPECT_EQ(mod.h.priv, nullptr);
        expect_log(logs, error_line(op("create"), lines().create_alloc, alloc,
                                    "Isp " + name + " malloc failed."));
        /* a second create keeps the context it finds */
        ASSERT_EQ(mod.create(), 0);
        void *context     = mod.h.priv;
        const size_t mark = isp_sim::calls().size();
        EXPECT_EQ(mod.create(), 0);
        EXPECT_EQ(mod.h.priv, context);
        EXPECT_TRUE(calls_since(mark).empty());
        expect_log(logs + 1,
                   format("[W][%32s][%4d]: %s context already calloc!\n", op("create").c_str(),
                          lines().create_warn, m().name),
                   4);
        EXPECT_EQ(mod.destroy(), 0);
    }
    const struct {
        const char *function, *operation;
        int line;
        std::string message;
        size_t wrappers_left;
    } failures[] = {
        {"vin_hal_wrapper_create", "init", lines().init_create,
         "Isp " + name + " hal wrapper create failed.", 0},
        {"vin_hal_wrapper_regio_create", "init", lines().init_regio,
         block + " hal wrapper regio create failed.", 1},
        {"vin_hal_wrapper_setup", "init", lines().init_default,
         block + " hal setup dft param failed.", 1},
        {"vin_hal_wrapper_regio_destroy", "deinit", lines().deinit_regio,
         block + " hal regio destroy failed.", 1},
        {"vin_hal_wrapper_destroy", "deinit", lines().deinit_destroy,
         block + " hal destroy failed.", 1},
        {"vin_hal_wrapper_trigger", "trigger", lines().trigger_fail,
         "Isp " + name + " hal trigger failed.", 1},
    };
    for (const auto &f : failures) {
        const std::string operation = f.operation;
        if (operation == "trigger" && m().trigger_noop) continue;
        SCOPED_TRACE(f.function);
        isp_sim::reset();
        isp_test::pipe p = make_pipe();
        isp_test::module_instance mod(reg(), p);
        ASSERT_EQ(mod.create(), 0);
        if (operation != "init") {
            ASSERT_EQ(mod.init(), 0);
        }
        const uint32_t wrapper = mod.wrapper();
        /* bypass and enable bits clear: the enable bit is written before the wrapper is asked */
        p.shadow.module_enable = 0;
        set_bypass(p, false);
        const size_t logs = isp_sim::log_lines().size();
        isp_sim::fail_call(f.function, 1);
        const int32_t status = operation == "init"     ? mod.init()
                               : operation == "deinit" ? mod.deinit()
                                                       : mod.trigger();
        EXPECT_EQ(static_cast<uint32_t>(status), hw());
        expect_log(logs, error_line(op(f.operation), f.line, hw(), f.message));
        EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 0u);
        if (operation == "init") {
            /* nothing is loaded, the slot stays empty */
            EXPECT_EQ(isp_sim::live_wrappers(), f.wrappers_left);
            EXPECT_EQ(p.ctx.wrapper_slot[slot()], nullptr);
            EXPECT_EQ(isp_test::pushes().size(),
                      std::string(f.function) == "vin_hal_wrapper_setup" ? 1u : 0u);
            EXPECT_EQ(isp_sim::calls_of("qv_hal_sys_mem_alloc_cached").size(), 0u);
            EXPECT_EQ(frame_of(mod).first, 0);
        } else {
            /* stopped where it failed: handle and slot still there */
            EXPECT_EQ(mod.wrapper(), wrapper);
            EXPECT_EQ(p.ctx.wrapper_slot[slot()], mod.h.priv);
        }
        if (operation == "trigger") {
            EXPECT_EQ(p.shadow.module_enable, with_bit(0, m().enable == enable_update::in_trigger));
        }
        EXPECT_EQ(mod.destroy(), 0);
    }

    /* a failing group push stops the load with the group's message; during init the wrapper,
     * the slot and the frame advance stay */
    isp_sim::reset();
    isp_test::pipe p = make_pipe();
    isp_test::module_instance mod(reg(), p);
    ASSERT_EQ(mod.create(), 0);
    const std::vector<const isp::group_desc *> groups = pushed_groups();
    isp_sim::fail_call("vin_hal_wrapper_setup", 2);
    EXPECT_EQ(static_cast<uint32_t>(mod.init()), hw());
    expect_log(isp_sim::log_lines().size() - 1, error_line(loader(), 94, hw(), groups[0]->message));
    EXPECT_EQ(isp_test::pushes().size(), 2u);
    EXPECT_EQ(p.ctx.wrapper_slot[slot()], mod.h.priv);
    EXPECT_EQ(frame_of(mod).first, is(module_kind::pattern) ? 0 : 1);
    std::vector<uint32_t> commands;  // the groups pushed before the failing one, and it
    for (size_t i = 0; i < groups.size(); ++i) {
        SCOPED_TRACE("group " + std::to_string(i));
        const size_t logs = isp_sim::log_lines().size(), mark = isp_sim::calls().size();
        isp_sim::fail_call("vin_hal_wrapper_setup", static_cast<unsigned>(i + 1));
        EXPECT_EQ(static_cast<uint32_t>(mod.process()), hw());
        commands.push_back(groups[i]->cmd);
        EXPECT_EQ(isp_test::commands_of(calls_since(mark)), commands);
        expect_log(logs,
                   error_line(loader(), 94 + 6 * static_cast<int>(i), hw(), groups[i]->message));
    }
    EXPECT_EQ(mod.deinit(), 0);
    EXPECT_EQ(mod.destroy(), 0);
}

std::vector<const isp::module_desc *> table_rows() {
    std::vector<const isp::module_desc *> rows;
    for (const isp::module_desc &m : isp::modules()) rows.push_back(&m);
    return rows;
}

INSTANTIATE_TEST_SUITE_P(AllModules, Catalogue, testing::ValuesIn(table_rows()),
                         [](const testing::TestParamInfo<const isp::module_desc *> &info) {
                             return std::string(info.param->name);
                         });

using Banner = isp_test::platform_test;

/* ae_stat announces the library on every registration; no other module says anything. */
TEST_F(Banner, AeStatAloneLogsTheVersionOnEveryRegistration) {
    const std::regex shape(
        "\\[D\\]\\[qv_isp_module_ae_stat_json_register\\]\\[ 400\\]: \\[SDK version\\]: "
        "libisp_json\\.so V2\\.0\\.0_P5_[0-9]{14} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{4} "
        "[0-9]{2}:[0-9]{2}:[0-9]{2}\n");
    for (size_t round = 0; round < 2; ++round) {
        isp_test::ops_of(qv_isp_module_ae_stat_json_register);
        ASSERT_EQ(isp_sim::log_lines().size(), round + 1);
        EXPECT_TRUE(std::regex_match(isp_sim::log_lines().back().text, shape));
        expect_log(round, isp_sim::log_lines().back().text, 7);
    }
    for (const isp::module_desc &m : isp::modules())
        if (std::string(m.name) != "ae_stat") isp_test::ops_of(isp::registration_of(m));
    EXPECT_EQ(isp_sim::log_lines().size(), 2u);
    EXPECT_TRUE(isp_sim::calls().empty());
}

/* A few rows written out as the hardware documentation gives them, each with a quirk, every
 * group (the ones a module keeps included): the independent check of the table the walks run
 * from. */
std::string describe(const isp::module_desc &m) {
    const char *kinds[]   = {"generic", "statistics", "channelled", "pattern"};
    const char *enables[] = {"none", "in_sync", "in_trigger"};
    std::string text      = format(
             "%s %s type %u codes %u %u depths %u %u tag %x codes %x %x %x %x bits %d %d %s %s%s%s",
             m.block, m.file_pattern, m.wrapper_type, m.block_code[0], m.block_code[1], m.depth[0],
             m.depth[1], m.mem_tag, m.code_arg, m.code_hw, m.code_alloc, m.code_grid, m.bypass_bit,
             m.enable_bit, enables[static_cast<int>(m.enable)], kinds[static_cast<int>(m.kind)],
        m.trigger_noop ? " noop" : "", m.banner ? " banner" : "");
    for (const isp::group_desc &g : m.groups)
        text += format("\n%s %u %s %s", g.name, g.cmd, g.message ? g.message : "-", g.c_type);
    return text;
}

// clang-format off
const std::pair<const char *, const char *> hand_rows[] = {
    {"cc", "clc %s/cfgs/f%d/rtl_clc_p%d.json type 21 codes 2 15 depths 200 10 tag 1b010101 "
           "codes 8001180a 80011980 80011918 8001190a bits 8 13 in_sync generic\n"
           "init 3 Isp clc init hal setup failed. _isp_clc_user_init_t\n"
           "clc_setup 1 Isp clc clc_setup hal setup failed. _isp_clc_user_clc_setup_t\n"
           "clc 2 Isp clc clc hal setup failed. _isp_clc_user_clc_t"},
    /* lin borrows blc's memory tag and hs2dlut's hardware and allocation codes */
    {"lin", "blc %s/cfgs/f%d/rtl_blc_p%d.json type 6 codes 1 19 depths 50 10 tag b010101 "
            "codes 8001350a 80013580 80013518 0 bits 3 22 in_sync generic\n"
            "lin 3 Isp blc lin hal setup failed. _isp_blc_user_lin_t"},
    {"ae_stat", "ae_stat %s/cfgs/f%d/rtl_ae_stat_p%d.json type 31 codes 1 15 depths 350 50 "
                "tag 7010101 codes 8001080a 80010980 80010918 0 bits 30 8 in_trigger statistics banner\n"
                "init 1 Isp ae_stat init hal setup failed. _isp_ae_stat_user_init_t\n"
                "aes_adj 2 Isp ae_stat aes_adj hal setup failed. _isp_ae_stat_user_aes_adj_t\n"
                "aes_calc 3 Isp ae_stat aes_calc hal setup failed. _isp_ae_stat_user_aes_calc_t"},
    /* dpc keeps its top control and never pushes it */
    {"dpc", "dpc %s/cfgs/f%d/rtl_dpc_p%d_chn%d.json type 11 codes 1 6 depths 100 100 tag a010101 "
            "codes 8001030a 80010380 80010318 80010380 bits 4 1 in_sync channelled\n"
            "calc_dp_strength 2 Isp dpc calc_dp_strength hal setup failed. _isp_dpc_user_calc_dp_strength_t\n"
            "setup 4 Isp dpc setup hal setup failed. _isp_dpc_user_setup_t\n"
            "calc_noise 5 Isp dpc calc_noise hal setup failed. _isp_dpc_user_calc_noise_t\n"
            "calc_wb_gain 6 Isp dpc calc_wb_gain hal setup failed. _isp_dpc_user_calc_wb_gain_t\n"
            "calc_quick_det 7 Isp dpc calc_quick_det hal setup failed. _isp_dpc_user_calc_quick_det_t\n"
            "calc_dp_correct 8 Isp dpc calc_dp_correct hal setup failed. _isp_dpc_user_calc_dp_correct_t\n"
            "calc_color_limit 9 Isp dpc calc_color_limit hal setup failed. _isp_dpc_user_calc_color_limit_t\n"
            "init 10 Isp dpc init hal setup failed. _isp_dpc_user_init_t\n"
            "top_control 0 - _isp_dpc_user_calc_top_control_t"},
    {"ainr", "nrlite %s/isp_nrlite_ptn_%d.json type 36 codes 1 10 depths 100 30 tag 15010101 "
             "codes 80011e0a 80011f80 80011f18 0 bits 0 0 none pattern\n"
             "post 5 Isp nrlite post hal setup failed. _isp_nrlite_user_post_t"},
    /* the curve and the global control both report as the init group */
    {"hdrc", "hdrc %s/cfgs/f%d/rtl_hdrc_p%d.json type 13 codes 1 20 depths 50 10 tag f010101 "
             "codes 80012c0a 80012d80 80012d18 0 bits 27 24 in_trigger generic\n"
             "setup 1 Isp hdrc setup hal setup failed. _isp_hdrc_user_setup_t\n"
             "hdrc_lut 3 Isp hdrc init hal setup failed. _isp_hdrc_user_hdrc_lut_t\n"
             "glb_ctl 4 Isp hdrc init hal setup failed. _isp_hdrc_user_glb_ctrl_t"},
    {"eis_post", "eis_post %s/cfgs/f%d/rtl_eis_post_p%d.json type 29 codes 2 27 depths 50 10 "
                 "tag 21010201 codes 8001280a 80012980 80012918 0 bits 26 21 in_sync generic noop\n"
                 "ctrl 1 Isp eis_post ctrl hal setup failed. _isp_eis_post_user_ctrl_t\n"
                 "setup 2 Isp eis_post setup hal setup failed. _isp_eis_post_user_setup_t\n"
                 "init 3 Isp eis_post init hal setup failed. _isp_eis_post_user_init_t"},
};
// clang-format on

TEST(ModuleTable, AFewRowsReadAsTheDocumentationWritesThem) {
    for (const auto &row : hand_rows) {
        const isp::module_desc *m = isp::find_module(row.first);
        ASSERT_NE(m, nullptr) << row.first;
        EXPECT_EQ(describe(*m), row.second) << row.first;
    }
    /* the table as a whole: its size, and the order a pipeline runs the modules in */
    std::vector<std::string> pipeline;
    for (const isp::module_desc *m : isp::pipeline_order()) pipeline.push_back(m->name);
    EXPECT_EQ(pipeline, (std::vector<std::string>{
                            "ifa",          "bl_det", "blc",     "lin",      "hdr",      "dpc",
                            "raw2dnr",      "lsc",    "wbc",     "ae_stat",  "awb_stat", "af_stat",
                            "hidrc",        "hdrc",   "rltm",    "demosaic", "gic",      "fcc",
                            "edge_enhance", "cc",     "gamma",   "depurple", "dehaze",   "csc",
                            "hs2dlut",      "ccmp",   "ycproc",  "sharpen",  "scm",      "y2dnr",
                            "yuv3dnr",      "ainr",   "eis_pre", "eis_post"}));
    /* modules share a hardware code only in the documented pairs (lin borrows hs2dlut's) */
    std::set<std::string> sharing;
    for (const isp::module_desc &a : isp::modules())
        for (const isp::module_desc &b : isp::modules())
            if (std::string(a.name) < b.name && a.code_hw == b.code_hw)
                sharing.insert(std::string(a.name) + "/" + b.name);
    EXPECT_EQ(sharing,
              (std::set<std::string>{"ae_stat/af_stat", "awb_stat/lsc", "dehaze/gamma", "rltm/wbc",
                                     "fcc/raw2dnr", "y2dnr/ycproc", "hdrc/hidrc", "ccmp/scm",
                                     "bl_det/ifa", "demosaic/gic", "hs2dlut/lin"}));
    size_t converters = 0;
    for (const char *block : isp::blocks()) converters += isp::block_converters(block).size();
    EXPECT_EQ(isp::modules().size(), 34u);
    EXPECT_EQ(isp::blocks().size(), 26u);
    EXPECT_EQ(converters, 145u);  // every converter the library exports
}

}  // namespace
