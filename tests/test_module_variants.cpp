/* What the lifecycle walk of the catalogue cannot show: modules sharing one hardware block, the
 * statistics buffers and their addresses, the channelled modules over several channels and
 * frames, and the pattern-file module reading the case directory itself. */
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "isp_platform.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

/* Slots of the shared blocks and the codes the tests below meet. */
const size_t slot_blc = 0, slot_dem = 14, slot_lce = 20, slot_ae_stat = 25, slot_awb_stat = 27;
const uint32_t blc_arg = 0x8001040a, blc_hw = 0x80010580;
const uint32_t ae_stat_hw = 0x80010980;
const uint32_t dpc_arg = 0x8001030a, bl_det_arg = 0x8001300a;

std::string format(const char *fmt, ...) __attribute__((format(printf, 1, 2)));
std::string format(const char *fmt, ...) {
    char text[512];
    va_list args;
    va_start(args, fmt);
    vsnprintf(text, sizeof text, fmt, args);
    va_end(args);
    return text;
}

std::string error_text(const char *function, int line, uint32_t code, const char *what) {
    return format("[E][%32s][%4d]: Error [%x]: %s\n", function, line, code, what);
}

JsonModuleOps *ops_of(int32_t (*reg)(JsonModuleOps **)) {
    JsonModuleOps *table = nullptr;
    EXPECT_EQ(reg(&table), 0);
    return table;
}

std::vector<std::string> names_of(const std::vector<isp_sim::call> &calls) {
    std::vector<std::string> names;
    for (const isp_sim::call &c : calls) names.push_back(c.function);
    return names;
}

std::vector<isp_sim::call> since(size_t mark) {
    const std::vector<isp_sim::call> &all = isp_sim::calls();
    return std::vector<isp_sim::call>(all.begin() + static_cast<long>(mark), all.end());
}

/* Commands of the setup calls among calls, in order, each with the handle it went to. */
std::vector<std::pair<uint32_t, uint32_t>> pushes_of(const std::vector<isp_sim::call> &calls) {
    std::vector<std::pair<uint32_t, uint32_t>> pushes;
    for (const isp_sim::call &c : calls)
        if (c.function == "vin_hal_wrapper_setup") pushes.emplace_back(c.handle, c.cmd);
    return pushes;
}

std::vector<std::pair<uint32_t, uint32_t>> to(uint32_t wrapper,
                                              const std::vector<uint32_t> &commands) {
    std::vector<std::pair<uint32_t, uint32_t>> pushes;
    for (uint32_t cmd : commands) pushes.emplace_back(wrapper, cmd);
    return pushes;
}

template <typename Structure>
Structure payload_of(const isp_sim::call &c) {
    Structure s;
    memset(&s, 0, sizeof s);
    EXPECT_EQ(c.payload.size(), sizeof s) << "command " << c.cmd;
    memcpy(&s, c.payload.data(), std::min(c.payload.size(), sizeof s));
    return s;
}

/* The pushes of one command, in order. */
std::vector<isp_sim::call> pushes_with(uint32_t cmd) {
    std::vector<isp_sim::call> found;
    for (const isp_sim::call &c : isp_sim::calls_of("vin_hal_wrapper_setup"))
        if (c.cmd == cmd) found.push_back(c);
    return found;
}

const std::vector<uint32_t> blc_commands = {3, 4, 5, 6, 7, 8, 9, 10};

class variants : public testing::Test {
  protected:
    void SetUp() override {
        isp_sim::reset();
        isp_sim::set_log_echo(false);
        /* the register files below carry few fields: the converters report the others */
        testing::internal::CaptureStderr();
    }
    void TearDown() override {
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(isp_sim::problems(), expected_problems);
        isp_sim::reset();
        isp_sim::set_log_echo(true);
    }

    std::string frame_file(int frame, const std::string &name, const std::string &content) {
        return case_dir.write("cfgs/f" + std::to_string(frame) + "/" + name, content);
    }

    /* A black level register file whose digital gain tells frame and channel apart. */
    static std::string blc_file(int dgain) {
        return format("{\"isp_blc\": {\"dgain\": {\"val\": %d}}}", dgain);
    }

    static void expect_log(size_t index, int32_t level, const std::string &text) {
        const std::vector<isp_sim::log_line> &lines = isp_sim::log_lines();
        ASSERT_GT(lines.size(), index) << text;
        EXPECT_EQ(lines[index].level, level);
        EXPECT_EQ(lines[index].tag, "ISP");
        EXPECT_EQ(lines[index].flag, 1);
        EXPECT_EQ(lines[index].text, text);
    }

    isp_test::temp_dir case_dir;
    std::vector<std::string> expected_problems;
};

/* ---- modules sharing one hardware block --------------------------------------------------- */

