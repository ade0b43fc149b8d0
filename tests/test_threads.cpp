/* The library in a multi-threaded pipeline: two pipes, each with all 34 modules and a case of its
 * own, run at the same time on two threads, and the blocks of one pipe split over two threads.
 * Every run must record exactly what the same walk records alone on one thread. scripts/tsan.sh
 * runs this under ThreadSanitizer, which reports any state the calls share unguarded. */
#include <math.h>
#include <stdint.h>

#include <deque>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "isp_sim.h"
#include "modules/tables.h"
#include "tests/support/test_support.h"

namespace {

namespace fs = std::filesystem;
using isp_test::module_instance;

const int k_process_steps = 2;  // f1, then f1 again: the sample case has two frame directories

/* Every number of a register file halved, so that a second pipe replays other values. */
void halve_numbers(picojson::value &value) {
    if (value.is<double>()) {
        value = picojson::value(trunc(value.get<double>() / 2));
    } else if (value.is<picojson::array>()) {
        for (picojson::value &item : value.get<picojson::array>()) halve_numbers(item);
    } else if (value.is<picojson::object>()) {
        for (auto &member : value.get<picojson::object>()) halve_numbers(member.second);
    }
}

/* The sample case, or a copy of it with every value halved. */
void copy_sample_case(const isp_test::temp_dir &to, bool halved) {
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(ISP_SAMPLE_CASE_DIR)) {
        if (!entry.is_regular_file()) continue;
        picojson::value file(isp_test::parse_object(isp_test::read_file(entry.path())));
        if (halved) halve_numbers(file);
        to.write(fs::relative(entry.path(), ISP_SAMPLE_CASE_DIR), file.serialize());
    }
}

struct named_module {
    const char *name;
    module_instance m;
};

/* The modules of a pipe in the order the framework runs them, registered once beforehand: the
 * framework registers every module when it loads the library, before any pipe runs. */
std::vector<named_module> modules_of(isp_test::pipe &p,
                                     const std::vector<const isp::module_desc *> &rows) {
    std::vector<named_module> modules;
    for (const isp::module_desc *m : rows)
        modules.push_back(
            {m->name, module_instance(isp::registration_of(*m), p, 0x1000u + p.ctx.pipe_id)});
    return modules;
}

/* What the framework does with a pipe's modules, each step over all of them: create, init, then
 * process, trigger and sync per frame, deinit, destroy. The operations that fail, named. */
std::vector<std::string> walk(std::vector<named_module> &modules) {
    std::vector<std::string> failed;
    auto step = [&](const char *what, const named_module &n, int32_t status) {
        if (status != 0) failed.push_back(isp_test::format("%s %s %x", n.name, what, status));
    };
    for (named_module &n : modules) step("create", n, n.m.create());
    for (named_module &n : modules) step("init", n, n.m.init());
    for (int frame = 0; frame < k_process_steps; ++frame) {
        for (named_module &n : modules) {
            step("process", n, n.m.process());
            step("trigger", n, n.m.trigger());
            if (n.m.ops->sync) step("sync", n, n.m.sync());
        }
    }
    for (named_module &n : modules) step("deinit", n, n.m.deinit());
    for (named_module &n : modules) step("destroy", n, n.m.destroy());
    return failed;
}

/* What a walk leaves on the platform in use on its thread, for comparing two runs. Setup calls
 * carry the partition sizes the colour-correction init group points at, read while it is pushed;
 * the pointers themselves differ from run to run and are cleared. */
class recorder {
  public:
    explicit recorder(size_t partitions) {
        isp_sim::on_setup([this, partitions](uint32_t handle, const VinHalSetupCmd *cmd) {
            if (!cmd) return;
            const isp::group_desc *group = group_of(handle, cmd->cmd);
            std::vector<uint8_t> h, v;
            if (group && cmd->data &&
                isp::copy_partition_sizes(*group, cmd->data, partitions, h, v)) {
                h.insert(h.end(), v.begin(), v.end());
                sizes_.push_back(h);
            }
        });
    }
    ~recorder() { isp_sim::on_setup(nullptr); }
    recorder(const recorder &)            = delete;
    recorder &operator=(const recorder &) = delete;

