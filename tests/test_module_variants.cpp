/* What the lifecycle walk of the catalogue cannot show: modules sharing one hardware block, the
 * statistics buffers and their addresses, the channelled modules over several channels and
 * frames, and the pattern-file module reading the case directory itself. */
#include <stdint.h>

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "isp_platform.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::calls_since;
using isp_test::error_line;
using isp_test::expect_log;
using isp_test::format;
using isp_test::module_instance;
using isp_test::names_of;

/* Slots of the shared blocks and the codes the tests below meet. */
const size_t slot_blc = 0, slot_dem = 14, slot_lce = 20, slot_ae_stat = 25, slot_awb_stat = 27;
const uint32_t blc_hw = 0x80010580, ae_stat_hw = 0x80010980;
const std::vector<uint32_t> blc_commands = {3, 4, 5, 6, 7, 8, 9, 10};

typedef std::vector<std::pair<uint32_t, uint32_t>> push_list;

/* The setup calls among calls, in order, each as the wrapper it went to and its command. */
push_list pushes_of(const std::vector<isp_sim::call> &calls) {
    push_list pushes;
    for (const isp_sim::call &c : calls)
        if (c.function == "vin_hal_wrapper_setup") pushes.emplace_back(c.handle, c.cmd);
    return pushes;
}

/* Appends the commands, each to wrapper. */
push_list &to(push_list &pushes, uint32_t wrapper, const std::vector<uint32_t> &commands) {
    for (uint32_t cmd : commands) pushes.emplace_back(wrapper, cmd);
    return pushes;
}
push_list to(uint32_t wrapper, const std::vector<uint32_t> &commands) {
    push_list pushes;
    return to(pushes, wrapper, commands);
}

std::string alloc_failed(const char *routine, uint32_t bytes, uint32_t result) {
    return format("[E][%32s][%4d]: qv_hal_sys_mem_alloc_cached(%d) fail, retval=0x%x", routine, 72,
                  static_cast<int>(bytes), result);
}

class variants : public isp_test::platform_test {
  protected:
    /* the register files below carry few fields: the converters report the others */
    void SetUp() override {
        platform_test::SetUp();
        quiet_stderr();
    }
    /* A black level register file whose digital gain tells frame and channel apart. */
    static std::string blc_file(int dgain) {
        return format("{\"isp_blc\": {\"dgain\": {\"val\": %d}}}", dgain);
    }
    /* Register files of frames f0..frames-1, one per partition (and channel, "%d" twice). */
    void write_frames(const char *pattern, int frames, int count, const std::string &text) {
        for (int f = 0; f < frames; ++f)
            for (int n = 0; n < count; ++n) frame_file(f, format(pattern, n, n), text);
    }
};

/* ---- modules sharing one hardware block --------------------------------------------------- */

TEST_F(variants, demosaic_then_gic_share_the_wrapper_that_demosaic_created) {
    frame_file(0, "rtl_dem_p0.json", "{\"isp_dem\": {}}");
    isp_test::pipe p(1, 1, case_dir.path());
    module_instance dem(qv_isp_module_demosaic_json_register, p),
        gic(qv_isp_module_gic_json_register, p);
    ASSERT_EQ(dem.create(), 0);
    ASSERT_EQ(gic.create(), 0);
    ASSERT_EQ(dem.init(), 0);
    const uint32_t wrapper = dem.wrapper();
    size_t mark            = isp_sim::calls().size();
    ASSERT_EQ(gic.init(), 0);

    /* gic creates nothing: it copies the handle and pushes its own group to it */
    EXPECT_EQ(pushes_of(calls_since(mark)), to(wrapper, {5}));
    EXPECT_EQ(names_of(calls_since(mark)), std::vector<std::string>{"vin_hal_wrapper_setup"});
    EXPECT_EQ(gic.wrapper(), wrapper);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_dem], dem.h.priv);
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_regio_create").size(), 1u);
    EXPECT_EQ(isp_test::pushes_with(0).size(), 1u);

    /* gic, deinitialised first, tears the shared wrapper down through its copy */
    mark = isp_sim::calls().size();
    ASSERT_EQ(gic.deinit(), 0);
    const std::vector<isp_sim::call> down = calls_since(mark);
    EXPECT_EQ(names_of(down), (std::vector<std::string>{"vin_hal_wrapper_regio_destroy",
                                                        "vin_hal_wrapper_destroy"}));
    EXPECT_EQ(down[0].handle, wrapper);
    EXPECT_EQ(down[1].handle, wrapper);
    EXPECT_EQ(gic.wrapper(), 0u);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_dem], nullptr);

    /* demosaic then finds the slot empty: nothing to do, its stale copy stays */
    mark = isp_sim::calls().size();
    ASSERT_EQ(dem.deinit(), 0);
    EXPECT_TRUE(calls_since(mark).empty());
    EXPECT_EQ(dem.wrapper(), wrapper);

    /* initialised anew, demosaic creates a wrapper of its own again */
    ASSERT_EQ(dem.init(), 0);
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_create").size(), 2u);
    EXPECT_NE(dem.wrapper(), wrapper);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_dem], dem.h.priv);
    ASSERT_EQ(dem.deinit(), 0);
    EXPECT_EQ(gic.destroy(), 0);
    EXPECT_EQ(dem.destroy(), 0);
    EXPECT_TRUE(isp_sim::live_allocations().empty());
    EXPECT_TRUE(isp_sim::log_lines().empty());
}

