/* The records and contexts the library hands to the platform, byte by byte at their documented
 * offsets. With 32-bit pointers (the target) every byte is checked; a 64-bit workstation build
 * checks the parts before the first pointer, whose layout is the same. */
#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json_modules.h"
#include "isp_platform.h"
#include "tests/support/test_support.h"

namespace {

constexpr bool k_ptr32 = sizeof(void *) == 4;

std::vector<uint8_t> bytes_at(const void *memory, size_t size) {
    const uint8_t *first = static_cast<const uint8_t *>(memory);
    return std::vector<uint8_t>(first, first + size);
}

uint32_t u32_at(const std::vector<uint8_t> &bytes, size_t offset) {
    uint32_t value = 0;
    EXPECT_LE(offset + 4, bytes.size());
    if (offset + 4 <= bytes.size()) memcpy(&value, &bytes[offset], 4);  // little-endian target
    return value;
}

/* The module registered by reg, created and initialised with no case path: the wrapper is set
 * up, then the load stops at once. */
class Layouts : public isp_test::platform_test {
  protected:
    void start(isp_test::register_fn reg, int32_t channels = 1) {
        p.ctx.channel_count = channels;
        m                   = new isp_test::module_instance(reg, p);
        ASSERT_EQ(m->create(), 0);
        ASSERT_EQ(m->init(), -1);
    }
    void TearDown() override {
        delete m;
        isp_sim::on_setup(nullptr);
        platform_test::TearDown();
    }
    isp_test::pipe p{1, 1, ""};
    isp_test::module_instance *m = nullptr;
};

TEST_F(Layouts, WrapperCreationRecordIsTypeZeroTwoThenCallbackAndPipeAttributes) {
    p.ctx.attr.part_h = p.ctx.attr.part_v = 2;
    start(qv_isp_module_cc_json_register);
    const auto created = isp_sim::calls_of("vin_hal_wrapper_create");
    ASSERT_EQ(created.size(), 1u);
    EXPECT_EQ(created[0].record.size(), k_ptr32 ? 20u : 32u);
    const std::vector<uint8_t> head = {21, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0};
    EXPECT_EQ(bytes_at(created[0].record.data(), 12), head);
    if (!k_ptr32) return;
    EXPECT_EQ(u32_at(created[0].record, 12),
              reinterpret_cast<uintptr_t>(&isp_plat_hal_register_func));
    EXPECT_EQ(u32_at(created[0].record, 16), reinterpret_cast<uintptr_t>(&p.ctx.attr));
}

TEST_F(Layouts, RegisterIoRecordIsTheDocumentedByteImage) {
    p.ctx.attr.part_h = 16;
    p.ctx.attr.part_v = 17;  // 272 partitions: the record keeps the low 8 bits, 16
    p.ctx.pipe_id     = 5;
    start(qv_isp_module_dehaze_json_register);
    const auto regio = isp_sim::calls_of("vin_hal_wrapper_regio_create");
    ASSERT_EQ(regio.size(), 1u);
    std::vector<uint8_t> expected = {5,    1,    0, 0, 0, 0, 0, 0,  0, 0,
                                     0x40, 0x02, 0, 0, 0, 0, 2, 17, 0, 0};
    if (!k_ptr32) {
        EXPECT_EQ(bytes_at(regio[0].record.data(), 20), expected);
        return;
    }
    expected.resize(88, 0);
    const uint32_t regdesc =
        static_cast<uint32_t>(reinterpret_cast<uintptr_t>(&qv_regio_regdesc_get_plat));
    memcpy(&expected[20], &regdesc, 4);
    expected[24] = 16;
    expected[32] = 50;  // depths
    expected[36] = 10;
    expected[40] = 1;
    expected[44] = 2;
    expected[48] = 4;
    memcpy(&expected[52], "mod_dehaze", 10);
    EXPECT_EQ(regio[0].record, expected);
}

TEST_F(Layouts, ChannelledContextKeepsOneWrapperHandlePerChannelInWordsZeroToFive) {
    start(qv_isp_module_blc_json_register, 3);
    const auto alloc   = isp_sim::calls_of("QV_OS_MEM_Calloc");
    const auto created = isp_sim::calls_of("vin_hal_wrapper_create");
    const auto regio   = isp_sim::calls_of("vin_hal_wrapper_regio_create");
    ASSERT_EQ(alloc.size(), 1u);
    EXPECT_EQ(alloc[0].size, 32u);  // eight words whatever the pointer width
    ASSERT_EQ(created.size(), 3u);
    ASSERT_EQ(regio.size(), 3u);
    const std::vector<uint8_t> context = bytes_at(m->h.priv, 32);
    for (size_t c = 0; c < 3; ++c) {
        EXPECT_EQ(regio[c].record[2], c) << "channel field of channel " << c;
        EXPECT_EQ(u32_at(context, 4 * c), created[c].handle) << c;
        EXPECT_EQ(regio[c].handle, created[c].handle) << c;
    }
    for (size_t word = 3; word < 8; ++word) EXPECT_EQ(u32_at(context, 4 * word), 0u) << word;
}

TEST_F(Layouts, SetupRecordIsTheCommandThenTheAddressOfThePushedStructure) {
    frame_file(0, "rtl_clc_p0.json", isp_test::data_text("clc/rtl_clc_p0.json"));
    strncpy(p.ctx.case_path, case_dir.path().c_str(), sizeof p.ctx.case_path - 1);
    std::vector<std::vector<uint8_t>> records, pointed;
    std::vector<uintptr_t> addresses;
    isp_sim::on_setup([&](uint32_t, const VinHalSetupCmd *cmd) {
        records.push_back(bytes_at(cmd, sizeof *cmd));
        const size_t size = isp_sim::payload_size("clc", cmd->cmd);
        uintptr_t at      = 0;  // the pointer as the record holds it, after the command word
        memcpy(&at, &records.back()[k_ptr32 ? 4 : 8], sizeof at);
        addresses.push_back(at);
        pointed.push_back(at && size ? bytes_at(reinterpret_cast<const void *>(at), size)
                                     : std::vector<uint8_t>());
    });
    m = new isp_test::module_instance(qv_isp_module_cc_json_register, p);
    ASSERT_EQ(m->create(), 0);
    ASSERT_EQ(m->init(), 0);
    const auto recorded = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(records.size(), 4u);
    ASSERT_EQ(recorded.size(), 4u);
    /* default parameters: command 0 and a null pointer (a 64-bit record pads between them) */
    EXPECT_EQ(records[0].size(), k_ptr32 ? 8u : 16u);
    EXPECT_EQ(u32_at(records[0], 0), 0u);
    EXPECT_EQ(addresses[0], 0u);
    for (size_t i = 1; i < records.size(); ++i) {
        EXPECT_EQ(u32_at(records[i], 0), recorded[i].cmd);
        ASSERT_FALSE(recorded[i].payload.empty()) << recorded[i].cmd;
        EXPECT_EQ(pointed[i], recorded[i].payload) << recorded[i].cmd;
    }
    ASSERT_EQ(m->deinit(), 0);
    EXPECT_EQ(m->destroy(), 0);
}

}  // namespace
