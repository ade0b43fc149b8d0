/* What the lifecycle walk of the catalogue cannot show: modules sharing one hardware block, the
 * statistics buffers and their addresses, the channelled modules over several channels and
 * frames, the pattern-file module reading the case directory itself, and the colour-correction
 * module over partition grids and frames. */
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
using isp_test::pushed;
using isp_test::pushes_of;
using isp_test::to;

/* Slots of the shared blocks and the codes the tests below meet. */
const size_t slot_blc = 0, slot_dem = 14, slot_lce = 20, slot_ae_stat = 25, slot_awb_stat = 27;
const uint32_t blc_hw                    = 0x80010580;
const std::vector<uint32_t> blc_commands = {3, 4, 5, 6, 7, 8, 9, 10};

std::string alloc_failed(const char *routine, uint32_t bytes, uint32_t result) {
    return format("[E][%32s][%4d]: qv_hal_sys_mem_alloc_cached(%d) fail, retval=0x%x", routine, 72,
                  static_cast<int>(bytes), result);
}

class ModuleVariants : public isp_test::platform_test {
  protected:
    /* the register files below carry few fields: the converters report the others */
    void SetUp() override {
        platform_test::SetUp();
        quiet_stderr();
    }
    /* Register files of frames f0..frames-1, one per partition (and channel, "%d" twice). */
    void write_frames(const char *pattern, int frames, int count, const std::string &text) {
        for (int f = 0; f < frames; ++f)
            for (int n = 0; n < count; ++n) frame_file(f, format(pattern, n, n), text);
    }
};

/* The first four addresses of a per-partition table. */
std::vector<uint32_t> first_four(const uint32_t *table) {
    return std::vector<uint32_t>(table, table + 4);
}

/* A black level register file whose digital gain tells frame and channel apart. */
std::string blc_file(int dgain) {
    return format("{\"isp_blc\": {\"dgain\": {\"val\": %d}}}", dgain);
}

/* ---- modules sharing one hardware block --------------------------------------------------- */

TEST_F(ModuleVariants, GicSharesTheWrapperDemosaicCreatedAndTearsItDownFirst) {
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
    EXPECT_EQ(names_of(calls_since(mark)), std::vector<std::string>{"vin_hal_wrapper_setup"});
    EXPECT_EQ(pushes_of(calls_since(mark)), to({}, wrapper, {5}));
    EXPECT_EQ(gic.wrapper(), wrapper);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_dem], dem.h.priv);

    /* gic, deinitialised first, tears the shared wrapper down through its copy */
    mark = isp_sim::calls().size();
    ASSERT_EQ(gic.deinit(), 0);
    const std::vector<isp_sim::call> down = calls_since(mark);
    EXPECT_EQ(names_of(down), (std::vector<std::string>{"vin_hal_wrapper_regio_destroy",
                                                        "vin_hal_wrapper_destroy"}));
    EXPECT_EQ(down[1].handle, wrapper);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_dem], nullptr);
    /* demosaic then finds the slot empty: nothing to do; initialised anew, a wrapper of its own */
    mark = isp_sim::calls().size();
    ASSERT_EQ(dem.deinit(), 0);
    EXPECT_TRUE(calls_since(mark).empty());
    ASSERT_EQ(dem.init(), 0);
    EXPECT_NE(dem.wrapper(), wrapper);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_dem], dem.h.priv);
    ASSERT_EQ(dem.deinit(), 0);
    EXPECT_EQ(gic.destroy(), 0);
    EXPECT_EQ(dem.destroy(), 0);
    EXPECT_TRUE(isp_sim::live_allocations().empty());
    EXPECT_TRUE(isp_sim::log_lines().empty());
}