TEST_F(variants, the_five_lce_modules_push_their_commands_to_one_wrapper) {
    frame_file(0, "rtl_lce_p0.json", "{\"isp_lce\": {}}");
    isp_test::pipe p(1, 1, case_dir.path());
    std::vector<module_instance> lce = {module_instance(qv_isp_module_hs2dlut_json_register, p),
                                        module_instance(qv_isp_module_ccmp_json_register, p),
                                        module_instance(qv_isp_module_ycproc_json_register, p),
                                        module_instance(qv_isp_module_sharpen_json_register, p),
                                        module_instance(qv_isp_module_scm_json_register, p)};
    for (module_instance &m : lce) {
        ASSERT_EQ(m.create(), 0);
        ASSERT_EQ(m.init(), 0);
    }
    ASSERT_EQ(isp_sim::calls_of("vin_hal_wrapper_create").size(), 1u);
    const uint32_t wrapper = lce[0].wrapper();
    for (const module_instance &m : lce) EXPECT_EQ(m.wrapper(), wrapper);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_lce], lce[0].h.priv);
    EXPECT_EQ(pushes_of(isp_sim::calls()), to(wrapper, {0, 8, 9, 6, 7, 1, 2, 4, 5, 3, 11, 10}));

    /* the last one deinitialised finds nothing left to destroy */
    for (size_t i = lce.size(); i-- > 0;) EXPECT_EQ(lce[i].deinit(), 0);
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_destroy").size(), 1u);
    for (module_instance &m : lce) EXPECT_EQ(m.destroy(), 0);
}

TEST_F(variants, sharpen_and_scm_mirror_different_bypass_bits_into_one_enable_bit) {
    isp_test::pipe p(1, 1, case_dir.path());
    module_instance sharpen(qv_isp_module_sharpen_json_register, p),
        scm(qv_isp_module_scm_json_register, p);
    ASSERT_EQ(sharpen.create(), 0);
    ASSERT_EQ(scm.create(), 0);
    const uint32_t others  = 0xA5A5A5A5 & ~(1u << 18);
    p.shadow.module_enable = others;
    p.ctx.bypass[2]        = 0x08;  // bit 19 (scm) set, bit 18 (sharpen) clear
    ASSERT_EQ(scm.sync(), 0);
    EXPECT_EQ(p.shadow.module_enable, others);
    ASSERT_EQ(sharpen.sync(), 0);
    EXPECT_EQ(p.shadow.module_enable, others | 1u << 18);  // whoever syncs last decides
    ASSERT_EQ(scm.sync(), 0);
    EXPECT_EQ(p.shadow.module_enable, others);
    EXPECT_EQ(sharpen.destroy(), 0);
    EXPECT_EQ(scm.destroy(), 0);
}

/* ---- statistics buffers ------------------------------------------------------------------- */

