/* The colour-correction module over partition grids and frames on the simulated platform: files
 * read in row order into the partition sizes the init group points to, frames advancing then
 * freezing, the file index wrapping past 256 partitions, and the loads that raise or end the
 * process. Its records, codes and log lines are walked with every module in test_catalogue. */
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::module_instance;

/* A clc register file whose partition size tells which file it came from. */
std::string clc_file(int h, int v) {
    return isp_test::format(R"({"isp_clc": {"part_size": {"h": %d, "v": %d}}})", h, v);
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

class cc_module : public isp_test::platform_test {
  protected:
    /* Frames of a case over a grid, each file's size naming frame and partition. */
    std::string write_case(int part_h, int part_v, int frames = 2) {
        for (int f = 0; f < frames; ++f)
            for (int p = 0; p < part_h * part_v; ++p)
                frame_file(f, "rtl_clc_p" + std::to_string(p) + ".json",
                           clc_file(1000 * (f + 1) + p, 10 + p));
        return case_dir.path();
    }
};

TEST_F(cc_module, init_reads_the_grid_in_row_order_and_pushes_init_setup_and_matrices) {
    quiet_stderr();
    isp_test::pipe p(3, 2, write_case(3, 2));
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
    EXPECT_EQ(cc.context<JsonModuleContext>()->frame, 1);  // f1 exists: the next load reads it
    EXPECT_EQ(cc.context<JsonModuleContext>()->last_frame, 0u);
}

TEST_F(cc_module, frames_advance_then_freeze_on_the_last_directory) {
    quiet_stderr();
    isp_test::pipe p(1, 1, write_case(1, 1));
    module_instance cc(qv_isp_module_cc_json_register, p);
    size_capture sizes(1);
    ASSERT_EQ(cc.create(), 0);
    ASSERT_EQ(cc.init(), 0);
    ASSERT_EQ(cc.process(), 0);
    EXPECT_EQ(cc.context<JsonModuleContext>()->frame, 1);
    EXPECT_EQ(cc.context<JsonModuleContext>()->last_frame, 1u);
    ASSERT_EQ(cc.ops->process2(&cc.h), 0);
    EXPECT_EQ(cc.context<JsonModuleContext>()->frame, 1);
    ASSERT_EQ(sizes.h.size(), 3u);
    EXPECT_EQ(sizes.h[0][0], 1000);
    EXPECT_EQ(sizes.h[1][0], 2000);
    EXPECT_EQ(sizes.h[2][0], 2000);
}

TEST_F(cc_module, more_than_256_partitions_wrap_the_file_index) {
    quiet_stderr();
    for (int p = 0; p < 256; ++p)
        frame_file(0, "rtl_clc_p" + std::to_string(p) + ".json", clc_file(p, 1));
    isp_test::pipe p(17, 16, case_dir.path());  // 272 partitions: p256..p271 read p0..p15
    module_instance cc(qv_isp_module_cc_json_register, p);
    size_capture sizes(272);
    ASSERT_EQ(cc.create(), 0);
    EXPECT_EQ(cc.init(), 0);
    ASSERT_EQ(sizes.h.size(), 1u);
    EXPECT_EQ(sizes.h[0][0], 0);
    EXPECT_EQ(sizes.h[0][15], 15);
    EXPECT_EQ(sizes.h[0][16], 16);
    EXPECT_EQ(sizes.h[0][255], 255);
    EXPECT_EQ(sizes.h[0][256], 0);  // elements past 255 are never written
}

TEST_F(cc_module, a_root_that_is_not_an_object_raises_picojsons_type_error) {
    frame_file(0, "rtl_clc_p0.json", "[1, 2, 3]");
    isp_test::pipe p(1, 1, case_dir.path());
    module_instance cc(qv_isp_module_cc_json_register, p);
    ASSERT_EQ(cc.create(), 0);
    EXPECT_EQ(isp_test::runtime_error_of([&] { cc.init(); }), isp_test::type_error("object"));
}

TEST_F(cc_module, a_missing_register_file_ends_the_process_naming_its_path) {
    isp_test::pipe p(2, 1, write_case(1, 1));  // p1 does not exist
    module_instance cc(qv_isp_module_cc_json_register, p);
    ASSERT_EQ(cc.create(), 0);
    const std::string missing = case_dir.path() + "/cfgs/f0/rtl_clc_p1.json";
    EXPECT_DEATH(cc.init(), "\\[error\\] failed to read json file: " + missing);
}

}  // namespace