TEST_F(ModuleVariants, TheFiveLceModulesPushToOneWrapperAndShareOneEnableBit) {
    frame_file(0, "rtl_lce_p0.json", "{\"isp_lce\": {}}");
    isp_test::pipe p(1, 1, case_dir.path());
    std::vector<module_instance> lce;
    for (isp_test::register_fn reg :
         {qv_isp_module_hs2dlut_json_register, qv_isp_module_ccmp_json_register,
          qv_isp_module_ycproc_json_register, qv_isp_module_sharpen_json_register,
          qv_isp_module_scm_json_register}) {
        lce.emplace_back(reg, p);
        ASSERT_EQ(lce.back().create(), 0);
        ASSERT_EQ(lce.back().init(), 0);
    }
    const uint32_t wrapper = lce[0].wrapper();
    for (const module_instance &m : lce) EXPECT_EQ(m.wrapper(), wrapper);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_lce], lce[0].h.priv);
    EXPECT_EQ(pushes_of(isp_sim::calls()), to({}, wrapper, {0, 8, 9, 6, 7, 1, 2, 4, 5, 3, 11, 10}));

    /* sharpen (bypass bit 18) and scm (19) mirror into one enable bit: whoever syncs last wins */
    const uint32_t others  = 0xA5A5A5A5 & ~(1u << 18);
    p.shadow.module_enable = others;
    p.ctx.bypass[2]        = 0x08;  // bit 19 set, bit 18 clear
    ASSERT_EQ(lce[4].sync(), 0);
    EXPECT_EQ(p.shadow.module_enable, others);
    ASSERT_EQ(lce[3].sync(), 0);
    EXPECT_EQ(p.shadow.module_enable, others | 1u << 18);

    /* the last one deinitialised finds nothing left to destroy */
    for (size_t i = lce.size(); i-- > 0;) EXPECT_EQ(lce[i].deinit(), 0);
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_destroy").size(), 1u);
    for (module_instance &m : lce) EXPECT_EQ(m.destroy(), 0);
}

/* ---- statistics buffers ------------------------------------------------------------------- */

TEST_F(ModuleVariants, StatisticsModulesWriteEachPartitionsAddressesOnEveryLoad) {
    write_frames("rtl_ae_stat_p%d.json", 1, 3, "{\"isp_ae_stat\": {}}");
    write_frames("rtl_awb_stat_p%d.json", 1, 3, "{\"isp_awb_stat\": {}}");
    isp_test::pipe p(3, 1, case_dir.path());
    module_instance ae(qv_isp_module_ae_stat_json_register, p),
        awb(qv_isp_module_awb_stat_json_register, p);
    ASSERT_EQ(ae.create(), 0);
    ASSERT_EQ(ae.init(), 0);
    ASSERT_EQ(ae.process(), 0);
    /* three sub-areas per partition, in 8-byte units from 0x10000000 */
    for (size_t load = 0; load < 2; ++load) {
        const auto init = pushed<_isp_ae_stat_user_init_t>(1, load);
        EXPECT_EQ(first_four(init.wr_addr0),
                  (std::vector<uint32_t>{0x02000000, 0x02002B06, 0x0200560C, 0}));
        EXPECT_EQ(first_four(init.wr_addr1),
                  (std::vector<uint32_t>{0x02001443, 0x02003F49, 0x02006A4F, 0}));
        EXPECT_EQ(first_four(init.wr_addr2),
                  (std::vector<uint32_t>{0x02002886, 0x0200538C, 0x02007E92, 0}));
    }
    /* a second instance reusing the wrapper allocates nothing: its addresses count from 0 */
    module_instance sharer(qv_isp_module_ae_stat_json_register, p);
    ASSERT_EQ(sharer.create(), 0);
    ASSERT_EQ(sharer.init(), 0);
    EXPECT_EQ(isp_sim::calls_of("qv_hal_sys_mem_alloc_cached").size(), 1u);
    EXPECT_EQ(sharer.context<JsonStatContext>()->phys, 0u);
    const auto shared = pushed<_isp_ae_stat_user_init_t>(1, 2);
    EXPECT_EQ(shared.wr_addr0[2], 0x560Cu);
    EXPECT_EQ(shared.wr_addr2[2], 0x7E92u);
    /* the sharer deinitialised first frees no buffer, having none; the owner keeps its own */
    ASSERT_EQ(sharer.deinit(), 0);
    ASSERT_EQ(ae.deinit(), 0);
    EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 0u);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 1u);
    EXPECT_EQ(sharer.destroy(), 0);
    EXPECT_EQ(ae.destroy(), 0);

    /* one sub-area per partition; on pipe 1 the buffer is named after the pipe */
    isp_sim::reset();
    p.ctx.pipe_id = 1;
    ASSERT_EQ(awb.create(), 0);
    ASSERT_EQ(awb.init(), 0);
    const std::vector<isp_sim::call> allocs = isp_sim::calls_of("qv_hal_sys_mem_alloc_cached");
    ASSERT_EQ(allocs.size(), 1u);
    EXPECT_EQ(allocs[0].pipe_id, 1);
    EXPECT_EQ(allocs[0].name, "vin_awb_stat1x3");
    EXPECT_EQ(allocs[0].size, 456720u);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_awb_stat], awb.h.priv);
    EXPECT_EQ(first_four(pushed<_isp_awb_stat_user_init_t>(1).wr_addr),
              (std::vector<uint32_t>{0x02000000, 0x02004A56, 0x020094AC, 0}));
    ASSERT_EQ(awb.deinit(), 0);
    EXPECT_EQ(awb.destroy(), 0);
}