TEST_F(variants, statistics_modules_write_each_partitions_addresses_on_every_load) {
    write_frames("rtl_ae_stat_p%d.json", 1, 3, "{\"isp_ae_stat\": {}}");
    write_frames("rtl_awb_stat_p%d.json", 1, 3, "{\"isp_awb_stat\": {}}");
    isp_test::pipe p(3, 1, case_dir.path());
    module_instance ae(qv_isp_module_ae_stat_json_register, p),
        awb(qv_isp_module_awb_stat_json_register, p);
    ASSERT_EQ(ae.create(), 0);
    ASSERT_EQ(ae.init(), 0);
    ASSERT_EQ(ae.context<JsonStatContext>()->phys, 0x10000000u);
    ASSERT_EQ(ae.process(), 0);
    /* three sub-areas per partition */
    const std::vector<isp_sim::call> ae_inits = isp_test::pushes_with(1);
    ASSERT_EQ(ae_inits.size(), 2u);
    for (const isp_sim::call &c : ae_inits) {
        _isp_ae_stat_user_init_t init;
        isp_test::copy_bytes(c.payload, init);
        const uint32_t first[4]  = {0x02000000, 0x02002B06, 0x0200560C, 0};
        const uint32_t second[4] = {0x02001443, 0x02003F49, 0x02006A4F, 0};
        const uint32_t third[4]  = {0x02002886, 0x0200538C, 0x02007E92, 0};
        for (int part = 0; part < 4; ++part) {
            EXPECT_EQ(init.wr_addr0[part], first[part]) << "partition " << part;
            EXPECT_EQ(init.wr_addr1[part], second[part]) << "partition " << part;
            EXPECT_EQ(init.wr_addr2[part], third[part]) << "partition " << part;
        }
    }
    ASSERT_EQ(ae.deinit(), 0);
    EXPECT_EQ(ae.destroy(), 0);

    /* one per partition; on pipe 1 the buffer is named after the pipe */
    isp_sim::reset();
    p.ctx.pipe_id = 1;
    ASSERT_EQ(awb.create(), 0);
    ASSERT_EQ(awb.init(), 0);
    const std::vector<isp_sim::call> allocs = isp_sim::calls_of("qv_hal_sys_mem_alloc_cached");
    ASSERT_EQ(allocs.size(), 1u);
    EXPECT_EQ(allocs[0].pipe_id, 1);
    EXPECT_EQ(allocs[0].name, "vin_awb_stat1x3");
    EXPECT_EQ(allocs[0].size, 456720u);
    EXPECT_EQ(allocs[0].align, 128u);
    EXPECT_EQ(awb.context<JsonStatContext>()->area_size, 152240u);
    EXPECT_EQ(awb.context<JsonStatContext>()->phys, 0x10000000u);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_awb_stat], awb.h.priv);
    _isp_awb_stat_user_init_t init;
    isp_test::copy_bytes(isp_test::pushes_with(1).at(0).payload, init);
    EXPECT_EQ(init.wr_addr[0], 0x02000000u);
    EXPECT_EQ(init.wr_addr[1], 0x02004A56u);
    EXPECT_EQ(init.wr_addr[2], 0x020094ACu);
    EXPECT_EQ(init.wr_addr[3], 0u);
    ASSERT_EQ(awb.deinit(), 0);
    EXPECT_EQ(awb.destroy(), 0);
}

TEST_F(variants, a_statistics_module_reusing_the_wrapper_allocates_nothing) {
    write_frames("rtl_ae_stat_p%d.json", 1, 3, "{\"isp_ae_stat\": {}}");
    isp_test::pipe p(3, 1, case_dir.path());
    module_instance first(qv_isp_module_ae_stat_json_register, p);
    module_instance second(qv_isp_module_ae_stat_json_register, p);
    ASSERT_EQ(first.create(), 0);
    ASSERT_EQ(second.create(), 0);
    ASSERT_EQ(first.init(), 0);
    const size_t mark = isp_sim::calls().size();
    ASSERT_EQ(second.init(), 0);

    /* no buffer: the addresses count from physical address 0 */
    EXPECT_EQ(isp_sim::calls_of("qv_hal_sys_mem_alloc_cached").size(), 1u);
    EXPECT_EQ(second.context<JsonStatContext>()->phys, 0u);
    const std::vector<isp_sim::call> calls = calls_since(mark);
    ASSERT_EQ(pushes_of(calls).size(), 3u);
    _isp_ae_stat_user_init_t init;
    isp_test::copy_bytes(calls[0].payload, init);
    EXPECT_EQ(init.wr_addr0[2], 0x560Cu);
    EXPECT_EQ(init.wr_addr1[2], 0x6A4Fu);
    EXPECT_EQ(init.wr_addr2[2], 0x7E92u);

    /* the sharer deinitialised first tears the wrapper down and frees no buffer, having none;
     * the owner then finds the slot empty and keeps its buffer */
    ASSERT_EQ(second.deinit(), 0);
    ASSERT_EQ(first.deinit(), 0);
    EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 0u);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 1u);
    EXPECT_EQ(isp_sim::live_wrappers(), 0u);
    EXPECT_EQ(second.destroy(), 0);
    EXPECT_EQ(first.destroy(), 0);
}

