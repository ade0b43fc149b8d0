/* The simulated platform as module tests rely on it: exact record copies, handle and address
 * sequences, injected failures, problem detection, tag accounting and log capture. */
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/wbc.h"
#include "isp_platform.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::names_of;

const uint32_t tag_wbc = 0x17010101;
const uint32_t tag_cc  = 0x1B010101;

class SimPlatform : public isp_test::platform_test {
  protected:
    /* A wrapper with a register I/O named "mod_<block>", as a module's init leaves it. */
    static uint32_t wrapper_for(const char *block, uint8_t channel = 0) {
        VinHalWrapperAttr attr{};
        uint32_t handle = 0;
        EXPECT_EQ(vin_hal_wrapper_create(&handle, &attr), 0);
        VinHalRegioAttr regio{};
        regio.channel = channel;
        snprintf(regio.name, sizeof regio.name, "mod_%s", block);
        EXPECT_EQ(vin_hal_wrapper_regio_create(handle, &regio), 0);
        return handle;
    }
    /* Every byte set, padding and reserved members included. */
    template <typename Record>
    static void fill_pattern(Record &record, uint8_t seed) {
        uint8_t *first = reinterpret_cast<uint8_t *>(&record);
        for (size_t i = 0; i < sizeof record; ++i) first[i] = static_cast<uint8_t>(seed + i * 7);
    }
};

TEST_F(SimPlatform, RecordsAreCopiedByteForByteWithHandlesCountingFrom0x100) {
    VinHalWrapperAttr attr;
    fill_pattern(attr, 1);
    attr.type       = 17;
    uint32_t handle = 0;
    ASSERT_EQ(vin_hal_wrapper_create(&handle, &attr), 0);
    VinHalRegioAttr regio;
    fill_pattern(regio, 9);  // reserved bytes too: the copy must not be member by member
    memcpy(regio.name, "mod_wbc\0garbage", 15);
    regio.channel                   = 4;
    const std::vector<uint8_t> sent = bytes_of(regio);
    ASSERT_EQ(vin_hal_wrapper_regio_create(handle, &regio), 0);
    fill_pattern(regio, 0);  // the copy was taken during the call

    /* a known command is copied with its block's size, after the hook ran; an unknown one or no
     * data is not */
    _isp_wbc_user_ctrl_t ctrl;
    fill_pattern(ctrl, 3);
    isp_sim::on_setup([&](uint32_t, const VinHalSetupCmd *cmd) {
        if (cmd->data) static_cast<uint8_t *>(cmd->data)[0] = 0x5A;
    });
    const VinHalSetupCmd known{1, &ctrl}, unknown{99, &ctrl}, no_data{1, nullptr};
    for (const VinHalSetupCmd *cmd : {&known, &unknown, &no_data})
        EXPECT_EQ(vin_hal_wrapper_setup(handle, cmd), 0);
    EXPECT_EQ(isp_plat_hal_register_func(), 0);  // the two callbacks are not recorded
    EXPECT_EQ(qv_regio_regdesc_get_plat(), 0);

    const std::vector<isp_sim::call> &calls = isp_sim::calls();
    ASSERT_EQ(names_of(calls),
              (std::vector<std::string>{"vin_hal_wrapper_create", "vin_hal_wrapper_regio_create",
                                        "vin_hal_wrapper_setup", "vin_hal_wrapper_setup",
                                        "vin_hal_wrapper_setup"}));
    EXPECT_EQ(calls[0].handle, 0x100u);
    EXPECT_EQ(calls[0].record, bytes_of(attr));
    EXPECT_EQ(calls[1].handle, 0x100u);
    EXPECT_EQ(calls[1].record, sent);
    EXPECT_EQ(calls[2].cmd, 1u);
    EXPECT_EQ(calls[2].payload, bytes_of(ctrl));
    EXPECT_EQ(calls[2].payload.at(0), 0x5Au);
    EXPECT_TRUE(calls[3].has_data);
    EXPECT_TRUE(calls[3].payload.empty());
    EXPECT_FALSE(calls[4].has_data);
    const isp_sim::wrapper_state state = isp_sim::wrapper(handle);
    EXPECT_TRUE(state.exists && state.regio);
    EXPECT_EQ(state.type, 17u);
    EXPECT_EQ(state.block, "wbc");
    EXPECT_EQ(state.channel, 4u);

    /* a destroyed handle is never issued again; after a reset handles start again */
    ASSERT_EQ(vin_hal_wrapper_regio_destroy(handle), 0);
    ASSERT_EQ(vin_hal_wrapper_destroy(handle), 0);
    ASSERT_EQ(vin_hal_wrapper_create(&handle, &attr), 0);
    EXPECT_EQ(handle, 0x101u);
    isp_sim::reset();
    ASSERT_EQ(vin_hal_wrapper_create(&handle, &attr), 0);
    EXPECT_EQ(handle, 0x100u);
    EXPECT_EQ(isp_sim::live_wrappers(), 1u);
}