TEST_F(ModuleVariants, AFailedStatisticsAllocationIsOnlyLoggedAndReleasesAnOldBuffer) {
    frame_file(0, "rtl_ae_stat_p0.json", "{\"isp_ae_stat\": {}}");
    {
        isp_test::pipe p(1, 1, case_dir.path());
        module_instance stat(qv_isp_module_ae_stat_json_register, p);
        ASSERT_EQ(stat.create(), 0);
        isp_sim::fail_call("qv_hal_sys_mem_alloc_cached", 1, -1);
        EXPECT_EQ(stat.init(), 0);  // the loader's result
        expect_log(1, alloc_failed("__ae_stat_json_alloc_buf", 264336, 0xFFFFFFFFu));
        const JsonStatContext *ctx = stat.context<JsonStatContext>();
        EXPECT_EQ(ctx->phys, 0u);
        EXPECT_EQ(ctx->virt, nullptr);
        EXPECT_EQ(ctx->area_size * ctx->area_count, 264336u);
        EXPECT_EQ(p.ctx.wrapper_slot[slot_ae_stat], stat.h.priv);
        EXPECT_EQ(isp_test::pushes().size(), 4u);  // defaults and three groups
        ASSERT_EQ(stat.deinit(), 0);
        EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 0u);  // no buffer, nothing to free
        EXPECT_EQ(stat.destroy(), 0);
    }

    isp_sim::reset();
    isp_test::pipe p(1, 1, case_dir.path());
    module_instance owner(qv_isp_module_ae_stat_json_register, p),
        sharer(qv_isp_module_ae_stat_json_register, p);
    ASSERT_EQ(owner.create(), 0);
    ASSERT_EQ(sharer.create(), 0);

    /* a context can still hold a buffer when it creates the wrapper again (another instance tore
     * the wrapper down first): a failed allocation then releases the old buffer */
    ASSERT_EQ(owner.init(), 0);
    ASSERT_EQ(sharer.init(), 0);
    ASSERT_EQ(sharer.deinit(), 0);
    const JsonStatContext *ctx = owner.context<JsonStatContext>();
    ASSERT_EQ(ctx->phys, 0x10000000u);
    isp_sim::fail_call("qv_hal_sys_mem_alloc_cached", 1, 0x21);
    const size_t mark = isp_sim::calls().size();
    EXPECT_EQ(owner.init(), 0);
    const std::vector<isp_sim::call> calls = calls_since(mark);
    ASSERT_EQ(calls.size(), 8u);
    EXPECT_EQ(calls[3].function, "qv_hal_sys_mem_alloc_cached");
    EXPECT_EQ(calls[4].function, "QV_SYS_MemFree");
    EXPECT_EQ(calls[4].phys, 0x10000000u);
    expect_log(2, alloc_failed("__ae_stat_json_alloc_buf", 264336, 0x21));  // after two banners
    EXPECT_EQ(ctx->phys, 0u);
    EXPECT_EQ(ctx->virt, nullptr);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 0u);
    ASSERT_EQ(owner.deinit(), 0);
    EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 1u);
    EXPECT_EQ(sharer.destroy(), 0);
    EXPECT_EQ(owner.destroy(), 0);
}

/* ---- channelled modules ------------------------------------------------------------------- */

/* Init already loads channel 1 from the next frame: the frame advances inside the channel
 * loop. */