TEST_F(variants, a_failed_statistics_allocation_is_only_logged) {
    const struct {
        isp_test::register_fn reg;
        const char *file, *content, *routine;
        uint32_t bytes;
        size_t slot;
    } modules[] = {
        {qv_isp_module_ae_stat_json_register, "rtl_ae_stat_p0.json", "{\"isp_ae_stat\": {}}",
         "__ae_stat_json_alloc_buf", 264336, slot_ae_stat},
        {qv_isp_module_awb_stat_json_register, "rtl_awb_stat_p0.json", "{\"isp_awb_stat\": {}}",
         "__awb_stat_json_alloc_buf", 456720, slot_awb_stat},
    };
    for (const auto &m : modules) {
        SCOPED_TRACE(m.routine);
        isp_sim::reset();
        frame_file(0, m.file, m.content);
        isp_test::pipe p(1, 1, case_dir.path());
        module_instance stat(m.reg, p);
        ASSERT_EQ(stat.create(), 0);
        const size_t logs = isp_sim::log_lines().size();  // after ae_stat's banner
        isp_sim::fail_call("qv_hal_sys_mem_alloc_cached", 1, 0x5A);
        EXPECT_EQ(stat.init(), 0);  // the loader's result
        expect_log(logs, alloc_failed(m.routine, m.bytes, 0x5A));
        const JsonStatContext *ctx = stat.context<JsonStatContext>();
        EXPECT_EQ(ctx->phys, 0u);
        EXPECT_EQ(ctx->virt, nullptr);
        EXPECT_EQ(ctx->area_size * ctx->area_count, m.bytes);
        EXPECT_EQ(ctx->area_count, 3u);
        EXPECT_EQ(p.ctx.wrapper_slot[m.slot], stat.h.priv);
        EXPECT_EQ(isp_test::pushes().size(), 4u);  // defaults and three groups
        /* no buffer, nothing to free */
        ASSERT_EQ(stat.deinit(), 0);
        EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 0u);
        EXPECT_EQ(stat.destroy(), 0);
    }

    /* after a failed allocation, init returns what the loader returns */
    isp_sim::reset();
    frame_file(0, "rtl_ae_stat_p0.json", "{\"isp_ae_stat\": {}}");
    isp_test::pipe p(1, 1, case_dir.path());
    module_instance ae(qv_isp_module_ae_stat_json_register, p);
    ASSERT_EQ(ae.create(), 0);
    isp_sim::fail_call("qv_hal_sys_mem_alloc_cached", 1, -1);
    isp_sim::fail_call("vin_hal_wrapper_setup", 3);  // the second group
    EXPECT_EQ(static_cast<uint32_t>(ae.init()), ae_stat_hw);
    ASSERT_EQ(isp_sim::log_lines().size(), 3u);  // the banner first
    EXPECT_EQ(isp_sim::log_lines()[1].text,
              alloc_failed("__ae_stat_json_alloc_buf", 264336, 0xFFFFFFFFu));
    expect_log(2, error_line("__ae_stat_json_param_setup", 100, ae_stat_hw,
                             "Isp ae_stat aes_adj hal setup failed."));
    ASSERT_EQ(ae.deinit(), 0);
    EXPECT_EQ(ae.destroy(), 0);
}

/* A context can still hold a buffer when it creates the wrapper again: another instance tore
 * the wrapper down first. A failed allocation then releases the old buffer. */