TEST_F(variants, demosaic_then_gic_share_the_wrapper_that_demosaic_created) {
    frame_file(0, "rtl_dem_p0.json", "{\"isp_dem\": {}}");
    isp_test::pipe p(1, 1, case_dir.path());
    JsonModuleHandle demosaic = p.handle(), gic = p.handle();
    JsonModuleOps *dem_ops = ops_of(qv_isp_module_demosaic_json_register);
    JsonModuleOps *gic_ops = ops_of(qv_isp_module_gic_json_register);
    ASSERT_EQ(dem_ops->create(&demosaic), 0);
    ASSERT_EQ(gic_ops->create(&gic), 0);

    ASSERT_EQ(dem_ops->init(&demosaic), 0);
    const uint32_t wrapper = *static_cast<uint32_t *>(demosaic.priv);
    size_t mark            = isp_sim::calls().size();
    ASSERT_EQ(gic_ops->init(&gic), 0);

    /* gic creates nothing: it copies the handle and pushes its own group to it */
    EXPECT_EQ(names_of(since(mark)), std::vector<std::string>{"vin_hal_wrapper_setup"});
    EXPECT_EQ(pushes_of(since(mark)), to(wrapper, {5}));
    EXPECT_EQ(*static_cast<uint32_t *>(gic.priv), wrapper);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_dem], demosaic.priv);
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_create").size(), 1u);
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_regio_create").size(), 1u);
    EXPECT_EQ(pushes_with(0).size(), 1u);
    EXPECT_EQ(isp_sim::live_wrappers(), 1u);

    /* gic, deinitialised first, tears the shared wrapper down through its copy */
    mark = isp_sim::calls().size();
    ASSERT_EQ(gic_ops->deinit(&gic), 0);
    EXPECT_EQ(names_of(since(mark)), (std::vector<std::string>{"vin_hal_wrapper_regio_destroy",
                                                               "vin_hal_wrapper_destroy"}));
    EXPECT_EQ(since(mark)[0].handle, wrapper);
    EXPECT_EQ(since(mark)[1].handle, wrapper);
    EXPECT_EQ(*static_cast<uint32_t *>(gic.priv), 0u);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_dem], nullptr);
    EXPECT_EQ(isp_sim::live_wrappers(), 0u);

    /* demosaic then finds the slot empty: nothing to do, its stale copy stays */
    mark = isp_sim::calls().size();
    ASSERT_EQ(dem_ops->deinit(&demosaic), 0);
    EXPECT_TRUE(since(mark).empty());
    EXPECT_EQ(*static_cast<uint32_t *>(demosaic.priv), wrapper);

    /* initialised anew, demosaic creates a wrapper of its own again */
    ASSERT_EQ(dem_ops->init(&demosaic), 0);
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_create").size(), 2u);
    EXPECT_NE(*static_cast<uint32_t *>(demosaic.priv), wrapper);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_dem], demosaic.priv);
    ASSERT_EQ(dem_ops->deinit(&demosaic), 0);

    EXPECT_EQ(gic_ops->destroy(&gic), 0);
    EXPECT_EQ(dem_ops->destroy(&demosaic), 0);
    EXPECT_TRUE(isp_sim::live_allocations().empty());
    EXPECT_TRUE(isp_sim::log_lines().empty());
}

TEST_F(variants, the_five_lce_modules_push_their_commands_to_one_wrapper) {
    frame_file(0, "rtl_lce_p0.json", "{\"isp_lce\": {}}");
    isp_test::pipe p(1, 1, case_dir.path());
    int32_t (*const regs[])(JsonModuleOps **) = {
        qv_isp_module_hs2dlut_json_register, qv_isp_module_ccmp_json_register,
        qv_isp_module_ycproc_json_register, qv_isp_module_sharpen_json_register,
        qv_isp_module_scm_json_register};
    std::vector<JsonModuleHandle> handles(5, p.handle());
    for (size_t i = 0; i < 5; ++i) {
        ASSERT_EQ(ops_of(regs[i])->create(&handles[i]), 0);
        ASSERT_EQ(ops_of(regs[i])->init(&handles[i]), 0);
    }
    ASSERT_EQ(isp_sim::calls_of("vin_hal_wrapper_create").size(), 1u);
    const uint32_t wrapper = isp_sim::calls_of("vin_hal_wrapper_create")[0].handle;
    for (const JsonModuleHandle &h : handles) EXPECT_EQ(*static_cast<uint32_t *>(h.priv), wrapper);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_lce], handles[0].priv);
    EXPECT_EQ(pushes_of(isp_sim::calls()), to(wrapper, {0, 8, 9, 6, 7, 1, 2, 4, 5, 3, 11, 10}));

    /* the last one deinitialised finds nothing left to destroy */
    for (size_t i = 5; i-- > 0;) EXPECT_EQ(ops_of(regs[i])->deinit(&handles[i]), 0);
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_destroy").size(), 1u);
    for (size_t i = 0; i < 5; ++i) EXPECT_EQ(ops_of(regs[i])->destroy(&handles[i]), 0);
}

TEST_F(variants, sharpen_and_scm_mirror_different_bypass_bits_into_one_enable_bit) {
    isp_test::pipe p(1, 1, case_dir.path());
    JsonModuleHandle sharpen = p.handle(), scm = p.handle();
    JsonModuleOps *sharpen_ops = ops_of(qv_isp_module_sharpen_json_register);
    JsonModuleOps *scm_ops     = ops_of(qv_isp_module_scm_json_register);
    ASSERT_EQ(sharpen_ops->create(&sharpen), 0);
    ASSERT_EQ(scm_ops->create(&scm), 0);

    const uint32_t others  = 0xA5A5A5A5 & ~(1u << 18);
    p.shadow.module_enable = others;
    p.ctx.bypass[2]        = 0x08;  // bit 19 (scm) set, bit 18 (sharpen) clear

    ASSERT_EQ(scm_ops->sync(&scm), 0);
    EXPECT_EQ(p.shadow.module_enable, others);
    ASSERT_EQ(sharpen_ops->sync(&sharpen), 0);
    EXPECT_EQ(p.shadow.module_enable, others | 1u << 18);  // whoever syncs last decides
    ASSERT_EQ(scm_ops->sync(&scm), 0);
    EXPECT_EQ(p.shadow.module_enable, others);

    EXPECT_EQ(sharpen_ops->destroy(&sharpen), 0);
    EXPECT_EQ(scm_ops->destroy(&scm), 0);
}

/* ---- statistics buffers ------------------------------------------------------------------- */

TEST_F(variants, awb_stat_on_pipe_one_names_its_buffer_after_the_pipe) {
    frame_file(0, "rtl_awb_stat_p0.json", "{\"isp_awb_stat\": {}}");
    isp_test::pipe p(1, 1, case_dir.path());
    p.ctx.pipe_id        = 1;
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops_of(qv_isp_module_awb_stat_json_register);
    ASSERT_EQ(table->create(&h), 0);
    ASSERT_EQ(table->init(&h), 0);

    const std::vector<isp_sim::call> allocs = isp_sim::calls_of("qv_hal_sys_mem_alloc_cached");
    ASSERT_EQ(allocs.size(), 1u);
    EXPECT_EQ(allocs[0].pipe_id, 1);
    EXPECT_EQ(allocs[0].name, "vin_awb_stat1x3");
    EXPECT_EQ(allocs[0].size, 456720u);
    EXPECT_EQ(allocs[0].align, 128u);
    const JsonStatContext *ctx = static_cast<const JsonStatContext *>(h.priv);
    EXPECT_EQ(ctx->area_size, 152240u);
    EXPECT_EQ(ctx->area_count, 3u);
    EXPECT_EQ(ctx->phys, 0x10000000u);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_awb_stat], h.priv);

    ASSERT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(table->destroy(&h), 0);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 0u);
}