TEST_F(ModuleVariants, TwoChannelsWalkTheFramesInsideTheChannelLoop) {
    for (int f = 0; f < 2; ++f)
        for (int c = 0; c < 2; ++c)
            frame_file(f, format("rtl_blc_p0_chn%d.json", c), blc_file(300 + 10 * f + c));
    isp_test::pipe p(1, 1, case_dir.path(), 2);
    module_instance blc(qv_isp_module_blc_json_register, p, 0x99);
    ASSERT_EQ(blc.create(), 0);
    const JsonChnContext *ctx = blc.context<JsonChnContext>();
    ASSERT_EQ(blc.init(), 0);
    const uint32_t w0 = ctx->wrapper[0], w1 = ctx->wrapper[1];
    ASSERT_TRUE(w0 != 0 && w1 != 0 && w0 != w1);
    EXPECT_EQ(isp_sim::wrapper(w0).channel, 0);
    EXPECT_EQ(isp_sim::wrapper(w1).channel, 1);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], blc.h.priv);
    /* both wrappers made first, then each channel's pass */
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_create").size(), 2u);
    EXPECT_EQ(pushes_of(isp_sim::calls()),
              to(to(to(to({}, w0, {0}), w1, {0}), w0, blc_commands), w1, blc_commands));
    size_t mark = isp_sim::calls().size();
    ASSERT_EQ(blc.process(), 0);
    EXPECT_EQ(pushes_of(calls_since(mark)), to(to({}, w0, blc_commands), w1, blc_commands));
    EXPECT_EQ(ctx->frame, 1);
    EXPECT_EQ(ctx->last_frame, 1u);
    /* init: channel 0 from f0, channel 1 from f1; process: both from f1 */
    const uint16_t dgains[4] = {300, 311, 310, 311};
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(pushed<_isp_blc_user_common_t>(4, i).dgain, dgains[i]);

    /* trigger: one per channel, with the channel index; a failing one on channel 1 comes after
     * channel 0 was triggered */
    isp_sim::fail_call("vin_hal_wrapper_trigger", 4);
    mark = isp_sim::calls().size();
    ASSERT_EQ(blc.trigger(), 0);
    EXPECT_EQ(static_cast<uint32_t>(blc.trigger()), blc_hw);
    const std::vector<isp_sim::call> triggers = calls_since(mark);
    ASSERT_EQ(triggers.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(triggers[i].handle, i % 2 ? w1 : w0);
        EXPECT_EQ(triggers[i].channel, i % 2);
        EXPECT_EQ(triggers[i].arg, 0x99u);
    }
    expect_log(0,
               error_line("isp_blc_json_mod_trigger", 255, blc_hw, "Isp blc hal trigger failed."));

    /* a failing push on channel 1 comes after channel 0 was pushed */
    const std::pair<unsigned, const char *> failures[] = {
        {0, "Isp blc lin hal setup failed."}, {7, "Isp blc kernel ctrl hal setup failed."}};
    size_t logs = 1;
    for (const auto &f : failures) {
        mark = isp_sim::calls().size();
        isp_sim::fail_call("vin_hal_wrapper_setup", 8 + f.first + 1);
        EXPECT_EQ(static_cast<uint32_t>(blc.process()), blc_hw);
        EXPECT_EQ(
            pushes_of(calls_since(mark)),
            to(to({}, w0, blc_commands), w1,
               std::vector<uint32_t>(blc_commands.begin(), blc_commands.begin() + f.first + 1)));
        expect_log(logs++, error_line("__blc_json_param_setup", 94 + 6 * static_cast<int>(f.first),
                                      blc_hw, f.second));
    }

    /* deinit: each channel's register I/O and wrapper, then the slot */
    mark = isp_sim::calls().size();
    ASSERT_EQ(blc.deinit(), 0);
    const std::vector<isp_sim::call> down = calls_since(mark);
    ASSERT_EQ(down.size(), 4u);
    EXPECT_EQ(down[1].function, "vin_hal_wrapper_destroy");
    EXPECT_EQ(down[1].handle, w0);
    EXPECT_EQ(down[3].function, "vin_hal_wrapper_destroy");
    EXPECT_EQ(down[3].handle, w1);
    EXPECT_EQ(isp_test::codes(ctx->wrapper), std::vector<uint32_t>(6, 0));
    EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], nullptr);
    EXPECT_EQ(blc.destroy(), 0);
}

/* blc takes lin's context as its array of wrappers: lin's handle for channel 0 and lin's frame
 * index in the place of channel 1's handle; lin's context holds three words, so a channel beyond
 * them gets no handle at all. lin after blc takes the first channel's wrapper. */