TEST_F(variants, a_failed_allocation_releases_a_buffer_the_context_still_holds) {
    frame_file(0, "rtl_ae_stat_p0.json", "{\"isp_ae_stat\": {}}");
    isp_test::pipe p(1, 1, case_dir.path());
    module_instance owner(qv_isp_module_ae_stat_json_register, p);
    module_instance sharer(qv_isp_module_ae_stat_json_register, p);
    ASSERT_EQ(owner.create(), 0);
    ASSERT_EQ(sharer.create(), 0);
    ASSERT_EQ(owner.init(), 0);
    ASSERT_EQ(sharer.init(), 0);
    ASSERT_EQ(sharer.deinit(), 0);
    const JsonStatContext *ctx = owner.context<JsonStatContext>();
    ASSERT_EQ(ctx->phys, 0x10000000u);

    const size_t logs = isp_sim::log_lines().size();
    isp_sim::fail_call("qv_hal_sys_mem_alloc_cached", 1, 0x21);
    const size_t mark = isp_sim::calls().size();
    EXPECT_EQ(owner.init(), 0);
    std::vector<std::string> expected = {"vin_hal_wrapper_create", "vin_hal_wrapper_regio_create",
                                         "vin_hal_wrapper_setup", "qv_hal_sys_mem_alloc_cached",
                                         "QV_SYS_MemFree"};
    expected.insert(expected.end(), 3, "vin_hal_wrapper_setup");
    const std::vector<isp_sim::call> calls = calls_since(mark);
    ASSERT_EQ(names_of(calls), expected);
    EXPECT_EQ(calls[4].phys, 0x10000000u);
    expect_log(logs, alloc_failed("__ae_stat_json_alloc_buf", 264336, 0x21));
    EXPECT_EQ(ctx->phys, 0u);
    EXPECT_EQ(ctx->virt, nullptr);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 0u);
    ASSERT_EQ(owner.deinit(), 0);
    EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 1u);
    EXPECT_EQ(sharer.destroy(), 0);
    EXPECT_EQ(owner.destroy(), 0);
}

/* ---- channelled modules ------------------------------------------------------------------- */

TEST_F(variants, with_no_channel_a_channelled_module_never_touches_the_hardware) {
    const std::pair<isp_test::register_fn, size_t> channelled[] = {
        {qv_isp_module_blc_json_register, slot_blc},
        {qv_isp_module_dpc_json_register, 5},
        {qv_isp_module_bl_det_json_register, 39},
    };
    for (const auto &c : channelled) {
        SCOPED_TRACE(c.second);
        isp_sim::reset();
        isp_test::pipe p(1, 1, case_dir.path(), 0);
        module_instance m(c.first, p);
        ASSERT_EQ(m.create(), 0);
        const size_t mark = isp_sim::calls().size();
        EXPECT_EQ(m.init(), 0);
        EXPECT_EQ(p.ctx.wrapper_slot[c.second], nullptr);
        EXPECT_EQ(m.process(), 0);
        EXPECT_EQ(m.trigger(), 0);
        EXPECT_EQ(m.deinit(), 0);
        EXPECT_TRUE(calls_since(mark).empty());
        EXPECT_TRUE(isp_sim::log_lines().empty());
        EXPECT_EQ(m.context<JsonChnContext>()->frame, 0);
        EXPECT_EQ(m.destroy(), 0);
    }
}

/* Init already loads channel 1 from the next frame: the frame advances inside the channel
 * loop. */