TEST_F(variants, ae_stat_writes_three_sub_area_addresses_per_partition) {
    for (int p = 0; p < 3; ++p)
        frame_file(0, format("rtl_ae_stat_p%d.json", p), "{\"isp_ae_stat\": {}}");
    isp_test::pipe p(3, 1, case_dir.path());
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops_of(qv_isp_module_ae_stat_json_register);
    ASSERT_EQ(table->create(&h), 0);
    ASSERT_EQ(table->init(&h), 0);
    ASSERT_EQ(static_cast<const JsonStatContext *>(h.priv)->phys, 0x10000000u);
    ASSERT_EQ(table->process(&h), 0);

    /* every load writes them again */
    const std::vector<isp_sim::call> inits = pushes_with(1);
    ASSERT_EQ(inits.size(), 2u);
    for (const isp_sim::call &c : inits) {
        const _isp_ae_stat_user_init_t init = payload_of<_isp_ae_stat_user_init_t>(c);
        const uint32_t first[3]             = {0x02000000, 0x02002B06, 0x0200560C};
        const uint32_t second[3]            = {0x02001443, 0x02003F49, 0x02006A4F};
        const uint32_t third[3]             = {0x02002886, 0x0200538C, 0x02007E92};
        for (int part = 0; part < 3; ++part) {
            EXPECT_EQ(init.wr_addr0[part], first[part]) << "partition " << part;
            EXPECT_EQ(init.wr_addr1[part], second[part]) << "partition " << part;
            EXPECT_EQ(init.wr_addr2[part], third[part]) << "partition " << part;
        }
        EXPECT_EQ(init.wr_addr0[3], 0u);
        EXPECT_EQ(init.wr_addr2[3], 0u);
    }
    ASSERT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(table->destroy(&h), 0);
}

TEST_F(variants, awb_stat_writes_one_address_per_partition) {
    for (int p = 0; p < 3; ++p)
        frame_file(0, format("rtl_awb_stat_p%d.json", p), "{\"isp_awb_stat\": {}}");
    isp_test::pipe p(3, 1, case_dir.path());
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops_of(qv_isp_module_awb_stat_json_register);
    ASSERT_EQ(table->create(&h), 0);
    ASSERT_EQ(table->init(&h), 0);
    const std::vector<isp_sim::call> inits = pushes_with(1);
    ASSERT_EQ(inits.size(), 1u);
    const _isp_awb_stat_user_init_t init = payload_of<_isp_awb_stat_user_init_t>(inits[0]);
    EXPECT_EQ(init.wr_addr[0], 0x02000000u);
    EXPECT_EQ(init.wr_addr[1], 0x02004A56u);
    EXPECT_EQ(init.wr_addr[2], 0x020094ACu);
    EXPECT_EQ(init.wr_addr[3], 0u);
    ASSERT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(table->destroy(&h), 0);
}

TEST_F(variants, a_statistics_module_reusing_the_wrapper_allocates_nothing) {
    for (int p = 0; p < 3; ++p)
        frame_file(0, format("rtl_ae_stat_p%d.json", p), "{\"isp_ae_stat\": {}}");
    isp_test::pipe p(3, 1, case_dir.path());
    JsonModuleHandle first = p.handle(), second = p.handle();
    JsonModuleOps *table = ops_of(qv_isp_module_ae_stat_json_register);
    ASSERT_EQ(table->create(&first), 0);
    ASSERT_EQ(table->create(&second), 0);
    ASSERT_EQ(table->init(&first), 0);
    const size_t mark = isp_sim::calls().size();
    ASSERT_EQ(table->init(&second), 0);

    /* no buffer: the addresses count from physical address 0 */
    EXPECT_EQ(isp_sim::calls_of("qv_hal_sys_mem_alloc_cached").size(), 1u);
    EXPECT_EQ(static_cast<const JsonStatContext *>(second.priv)->phys, 0u);
    const std::vector<isp_sim::call> calls = since(mark);
    ASSERT_EQ(pushes_of(calls).size(), 3u);
    const _isp_ae_stat_user_init_t init = payload_of<_isp_ae_stat_user_init_t>(calls[0]);
    EXPECT_EQ(init.wr_addr0[2], 0x560Cu);
    EXPECT_EQ(init.wr_addr1[2], 0x6A4Fu);
    EXPECT_EQ(init.wr_addr2[2], 0x7E92u);

    /* the sharer deinitialised first tears the wrapper down and frees no buffer, having none;
     * the owner then finds the slot empty and keeps its buffer */
    ASSERT_EQ(table->deinit(&second), 0);
    ASSERT_EQ(table->deinit(&first), 0);
    EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 0u);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 1u);
    EXPECT_EQ(isp_sim::live_wrappers(), 0u);
    EXPECT_EQ(table->destroy(&second), 0);
    EXPECT_EQ(table->destroy(&first), 0);
}