    /* Each call, every member but the handle written out, under what it concerns: the wrapper's
     * block and channel, the memory tag, or the DMA buffers. Each of these is used by one
     * thread only, so its calls keep their order however two threads interleave. */
    std::map<std::string, std::vector<std::string>> calls() {
        std::map<std::string, std::vector<std::string>> by_subject;
        for (isp_sim::call c : isp_sim::calls()) {
            std::string subject = isp_test::format("tag %08x", c.tag);
            if (c.handle != 0) {
                const isp_sim::wrapper_state w = isp_sim::wrapper(c.handle);
                subject = isp_test::format("%s channel %d", w.block.c_str(), w.channel);
            } else if (c.function == "qv_hal_sys_mem_alloc_cached" ||
                       c.function == "QV_SYS_MemFree") {
                subject = "dma";
            }
            const isp::group_desc *group = group_of(c.handle, c.cmd);
            if (c.function == "vin_hal_wrapper_setup" && group && group->partition_sizes &&
                c.has_data) {
                _isp_clc_user_init_t init;
                isp_test::copy_bytes(c.payload, init);
                init.part_size_h = init.part_size_v = nullptr;
                c.payload                           = isp_test::bytes_of(init);
                c.payload.insert(c.payload.end(), sizes_.front().begin(), sizes_.front().end());
                sizes_.pop_front();
            }
            by_subject[subject].push_back(
                isp_test::format("%s result %d cmd %u data %d mode %u arg %x channel %u tag %x "
                                 "size %zu align %u phys %llx pipe %u name ",
                                 c.function.c_str(), c.result, c.cmd, c.has_data, c.mode, c.arg,
                                 c.channel, c.tag, c.size, c.align,
                                 static_cast<unsigned long long>(c.phys), c.pipe_id) +
                c.name + " record " + hex(c.record) + " payload " + hex(c.payload));
        }
        return by_subject;
    }

  private:
    static const isp::group_desc *group_of(uint32_t handle, uint32_t cmd) {
        return isp::find_pushed_group(isp_sim::wrapper(handle).block, cmd);
    }
    static std::string hex(const std::vector<uint8_t> &bytes) {
        std::string text;
        for (uint8_t b : bytes) text += isp_test::format("%02x", b);
        return text;
    }
    std::deque<std::vector<uint8_t>> sizes_;
};

/* One pipe's walk and what it leaves on the platform and in the register shadow. */
struct run {
    std::vector<std::string> failed;
    std::map<std::string, std::vector<std::string>> calls;
    std::vector<std::string> log, problems;
    uint32_t enable = 0;

    run() = default;
    run(std::vector<std::string> failures, recorder &records, const isp_test::pipe &p)
        : failed(std::move(failures)),
          calls(records.calls()),
          problems(isp_sim::problems()),
          enable(p.shadow.module_enable) {
        for (const isp_sim::log_line &l : isp_sim::log_lines()) log.push_back(l.text);
    }
};

void check_same(const run &alone, const run &together) {
    EXPECT_EQ(together.failed, std::vector<std::string>());
    EXPECT_EQ(together.problems, std::vector<std::string>());
    EXPECT_EQ(together.log, alone.log);
    EXPECT_EQ(together.enable, alone.enable);
    ASSERT_EQ(together.calls.size(), alone.calls.size());
    for (const auto &[subject, calls] : alone.calls) {
        SCOPED_TRACE(subject);
        EXPECT_EQ(together.calls.at(subject), calls);
    }
}