TEST_F(variants, two_channels_walk_the_frames_inside_the_channel_loop) {
    frame_file(0, "rtl_blc_p0_chn0.json", blc_file(300));
    frame_file(0, "rtl_blc_p0_chn1.json", blc_file(301));
    frame_file(1, "rtl_blc_p0_chn0.json", blc_file(310));
    frame_file(1, "rtl_blc_p0_chn1.json", blc_file(311));
    isp_test::pipe p(1, 1, case_dir.path(), 2);
    module_instance blc(qv_isp_module_blc_json_register, p, 0x99);
    ASSERT_EQ(blc.create(), 0);
    const JsonChnContext *ctx = blc.context<JsonChnContext>();

    ASSERT_EQ(blc.init(), 0);
    std::vector<std::string> created = {"QV_OS_MEM_Calloc"};
    for (int c = 0; c < 2; ++c)
        created.insert(created.end(), {"vin_hal_wrapper_create", "vin_hal_wrapper_regio_create",
                                       "vin_hal_wrapper_setup"});
    created.insert(created.end(), 2 * blc_commands.size(), "vin_hal_wrapper_setup");
    EXPECT_EQ(names_of(isp_sim::calls()), created);
    const uint32_t w0 = ctx->wrapper[0], w1 = ctx->wrapper[1];
    ASSERT_TRUE(w0 != 0 && w1 != 0 && w0 != w1);
    EXPECT_EQ(isp_sim::wrapper(w0).channel, 0);
    EXPECT_EQ(isp_sim::wrapper(w1).channel, 1);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], blc.h.priv);
    push_list expected = to(w0, {0});
    EXPECT_EQ(pushes_of(isp_sim::calls()),
              to(to(to(expected, w1, {0}), w0, blc_commands), w1, blc_commands));
    EXPECT_EQ(ctx->frame, 1);
    EXPECT_EQ(ctx->last_frame, 1u);

    size_t mark = isp_sim::calls().size();
    ASSERT_EQ(blc.process(), 0);
    expected = to(w0, blc_commands);
    EXPECT_EQ(pushes_of(calls_since(mark)), to(expected, w1, blc_commands));
    EXPECT_EQ(ctx->frame, 1);
    EXPECT_EQ(ctx->last_frame, 1u);

    /* init: channel 0 from f0, channel 1 from f1; process: both from f1 */
    const std::vector<isp_sim::call> commons = isp_test::pushes_with(4);
    ASSERT_EQ(commons.size(), 4u);
    const uint16_t dgains[4] = {300, 311, 310, 311};
    for (size_t i = 0; i < 4; ++i) {
        _isp_blc_user_common_t common;
        isp_test::copy_bytes(commons[i].payload, common);
        EXPECT_EQ(common.dgain, dgains[i]) << i;
    }

    /* trigger: one per channel, with the channel index */
    mark = isp_sim::calls().size();
    ASSERT_EQ(blc.trigger(), 0);
    const std::vector<isp_sim::call> triggers = calls_since(mark);
    ASSERT_EQ(triggers.size(), 2u);
    EXPECT_EQ(triggers[0].handle, w0);
    EXPECT_EQ(triggers[0].channel, 0u);
    EXPECT_EQ(triggers[1].handle, w1);
    EXPECT_EQ(triggers[1].channel, 1u);
    EXPECT_EQ(triggers[1].arg, 0x99u);

    /* a failing trigger on channel 1 comes after channel 0 was triggered */
    isp_sim::fail_call("vin_hal_wrapper_trigger", 2);
    mark = isp_sim::calls().size();
    EXPECT_EQ(static_cast<uint32_t>(blc.trigger()), blc_hw);
    EXPECT_EQ(calls_since(mark).size(), 2u);
    expect_log(0,
               error_line("isp_blc_json_mod_trigger", 255, blc_hw, "Isp blc hal trigger failed."));

    /* deinit: each channel's register I/O and wrapper, then the slot */
    mark = isp_sim::calls().size();
    ASSERT_EQ(blc.deinit(), 0);
    const std::vector<isp_sim::call> down = calls_since(mark);
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
    EXPECT_EQ(blc.destroy(), 0);
}