TEST_F(variants, a_failed_statistics_allocation_is_only_logged) {
    struct module {
        int32_t (*reg)(JsonModuleOps **);
        const char *file;
        const char *content;
        const char *routine;
        uint32_t bytes;
        size_t slot;
    };
    const module modules[] = {
        {qv_isp_module_ae_stat_json_register, "rtl_ae_stat_p0.json", "{\"isp_ae_stat\": {}}",
         "__ae_stat_json_alloc_buf", 264336, slot_ae_stat},
        {qv_isp_module_awb_stat_json_register, "rtl_awb_stat_p0.json", "{\"isp_awb_stat\": {}}",
         "__awb_stat_json_alloc_buf", 456720, slot_awb_stat},
    };
    for (const module &m : modules) {
        SCOPED_TRACE(m.routine);
        isp_sim::reset();
        frame_file(0, m.file, m.content);
        isp_test::pipe p(1, 1, case_dir.path());
        JsonModuleHandle h   = p.handle();
        JsonModuleOps *table = ops_of(m.reg);
        ASSERT_EQ(table->create(&h), 0);
        const size_t logs = isp_sim::log_lines().size();  // after ae_stat's banner
        isp_sim::fail_call("qv_hal_sys_mem_alloc_cached", 1, 0x5A);
        EXPECT_EQ(table->init(&h), 0);  // the loader's result
        ASSERT_EQ(isp_sim::log_lines().size(), logs + 1);
        expect_log(logs, 3,
                   format("[E][%32s][%4d]: qv_hal_sys_mem_alloc_cached(%d) fail, retval=0x%x",
                          m.routine, 72, static_cast<int>(m.bytes), 0x5A));
        const JsonStatContext *ctx = static_cast<const JsonStatContext *>(h.priv);
        EXPECT_EQ(ctx->phys, 0u);
        EXPECT_EQ(ctx->virt, nullptr);
        EXPECT_EQ(ctx->area_size * ctx->area_count, m.bytes);
        EXPECT_EQ(ctx->area_count, 3u);
        EXPECT_EQ(p.ctx.wrapper_slot[m.slot], h.priv);
        EXPECT_EQ(pushes_of(isp_sim::calls()).size(), 4u);  // defaults and three groups

        /* no buffer, nothing to free */
        ASSERT_EQ(table->deinit(&h), 0);
        EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 0u);
        EXPECT_EQ(table->destroy(&h), 0);
    }
}

/* A context can still hold a buffer when it creates the wrapper again: another instance tore
 * the wrapper down first. A failed allocation then releases the old buffer. */
TEST_F(variants, a_failed_allocation_releases_a_buffer_the_context_still_holds) {
    frame_file(0, "rtl_ae_stat_p0.json", "{\"isp_ae_stat\": {}}");
    isp_test::pipe p(1, 1, case_dir.path());
    JsonModuleHandle owner = p.handle(), sharer = p.handle();
    JsonModuleOps *table = ops_of(qv_isp_module_ae_stat_json_register);
    ASSERT_EQ(table->create(&owner), 0);
    ASSERT_EQ(table->create(&sharer), 0);
    ASSERT_EQ(table->init(&owner), 0);
    ASSERT_EQ(table->init(&sharer), 0);
    ASSERT_EQ(table->deinit(&sharer), 0);
    const JsonStatContext *ctx = static_cast<const JsonStatContext *>(owner.priv);
    ASSERT_EQ(ctx->phys, 0x10000000u);

    const size_t logs = isp_sim::log_lines().size();
    isp_sim::fail_call("qv_hal_sys_mem_alloc_cached", 1, 0x21);
    const size_t mark = isp_sim::calls().size();
    EXPECT_EQ(table->init(&owner), 0);
    std::vector<std::string> expected = {"vin_hal_wrapper_create", "vin_hal_wrapper_regio_create",
                                         "vin_hal_wrapper_setup", "qv_hal_sys_mem_alloc_cached",
                                         "QV_SYS_MemFree"};
    expected.insert(expected.end(), 3, "vin_hal_wrapper_setup");
    const std::vector<isp_sim::call> calls = since(mark);
    ASSERT_EQ(names_of(calls), expected);
    EXPECT_EQ(calls[4].phys, 0x10000000u);
    ASSERT_EQ(isp_sim::log_lines().size(), logs + 1);
    expect_log(logs, 3,
               format("[E][%32s][%4d]: qv_hal_sys_mem_alloc_cached(%d) fail, retval=0x%x",
                      "__ae_stat_json_alloc_buf", 72, 264336, 0x21));
    EXPECT_EQ(ctx->phys, 0u);
    EXPECT_EQ(ctx->virt, nullptr);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 0u);

    ASSERT_EQ(table->deinit(&owner), 0);
    EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 1u);
    EXPECT_EQ(table->destroy(&sharer), 0);
    EXPECT_EQ(table->destroy(&owner), 0);
}

TEST_F(variants, init_after_a_failed_allocation_returns_what_the_loader_returns) {
    frame_file(0, "rtl_ae_stat_p0.json", "{\"isp_ae_stat\": {}}");
    isp_test::pipe p(1, 1, case_dir.path());
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops_of(qv_isp_module_ae_stat_json_register);
    ASSERT_EQ(table->create(&h), 0);
    const size_t logs = isp_sim::log_lines().size();  // after the banner
    isp_sim::fail_call("qv_hal_sys_mem_alloc_cached", 1, -1);
    isp_sim::fail_call("vin_hal_wrapper_setup", 3);  // the second group
    EXPECT_EQ(static_cast<uint32_t>(table->init(&h)), ae_stat_hw);
    ASSERT_EQ(isp_sim::log_lines().size(), logs + 2);
    expect_log(logs, 3,
               format("[E][%32s][%4d]: qv_hal_sys_mem_alloc_cached(%d) fail, retval=0x%x",
                      "__ae_stat_json_alloc_buf", 72, 264336, 0xFFFFFFFFu));
    expect_log(logs + 1, 3,
               error_text("__ae_stat_json_param_setup", 100, ae_stat_hw,
                          "Isp ae_stat aes_adj hal setup failed."));
    ASSERT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(table->destroy(&h), 0);
}

TEST_F(variants, deinit_frees_the_buffer_it_allocated) {
    frame_file(0, "rtl_ae_stat_p0.json", "{\"isp_ae_stat\": {}}");
    isp_test::pipe p(1, 1, case_dir.path());
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops_of(qv_isp_module_ae_stat_json_register);
    ASSERT_EQ(table->create(&h), 0);
    ASSERT_EQ(table->init(&h), 0);
    const size_t mark = isp_sim::calls().size();
    ASSERT_EQ(table->deinit(&h), 0);
    const std::vector<isp_sim::call> calls = since(mark);
    ASSERT_EQ(names_of(calls),
              (std::vector<std::string>{"vin_hal_wrapper_regio_destroy", "vin_hal_wrapper_destroy",
                                        "QV_SYS_MemFree"}));
    EXPECT_EQ(calls[2].phys, 0x10000000u);
    EXPECT_EQ(static_cast<const JsonStatContext *>(h.priv)->phys, 0u);
    EXPECT_EQ(static_cast<const JsonStatContext *>(h.priv)->virt, nullptr);
    /* a second deinit finds the slot empty and frees nothing twice */
    ASSERT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 1u);
    EXPECT_EQ(table->destroy(&h), 0);
}

