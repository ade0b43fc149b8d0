/* Every module of the catalogue walked through its whole life on the simulated platform, with
 * its constants written out here as the hardware documentation gives them: wrapper type, block
 * codes, depths, register I/O name, memory tag, wrapper slot, enable bit, status codes, messages
 * and source lines, and the groups in the order they reach the wrapper. */
#include <dlfcn.h>
#include <stdint.h>
#include <string.h>

#include <map>
#include <ostream>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "isp_platform.h"
#include "isp_sim.h"
#include "modules/tables.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::calls_since;
using isp_test::error_line;
using isp_test::expect_log;
using isp_test::format;
using isp_test::names_of;

using kind      = isp::module_kind;
using enable_at = isp::enable_update;

struct group {
    uint32_t cmd;
    const char *message;
};

/* Source lines of the operations' reports. */
struct op_lines {
    int create_alloc, create_warn;
    int deinit_invalid, deinit_regio, deinit_destroy;
    int init_invalid, init_create, init_regio, init_default;
    int trigger_invalid, trigger_case, trigger_fail;
    int sync_invalid;
};
const op_lines cc_lines     = {118, 120, 209, 217, 221, 151, 163, 183, 190, 244, 250, 255, 266};
const op_lines dehaze_lines = {132, 134, 223, 231, 235, 165, 177, 197, 204, 258, 264, 269, 280};

/* The parameter loader's lines, the same in every module. */
const int load_null_handle = 46, load_null_pipe = 47, load_null_context = 48;
const int load_case_path = 52, load_grid = 58;
int push_line(size_t group) {
    return 94 + 6 * static_cast<int>(group);
}

const uint32_t null_pointer_code = 0x8001010B;

struct module_row {
    const char *name;
    int32_t (*reg)(JsonModuleOps **);
    const char *block; /* top key "isp_<block>" of the register files */
    std::string file;  /* under the frame directory, or the case directory for patterns */
    std::string regio; /* register I/O name */
    kind variant;
    uint32_t type;
    size_t slot;
    uint8_t code0, code1;
    uint32_t depth0, depth1;
    uint32_t tag;
    uint32_t arg, hw, alloc;
    uint32_t grid; /* status of an empty partition grid, 0 when the loader does not check */
    int bypass, enable;
    enable_at at;
    bool trigger_noop;
    const op_lines *lines;
    std::vector<group> groups;
};

/* The walks below run every module from its row of the library's table: they show that the one
 * generic module hands each row's constants to the platform. The rows themselves are checked
 * by hand further down, for a few modules, and the walk of the sample case checks the groups. */
module_row row_from_table(const isp::module_desc &m) {
    module_row row;
    row.name  = m.name;
    row.reg   = isp::registration_of(m);
    row.block = m.block;
    row.file =
        m.file_pattern + strlen(m.kind == isp::module_kind::pattern ? "%s/" : "%s/cfgs/f%d/");
    row.regio        = std::string("mod_") + m.block;
    row.variant      = m.kind;
    row.type         = m.wrapper_type;
    row.slot         = m.wrapper_type - 6;
    row.code0        = m.block_code[0];
    row.code1        = m.block_code[1];
    row.depth0       = m.depth[0];
    row.depth1       = m.depth[1];
    row.tag          = m.mem_tag;
    row.arg          = static_cast<uint32_t>(m.code_arg);
    row.hw           = static_cast<uint32_t>(m.code_hw);
    row.alloc        = static_cast<uint32_t>(m.code_alloc);
    row.grid         = static_cast<uint32_t>(m.code_grid);
    row.at           = m.enable;
    row.bypass       = row.at == enable_at::none ? -1 : m.bypass_bit;
    row.enable       = row.at == enable_at::none ? -1 : m.enable_bit;
    row.trigger_noop = m.trigger_noop;
    /* the lines are the documented ones, not the table's */
    row.lines = std::string(m.name) == "dehaze" ? &dehaze_lines : &cc_lines;
    for (const isp::group_desc &g : m.groups)
        if (g.cmd != 0) row.groups.push_back({g.cmd, g.message});
    return row;
}

std::vector<module_row> table_rows() {
    std::vector<module_row> rows;
    for (const isp::module_desc &m : isp::modules()) rows.push_back(row_from_table(m));
    return rows;
}

const uint8_t walk_pipe_id  = 2;
const uint32_t walk_trigger = 0x5A5A1234;

/* A register file of the block holding no register, except the raw-number curves and meshes,
 * which have no default and must be there. */