TEST_F(variants, a_failing_push_on_channel_one_comes_after_channel_zero_was_pushed) {
    write_frames("rtl_blc_p0_chn%d.json", 2, 2, blc_file(0));
    isp_test::pipe p(1, 1, case_dir.path(), 2);
    module_instance blc(qv_isp_module_blc_json_register, p);
    ASSERT_EQ(blc.create(), 0);
    ASSERT_EQ(blc.init(), 0);
    const JsonChnContext *ctx                          = blc.context<JsonChnContext>();
    const std::pair<unsigned, const char *> failures[] = {
        {0, "Isp blc lin hal setup failed."},
        {4, "Isp blc init hal setup failed."},
        {7, "Isp blc kernel ctrl hal setup failed."}};
    for (const auto &f : failures) {
        SCOPED_TRACE(f.second);
        const size_t mark = isp_sim::calls().size();
        const size_t logs = isp_sim::log_lines().size();
        isp_sim::fail_call("vin_hal_wrapper_setup", 8 + f.first + 1);
        EXPECT_EQ(static_cast<uint32_t>(blc.process()), blc_hw);
        push_list expected = to(ctx->wrapper[0], blc_commands);
        to(expected, ctx->wrapper[1],
           std::vector<uint32_t>(blc_commands.begin(), blc_commands.begin() + f.first + 1));
        EXPECT_EQ(pushes_of(calls_since(mark)), expected);
        expect_log(logs, error_line("__blc_json_param_setup", 94 + 6 * static_cast<int>(f.first),
                                    blc_hw, f.second));
    }
    ASSERT_EQ(blc.deinit(), 0);
    EXPECT_EQ(blc.destroy(), 0);
}

TEST_F(variants, a_failing_wrapper_on_channel_one_keeps_channel_zero) {
    isp_test::pipe p(1, 1, case_dir.path(), 2);
    module_instance blc(qv_isp_module_blc_json_register, p);
    ASSERT_EQ(blc.create(), 0);
    isp_sim::fail_call("vin_hal_wrapper_create", 2);
    EXPECT_EQ(static_cast<uint32_t>(blc.init()), blc_hw);
    expect_log(
        0, error_line("isp_blc_json_mod_init", 163, blc_hw, "Isp blc hal wrapper create failed."));
    EXPECT_EQ(isp_sim::live_wrappers(), 1u);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], nullptr);
    EXPECT_EQ(isp_test::pushes().size(), 1u);  // channel 0's defaults only
    EXPECT_EQ(blc.destroy(), 0);
}

/* blc takes lin's context as its array of wrappers: lin's handle for channel 0 and lin's frame
 * index in the place of channel 1's handle; lin's context holds three words, so a channel beyond
 * them gets no handle at all. */
TEST_F(variants, lin_before_blc_lends_its_context_words_and_no_more) {
    write_frames("rtl_blc_p0.json", 2, 1, blc_file(0));
    write_frames("rtl_blc_p0_chn%d.json", 2, 4, blc_file(0));
    for (const int channels : {2, 4}) {
        SCOPED_TRACE(channels);
        isp_sim::reset();
        isp_test::pipe p(1, 1, case_dir.path(), channels);
        module_instance lin(qv_isp_module_lin_json_register, p),
            blc(qv_isp_module_blc_json_register, p);
        ASSERT_EQ(lin.create(), 0);
        ASSERT_EQ(blc.create(), 0);
        ASSERT_EQ(lin.init(), 0);
        JsonModuleContext *owner = lin.context<JsonModuleContext>();
        ASSERT_EQ(owner->frame, 1);
        ASSERT_EQ(owner->last_frame, 0u);
        owner->last_frame = 7;  // tells the third word apart from a zero

        const size_t mark = isp_sim::calls().size();
        /* channel 1's "handle" is 1, which the wrapper does not know */
        EXPECT_EQ(static_cast<uint32_t>(blc.init()), blc_hw);
        expected_problems = {"vin_hal_wrapper_setup: unknown handle 0x1"};
        EXPECT_EQ(isp_sim::problems(), expected_problems);
        const JsonChnContext *ctx = blc.context<JsonChnContext>();
        EXPECT_EQ(isp_test::codes(ctx->wrapper),
                  (std::vector<uint32_t>{owner->wrapper, 1, channels > 2 ? 7u : 0u, 0, 0, 0}));
        EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_create").size(), 1u);
        push_list expected = to(owner->wrapper, blc_commands);
        expected.emplace_back(1, 3);
        EXPECT_EQ(pushes_of(calls_since(mark)), expected);
        expect_log(
            0, error_line("__blc_json_param_setup", 94, blc_hw, "Isp blc lin hal setup failed."));
        EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], lin.h.priv);

        ASSERT_EQ(lin.deinit(), 0);
        ASSERT_EQ(blc.deinit(), 0);
        EXPECT_EQ(isp_sim::live_wrappers(), 0u);
        EXPECT_EQ(lin.destroy(), 0);
        EXPECT_EQ(blc.destroy(), 0);
    }
}

