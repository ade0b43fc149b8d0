/* The records and contexts as the platform sees them, byte by byte at their documented offsets.
 * With 32-bit pointers (the target) every byte of every record is checked; a 64-bit workstation
 * build checks the parts that come before the first pointer, whose layout is the same. */
#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json_modules.h"
#include "isp_platform.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

constexpr bool k_ptr32 = sizeof(void *) == 4;

uint32_t u32_at(const std::vector<uint8_t> &bytes, size_t offset) {
    EXPECT_LE(offset + 4, bytes.size());
    if (offset + 4 > bytes.size()) return 0;
    return uint32_t{bytes[offset]} | uint32_t{bytes[offset + 1]} << 8 |
           uint32_t{bytes[offset + 2]} << 16 | uint32_t{bytes[offset + 3]} << 24;
}

uint64_t u64_at(const std::vector<uint8_t> &bytes, size_t offset) {
    return uint64_t{u32_at(bytes, offset)} | uint64_t{u32_at(bytes, offset + 4)} << 32;
}

/* A pointer-wide little-endian field. */
uintptr_t ptr_at(const std::vector<uint8_t> &bytes, size_t offset) {
    return k_ptr32 ? u32_at(bytes, offset) : static_cast<uintptr_t>(u64_at(bytes, offset));
}

template <typename T>
uintptr_t address(T *pointer) {
    return reinterpret_cast<uintptr_t>(pointer);
}

uintptr_t address(int32_t (*function)(void)) {
    return reinterpret_cast<uintptr_t>(function);
}

std::vector<uint8_t> bytes_at(const void *memory, size_t size) {
    const uint8_t *first = static_cast<const uint8_t *>(memory);
    return std::vector<uint8_t>(first, first + size);
}

class Layouts : public testing::Test {
  protected:
    void SetUp() override {
        isp_sim::reset();
        isp_sim::set_log_echo(false);
    }
    void TearDown() override {
        isp_sim::on_setup(nullptr);
        isp_sim::set_log_echo(true);
    }

    /* create and init with no case path: the wrapper is set up, then the load stops at once. */
    static void create_and_init(JsonModuleOps *ops, JsonModuleHandle &handle) {
        ASSERT_EQ(ops->create(&handle), 0);
        ASSERT_EQ(ops->init(&handle), -1);
    }
};

TEST_F(Layouts, WrapperCreationRecordHasTypeZeroTwoThenCallbackAndPipeAttributes) {
    JsonModuleOps *ops = nullptr;
    qv_isp_module_cc_json_register(&ops);
    isp_test::pipe pipe(2, 2, "");
    JsonModuleHandle h = pipe.handle();
    create_and_init(ops, h);

    const auto created = isp_sim::calls_of("vin_hal_wrapper_create");
    ASSERT_EQ(created.size(), 1u);
    const std::vector<uint8_t> &record = created[0].record;
    EXPECT_EQ(u32_at(record, 0), 21u);
    EXPECT_EQ(u32_at(record, 4), 0u);
    EXPECT_EQ(u32_at(record, 8), 2u);
    if (k_ptr32) {
        ASSERT_EQ(record.size(), 20u);
        EXPECT_EQ(ptr_at(record, 12), address(&isp_plat_hal_register_func));
        EXPECT_EQ(ptr_at(record, 16), address(&pipe.ctx.attr));
    } else {
        ASSERT_EQ(record.size(), 32u);  // the callback is 8-byte aligned after word 2
        EXPECT_EQ(ptr_at(record, 16), address(&isp_plat_hal_register_func));
        EXPECT_EQ(ptr_at(record, 24), address(&pipe.ctx.attr));
    }
}

TEST_F(Layouts, RegisterIoRecordIsTheDocumentedByteImage) {
    JsonModuleOps *ops = nullptr;
    qv_isp_module_dehaze_json_register(&ops);
    isp_test::pipe pipe(16, 17, "");  // 272 partitions: the record keeps the low 8 bits, 16
    pipe.ctx.pipe_id   = 5;
    JsonModuleHandle h = pipe.handle();
    create_and_init(ops, h);

    const auto regio = isp_sim::calls_of("vin_hal_wrapper_regio_create");
    ASSERT_EQ(regio.size(), 1u);
    const std::vector<uint8_t> &record = regio[0].record;
    const std::vector<uint8_t> head    = {5,    1,    0, 0, 0, 0, 0, 0,  0x00, 0x00,
                                          0x40, 0x02, 0, 0, 0, 0, 2, 17, 0,    0};
    ASSERT_GE(record.size(), head.size());
    EXPECT_EQ(std::vector<uint8_t>(record.begin(), record.begin() + 20), head);
    if (!k_ptr32) return;

    std::vector<uint8_t> expected(88, 0);
    std::copy(head.begin(), head.end(), expected.begin());
    const uint32_t regdesc = static_cast<uint32_t>(address(&qv_regio_regdesc_get_plat));
    for (int i = 0; i < 4; ++i) expected[20 + i] = static_cast<uint8_t>(regdesc >> (8 * i));
    expected[24] = 16;
    expected[32] = 50;  // first depth
    expected[36] = 10;  // second depth
    expected[40] = 1;
    expected[44] = 2;
    expected[48] = 4;
    memcpy(&expected[52], "mod_dehaze", 10);
    EXPECT_EQ(record, expected);
}