TEST_F(SimPlatform, AnInjectedFailureHitsTheNthFollowingCallAndHandsNothingOut) {
    const uint32_t handle = wrapper_for("wbc");
    const VinHalSetupCmd cmd{99, nullptr};
    ASSERT_EQ(vin_hal_wrapper_setup(handle, &cmd), 0);  // calls before fail_call do not count
    isp_sim::fail_call("vin_hal_wrapper_setup", 3, 0x1234);
    isp_sim::fail_call("vin_hal_wrapper_setup", 1);
    for (int32_t result : {-1, 0, 0x1234, 0, 0})
        EXPECT_EQ(vin_hal_wrapper_setup(handle, &cmd), result);
    EXPECT_EQ(vin_hal_wrapper_trigger(handle, 0, 0, 0), 0);  // other functions are not affected
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_setup").at(3).result, 0x1234);

    /* a failed creation hands out no handle and uses none */
    isp_sim::fail_call("vin_hal_wrapper_create", 1, 7);
    const VinHalWrapperAttr attr{};
    uint32_t created = 0;
    EXPECT_EQ(vin_hal_wrapper_create(&created, &attr), 7);
    EXPECT_EQ(created, 0u);
    ASSERT_EQ(vin_hal_wrapper_create(&created, &attr), 0);
    EXPECT_EQ(created, 0x101u);
}

TEST_F(SimPlatform, DmaBuffersGetAlignedBusAddressesAndZeroedMemoryAndAreFreedOnce) {
    const struct {
        uint32_t size, align;
        uint64_t phys;
    } requests[] = {
        {100, 128, 0x10000000},
        {0x1001, 128, 0x10001000},
        {1, 64, 0x10003000},
        {16, 0x8000, 0x10008000},  // the bus address honours an alignment above a page
    };
    std::vector<void *> buffers;
    for (const auto &r : requests) {
        uint64_t phys = 0;
        void *virt    = nullptr;
        ASSERT_EQ(qv_hal_sys_mem_alloc_cached(1, &phys, &virt, r.size, r.align, "awb_stat"), 0);
        EXPECT_EQ(phys, r.phys);
        ASSERT_NE(virt, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(virt) % r.align, 0u);
        EXPECT_EQ(std::vector<uint8_t>(static_cast<uint8_t *>(virt),
                                       static_cast<uint8_t *>(virt) + r.size),
                  std::vector<uint8_t>(r.size, 0));
        memset(virt, 0xEE, r.size);  // modules write to the buffer
        buffers.push_back(virt);
    }
    EXPECT_EQ(QV_SYS_MemFree(0x10001000, buffers[1]), 0);
    EXPECT_EQ(isp_sim::calls().back().phys, 0x10001000u);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 3u);
    /* after a reset addresses start again, and older buffers can still be given back */
    isp_sim::reset();
    EXPECT_EQ(QV_SYS_MemFree(0x10000000, buffers[0]), 0);
    EXPECT_EQ(QV_SYS_MemFree(0x10008000, buffers[3]), 0);
    EXPECT_EQ(QV_SYS_MemFree(0x10003000, buffers[2]), 0);
    uint64_t phys = 0;
    void *virt    = nullptr;
    ASSERT_EQ(qv_hal_sys_mem_alloc_cached(0, &phys, &virt, 8, 8, "again"), 0);
    EXPECT_EQ(phys, 0x10000000u);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 1u);
    EXPECT_TRUE(isp_sim::problems().empty());
    /* double and unknown frees */
    EXPECT_EQ(QV_SYS_MemFree(phys, virt), 0);
    EXPECT_EQ(QV_SYS_MemFree(phys, virt), -1);
    EXPECT_EQ(QV_SYS_MemFree(0x20000000, nullptr), -1);
    expected_problems = {"QV_SYS_MemFree: buffer at 0x10000000 freed twice",
                         "QV_SYS_MemFree: unknown buffer at 0x20000000"};
}