TEST_F(variants, lin_after_blc_takes_the_first_channel_wrapper) {
    frame_file(0, "rtl_blc_p0.json", blc_file(0));
    write_frames("rtl_blc_p0_chn%d.json", 1, 2, blc_file(0));
    isp_test::pipe p(1, 1, case_dir.path(), 2);
    module_instance lin(qv_isp_module_lin_json_register, p),
        blc(qv_isp_module_blc_json_register, p);
    ASSERT_EQ(lin.create(), 0);
    ASSERT_EQ(blc.create(), 0);
    ASSERT_EQ(blc.init(), 0);
    const uint32_t w0 = blc.context<JsonChnContext>()->wrapper[0];
    const size_t mark = isp_sim::calls().size();
    ASSERT_EQ(lin.init(), 0);
    EXPECT_EQ(lin.wrapper(), w0);
    EXPECT_EQ(pushes_of(calls_since(mark)), to(w0, {3}));

    /* lin, deinitialised first, destroys only the wrapper it knows */
    ASSERT_EQ(lin.deinit(), 0);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], nullptr);
    EXPECT_EQ(isp_sim::live_wrappers(), 1u);
    ASSERT_EQ(blc.deinit(), 0);
    EXPECT_EQ(lin.destroy(), 0);
    EXPECT_EQ(blc.destroy(), 0);
}

/* ---- the pattern-file module -------------------------------------------------------------- */

TEST_F(variants, ainr_reads_its_pattern_files_from_the_case_directory_on_every_load) {
    for (int n = 0; n < 4; ++n)
        case_dir.write(format("isp_nrlite_ptn_%d.json", n), "{\"isp_nrlite\": {}}");
    /* frame directories are there but never looked at */
    case_dir.mkdir("cfgs/f0");
    case_dir.mkdir("cfgs/f1");
    isp_test::pipe p(2, 2, case_dir.path());
    module_instance ainr(qv_isp_module_ainr_json_register, p);
    ASSERT_EQ(ainr.create(), 0);
    ASSERT_EQ(ainr.init(), 0);
    for (int call = 0; call < 2; ++call) ASSERT_EQ(ainr.process(), 0);
    EXPECT_EQ(pushes_of(isp_sim::calls()), to(ainr.wrapper(), {0, 5, 5, 5}));
    EXPECT_EQ(ainr.context<JsonModuleContext>()->frame, 0);
    EXPECT_EQ(ainr.context<JsonModuleContext>()->last_frame, 0u);

    /* the fourth partition's file is read: a root that is not an object stops the load */
    case_dir.write("isp_nrlite_ptn_3.json", "[]");
    const size_t mark = isp_sim::calls().size();
    EXPECT_EQ(isp_test::runtime_error_of([&] { ainr.process(); }), isp_test::type_error("object"));
    EXPECT_TRUE(calls_since(mark).empty());
    /* a 2 x 1 grid stops before it */
    p.ctx.attr = IspPipeAttr{2, 1};
    EXPECT_EQ(ainr.process(), 0);
    ASSERT_EQ(ainr.deinit(), 0);
    EXPECT_EQ(ainr.destroy(), 0);
}

TEST_F(variants, ainr_pushes_its_zeroed_group_for_a_grid_without_rows) {
    isp_test::pipe p(2, 0, case_dir.path());  // no file in the case directory at all
    module_instance ainr(qv_isp_module_ainr_json_register, p);
    ASSERT_EQ(ainr.create(), 0);
    ASSERT_EQ(ainr.init(), 0);
    ASSERT_EQ(ainr.process(), 0);
    const std::vector<isp_sim::call> posts = isp_test::pushes_with(5);
    ASSERT_EQ(posts.size(), 2u);
    for (const isp_sim::call &c : posts) {
        EXPECT_TRUE(c.has_data);
        EXPECT_EQ(c.payload, std::vector<uint8_t>(sizeof(_isp_nrlite_user_post_t), 0));
    }
    EXPECT_TRUE(isp_sim::log_lines().empty());
    ASSERT_EQ(ainr.deinit(), 0);
    EXPECT_EQ(ainr.destroy(), 0);
}

}  // namespace