/* ---- channelled modules ------------------------------------------------------------------- */

struct channelled_module {
    const char *name;
    int32_t (*reg)(JsonModuleOps **);
    size_t slot;
    uint32_t arg;
};
const channelled_module channelled[] = {
    {"blc", qv_isp_module_blc_json_register, slot_blc, blc_arg},
    {"dpc", qv_isp_module_dpc_json_register, 5, dpc_arg},
    {"bl_det", qv_isp_module_bl_det_json_register, 39, bl_det_arg},
};

TEST_F(variants, with_no_channel_a_channelled_module_never_touches_the_hardware) {
    for (const channelled_module &m : channelled) {
        SCOPED_TRACE(m.name);
        isp_sim::reset();
        isp_test::pipe p(1, 1, case_dir.path(), 0);
        JsonModuleHandle h   = p.handle();
        JsonModuleOps *table = ops_of(m.reg);
        ASSERT_EQ(table->create(&h), 0);
        const size_t mark = isp_sim::calls().size();
        EXPECT_EQ(table->init(&h), 0);
        EXPECT_EQ(p.ctx.wrapper_slot[m.slot], nullptr);
        EXPECT_EQ(table->process(&h), 0);
        EXPECT_EQ(table->trigger(&h), 0);
        EXPECT_EQ(table->deinit(&h), 0);
        EXPECT_TRUE(since(mark).empty());
        EXPECT_TRUE(isp_sim::log_lines().empty());
        EXPECT_EQ(static_cast<const JsonChnContext *>(h.priv)->frame, 0);
        EXPECT_EQ(table->destroy(&h), 0);
    }
}

TEST_F(variants, more_than_six_channels_are_refused) {
    for (const channelled_module &m : channelled) {
        SCOPED_TRACE(m.name);
        isp_sim::reset();
        isp_test::pipe p(1, 1, case_dir.path(), 7);
        JsonModuleHandle h   = p.handle();
        JsonModuleOps *table = ops_of(m.reg);
        ASSERT_EQ(table->create(&h), 0);
        const std::string init    = std::string("isp_") + m.name + "_json_mod_init";
        const std::string trigger = std::string("isp_") + m.name + "_json_mod_trigger";
        const std::string deinit  = std::string("isp_") + m.name + "_json_mod_deinit";
        const std::string loader  = std::string("__") + m.name + "_json_param_setup";
        const size_t mark         = isp_sim::calls().size();

        EXPECT_EQ(static_cast<uint32_t>(table->init(&h)), m.arg);
        expect_log(0, 3, error_text(init.c_str(), 151, m.arg, "invalid params."));
        EXPECT_EQ(static_cast<uint32_t>(table->trigger(&h)), m.arg);
        expect_log(1, 3, error_text(trigger.c_str(), 244, m.arg, "invalid params."));
        EXPECT_EQ(static_cast<uint32_t>(table->process(&h)), m.arg);
        ASSERT_EQ(isp_sim::log_lines().size(), 3u);
        const std::string &loaded = isp_sim::log_lines()[2].text;
        EXPECT_EQ(loaded.substr(0, 37), format("[E][%32s]", loader.c_str()));
        EXPECT_NE(loaded.find(format("]: Error [%x]: invalid params.\n", m.arg)), std::string::npos)
            << loaded;
        EXPECT_EQ(static_cast<uint32_t>(table->deinit(&h)), m.arg);
        expect_log(3, 3, error_text(deinit.c_str(), 209, m.arg, "invalid params."));
        EXPECT_TRUE(since(mark).empty());
        EXPECT_EQ(p.ctx.wrapper_slot[m.slot], nullptr);
        EXPECT_EQ(table->destroy(&h), 0);
    }
}

TEST_F(variants, six_channels_get_one_wrapper_each) {
    for (int c = 0; c < 6; ++c) frame_file(0, format("rtl_blc_p0_chn%d.json", c), blc_file(300));
    isp_test::pipe p(1, 1, case_dir.path(), 6);
    JsonModuleHandle h   = p.handle(0x77);
    JsonModuleOps *table = ops_of(qv_isp_module_blc_json_register);
    ASSERT_EQ(table->create(&h), 0);
    ASSERT_EQ(table->init(&h), 0);
    const std::vector<isp_sim::call> regios = isp_sim::calls_of("vin_hal_wrapper_regio_create");
    ASSERT_EQ(regios.size(), 6u);
    const JsonChnContext *ctx = static_cast<const JsonChnContext *>(h.priv);
    for (int c = 0; c < 6; ++c) {
        VinHalRegioAttr regio;
        ASSERT_EQ(regios[c].record.size(), sizeof regio);
        memcpy(&regio, regios[c].record.data(), sizeof regio);
        EXPECT_EQ(regio.channel, c);
        EXPECT_STREQ(regio.name, "mod_blc");
        EXPECT_EQ(regios[c].handle, ctx->wrapper[c]);
    }
    ASSERT_EQ(table->trigger(&h), 0);
    const std::vector<isp_sim::call> triggers = isp_sim::calls_of("vin_hal_wrapper_trigger");
    ASSERT_EQ(triggers.size(), 6u);
    for (uint32_t c = 0; c < 6; ++c) {
        EXPECT_EQ(triggers[c].handle, ctx->wrapper[c]);
        EXPECT_EQ(triggers[c].mode, 1u);
        EXPECT_EQ(triggers[c].arg, 0x77u);
        EXPECT_EQ(triggers[c].channel, c);
    }
    ASSERT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(isp_sim::live_wrappers(), 0u);
    EXPECT_EQ(table->destroy(&h), 0);
}

/* Init already loads channel 1 from the next frame: the frame advances inside the channel
 * loop. */