TEST_F(SimPlatform, TaggedAllocationsAreCountedPerTagAndWrongFreesAreProblems) {
    auto *a = static_cast<uint32_t *>(QV_OS_MEM_Calloc(tag_wbc, 1, 12));
    void *b = QV_OS_MEM_Calloc(tag_wbc, 4, 8);
    void *c = QV_OS_MEM_Calloc(tag_cc, 1, 40);
    ASSERT_TRUE(a && b && c);
    EXPECT_EQ(a[0] | a[1] | a[2], 0u);
    EXPECT_EQ(isp_sim::live_allocations(), (std::map<uint32_t, int>{{tag_wbc, 2}, {tag_cc, 1}}));
    EXPECT_EQ(isp_sim::calls_of("QV_OS_MEM_Calloc").at(1).size, 32u);
    EXPECT_EQ(isp_sim::calls_of("QV_OS_MEM_Calloc").at(2).tag, tag_cc);
    QV_OS_MEM_Free(tag_wbc, a);
    QV_OS_MEM_Free(tag_cc, nullptr);  // nothing to free, nothing wrong
    EXPECT_TRUE(isp_sim::problems().empty());
    /* memory from before a reset is forgotten but can be freed */
    isp_sim::reset();
    QV_OS_MEM_Free(tag_cc, c);
    EXPECT_TRUE(isp_sim::problems().empty());

    void *ctx  = QV_OS_MEM_Calloc(tag_wbc, 1, 12);
    void *keep = QV_OS_MEM_Calloc(tag_cc, 1, 12);
    QV_OS_MEM_Free(tag_cc, ctx);  // a problem, but the block is freed
    EXPECT_EQ(isp_sim::live_allocations(), (std::map<uint32_t, int>{{tag_cc, 1}}));
    QV_OS_MEM_Free(tag_cc, keep);
    QV_OS_MEM_Free(tag_wbc, keep);
    int on_stack = 0;
    QV_OS_MEM_Free(tag_wbc, &on_stack);
    QV_OS_MEM_Free(tag_wbc, b);
    expected_problems = isp_sim::problems();
    ASSERT_EQ(expected_problems.size(), 3u);
    EXPECT_EQ(expected_problems[0],
              "QV_OS_MEM_Free: block allocated under tag 0x17010101 freed under tag 0x1b010101");
    EXPECT_EQ(expected_problems[1].rfind("QV_OS_MEM_Free: unknown or already freed pointer 0x", 0),
              0u);
    EXPECT_NE(expected_problems[2].find(" under tag 0x17010101"), std::string::npos);
}