TEST_F(Layouts, ChannelledModuleCreatesOneRecordPerChannelAndKeepsHandlesInWordsZeroToFive) {
    JsonModuleOps *ops = nullptr;
    qv_isp_module_blc_json_register(&ops);
    isp_test::pipe pipe(1, 1, "", 3);
    JsonModuleHandle h = pipe.handle();
    create_and_init(ops, h);

    const auto alloc = isp_sim::calls_of("QV_OS_MEM_Calloc");
    ASSERT_EQ(alloc.size(), 1u);
    EXPECT_EQ(alloc[0].size, 32u);  // eight words whatever the pointer width

    const auto created = isp_sim::calls_of("vin_hal_wrapper_create");
    const auto regio   = isp_sim::calls_of("vin_hal_wrapper_regio_create");
    ASSERT_EQ(created.size(), 3u);
    ASSERT_EQ(regio.size(), 3u);
    const std::vector<uint8_t> context = bytes_at(h.priv, 32);
    for (size_t c = 0; c < 3; ++c) {
        EXPECT_EQ(regio[c].record[2], c) << "channel field of channel " << c;
        EXPECT_EQ(u32_at(context, 4 * c), created[c].handle) << "handle of channel " << c;
        EXPECT_EQ(regio[c].handle, created[c].handle);
    }
    for (size_t word = 3; word < 8; ++word) EXPECT_EQ(u32_at(context, 4 * word), 0u) << word;
}

TEST_F(Layouts, StatisticsContextHoldsItsBufferAtWordsFourToNine) {
    JsonModuleOps *ops = nullptr;
    qv_isp_module_ae_stat_json_register(&ops);
    isp_test::pipe pipe(1, 1, "");
    JsonModuleHandle h = pipe.handle();
    create_and_init(ops, h);

    const auto alloc = isp_sim::calls_of("QV_OS_MEM_Calloc");
    ASSERT_EQ(alloc.size(), 1u);
    /* ten words with 32-bit pointers; the wider pointer and the 8-byte alignment of the whole
     * make it 48 on a 64-bit workstation */
    EXPECT_EQ(alloc[0].size, k_ptr32 ? 40u : 48u);
    const auto dma = isp_sim::calls_of("qv_hal_sys_mem_alloc_cached");
    ASSERT_EQ(dma.size(), 1u);
    EXPECT_EQ(dma[0].size, 264336u);
    ASSERT_NE(dma[0].phys, 0u);

    const std::vector<uint8_t> context = bytes_at(h.priv, alloc[0].size);
    EXPECT_EQ(u32_at(context, 0), isp_sim::calls_of("vin_hal_wrapper_create")[0].handle);
    EXPECT_EQ(u32_at(context, 12), 0u);
    EXPECT_EQ(u32_at(context, 16), 88112u);
    EXPECT_EQ(u32_at(context, 20), 3u);
    EXPECT_EQ(u64_at(context, 24), dma[0].phys);  // words 6 and 7, low word first
    EXPECT_NE(ptr_at(context, 32), 0u);
    if (k_ptr32) {
        EXPECT_EQ(u32_at(context, 36), 0u);
    }

    /* deinit hands back exactly the address pair kept there */
    ASSERT_EQ(ops->deinit(&h), 0);
    const auto freed = isp_sim::calls_of("QV_SYS_MemFree");
    ASSERT_EQ(freed.size(), 1u);
    EXPECT_EQ(freed[0].phys, dma[0].phys);
    EXPECT_TRUE(isp_sim::problems().empty());
    EXPECT_EQ(ops->destroy(&h), 0);
}

TEST_F(Layouts, SetupRecordIsTheCommandThenTheAddressOfThePushedStructure) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_clc_p0.json",
              isp_test::read_file(std::string(ISP_TEST_DATA_DIR) + "/clc/rtl_clc_p0.json"));
    JsonModuleOps *ops = nullptr;
    qv_isp_module_cc_json_register(&ops);
    isp_test::pipe pipe(1, 1, dir.path());
    JsonModuleHandle h = pipe.handle();

    struct seen {
        std::vector<uint8_t> record, pointed;
    };
    std::vector<seen> pushes;
    isp_sim::on_setup([&pushes](uint32_t, const VinHalSetupCmd *cmd) {
        seen s;
        s.record           = bytes_at(cmd, sizeof *cmd);
        const uintptr_t at = ptr_at(s.record, k_ptr32 ? 4 : 8);
        const size_t size  = isp_sim::payload_size("clc", u32_at(s.record, 0));
        if (at != 0 && size != 0) s.pointed = bytes_at(reinterpret_cast<const void *>(at), size);
        pushes.push_back(s);
    });
    ASSERT_EQ(ops->create(&h), 0);
    ASSERT_EQ(ops->init(&h), 0);

    const auto recorded = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), recorded.size());
    ASSERT_EQ(pushes.size(), 4u);
    /* default parameters: command 0 and a null pointer (a 64-bit record pads between them) */
    ASSERT_EQ(pushes[0].record.size(), k_ptr32 ? 8u : 16u);
    EXPECT_EQ(u32_at(pushes[0].record, 0), 0u);
    EXPECT_EQ(ptr_at(pushes[0].record, k_ptr32 ? 4 : 8), 0u);
    for (size_t i = 1; i < pushes.size(); ++i) {
        EXPECT_EQ(u32_at(pushes[i].record, 0), recorded[i].cmd);
        ASSERT_FALSE(recorded[i].payload.empty()) << "command " << recorded[i].cmd;
        EXPECT_EQ(pushes[i].pointed, recorded[i].payload) << "command " << recorded[i].cmd;
    }
    ASSERT_EQ(ops->deinit(&h), 0);
    EXPECT_EQ(ops->destroy(&h), 0);
}

}  // namespace