TEST_F(ModuleVariants, LinAndBlcShareTheBlocksWrapperWhicheverComesFirst) {
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
        owner->last_frame = 7;  // tells the third word apart from a zero
        const size_t mark = isp_sim::calls().size();
        /* channel 1's "handle" is 1, which the wrapper does not know */
        EXPECT_EQ(static_cast<uint32_t>(blc.init()), blc_hw);
        EXPECT_EQ(isp_sim::problems(),
                  std::vector<std::string>{"vin_hal_wrapper_setup: unknown handle 0x1"});
        EXPECT_EQ(isp_test::codes(blc.context<JsonChnContext>()->wrapper),
                  (std::vector<uint32_t>{owner->wrapper, 1, channels > 2 ? 7u : 0u, 0, 0, 0}));
        EXPECT_EQ(pushes_of(calls_since(mark)), to(to({}, owner->wrapper, blc_commands), 1, {3}));
        expect_log(
            0, error_line("__blc_json_param_setup", 94, blc_hw, "Isp blc lin hal setup failed."));
        EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], lin.h.priv);
        ASSERT_EQ(lin.deinit(), 0);
        ASSERT_EQ(blc.deinit(), 0);
        EXPECT_EQ(isp_sim::live_wrappers(), 0u);
        EXPECT_EQ(lin.destroy(), 0);
        EXPECT_EQ(blc.destroy(), 0);
    }

    isp_sim::reset();
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
    EXPECT_EQ(pushes_of(calls_since(mark)), to({}, w0, {3}));
    /* lin, deinitialised first, destroys only the wrapper it knows */
    ASSERT_EQ(lin.deinit(), 0);
    EXPECT_EQ(p.ctx.wrapper_slot[slot_blc], nullptr);
    EXPECT_EQ(isp_sim::live_wrappers(), 1u);
    ASSERT_EQ(blc.deinit(), 0);
    EXPECT_EQ(lin.destroy(), 0);
    EXPECT_EQ(blc.destroy(), 0);
}

/* ---- the pattern-file module -------------------------------------------------------------- */

TEST_F(ModuleVariants, AinrReadsItsPatternFilesFromTheCaseDirectoryOnEveryLoad) {
    for (int n = 0; n < 4; ++n)
        case_dir.write(format("isp_nrlite_ptn_%d.json", n), "{\"isp_nrlite\": {}}");
    frame_file(1, "unread.json", "{}");  // frame directories are there but never looked at
    isp_test::pipe p(2, 2, case_dir.path());
    module_instance ainr(qv_isp_module_ainr_json_register, p);
    ASSERT_EQ(ainr.create(), 0);
    ASSERT_EQ(ainr.init(), 0);
    for (int call = 0; call < 2; ++call) ASSERT_EQ(ainr.process(), 0);
    EXPECT_EQ(pushes_of(isp_sim::calls()), to({}, ainr.wrapper(), {0, 5, 5, 5}));
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

/* ---- the colour-correction module over grids and frames ---------------------------------- */

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

std::string clc_file(int h, int v) {
    return format(R"({"isp_clc": {"part_size": {"h": %d, "v": %d}}})", h, v);
}

TEST_F(ModuleVariants, CcReadsTheGridInRowOrderThenFreezesOnTheLastFrame) {
    for (int f = 0; f < 2; ++f)
        for (int n = 0; n < 6; ++n)
            frame_file(f, format("rtl_clc_p%d.json", n), clc_file(1000 * (f + 1) + n, 10 + n));
    isp_test::pipe p(3, 2, case_dir.path());
    module_instance cc(qv_isp_module_cc_json_register, p);
    size_capture sizes(6);
    ASSERT_EQ(cc.create(), 0);
    ASSERT_EQ(cc.init(), 0);
    /* the default parameters first, then the groups in push order, not conversion order */
    EXPECT_EQ(isp_test::commands_of(isp_sim::calls()), (std::vector<uint32_t>{0, 3, 1, 2}));
    /* p increases along the horizontal count first */
    ASSERT_EQ(sizes.h.size(), 1u);
    EXPECT_EQ(sizes.h[0], (std::vector<uint16_t>{1000, 1001, 1002, 1003, 1004, 1005}));
    EXPECT_EQ(sizes.v[0], (std::vector<uint16_t>{10, 11, 12, 13, 14, 15}));
    ASSERT_EQ(cc.process(), 0);
    ASSERT_EQ(cc.process(), 0);
    ASSERT_EQ(sizes.h.size(), 3u);
    EXPECT_EQ(sizes.h[1][5], 2005);
    EXPECT_EQ(sizes.h[2][5], 2005);
    EXPECT_EQ(cc.context<JsonModuleContext>()->frame, 1);
    EXPECT_EQ(cc.context<JsonModuleContext>()->last_frame, 1u);
}

}  // namespace