TEST_F(SimPlatform, WrapperDisciplineViolationsAreProblems) {
    const uint32_t first = wrapper_for("clc");
    const VinHalWrapperAttr attr{};
    uint32_t bare = 0;
    ASSERT_EQ(vin_hal_wrapper_create(&bare, &attr), 0);
    const VinHalSetupCmd cmd{1, nullptr};
    VinHalRegioAttr regio{};
    EXPECT_EQ(vin_hal_wrapper_setup(bare, &cmd), -1);
    EXPECT_EQ(vin_hal_wrapper_trigger(bare, 0, 0, 0), -1);
    EXPECT_EQ(vin_hal_wrapper_regio_destroy(bare), -1);
    EXPECT_EQ(vin_hal_wrapper_regio_destroy(first), 0);
    EXPECT_EQ(vin_hal_wrapper_destroy(first), 0);
    EXPECT_EQ(vin_hal_wrapper_destroy(first), -1);
    EXPECT_EQ(vin_hal_wrapper_setup(first, &cmd), -1);
    EXPECT_EQ(vin_hal_wrapper_regio_create(first, &regio), -1);
    EXPECT_EQ(vin_hal_wrapper_trigger(0x999, 0, 0, 0), -1);
    EXPECT_EQ(vin_hal_wrapper_destroy(0), -1);
    expected_problems = {
        "vin_hal_wrapper_setup: handle 0x101 has no register I/O",
        "vin_hal_wrapper_trigger: handle 0x101 has no register I/O",
        "vin_hal_wrapper_regio_destroy: handle 0x101 has no register I/O",
        "vin_hal_wrapper_destroy: handle 0x100 destroyed twice",
        "vin_hal_wrapper_setup: handle 0x100 used after destroy",
        "vin_hal_wrapper_regio_create: handle 0x100 used after destroy",
        "vin_hal_wrapper_trigger: unknown handle 0x999",
        "vin_hal_wrapper_destroy: unknown handle 0x0",
    };
    EXPECT_FALSE(isp_sim::wrapper(first).exists || isp_sim::wrapper(first).regio);
    EXPECT_EQ(isp_sim::wrapper(first).block, "clc");
}

TEST_F(SimPlatform, LogLinesAreRecordedInFullAndEchoedBelowTheThreshold) {
    const std::string long_text(3000, 'x');
    const std::string echoed  = isp_test::stderr_of([&] {
        QV_SYS_LogPrint(3, "ISP", 1, "[E][%32s][%4d]: %s\n", "isp_cc_json_mod_init", 123, "off");
        isp_sim::set_log_echo(true);
        isp_sim::set_log_level(4);
        QV_SYS_LogPrint(7, "ISP", 1, "debug %d\n", 3);
        QV_SYS_LogPrint(4, "ISP", 1, "[D][%32s][%4d]: %s\n", "f", 400, long_text.c_str());
        isp_sim::set_log_echo(false);
        isp_sim::set_log_level(7);
    });
    const std::string warning = "[D][" + std::string(31, ' ') + "f][ 400]: " + long_text + "\n";
    EXPECT_EQ(echoed, warning);
    const std::vector<isp_sim::log_line> &lines = isp_sim::log_lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].text, "[E][            isp_cc_json_mod_init][ 123]: off\n");
    EXPECT_EQ(lines[2].text, warning);
    /* a reset forgets records, problems, failures and hooks */
    isp_sim::fail_call("vin_hal_wrapper_create", 1);
    isp_sim::on_setup([&](uint32_t, const VinHalSetupCmd *) { ADD_FAILURE() << "hook kept"; });
    vin_hal_wrapper_destroy(0);
    isp_sim::reset();
    EXPECT_TRUE(isp_sim::calls().empty() && isp_sim::log_lines().empty());
    EXPECT_TRUE(isp_sim::problems().empty());
    const VinHalSetupCmd cmd{99, nullptr};
    EXPECT_EQ(vin_hal_wrapper_setup(wrapper_for("wbc"), &cmd), 0);
}

}  // namespace