std::string register_file(const std::string &block) {
    auto zeros = [](const char *key, size_t count) {
        std::string array = std::string("\"") + key + "\": [";
        for (size_t i = 0; i < count; ++i) array += i ? ", 0" : "0";
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

void PrintTo(const module_row &m, std::ostream *out) {
    *out << m.name;
}

class catalogue : public isp_test::platform_test, public testing::WithParamInterface<module_row> {
  protected:
    /* the register files carry no fields, so the converters report every one they miss */
    void SetUp() override {
        platform_test::SetUp();
        quiet_stderr();
    }

    const module_row &row() const { return GetParam(); }
    std::string op(const char *operation) const {
        return std::string("isp_") + row().name + "_json_mod_" + operation;
    }
    std::string loader() const { return std::string("__") + row().name + "_json_param_setup"; }
    std::string invalid(const char *operation, int line) const {
        return error_line(op(operation), line, row().arg, "invalid params.");
    }
    bool channelled() const { return row().variant == kind::channelled; }
    bool pattern() const { return row().variant == kind::pattern; }
    bool statistics() const { return row().variant == kind::statistics; }

    /* Frames f0 and f1 of a case over two partitions, each file holding the block's empty
     * object; the pattern module's files lie in the case directory itself. */
    void write_case() const {
        const std::string content = register_file(row().block);
        for (int frame = 0; frame < 2; ++frame)
            for (int p = 0; p < 2; ++p) {
                if (pattern())
                    case_dir.write(format(row().file.c_str(), p), content);
                else if (channelled())
                    frame_file(frame, format(row().file.c_str(), p, 0), content);
                else
                    frame_file(frame, format(row().file.c_str(), p), content);
            }
    }

    /* Every group pushed to wrapper in order, with its structure. */
    void expect_groups(const std::vector<isp_sim::call> &calls, uint32_t wrapper) const {
        ASSERT_EQ(calls.size(), row().groups.size());
        for (size_t i = 0; i < calls.size(); ++i) {
            EXPECT_EQ(calls[i].function, "vin_hal_wrapper_setup");
            EXPECT_EQ(calls[i].handle, wrapper) << "group " << i;
            EXPECT_EQ(calls[i].cmd, row().groups[i].cmd) << "group " << i;
            EXPECT_TRUE(calls[i].has_data) << "group " << i;
        }
    }

    /* frame index and last-frame flag, wherever the module's context keeps them */
    std::pair<int32_t, uint32_t> frame_of(const isp_test::module_instance &m) const {
        if (channelled())
            return {m.context<JsonChnContext>()->frame, m.context<JsonChnContext>()->last_frame};
        return {m.context<JsonModuleContext>()->frame, m.context<JsonModuleContext>()->last_frame};
    }

    size_t context_size() const {
        return statistics()   ? sizeof(JsonStatContext)
               : channelled() ? sizeof(JsonChnContext)
                              : sizeof(JsonModuleContext);
    }

    /* Sets every bypass bit but the module's, or only the module's. */
    void set_bypass(isp_test::pipe &p, bool module_bit_set) const {
        const int bit = row().bypass < 0 ? 0 : row().bypass;
        memset(p.ctx.bypass, module_bit_set ? 0x00 : 0xFF, sizeof p.ctx.bypass);
        p.ctx.bypass[bit / 8] ^= static_cast<uint8_t>(1u << (bit % 8));
    }
    /* The enable bits expected: the module's bit follows the inverted bypass bit, the others
     * keep what they held. */
    uint32_t with_bit(uint32_t others, bool on) const {
        if (row().enable < 0) return others;  // ainr keeps no enable bit
        const uint32_t bit = 1u << row().enable;
        return on ? others | bit : others & ~bit;
    }

    /* The pipe of every walk: a 2 x 1 grid on the case with frames f0 and f1. */
    isp_test::pipe make_pipe() const { return isp_test::pipe(2, 1, case_dir.path(), 1); }
};

std::string row_name(const testing::TestParamInfo<module_row> &info) {
    return info.param.name;
}

/* register -> create -> init -> process -> deinit -> destroy, and every constant of the module
 * as it shows in the records (trigger and sync have tests of their own below). */
TEST_P(catalogue, whole_lifecycle_shows_every_constant) {
    const module_row &m = row();
    write_case();
    isp_test::pipe p = make_pipe();
    p.ctx.pipe_id    = walk_pipe_id;
    isp_test::module_instance mod(m.reg, p);
    ASSERT_NE(mod.ops, nullptr);
    const size_t logs = isp_sim::log_lines().size();

    /* create: one zero-filled context under the module's tag */
    size_t mark = isp_sim::calls().size();
    ASSERT_EQ(mod.create(), 0);
    ASSERT_NE(mod.h.priv, nullptr);
    std::vector<isp_sim::call> calls = calls_since(mark);
    ASSERT_EQ(names_of(calls), std::vector<std::string>{"QV_OS_MEM_Calloc"});
    EXPECT_EQ(calls[0].tag, m.tag);
    EXPECT_EQ(calls[0].size, context_size());
    EXPECT_EQ(std::vector<uint8_t>(mod.context<uint8_t>(), mod.context<uint8_t>() + context_size()),
              std::vector<uint8_t>(context_size(), 0));
    EXPECT_EQ(isp_sim::live_allocations(), (std::map<uint32_t, int>{{m.tag, 1}}));

    /* init: wrapper, register I/O, default parameters, [statistics buffer], frame 0 */
    mark = isp_sim::calls().size();
    ASSERT_EQ(mod.init(), 0);
    calls                             = calls_since(mark);
    std::vector<std::string> expected = {"vin_hal_wrapper_create", "vin_hal_wrapper_regio_create",
                                         "vin_hal_wrapper_setup"};
    if (statistics()) expected.push_back("qv_hal_sys_mem_alloc_cached");
    const size_t before_groups = expected.size();
    expected.insert(expected.end(), m.groups.size(), "vin_hal_wrapper_setup");
    ASSERT_EQ(names_of(calls), expected);

    VinHalWrapperAttr attr;
    isp_test::copy_bytes(calls[0].record, attr);
    EXPECT_EQ(attr.type, m.type);
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
    regio.block_code[0] = m.code0;
    regio.block_code[1] = m.code1;
    regio.regdesc_get   = &qv_regio_regdesc_get_plat;
    regio.part_num      = 2;
    regio.depth[0]      = m.depth0;
    regio.depth[1]      = m.depth1;
    regio.flag          = 1;
    regio.param[0]      = 2;
    regio.param[1]      = 4;
    strncpy(regio.name, m.regio.c_str(), sizeof regio.name - 1);
    EXPECT_EQ(calls[1].handle, wrapper);
    EXPECT_EQ(calls[1].record, isp_test::bytes_of(regio));

    EXPECT_EQ(calls[2].handle, wrapper);
    EXPECT_EQ(calls[2].cmd, 0u);
    EXPECT_FALSE(calls[2].has_data);
    if (statistics()) {
        const JsonStatContext *ctx = mod.context<JsonStatContext>();
        const bool ae              = std::string(m.name) == "ae_stat";
        EXPECT_EQ(calls[3].pipe_id, walk_pipe_id);
        EXPECT_EQ(calls[3].align, 128u);
        EXPECT_EQ(calls[3].size, ae ? 264336u : 456720u);
        EXPECT_EQ(calls[3].name, ae ? "vin_ae_stat2x3" : "vin_awb_stat2x3");
        EXPECT_EQ(ctx->area_size, ae ? 88112u : 152240u);
        EXPECT_EQ(ctx->area_count, 3u);
        EXPECT_EQ(ctx->phys, 0x10000000u);
        EXPECT_NE(ctx->virt, nullptr);
    }
    expect_groups(std::vector<isp_sim::call>(calls.begin() + before_groups, calls.end()), wrapper);
    for (size_t slot = 0; slot < ISP_WRAPPER_SLOTS; ++slot)
        EXPECT_EQ(p.ctx.wrapper_slot[slot], slot == m.slot ? mod.h.priv : nullptr) << slot;
    EXPECT_TRUE(isp_sim::wrapper(wrapper).exists && isp_sim::wrapper(wrapper).regio);
    /* the first load moved on to f1; the pattern module has no frames */
    EXPECT_EQ(frame_of(mod), std::make_pair(pattern() ? 0 : 1, 0u));

    /* process, through both processing slots: the groups again, in the same order */
    for (JsonModuleOp process : {mod.ops->process, mod.ops->process2}) {
        mark = isp_sim::calls().size();
        ASSERT_EQ(process(&mod.h), 0);
        expect_groups(calls_since(mark), wrapper);
        EXPECT_EQ(frame_of(mod), pattern() ? std::make_pair(0, 0u) : std::make_pair(1, 1u));
    }

    /* deinit: register I/O and wrapper destroyed, [buffer freed], slot and handle cleared */
    const uint64_t phys = statistics() ? mod.context<JsonStatContext>()->phys : 0;
    mark                = isp_sim::calls().size();
    ASSERT_EQ(mod.deinit(), 0);
    calls    = calls_since(mark);
    expected = {"vin_hal_wrapper_regio_destroy", "vin_hal_wrapper_destroy"};
    if (statistics()) expected.push_back("QV_SYS_MemFree");
    ASSERT_EQ(names_of(calls), expected);
    EXPECT_EQ(calls[0].handle, wrapper);
    EXPECT_EQ(calls[1].handle, wrapper);
    if (statistics()) {
        EXPECT_EQ(calls[2].phys, phys);
        EXPECT_EQ(mod.context<JsonStatContext>()->phys, 0u);
        EXPECT_EQ(mod.context<JsonStatContext>()->virt, nullptr);
    }
    EXPECT_EQ(mod.wrapper(), 0u);
    EXPECT_EQ(p.ctx.wrapper_slot[m.slot], nullptr);
    EXPECT_EQ(isp_sim::live_wrappers(), 0u);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 0u);
    /* a second deinit finds the slot empty: nothing is destroyed or freed twice */
    mark = isp_sim::calls().size();
    ASSERT_EQ(mod.deinit(), 0);
    EXPECT_TRUE(calls_since(mark).empty());

    /* destroy: the context freed under the same tag */
    mark = isp_sim::calls().size();
    ASSERT_EQ(mod.destroy(), 0);
    EXPECT_EQ(mod.h.priv, nullptr);
    calls = calls_since(mark);
    ASSERT_EQ(names_of(calls), std::vector<std::string>{"QV_OS_MEM_Free"});
    EXPECT_EQ(calls[0].tag, m.tag);
    EXPECT_TRUE(isp_sim::live_allocations().empty());
    /* a clean life reports nothing */
    EXPECT_EQ(isp_sim::log_lines().size(), logs);
}

TEST_P(catalogue, registration_fills_every_slot_with_the_exported_operation) {
    JsonModuleOps *first = isp_test::ops_of(row().reg);
    ASSERT_NE(first, nullptr);
    const auto exported = [&](const char *operation) {
        return dlsym(RTLD_DEFAULT, op(operation).c_str());
    };
    const std::pair<const void *, const char *> slots[] = {
        {reinterpret_cast<void *>(first->create), "create"},
        {reinterpret_cast<void *>(first->destroy), "destroy"},
        {reinterpret_cast<void *>(first->init), "init"},
        {reinterpret_cast<void *>(first->deinit), "deinit"},
        {reinterpret_cast<void *>(first->process), "process"},
        {reinterpret_cast<void *>(first->process2), "process"},
        {reinterpret_cast<void *>(first->trigger), "trigger"},
        {reinterpret_cast<void *>(first->sync), "sync"},
        {reinterpret_cast<void *>(first->ctrl), "ctrl"},
        {reinterpret_cast<void *>(first->set_param), "set_param"},
        {reinterpret_cast<void *>(first->get_param), "get_param"},
    };
    for (const auto &slot : slots) {
        EXPECT_EQ(slot.first, exported(slot.second)) << slot.second;
        /* only the four modules without a sync slot leave one empty */
        EXPECT_EQ(slot.first != nullptr,
                  std::string(slot.second) != "sync" || row().at == enable_at::in_sync)
            << slot.second;
    }

    /* registering again rewrites the same table with the same values */
    const JsonModuleOps copy = *first;
    EXPECT_EQ(isp_test::ops_of(row().reg), first);
    EXPECT_EQ(memcmp(&copy, first, sizeof copy), 0);

    /* the three no-op entries ignore every argument, a null handle included */
    int dummy = 0;
    EXPECT_EQ(first->ctrl(nullptr, 0, nullptr), 0);
    EXPECT_EQ(first->ctrl(nullptr, 0xFFFFFFFF, &dummy), 0);
    EXPECT_EQ(first->set_param(nullptr, nullptr), 0);
    EXPECT_EQ(first->set_param(nullptr, &dummy), 0);
    EXPECT_EQ(first->get_param(nullptr, nullptr), 0);
    EXPECT_EQ(first->get_param(nullptr, &dummy), 0);
    EXPECT_TRUE(isp_sim::calls().empty());
}

TEST_P(catalogue, create_reports_allocation_failure_and_keeps_an_existing_context) {
    const module_row &m = row();
    isp_test::pipe p    = make_pipe();
    isp_test::module_instance mod(m.reg, p);
    const size_t logs = isp_sim::log_lines().size();

    isp_sim::fail_call("QV_OS_MEM_Calloc", 1);
    EXPECT_EQ(static_cast<uint32_t>(mod.create()), m.alloc);
    EXPECT_EQ(mod.h.priv, nullptr);
    expect_log(logs, error_line(op("create"), m.lines->create_alloc, m.alloc,
                                std::string("Isp ") + m.name + " malloc failed."));

    ASSERT_EQ(mod.create(), 0);
    void *context = mod.h.priv;
    size_t mark   = isp_sim::calls().size();
    EXPECT_EQ(mod.create(), 0);
    EXPECT_EQ(mod.h.priv, context);
    EXPECT_TRUE(calls_since(mark).empty());
    expect_log(logs + 1,
               format("[W][%32s][%4d]: %s context already calloc!\n", op("create").c_str(),
                      m.lines->create_warn, m.name),
               4);

    EXPECT_EQ(mod.destroy(), 0);
    EXPECT_EQ(mod.h.priv, nullptr);
    /* destroy without a context does nothing */
    mark = isp_sim::calls().size();
    EXPECT_EQ(mod.destroy(), 0);
    EXPECT_TRUE(calls_since(mark).empty());
    EXPECT_TRUE(isp_sim::live_allocations().empty());
}

TEST_P(catalogue, init_reports_bad_handles_and_each_wrapper_failure) {
    const module_row &m = row();
    {
        SCOPED_TRACE("bad handles");
        isp_test::pipe p = make_pipe();
        isp_test::module_instance mod(m.reg, p);
        const size_t logs = isp_sim::log_lines().size();  // after ae_stat's banner
        EXPECT_EQ(static_cast<uint32_t>(mod.ops->init(nullptr)), m.arg);
        expect_log(logs, invalid("init", m.lines->init_invalid));
        EXPECT_EQ(static_cast<uint32_t>(mod.init()), m.arg);  // no context yet
        expect_log(logs + 1, invalid("init", m.lines->init_invalid));
        ASSERT_EQ(mod.create(), 0);
        mod.h.pipe = nullptr;
        EXPECT_EQ(static_cast<uint32_t>(mod.init()), m.arg);
        expect_log(logs + 2, invalid("init", m.lines->init_invalid));
        EXPECT_EQ(isp_sim::live_wrappers(), 0u);
        EXPECT_EQ(mod.destroy(), 0);
    }

    const std::string block = "Isp " + m.regio.substr(4);
    const struct {
        const char *function;
        int line;
        std::string message;
        size_t wrappers_left;
    } failures[] = {
        {"vin_hal_wrapper_create", m.lines->init_create,
         std::string("Isp ") + m.name + " hal wrapper create failed.", 0},
        {"vin_hal_wrapper_regio_create", m.lines->init_regio,
         block + " hal wrapper regio create failed.", 1},
        {"vin_hal_wrapper_setup", m.lines->init_default, block + " hal setup dft param failed.", 1},
    };
    write_case();
    for (const auto &f : failures) {
        SCOPED_TRACE(f.function);
        isp_sim::reset();
        isp_test::pipe p = make_pipe();
        isp_test::module_instance mod(m.reg, p);
        ASSERT_EQ(mod.create(), 0);
        const size_t logs = isp_sim::log_lines().size();
        isp_sim::fail_call(f.function, 1);
        EXPECT_EQ(static_cast<uint32_t>(mod.init()), m.hw);
        expect_log(logs, error_line(op("init"), f.line, m.hw, f.message));
        /* nothing is rolled back, nothing is loaded, the slot stays empty */
        EXPECT_EQ(isp_sim::live_wrappers(), f.wrappers_left);
        EXPECT_EQ(p.ctx.wrapper_slot[m.slot], nullptr);
        EXPECT_EQ(isp_test::pushes().size(),
                  std::string(f.function) == "vin_hal_wrapper_setup" ? 1u : 0u);
        EXPECT_EQ(isp_sim::calls_of("qv_hal_sys_mem_alloc_cached").size(), 0u);
        EXPECT_EQ(frame_of(mod).first, 0);
        EXPECT_EQ(mod.destroy(), 0);
    }
}

TEST_P(catalogue, a_failing_group_push_stops_the_load_with_its_message) {
    const module_row &m = row();
    write_case();
    isp_test::pipe p = make_pipe();
    isp_test::module_instance mod(m.reg, p);
    ASSERT_EQ(mod.create(), 0);

    /* the first group failing during init */
    size_t logs = isp_sim::log_lines().size();
    isp_sim::fail_call("vin_hal_wrapper_setup", 2);
    EXPECT_EQ(static_cast<uint32_t>(mod.init()), m.hw);
    expect_log(logs, error_line(loader(), push_line(0), m.hw, m.groups[0].message));
    EXPECT_EQ(isp_test::pushes().size(), 2u);
    /* the wrapper was made before the load: it stays, and so do the slot and the frame advance */
    EXPECT_EQ(p.ctx.wrapper_slot[m.slot], mod.h.priv);
    EXPECT_EQ(frame_of(mod).first, pattern() ? 0 : 1);

    for (size_t i = 0; i < m.groups.size(); ++i) {
        SCOPED_TRACE("group " + std::to_string(i));
        logs              = isp_sim::log_lines().size();
        const size_t mark = isp_sim::calls().size();
        isp_sim::fail_call("vin_hal_wrapper_setup", static_cast<unsigned>(i + 1));
        EXPECT_EQ(static_cast<uint32_t>(mod.process()), m.hw);
        const std::vector<isp_sim::call> calls = calls_since(mark);
        ASSERT_EQ(calls.size(), i + 1);
        for (size_t k = 0; k <= i; ++k) {
            EXPECT_EQ(calls[k].function, "vin_hal_wrapper_setup");
            EXPECT_EQ(calls[k].handle, mod.wrapper());
            EXPECT_EQ(calls[k].cmd, m.groups[k].cmd);
        }
        expect_log(logs, error_line(loader(), push_line(i), m.hw, m.groups[i].message));
    }
    EXPECT_EQ(mod.deinit(), 0);
    EXPECT_EQ(mod.destroy(), 0);
}

TEST_P(catalogue, loader_checks_its_pointers_the_case_path_and_the_grid) {
    const module_row &m = row();
    write_case();
    isp_test::pipe p = make_pipe();
    isp_test::module_instance mod(m.reg, p);
    const size_t logs    = isp_sim::log_lines().size();
    const auto null_line = [&](int line) {
        return format("[E][%32s][%4d]: Error: Pointer is null!\n", loader().c_str(), line);
    };

    EXPECT_EQ(static_cast<uint32_t>(mod.ops->process(nullptr)), null_pointer_code);
    expect_log(logs, null_line(load_null_handle));
    EXPECT_EQ(static_cast<uint32_t>(mod.process()), null_pointer_code);  // no context
    expect_log(logs + 1, null_line(load_null_context));
    ASSERT_EQ(mod.create(), 0);
    ASSERT_EQ(mod.init(), 0);
    JsonModuleHandle no_pipe = mod.h;
    no_pipe.pipe             = nullptr;
    EXPECT_EQ(static_cast<uint32_t>(mod.ops->process(&no_pipe)), null_pointer_code);
    expect_log(logs + 2, null_line(load_null_pipe));

    /* an empty case path: -1 before any file is touched */
    const auto frame   = frame_of(mod);
    p.ctx.case_path[0] = '\0';
    size_t mark        = isp_sim::calls().size();
    EXPECT_EQ(mod.process(), -1);
    expect_log(logs + 3,
               format("[E][%32s][%4d]: case path invalid.\n", loader().c_str(), load_case_path));
    EXPECT_TRUE(calls_since(mark).empty());
    EXPECT_EQ(frame_of(mod), frame);
    strncpy(p.ctx.case_path, case_dir.path().c_str(), sizeof p.ctx.case_path - 1);

    /* an empty grid: refused by the modules that check it, loaded as nothing by the others */
    for (const IspPipeAttr grid : {IspPipeAttr{0, 1}, IspPipeAttr{2, 0}}) {
        SCOPED_TRACE(std::to_string(grid.part_h) + " x " + std::to_string(grid.part_v));
        p.ctx.attr         = grid;
        mark               = isp_sim::calls().size();
        const size_t lines = isp_sim::log_lines().size();
        if (m.grid != 0) {
            EXPECT_EQ(static_cast<uint32_t>(mod.process()), m.grid);
            expect_log(lines, error_line(loader(), load_grid, m.grid, "partition err!!!."));
            EXPECT_TRUE(calls_since(mark).empty());
        } else {
            EXPECT_EQ(mod.process(), 0);
            expect_groups(calls_since(mark), mod.wrapper());
            EXPECT_EQ(isp_sim::log_lines().size(), lines);
        }
    }
    p.ctx.attr = IspPipeAttr{2, 1};
    EXPECT_EQ(mod.deinit(), 0);
    EXPECT_EQ(mod.destroy(), 0);
}

TEST_P(catalogue, trigger_checks_handle_and_case_path_and_reports_the_wrapper) {
    const module_row &m = row();
    write_case();
    isp_test::pipe p = make_pipe();
    isp_test::module_instance mod(m.reg, p, walk_trigger);

    if (m.trigger_noop) {
        /* this block is started by another: trigger never looks at anything */
        EXPECT_EQ(mod.ops->trigger(nullptr), 0);
        EXPECT_EQ(mod.trigger(), 0);
        p.ctx.case_path[0] = '\0';
        EXPECT_EQ(mod.trigger(), 0);
        EXPECT_TRUE(isp_sim::calls().empty());
        EXPECT_TRUE(isp_sim::log_lines().empty());
        return;
    }

    const size_t logs = isp_sim::log_lines().size();
    EXPECT_EQ(static_cast<uint32_t>(mod.ops->trigger(nullptr)), m.arg);
    expect_log(logs, invalid("trigger", m.lines->trigger_invalid));
    EXPECT_EQ(static_cast<uint32_t>(mod.trigger()), m.arg);
    expect_log(logs + 1, invalid("trigger", m.lines->trigger_invalid));
    EXPECT_EQ(p.shadow.module_enable, 0u);
    ASSERT_EQ(mod.create(), 0);
    ASSERT_EQ(mod.init(), 0);

    /* the wrapper with mode 1 and the handle's argument; the enable bit, inverted from the bypass
     * bit, for the modules that keep it there, in either direction */
    for (const bool bypassed : {false, true}) {
        const uint32_t others  = bypassed ? 0xFFFFFFFF : 0;
        p.shadow.module_enable = others;
        set_bypass(p, bypassed);
        const size_t mark = isp_sim::calls().size();
        ASSERT_EQ(mod.trigger(), 0);
        const std::vector<isp_sim::call> calls = calls_since(mark);
        ASSERT_EQ(names_of(calls), std::vector<std::string>{"vin_hal_wrapper_trigger"});
        EXPECT_EQ(calls[0].handle, mod.wrapper());
        EXPECT_EQ(calls[0].mode, 1u);
        EXPECT_EQ(calls[0].arg, walk_trigger);
        EXPECT_EQ(calls[0].channel, 0u);
        EXPECT_EQ(p.shadow.module_enable,
                  m.at == enable_at::in_trigger ? with_bit(others, !bypassed) : others);
    }

    /* bypass bit clear, enable bit clear: a trigger that updates the bit would set it */
    p.shadow.module_enable = 0;
    set_bypass(p, false);
    p.ctx.case_path[0] = '\0';
    size_t mark        = isp_sim::calls().size();
    EXPECT_EQ(mod.trigger(), -1);
    expect_log(logs + 2, format("[E][%32s][%4d]: case path invalid.\n", op("trigger").c_str(),
                                m.lines->trigger_case));
    EXPECT_TRUE(calls_since(mark).empty());
    EXPECT_EQ(p.shadow.module_enable, 0u);
    strncpy(p.ctx.case_path, case_dir.path().c_str(), sizeof p.ctx.case_path - 1);

    /* the bit is written before the wrapper is asked, so a failing trigger still updates it */
    isp_sim::fail_call("vin_hal_wrapper_trigger", 1);
    mark = isp_sim::calls().size();
    EXPECT_EQ(static_cast<uint32_t>(mod.trigger()), m.hw);
    expect_log(logs + 3, error_line(op("trigger"), m.lines->trigger_fail, m.hw,
                                    std::string("Isp ") + m.name + " hal trigger failed."));
    EXPECT_EQ(names_of(calls_since(mark)), std::vector<std::string>{"vin_hal_wrapper_trigger"});
    EXPECT_EQ(p.shadow.module_enable, with_bit(0, m.at == enable_at::in_trigger));
    EXPECT_EQ(mod.deinit(), 0);
    EXPECT_EQ(mod.destroy(), 0);
}

TEST_P(catalogue, sync_checks_its_handle_before_touching_the_shadow) {
    const module_row &m = row();
    if (m.at != enable_at::in_sync) GTEST_SKIP() << "no sync operation";
    isp_test::pipe p = make_pipe();
    isp_test::module_instance mod(m.reg, p);
    p.shadow.module_enable = 0;
    set_bypass(p, false);

    const size_t logs = isp_sim::log_lines().size();
    EXPECT_EQ(static_cast<uint32_t>(mod.ops->sync(nullptr)), m.arg);
    expect_log(logs, invalid("sync", m.lines->sync_invalid));
    EXPECT_EQ(static_cast<uint32_t>(mod.sync()), m.arg);  // no context
    expect_log(logs + 1, invalid("sync", m.lines->sync_invalid));
    ASSERT_EQ(mod.create(), 0);
    JsonModuleHandle no_pipe = mod.h;
    no_pipe.pipe             = nullptr;
    EXPECT_EQ(static_cast<uint32_t>(mod.ops->sync(&no_pipe)), m.arg);
    expect_log(logs + 2, invalid("sync", m.lines->sync_invalid));
    EXPECT_EQ(p.shadow.module_enable, 0u);

    /* a created module syncs without init: the bypass bit, inverted, into the enable bit and
     * nowhere else, without a platform call */
    for (const bool bypassed : {false, true}) {
        const uint32_t others  = bypassed ? 0xFFFFFFFF : 0;
        p.shadow.module_enable = others;
        set_bypass(p, bypassed);
        ASSERT_EQ(mod.sync(), 0);
        EXPECT_EQ(p.shadow.module_enable, with_bit(others, !bypassed));
    }
    EXPECT_EQ(names_of(isp_sim::calls()), std::vector<std::string>{"QV_OS_MEM_Calloc"});
    EXPECT_EQ(mod.destroy(), 0);
}

TEST_P(catalogue, deinit_reports_bad_handles_and_each_wrapper_failure) {
    const module_row &m = row();
    write_case();
    {
        isp_test::pipe p = make_pipe();
        isp_test::module_instance mod(m.reg, p);
        const size_t logs = isp_sim::log_lines().size();
        EXPECT_EQ(static_cast<uint32_t>(mod.ops->deinit(nullptr)), m.arg);
        expect_log(logs, invalid("deinit", m.lines->deinit_invalid));
        EXPECT_EQ(static_cast<uint32_t>(mod.deinit()), m.arg);
        expect_log(logs + 1, invalid("deinit", m.lines->deinit_invalid));
        /* created but never initialised: the slot is empty, nothing to do */
        ASSERT_EQ(mod.create(), 0);
        const size_t mark = isp_sim::calls().size();
        EXPECT_EQ(mod.deinit(), 0);
        EXPECT_TRUE(calls_since(mark).empty());
        EXPECT_EQ(isp_sim::log_lines().size(), logs + 2);
        EXPECT_EQ(mod.destroy(), 0);
    }

    const std::string block = "Isp " + m.regio.substr(4);
    const struct {
        const char *function;
        int line;
        std::string message;
    } failures[] = {
        {"vin_hal_wrapper_regio_destroy", m.lines->deinit_regio,
         block + " hal regio destroy failed."},
        {"vin_hal_wrapper_destroy", m.lines->deinit_destroy, block + " hal destroy failed."},
    };
    for (const auto &f : failures) {
        SCOPED_TRACE(f.function);
        isp_sim::reset();
        isp_test::pipe p = make_pipe();
        isp_test::module_instance mod(m.reg, p);
        ASSERT_EQ(mod.create(), 0);
        ASSERT_EQ(mod.init(), 0);
        const uint32_t wrapper = mod.wrapper();
        const size_t logs      = isp_sim::log_lines().size();
        isp_sim::fail_call(f.function, 1);
        EXPECT_EQ(static_cast<uint32_t>(mod.deinit()), m.hw);
        expect_log(logs, error_line(op("deinit"), f.line, m.hw, f.message));
        /* stopped where it failed: handle and slot still there, no buffer freed */
        EXPECT_EQ(mod.wrapper(), wrapper);
        EXPECT_EQ(p.ctx.wrapper_slot[m.slot], mod.h.priv);
        EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 0u);
        EXPECT_EQ(mod.destroy(), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(all_modules, catalogue, testing::ValuesIn(table_rows()), row_name);

using banner           = isp_test::platform_test;
using catalogue_replay = isp_test::platform_test;

/* ae_stat announces the library on every registration; no other module says anything. */
TEST_F(banner, ae_stat_alone_logs_the_version_banner_on_every_registration) {
    const std::regex shape(
        "\\[D\\]\\[qv_isp_module_ae_stat_json_register\\]\\[ 400\\]: \\[SDK version\\]: "
        "libisp_json\\.so V2\\.0\\.0_P5_[0-9]{14} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{4} "
        "[0-9]{2}:[0-9]{2}:[0-9]{2}\n");
    for (size_t round = 0; round < 2; ++round) {
        isp_test::ops_of(qv_isp_module_ae_stat_json_register);
        ASSERT_EQ(isp_sim::log_lines().size(), round + 1);
        const isp_sim::log_line &line = isp_sim::log_lines().back();
        EXPECT_EQ(line.level, 7);
        EXPECT_EQ(line.tag, "ISP");
        EXPECT_EQ(line.flag, 1);
        EXPECT_TRUE(std::regex_match(line.text, shape)) << line.text;
    }
    for (const isp::module_desc &m : isp::modules()) {
        if (std::string(m.name) == "ae_stat") continue;
        EXPECT_NE(isp_test::ops_of(isp::registration_of(m)), nullptr) << m.name;
    }
    EXPECT_EQ(isp_sim::log_lines().size(), 2u);
    EXPECT_TRUE(isp_sim::calls().empty());
}

/* ---- the table itself ------------------------------------------------------------------- */

/* A few rows written out as the hardware documentation gives them, with every group (the ones a
 * module keeps included) and its structure type: the independent check of the table the walks
 * above run from. */
struct hand_group {
    const char *name;
    uint32_t cmd; /* 0: kept, never pushed */
    const char *message;
    const char *c_type;
};
struct hand_row {
    const char *name, *block, *file;
    uint32_t type;
    uint8_t code0, code1;
    uint32_t depth0, depth1, tag, arg, hw, alloc, grid;
    int bypass, enable;
    isp::enable_update at;
    isp::module_kind variant;
    bool trigger_noop, banner;
    std::vector<hand_group> groups;
};

// clang-format off
const hand_row hand_rows[] = {
    {"cc", "clc", "%s/cfgs/f%d/rtl_clc_p%d.json", 21, 2, 15, 200, 10, 0x1B010101, 0x8001180a,
     0x80011980, 0x80011918, 0x8001190a, 8, 13, isp::enable_update::in_sync,
     isp::module_kind::generic, false, false,
     {{"init", 3, "Isp clc init hal setup failed.", "_isp_clc_user_init_t"},
      {"clc_setup", 1, "Isp clc clc_setup hal setup failed.", "_isp_clc_user_clc_setup_t"},
      {"clc", 2, "Isp clc clc hal setup failed.", "_isp_clc_user_clc_t"}}},
    /* lin borrows blc's memory tag and hs2dlut's hardware and allocation codes */
    {"lin", "blc", "%s/cfgs/f%d/rtl_blc_p%d.json", 6, 1, 19, 50, 10, 0x0B010101, 0x8001350a,
     0x80013580, 0x80013518, 0, 3, 22, isp::enable_update::in_sync, isp::module_kind::generic,
     false, false, {{"lin", 3, "Isp blc lin hal setup failed.", "_isp_blc_user_lin_t"}}},
    {"ae_stat", "ae_stat", "%s/cfgs/f%d/rtl_ae_stat_p%d.json", 31, 1, 15, 350, 50, 0x07010101,
     0x8001080a, 0x80010980, 0x80010918, 0, 30, 8, isp::enable_update::in_trigger,
     isp::module_kind::statistics, false, true,
     {{"init", 1, "Isp ae_stat init hal setup failed.", "_isp_ae_stat_user_init_t"},
      {"aes_adj", 2, "Isp ae_stat aes_adj hal setup failed.", "_isp_ae_stat_user_aes_adj_t"},
      {"aes_calc", 3, "Isp ae_stat aes_calc hal setup failed.", "_isp_ae_stat_user_aes_calc_t"}}},
    {"dpc", "dpc", "%s/cfgs/f%d/rtl_dpc_p%d_chn%d.json", 11, 1, 6, 100, 100, 0x0A010101,
     0x8001030a, 0x80010380, 0x80010318, 0x80010380, 4, 1, isp::enable_update::in_sync,
     isp::module_kind::channelled, false, false,
     {{"calc_dp_strength", 2, "Isp dpc calc_dp_strength hal setup failed.", "_isp_dpc_user_calc_dp_strength_t"},
      {"setup", 4, "Isp dpc setup hal setup failed.", "_isp_dpc_user_setup_t"},
      {"calc_noise", 5, "Isp dpc calc_noise hal setup failed.", "_isp_dpc_user_calc_noise_t"},
      {"calc_wb_gain", 6, "Isp dpc calc_wb_gain hal setup failed.", "_isp_dpc_user_calc_wb_gain_t"},
      {"calc_quick_det", 7, "Isp dpc calc_quick_det hal setup failed.", "_isp_dpc_user_calc_quick_det_t"},
      {"calc_dp_correct", 8, "Isp dpc calc_dp_correct hal setup failed.", "_isp_dpc_user_calc_dp_correct_t"},
      {"calc_color_limit", 9, "Isp dpc calc_color_limit hal setup failed.", "_isp_dpc_user_calc_color_limit_t"},
      {"init", 10, "Isp dpc init hal setup failed.", "_isp_dpc_user_init_t"},
      {"top_control", 0, nullptr, "_isp_dpc_user_calc_top_control_t"}}},
    {"ainr", "nrlite", "%s/isp_nrlite_ptn_%d.json", 36, 1, 10, 100, 30, 0x15010101, 0x80011e0a,
     0x80011f80, 0x80011f18, 0, 0, 0, isp::enable_update::none, isp::module_kind::pattern, false,
     false, {{"post", 5, "Isp nrlite post hal setup failed.", "_isp_nrlite_user_post_t"}}},
    /* the curve and the global control both report as the init group */
    {"hdrc", "hdrc", "%s/cfgs/f%d/rtl_hdrc_p%d.json", 13, 1, 20, 50, 10, 0x0F010101, 0x80012c0a,
     0x80012d80, 0x80012d18, 0, 27, 24, isp::enable_update::in_trigger, isp::module_kind::generic,
     false, false,
     {{"setup", 1, "Isp hdrc setup hal setup failed.", "_isp_hdrc_user_setup_t"},
      {"hdrc_lut", 3, "Isp hdrc init hal setup failed.", "_isp_hdrc_user_hdrc_lut_t"},
      {"glb_ctl", 4, "Isp hdrc init hal setup failed.", "_isp_hdrc_user_glb_ctrl_t"}}},
    {"eis_post", "eis_post", "%s/cfgs/f%d/rtl_eis_post_p%d.json", 29, 2, 27, 50, 10, 0x21010201,
     0x8001280a, 0x80012980, 0x80012918, 0, 26, 21, isp::enable_update::in_sync,
     isp::module_kind::generic, true, false,
     {{"ctrl", 1, "Isp eis_post ctrl hal setup failed.", "_isp_eis_post_user_ctrl_t"},
      {"setup", 2, "Isp eis_post setup hal setup failed.", "_isp_eis_post_user_setup_t"},
      {"init", 3, "Isp eis_post init hal setup failed.", "_isp_eis_post_user_init_t"}}},
};
// clang-format on

TEST(module_table, a_few_rows_read_as_the_documentation_writes_them) {
    for (const hand_row &h : hand_rows) {
        SCOPED_TRACE(h.name);
        const isp::module_desc *m = isp::find_module(h.name);
        ASSERT_NE(m, nullptr);
        EXPECT_STREQ(m->block, h.block);
        EXPECT_STREQ(m->file_pattern, h.file);
        EXPECT_EQ(m->wrapper_type, h.type);
        EXPECT_EQ(m->block_code[0], h.code0);
        EXPECT_EQ(m->block_code[1], h.code1);
        EXPECT_EQ(m->depth[0], h.depth0);
        EXPECT_EQ(m->depth[1], h.depth1);
        EXPECT_EQ(m->mem_tag, h.tag);
        EXPECT_EQ(static_cast<uint32_t>(m->code_arg), h.arg);
        EXPECT_EQ(static_cast<uint32_t>(m->code_hw), h.hw);
        EXPECT_EQ(static_cast<uint32_t>(m->code_alloc), h.alloc);
        EXPECT_EQ(static_cast<uint32_t>(m->code_grid), h.grid);
        EXPECT_EQ(m->bypass_bit, h.bypass);
        EXPECT_EQ(m->enable_bit, h.enable);
        EXPECT_EQ(m->enable, h.at);
        EXPECT_EQ(m->kind, h.variant);
        EXPECT_EQ(m->trigger_noop, h.trigger_noop);
        EXPECT_EQ(m->banner, h.banner);
        ASSERT_EQ(m->groups.size(), h.groups.size());
        for (size_t i = 0; i < h.groups.size(); ++i) {
            const isp::group_desc &g = m->groups[i];
            EXPECT_STREQ(g.name, h.groups[i].name) << i;
            EXPECT_EQ(g.cmd, h.groups[i].cmd) << i;
            EXPECT_EQ(g.message ? std::string(g.message) : "",
                      h.groups[i].message ? std::string(h.groups[i].message) : "")
                << i;
            EXPECT_STREQ(g.c_type, h.groups[i].c_type) << i;
        }
    }
    EXPECT_EQ(isp::modules().size(), 34u);
}

/* The orders the tools rely on, and the converters the modules run where they differ from the
 * push order or fill what is not pushed. */
TEST(module_table, pipeline_block_and_converter_orders) {
    std::vector<std::string> pipeline, blocks, hdr, dpc;
    for (const isp::module_desc *m : isp::pipeline_order()) pipeline.push_back(m->name);
    for (const char *block : isp::blocks()) blocks.push_back(block);
    for (const isp::converter_desc &c : isp::find_module("hdr")->converters)
        hdr.push_back(std::string(c.name) + ">" + c.group->name);
    for (const isp::converter_desc *c : isp::block_converters("dpc"))
        dpc.push_back(std::string(c->name) + ":" + c->c_type);
    EXPECT_EQ(pipeline, (std::vector<std::string>{
                            "ifa",          "bl_det", "blc",     "lin",      "hdr",      "dpc",
                            "raw2dnr",      "lsc",    "wbc",     "ae_stat",  "awb_stat", "af_stat",
                            "hidrc",        "hdrc",   "rltm",    "demosaic", "gic",      "fcc",
                            "edge_enhance", "cc",     "gamma",   "depurple", "dehaze",   "csc",
                            "hs2dlut",      "ccmp",   "ycproc",  "sharpen",  "scm",      "y2dnr",
                            "yuv3dnr",      "ainr",   "eis_pre", "eis_post"}));
    EXPECT_EQ(blocks,
              (std::vector<std::string>{
                  "wbc",     "blc",    "dpc",     "lsc",      "dem",     "clc",     "gamma",
                  "csc",     "hdrc",   "hidrc",   "hdr",      "raw2dnr", "lce",     "rltm",
                  "dehaze",  "y2dnr",  "yuv3dnr", "pfd",      "nrlite",  "ae_stat", "awb_stat",
                  "af_stat", "bl_det", "eis_pre", "eis_post", "ifa"}));
    EXPECT_EQ(hdr, (std::vector<std::string>{
                       "rtl_to_drv_hdr_user_common>common", "rtl_to_drv_hdr_noise_profile>common",
                       "rtl_to_drv_hdr_user_deghost>deghost", "rtl_to_drv_hdr_user_setup>setup",
                       "rtl_to_drv_hdr_exp_weight_lut_luma_mid>kernel_exposure",
                       "rtl_to_drv_hdr_user_init>init", "rtl_to_drv_hdr_user_motion>motion",
                       "rtl_to_drv_hdr_kernel_fusion>kernel_fusion",
                       "rtl_to_drv_hdr_kernel_common>kernel_common",
                       "rtl_to_drv_hdr_kernel_exposure>kernel_exposure",
                       "rtl_to_drv_hdr_exp_weight_lut_luma_low_high>kernel_exposure"}));
    /* the module's overload in its order, then the exported one it does not call */
    EXPECT_EQ(dpc, (std::vector<std::string>{
                       "rtl_to_drv_dpc_user_calc_dp_strength:_isp_dpc_user_calc_dp_strength_t",
                       "rtl_to_drv_dpc_user_setup:_isp_dpc_user_setup_t",
                       "rtl_to_drv_dpc_user_calc_top_control:_isp_dpc_user_calc_top_control_t",
                       "rtl_to_drv_dpc_user_calc_noise:_isp_dpc_user_calc_noise_t",
                       "rtl_to_drv_dpc_user_calc_wb_gain:_isp_dpc_user_calc_wb_gain_t",
                       "rtl_to_drv_dpc_user_calc_quick_det:_isp_dpc_user_calc_quick_det_t",
                       "rtl_to_drv_dpc_user_calc_dp_correct:_isp_dpc_user_calc_dp_correct_t",
                       "rtl_to_drv_dpc_user_calc_color_limit:_isp_dpc_user_calc_color_limit_t",
                       "rtl_to_drv_dpc_user_init:_isp_dpc_user_init_t",
                       "rtl_to_drv_dpc_user_calc_dp_correct:_isp_dpc_user_calc_partition_t"}));
    size_t converters = 0;
    for (const char *block : isp::blocks()) converters += isp::block_converters(block).size();
    EXPECT_EQ(converters, 145u);  // every converter the library exports
}

/* The sample case replayed as isp-case does (pipeline order, 2 x 2 partitions, 2 channels; init,
 * then two processes), every push checked against the table: the groups of each load in the
 * table's order with their commands, each structure where the table puts it in the module's
 * frame and of the size the wrapper received. */
TEST_F(catalogue_replay, every_push_of_the_sample_case_is_a_group_of_the_table) {
    quiet_stderr();
    isp_test::pipe p(2, 2, ISP_SAMPLE_CASE_DIR, 2);
    struct push {
        uint32_t cmd;
        const unsigned char *data;
    };
    std::vector<push> seen;
    isp_sim::on_setup([&](uint32_t, const VinHalSetupCmd *cmd) {
        if (cmd && cmd->data)
            seen.push_back({cmd->cmd, static_cast<const unsigned char *>(cmd->data)});
    });
    std::vector<isp_test::module_instance> instances;
    for (const isp::module_desc *m : isp::pipeline_order())
        instances.emplace_back(isp::registration_of(*m), p);
    for (isp_test::module_instance &mod : instances) ASSERT_EQ(mod.create(), 0);

    size_t groups = 0, bytes = 0;
    for (int round = 0; round < 3; ++round) {
        for (size_t i = 0; i < instances.size(); ++i) {
            const isp::module_desc &m = *isp::pipeline_order()[i];
            SCOPED_TRACE(std::string(m.name) + " round " + std::to_string(round));
            seen.clear();
            const size_t mark = isp_sim::calls().size();
            ASSERT_EQ(round == 0 ? instances[i].init() : instances[i].process(), 0);
            std::vector<isp_sim::call> pushes;
            for (const isp_sim::call &c : calls_since(mark))
                if (c.function == "vin_hal_wrapper_setup" && c.has_data) pushes.push_back(c);
            ASSERT_EQ(pushes.size(), seen.size());
            const int channels = m.kind == isp::module_kind::channelled ? 2 : 1;
            size_t k           = 0;
            for (int channel = 0; channel < channels; ++channel) {
                const unsigned char *frame = nullptr;
                for (size_t g = 0; g < m.groups.size(); ++g) {
                    const isp::group_desc &group = m.groups[g];
                    /* inside the frame, before the next structure */
                    const size_t end =
                        g + 1 < m.groups.size() ? m.groups[g + 1].offset : m.frame_size;
                    EXPECT_LE(group.offset + group.size, end) << group.name;
                    if (group.cmd == 0) continue;
                    ASSERT_LT(k, pushes.size());
                    EXPECT_EQ(pushes[k].cmd, group.cmd) << group.name;
                    EXPECT_EQ(seen[k].cmd, group.cmd) << group.name;
                    EXPECT_EQ(pushes[k].payload.size(), group.size) << group.name;
                    if (!frame) frame = seen[k].data - group.offset;
                    EXPECT_EQ(seen[k].data, frame + group.offset) << group.name;
                    bytes += pushes[k].payload.size();
                    ++groups;
                    ++k;
                }
            }
            EXPECT_EQ(k, pushes.size());
        }
    }
    isp_sim::on_setup(nullptr);
    /* what isp-case has always reported for the sample case */
    EXPECT_EQ(groups, 465u);
    if (sizeof(void *) == 8) {
        EXPECT_EQ(bytes, 85674u);
    }
    for (isp_test::module_instance &mod : instances) EXPECT_EQ(mod.deinit(), 0);
    for (isp_test::module_instance &mod : instances) EXPECT_EQ(mod.destroy(), 0);
}

}  // namespace