/* The pushes of a run to one wrapper. */
std::vector<std::string> pushes_to(const run &r, const std::string &wrapper) {
    std::vector<std::string> pushes;
    for (const std::string &call : r.calls.at(wrapper))
        if (call.rfind("vin_hal_wrapper_setup", 0) == 0) pushes.push_back(call);
    return pushes;
}

class Threads : public isp_test::platform_test {
  protected:
    Threads() : pipes{{2, 2, first.path(), 2}, {2, 2, second.path(), 2}} {
        copy_sample_case(first, false);
        copy_sample_case(second, true);
        pipes[1].ctx.pipe_id = 1;
    }
    void SetUp() override {
        platform_test::SetUp();
        for (isp_test::pipe &p : pipes) instances.push_back(modules_of(p, isp::pipeline_order()));
    }

    /* Walks pipe i on a platform of the thread's own, as if it ran alone in the process. */
    run walk_alone(size_t i) {
        isp_sim::thread_platform own;
        recorder records(4);
        pipes[i].shadow.module_enable   = 0;
        std::vector<std::string> failed = walk(instances[i]);
        return run(failed, records, pipes[i]);
    }

    isp_test::temp_dir first, second;
    isp_test::pipe pipes[2];
    std::vector<std::vector<named_module>> instances;
};

TEST_F(Threads, TwoPipesOnTwoThreadsPushWhatEachPushesAlone) {
    const run alone[2] = {walk_alone(0), walk_alone(1)};
    ASSERT_EQ(alone[0].failed, std::vector<std::string>());
    ASSERT_EQ(alone[1].failed, std::vector<std::string>());
    /* the second case's values are not the first's */
    EXPECT_NE(pushes_to(alone[0], "wbc channel 0"), pushes_to(alone[1], "wbc channel 0"));

    run together[2];
    std::thread one([&] { together[0] = walk_alone(0); });
    std::thread two([&] { together[1] = walk_alone(1); });
    one.join();
    two.join();
    for (size_t i = 0; i < 2; ++i) {
        SCOPED_TRACE(i);
        check_same(alone[i], together[i]);
    }
}

/* The framework serialises only init and deinit of modules sharing a block: blocks run on
 * threads of their own, here the front of the picture path on one, the rest on the other, on
 * the shared platform. The two statistics blocks stay on one thread: the platform's DMA
 * addresses, which their pushes carry, follow the order of their allocations. */
TEST_F(Threads, TheBlocksOfOnePipeOnTwoThreadsPushWhatTheyPushOnOne) {
    std::vector<const isp::module_desc *> halves[2];
    std::vector<std::string> front_blocks;
    for (const isp::module_desc *m : isp::pipeline_order()) {
        bool front = false;
        for (const std::string &b : front_blocks) front = front || b == m->block;
        if (!front && front_blocks.size() < isp::blocks().size() / 2) {
            front_blocks.push_back(m->block);
            front = true;
        }
        halves[front ? 0 : 1].push_back(m);
    }
    isp_test::pipe &p                  = pipes[0];
    std::vector<named_module> parts[2] = {modules_of(p, halves[0]), modules_of(p, halves[1])};

    auto run_shared = [&](bool at_once) {
        isp_sim::reset();
        recorder records(4);
        p.shadow.module_enable = 0;
        std::vector<std::string> failed[2];
        if (at_once) {
            std::thread one([&] { failed[0] = walk(parts[0]); });
            std::thread two([&] { failed[1] = walk(parts[1]); });
            one.join();
            two.join();
        } else {
            for (size_t i = 0; i < 2; ++i) failed[i] = walk(parts[i]);
        }
        failed[0].insert(failed[0].end(), failed[1].begin(), failed[1].end());
        EXPECT_EQ(isp_sim::live_allocations(), (std::map<uint32_t, int>()));
        return run(failed[0], records, p);
    };
    const run alone = run_shared(false);
    ASSERT_EQ(alone.failed, std::vector<std::string>());
    check_same(alone, run_shared(true));
}

}  // namespace