TEST_F(variants, two_channels_walk_the_frames_inside_the_channel_loop) {
    frame_file(0, "rtl_blc_p0_chn0.json", blc_file(300));
    frame_file(0, "rtl_blc_p0_chn1.json", blc_file(301));
    frame_file(1, "rtl_blc_p0_chn0.json", blc_file(310));
    frame_file(1, "rtl_blc_p0_chn1.json", blc_file(311));
    isp_test::pipe p(1, 1, case_dir.path(), 2);
    JsonModuleHandle h   = p.handle(0x99);
    JsonModuleOps *table = ops_of(qv_isp_module_blc_json_register);
    ASSERT_EQ(table->create(&h), 0);
    const JsonChnContext *ctx = static_cast<const JsonChnContext *>(h.priv);

    ASSERT_EQ(table->init(&h), 0);
    std::vector<std::string> created = {"QV_OS_MEM_Calloc"};
    for (int c = 0; c < 2; ++c)
        created.insert(created.end(), {"vin_hal_wrapper_create", "vin_hal_wrapper_regio_create",
                                       "vin_hal_wrapper_setup"});
    created.insert(created.end(), 2 * blc_commands.size(), "vin_hal_wrapper_setup");
    EXPECT_EQ(names_of(isp_sim::calls()), created);
    const uint32_t w0 = ctx->wrapper[0], w1 = ctx->wrapper[1];
    ASSERT_NE(w0, 0u);
    ASSERT_NE(w1, 0u);
    ASSERT_NE(w0, w1);
    EXPECT_EQ(isp_sim::wrapper(w0).channel, 0);
    EXPECT_EQ(isp_sim::wrapper(w1).channel, 1);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], h.priv);
    std::vector<std::pair<uint32_t, uint32_t>> expected = to(w0, {0});
    for (auto push : to(w1, {0})) expected.push_back(push);
    for (auto push : to(w0, blc_commands)) expected.push_back(push);
    for (auto push : to(w1, blc_commands)) expected.push_back(push);
    EXPECT_EQ(pushes_of(isp_sim::calls()), expected);
    EXPECT_EQ(ctx->frame, 1);
    EXPECT_EQ(ctx->last_frame, 1u);

    size_t mark = isp_sim::calls().size();
    ASSERT_EQ(table->process(&h), 0);
    expected = to(w0, blc_commands);
    for (auto push : to(w1, blc_commands)) expected.push_back(push);
    EXPECT_EQ(pushes_of(since(mark)), expected);
    EXPECT_EQ(ctx->frame, 1);
    EXPECT_EQ(ctx->last_frame, 1u);

    /* init: channel 0 from f0, channel 1 from f1; process: both from f1 */
    const std::vector<isp_sim::call> commons = pushes_with(4);
    ASSERT_EQ(commons.size(), 4u);
    const uint16_t dgains[4] = {300, 311, 310, 311};
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(payload_of<_isp_blc_user_common_t>(commons[i]).dgain, dgains[i]) << i;

    /* trigger: one per channel, with the channel index */
    mark = isp_sim::calls().size();
    ASSERT_EQ(table->trigger(&h), 0);
    const std::vector<isp_sim::call> triggers = since(mark);
    ASSERT_EQ(triggers.size(), 2u);
    EXPECT_EQ(triggers[0].handle, w0);
    EXPECT_EQ(triggers[0].channel, 0u);
    EXPECT_EQ(triggers[1].handle, w1);
    EXPECT_EQ(triggers[1].channel, 1u);
    EXPECT_EQ(triggers[1].arg, 0x99u);

    /* a failing trigger on channel 1 comes after channel 0 was triggered */
    isp_sim::fail_call("vin_hal_wrapper_trigger", 2);
    mark = isp_sim::calls().size();
    EXPECT_EQ(static_cast<uint32_t>(table->trigger(&h)), blc_hw);
    EXPECT_EQ(since(mark).size(), 2u);
    expect_log(0, 3,
               error_text("isp_blc_json_mod_trigger", 255, blc_hw, "Isp blc hal trigger failed."));

    /* deinit: each channel's register I/O and wrapper, then the slot */
    mark = isp_sim::calls().size();
    ASSERT_EQ(table->deinit(&h), 0);
    const std::vector<isp_sim::call> down = since(mark);
    ASSERT_EQ(names_of(down), (std::vector<std::string>{
                                  "vin_hal_wrapper_regio_destroy", "vin_hal_wrapper_destroy",
                                  "vin_hal_wrapper_regio_destroy", "vin_hal_wrapper_destroy"}));
    EXPECT_EQ(down[0].handle, w0);
    EXPECT_EQ(down[1].handle, w0);
    EXPECT_EQ(down[2].handle, w1);
    EXPECT_EQ(down[3].handle, w1);
    EXPECT_EQ(ctx->wrapper[0], 0u);
    EXPECT_EQ(ctx->wrapper[1], 0u);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], nullptr);
    EXPECT_EQ(table->destroy(&h), 0);
}

TEST_F(variants, a_failing_push_on_channel_one_comes_after_channel_zero_was_pushed) {
    for (int f = 0; f < 2; ++f)
        for (int c = 0; c < 2; ++c) frame_file(f, format("rtl_blc_p0_chn%d.json", c), blc_file(0));
    isp_test::pipe p(1, 1, case_dir.path(), 2);
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops_of(qv_isp_module_blc_json_register);
    ASSERT_EQ(table->create(&h), 0);
    ASSERT_EQ(table->init(&h), 0);
    const JsonChnContext *ctx = static_cast<const JsonChnContext *>(h.priv);

    struct failure {
        unsigned group;
        const char *message;
    };
    const failure failures[] = {{0, "Isp blc lin hal setup failed."},
                                {4, "Isp blc init hal setup failed."},
                                {7, "Isp blc kernel ctrl hal setup failed."}};
    for (const failure &f : failures) {
        SCOPED_TRACE(f.message);
        const size_t mark = isp_sim::calls().size();
        const size_t logs = isp_sim::log_lines().size();
        isp_sim::fail_call("vin_hal_wrapper_setup", 8 + f.group + 1);
        EXPECT_EQ(static_cast<uint32_t>(table->process(&h)), blc_hw);
        std::vector<std::pair<uint32_t, uint32_t>> expected = to(ctx->wrapper[0], blc_commands);
        for (unsigned g = 0; g <= f.group; ++g)
            expected.emplace_back(ctx->wrapper[1], blc_commands[g]);
        EXPECT_EQ(pushes_of(since(mark)), expected);
        ASSERT_EQ(isp_sim::log_lines().size(), logs + 1);
        expect_log(logs, 3,
                   error_text("__blc_json_param_setup", 94 + 6 * static_cast<int>(f.group), blc_hw,
                              f.message));
    }
    ASSERT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(table->destroy(&h), 0);
}

TEST_F(variants, a_failing_wrapper_on_channel_one_keeps_channel_zero) {
    isp_test::pipe p(1, 1, case_dir.path(), 2);
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops_of(qv_isp_module_blc_json_register);
    ASSERT_EQ(table->create(&h), 0);
    isp_sim::fail_call("vin_hal_wrapper_create", 2);
    EXPECT_EQ(static_cast<uint32_t>(table->init(&h)), blc_hw);
    expect_log(
        0, 3,
        error_text("isp_blc_json_mod_init", 163, blc_hw, "Isp blc hal wrapper create failed."));
    EXPECT_EQ(isp_sim::live_wrappers(), 1u);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], nullptr);
    EXPECT_EQ(pushes_of(isp_sim::calls()).size(), 1u);  // channel 0's defaults only
    EXPECT_EQ(table->destroy(&h), 0);
}

/* blc takes lin's context as its array of wrappers: lin's handle for channel 0 and lin's frame
 * index in the place of channel 1's handle. */
TEST_F(variants, lin_before_blc_lends_its_handle_and_its_frame_index) {
    for (int f = 0; f < 2; ++f) {
        frame_file(f, "rtl_blc_p0.json", blc_file(0));
        for (int c = 0; c < 2; ++c) frame_file(f, format("rtl_blc_p0_chn%d.json", c), blc_file(0));
    }
    isp_test::pipe p(1, 1, case_dir.path(), 2);
    JsonModuleHandle lin = p.handle(), blc = p.handle();
    JsonModuleOps *lin_ops = ops_of(qv_isp_module_lin_json_register);
    JsonModuleOps *blc_ops = ops_of(qv_isp_module_blc_json_register);
    ASSERT_EQ(lin_ops->create(&lin), 0);
    ASSERT_EQ(blc_ops->create(&blc), 0);
    ASSERT_EQ(lin_ops->init(&lin), 0);
    const JsonModuleContext *owner = static_cast<const JsonModuleContext *>(lin.priv);
    ASSERT_EQ(owner->frame, 1);
    ASSERT_EQ(owner->last_frame, 0u);

    const size_t mark = isp_sim::calls().size();
    /* channel 1's "handle" is 1, which the wrapper does not know */
    EXPECT_EQ(static_cast<uint32_t>(blc_ops->init(&blc)), blc_hw);
    expected_problems         = {"vin_hal_wrapper_setup: unknown handle 0x1"};
    const JsonChnContext *ctx = static_cast<const JsonChnContext *>(blc.priv);
    EXPECT_EQ(ctx->wrapper[0], owner->wrapper);
    EXPECT_EQ(ctx->wrapper[1], 1u);
    for (int c = 2; c < 6; ++c) EXPECT_EQ(ctx->wrapper[c], 0u) << c;
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_create").size(), 1u);
    std::vector<std::pair<uint32_t, uint32_t>> expected = to(owner->wrapper, blc_commands);
    expected.emplace_back(1, 3);
    EXPECT_EQ(pushes_of(since(mark)), expected);
    expect_log(0, 3,
               error_text("__blc_json_param_setup", 94, blc_hw, "Isp blc lin hal setup failed."));
    EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], lin.priv);

    ASSERT_EQ(lin_ops->deinit(&lin), 0);
    ASSERT_EQ(blc_ops->deinit(&blc), 0);
    EXPECT_EQ(isp_sim::live_wrappers(), 0u);
    EXPECT_EQ(lin_ops->destroy(&lin), 0);
    EXPECT_EQ(blc_ops->destroy(&blc), 0);
}

/* lin's context holds three words: a channel beyond them gets no handle at all. */
TEST_F(variants, blc_copies_no_more_than_the_words_of_lins_context) {
    for (int f = 0; f < 2; ++f) {
        frame_file(f, "rtl_blc_p0.json", blc_file(0));
        for (int c = 0; c < 4; ++c) frame_file(f, format("rtl_blc_p0_chn%d.json", c), blc_file(0));
    }
    isp_test::pipe p(1, 1, case_dir.path(), 4);
    JsonModuleHandle lin = p.handle(), blc = p.handle();
    JsonModuleOps *lin_ops = ops_of(qv_isp_module_lin_json_register);
    JsonModuleOps *blc_ops = ops_of(qv_isp_module_blc_json_register);
    ASSERT_EQ(lin_ops->create(&lin), 0);
    ASSERT_EQ(blc_ops->create(&blc), 0);
    JsonModuleContext *owner = static_cast<JsonModuleContext *>(lin.priv);
    ASSERT_EQ(lin_ops->init(&lin), 0);
    owner->last_frame = 7;  // tells the third word apart from a zero

    EXPECT_EQ(static_cast<uint32_t>(blc_ops->init(&blc)), blc_hw);
    expected_problems         = {"vin_hal_wrapper_setup: unknown handle 0x1"};
    const JsonChnContext *ctx = static_cast<const JsonChnContext *>(blc.priv);
    EXPECT_EQ(ctx->wrapper[0], owner->wrapper);
    EXPECT_EQ(ctx->wrapper[1], 1u);
    EXPECT_EQ(ctx->wrapper[2], 7u);
    EXPECT_EQ(ctx->wrapper[3], 0u);

    ASSERT_EQ(lin_ops->deinit(&lin), 0);
    EXPECT_EQ(lin_ops->destroy(&lin), 0);
    EXPECT_EQ(blc_ops->destroy(&blc), 0);
}

TEST_F(variants, lin_after_blc_takes_the_first_channel_wrapper) {
    frame_file(0, "rtl_blc_p0.json", blc_file(0));
    for (int c = 0; c < 2; ++c) frame_file(0, format("rtl_blc_p0_chn%d.json", c), blc_file(0));
    isp_test::pipe p(1, 1, case_dir.path(), 2);
    JsonModuleHandle lin = p.handle(), blc = p.handle();
    JsonModuleOps *lin_ops = ops_of(qv_isp_module_lin_json_register);
    JsonModuleOps *blc_ops = ops_of(qv_isp_module_blc_json_register);
    ASSERT_EQ(lin_ops->create(&lin), 0);
    ASSERT_EQ(blc_ops->create(&blc), 0);
    ASSERT_EQ(blc_ops->init(&blc), 0);
    const uint32_t w0 = static_cast<const JsonChnContext *>(blc.priv)->wrapper[0];
    const size_t mark = isp_sim::calls().size();
    ASSERT_EQ(lin_ops->init(&lin), 0);
    EXPECT_EQ(static_cast<const JsonModuleContext *>(lin.priv)->wrapper, w0);
    EXPECT_EQ(pushes_of(since(mark)), to(w0, {3}));

    /* lin, deinitialised first, destroys only the wrapper it knows */
    ASSERT_EQ(lin_ops->deinit(&lin), 0);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], nullptr);
    EXPECT_EQ(isp_sim::live_wrappers(), 1u);
    ASSERT_EQ(blc_ops->deinit(&blc), 0);
    EXPECT_EQ(lin_ops->destroy(&lin), 0);
    EXPECT_EQ(blc_ops->destroy(&blc), 0);
}

TEST_F(variants, dpc_refuses_an_empty_grid_and_blc_loads_it) {
    isp_test::pipe p(0, 1, case_dir.path(), 2);
    JsonModuleHandle dpc = p.handle(), blc = p.handle();
    JsonModuleOps *dpc_ops = ops_of(qv_isp_module_dpc_json_register);
    JsonModuleOps *blc_ops = ops_of(qv_isp_module_blc_json_register);
    ASSERT_EQ(dpc_ops->create(&dpc), 0);
    ASSERT_EQ(blc_ops->create(&blc), 0);
    EXPECT_EQ(static_cast<uint32_t>(dpc_ops->process(&dpc)), 0x80010380u);
    expect_log(0, 3, error_text("__dpc_json_param_setup", 58, 0x80010380, "partition err!!!."));
    ASSERT_EQ(blc_ops->init(&blc), 0);
    const JsonChnContext *ctx = static_cast<const JsonChnContext *>(blc.priv);
    std::vector<std::pair<uint32_t, uint32_t>> expected = to(ctx->wrapper[0], {0});
    for (auto push : to(ctx->wrapper[1], {0})) expected.push_back(push);
    for (auto push : to(ctx->wrapper[0], blc_commands)) expected.push_back(push);
    for (auto push : to(ctx->wrapper[1], blc_commands)) expected.push_back(push);
    EXPECT_EQ(pushes_of(isp_sim::calls()), expected);
    ASSERT_EQ(blc_ops->deinit(&blc), 0);
    EXPECT_EQ(blc_ops->destroy(&blc), 0);
    EXPECT_EQ(dpc_ops->destroy(&dpc), 0);
}

/* ---- the pattern-file module -------------------------------------------------------------- */

TEST_F(variants, ainr_reads_its_pattern_files_from_the_case_directory_on_every_load) {
    for (int n = 0; n < 4; ++n)
        case_dir.write(format("isp_nrlite_ptn_%d.json", n), "{\"isp_nrlite\": {}}");
    /* frame directories are there but never looked at */
    case_dir.mkdir("cfgs/f0");
    case_dir.mkdir("cfgs/f1");
    isp_test::pipe p(2, 2, case_dir.path());
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops_of(qv_isp_module_ainr_json_register);
    ASSERT_EQ(table->create(&h), 0);
    ASSERT_EQ(table->init(&h), 0);
    const uint32_t wrapper = static_cast<const JsonModuleContext *>(h.priv)->wrapper;
    for (int call = 0; call < 2; ++call) ASSERT_EQ(table->process(&h), 0);
    EXPECT_EQ(pushes_of(isp_sim::calls()), to(wrapper, {0, 5, 5, 5}));
    const JsonModuleContext *ctx = static_cast<const JsonModuleContext *>(h.priv);
    EXPECT_EQ(ctx->frame, 0);
    EXPECT_EQ(ctx->last_frame, 0u);

    /* the fourth partition's file is read: a root that is not an object stops the load */
    case_dir.write("isp_nrlite_ptn_3.json", "[]");
    const size_t mark = isp_sim::calls().size();
    try {
        table->process(&h);
        ADD_FAILURE() << "pattern file 3 was not read";
    } catch (const std::runtime_error &e) {
        EXPECT_NE(std::string(e.what()).find("is<object>()"), std::string::npos) << e.what();
    }
    EXPECT_TRUE(since(mark).empty());

    /* a 2 x 1 grid stops before it */
    p.ctx.attr = IspPipeAttr{2, 1};
    EXPECT_EQ(table->process(&h), 0);
    ASSERT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(table->destroy(&h), 0);
}

TEST_F(variants, ainr_pushes_its_zeroed_group_for_a_grid_without_rows) {
    isp_test::pipe p(2, 0, case_dir.path());  // no file in the case directory at all
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops_of(qv_isp_module_ainr_json_register);
    ASSERT_EQ(table->create(&h), 0);
    ASSERT_EQ(table->init(&h), 0);
    ASSERT_EQ(table->process(&h), 0);
    const std::vector<isp_sim::call> posts = pushes_with(5);
    ASSERT_EQ(posts.size(), 2u);
    for (const isp_sim::call &c : posts) {
        EXPECT_TRUE(c.has_data);
        EXPECT_EQ(c.payload, std::vector<uint8_t>(sizeof(_isp_nrlite_user_post_t), 0));
    }
    EXPECT_TRUE(isp_sim::log_lines().empty());
    ASSERT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(table->destroy(&h), 0);
}

}  // namespace
