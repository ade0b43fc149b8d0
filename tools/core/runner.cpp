/* The replay: register all modules, create all, init all; per frame process all, trigger all,
 * sync all; deinit all, destroy all. Each operation's effects are cut out of the simulated
 * platform's records by position, since the operations run one after another, and what it wrote
 * on standard error is what the capture gained meanwhile. */
#include "tools/core/runner.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>

#include "isp_json.h"
#include "tools/core/stderr_stream.h"

namespace isp_case {
namespace {

/* What one module needs between operations: its table and the framework's handle. */
struct module_slot {
    const module_info *info = nullptr;
    JsonModuleOps *ops      = nullptr;
    JsonModuleHandle handle{};
};

/* The colour-correction init group carries pointers; the arrays behind them are copied while
 * the push is under way, in push order. */
struct part_sizes {
    std::vector<uint8_t> h, v;
};

JsonModuleOp operation(const JsonModuleOps &ops, op_kind kind) {
    switch (kind) {
        case op_kind::create:
            return ops.create;
        case op_kind::init:
            return ops.init;
        case op_kind::process:
            return ops.process;
        case op_kind::trigger:
            return ops.trigger;
        case op_kind::sync:
            return ops.sync;
        case op_kind::deinit:
            return ops.deinit;
        case op_kind::destroy:
            return ops.destroy;
        case op_kind::reg:
            break;
    }
    return nullptr;
}

/* The frame index the module's next load reads, from its context; -1 for pattern files. */
int next_frame(const module_info &module, const void *context) {
    if (!context || file_kind_of(module) == file_kind::pattern) return -1;
    if (file_kind_of(module) == file_kind::per_channel)
        return static_cast<const JsonChnContext *>(context)->frame;
    return static_cast<const JsonModuleContext *>(context)->frame;
}

/* The last frame directory the cycles up to `frames` read: the library steps to cfgs/f<N+1>
 * after each load while it is a directory, so the directories are counted as it finds them. */
int last_frame_dir(const std::string &case_path, int frames) {
    int last = 0;
    while (last < frames && is_directory(join_path(case_path, "cfgs/f" + std::to_string(last + 1))))
        ++last;
    return last;
}

/* A load steps the frame after every channel's pass while frames remain, so channel c read
 * the frame before the load plus the steps taken before its pass. */
std::vector<int> frames_of_load(const module_info &module, int before, int after, int channels) {
    if (before < 0) return {};
    if (file_kind_of(module) != file_kind::per_channel) return {before};
    std::vector<int> frames;
    for (int c = 0; c < channels && c < max_channels; ++c)
        frames.push_back(before + std::min(c, after - before));
    return frames;
}

class runner {
  public:
    runner(const replay_settings &settings, const step_sink &sink)
        : settings_(settings), sink_(sink) {
        const run_settings &run = settings.run;
        pipe_.attr.part_h       = static_cast<uint8_t>(run.part_h);
        pipe_.attr.part_v       = static_cast<uint8_t>(run.part_v);
        pipe_.reg_shadow        = &shadow_;
        pipe_.channel_count     = run.channels;
        std::strncpy(pipe_.case_path, run.read_root().c_str(), sizeof pipe_.case_path - 1);
        for (const module_info *m : settings.bypass)
            if (const int bit = bypass_bit_of(*m); bit >= 0)
                pipe_.bypass[bit / 8] |= 1u << (bit % 8);
        for (const module_info *m : run.modules) {
            module_slot slot;
            slot.info        = m;
            slot.handle.pipe = &pipe_;
            slots_.push_back(slot);
        }
        isp_sim::on_setup(
            [this](uint32_t handle, const VinHalSetupCmd *cmd) { keep_part_sizes(handle, cmd); });
    }
    ~runner() {
        isp_sim::on_setup([](uint32_t, const VinHalSetupCmd *) {});
    }
    runner(const runner &)            = delete; /* the platform's hook holds this */
    runner &operator=(const runner &) = delete;

    replay_result run() {
        step(setup_step(), {op_kind::reg, op_kind::create, op_kind::init});
        const int frames   = settings_.run.frames;
        const int last_dir = last_frame_dir(settings_.run.case_path, frames);
        for (int frame = 1; frame <= frames; ++frame) {
            if (settings_.progress) show_progress(frame, frames);
            step(frame_step(frame, last_dir), {op_kind::process, op_kind::trigger, op_kind::sync});
        }
        if (settings_.progress) std::fprintf(capture_.original(), "\r%*s\r", 32, "");
        step(teardown_step(), {op_kind::deinit, op_kind::destroy});
        replay_result result;
        result.platform_problems = platform_problems();
        return result;
    }

  private:
    /* Every module runs the first operation, then every module the next one; the step goes to
     * the sink and is dropped. */
    void step(const step_id &id, std::initializer_list<op_kind> kinds) {
        replay_step s{id, {}};
        for (module_slot &slot : slots_) s.modules.push_back({slot.info, {}, -1, {}});
        for (op_kind kind : kinds) {
            for (size_t i = 0; i < slots_.size(); ++i) {
                s.modules[i].ops.push_back(run_op(slots_[i], kind));
                if (updates_enable(*slots_[i].info, kind))
                    s.modules[i].enable = enable_bit(*slots_[i].info);
            }
        }
        for (module_step &m : s.modules) m.findings = findings_of(id, m);
        sink_(s);
    }

    /* A few times a second at most: a terminal takes longer to draw than a frame to run. */
    void show_progress(int frame, int frames) {
        const auto now = std::chrono::steady_clock::now();
        if (frame < frames && now - last_progress_ < std::chrono::milliseconds(200)) return;
        last_progress_ = now;
        std::fprintf(capture_.original(), "\rframe %d of %d", frame, frames);
    }

    static bool updates_enable(const module_info &m, op_kind kind) {
        return (m.enable == enable_update::in_sync && kind == op_kind::sync) ||
               (m.enable == enable_update::in_trigger && kind == op_kind::trigger);
    }

    int enable_bit(const module_info &m) const {
        const int bit = enable_bit_of(m);
        return bit < 0 ? -1 : int((shadow_.module_enable >> bit) & 1u);
    }

    op_outcome run_op(module_slot &slot, op_kind kind) {
        op_outcome out;
        out.kind               = kind;
        const size_t calls     = isp_sim::calls().size();
        const size_t log       = isp_sim::log_lines().size();
        const bool loads       = kind == op_kind::init || kind == op_kind::process;
        const int frame_before = next_frame(*slot.info, slot.handle.priv);
        part_sizes_.clear();
        if (kind == op_kind::reg) {
            out.ran    = true;
            out.status = registration_of(*slot.info)(&slot.ops);
        } else if (JsonModuleOp fn = slot.ops ? operation(*slot.ops, kind) : nullptr) {
            out.ran = true;
            try {
                out.status = fn(&slot.handle);
            } catch (const std::exception &e) {
                out.exception = e.what();
            } catch (...) {
                out.exception = "an exception that is not a std::exception";
            }
        }
        if (out.ran) out.messages = capture_.take();
        collect_calls(*slot.info, calls, out);
        const std::vector<isp_sim::log_line> &lines = isp_sim::log_lines();
        out.log.assign(lines.begin() + long(log), lines.end());
        if (!settings_.keep_platform_records) isp_sim::forget_records();
        if (loads && out.ran)
            out.frames_read =
                frames_of_load(*slot.info, frame_before, next_frame(*slot.info, slot.handle.priv),
                               pipe_.channel_count);
        return out;
    }

    void collect_calls(const module_info &module, size_t first, op_outcome &out) {
        const std::vector<isp_sim::call> &calls = isp_sim::calls();
        size_t part_sizes_used                  = 0;
        for (size_t i = first; i < calls.size(); ++i) {
            const isp_sim::call &c = calls[i];
            if (c.function == "vin_hal_wrapper_trigger" && c.result == 0) ++out.wrapper_triggers;
            if (c.function != "vin_hal_wrapper_setup" || !c.has_data || c.result != 0) continue;
            pushed_group push;
            push.handle  = c.handle;
            push.channel = isp_sim::wrapper(c.handle).channel;
            push.cmd     = c.cmd;
            push.group   = find_pushed_group(module.block, c.cmd);
            push.size    = c.payload.size();
            if (settings_.keep_bytes) push.bytes = c.payload;
            if (push.group && push.group->partition_sizes && part_sizes_used < part_sizes_.size()) {
                push.part_size_h = part_sizes_[part_sizes_used].h;
                push.part_size_v = part_sizes_[part_sizes_used].v;
                ++part_sizes_used;
            }
            out.pushes.push_back(std::move(push));
        }
    }

    void keep_part_sizes(uint32_t handle, const VinHalSetupCmd *cmd) {
        if (!settings_.keep_bytes || !cmd || !cmd->data) return;
        const isp::group_desc *group =
            isp::find_pushed_group(isp_sim::wrapper(handle).block, cmd->cmd);
        const size_t count = size_t(pipe_.attr.part_h) * pipe_.attr.part_v;
        part_sizes sizes;
        if (group && isp::copy_partition_sizes(*group, cmd->data, count, sizes.h, sizes.v))
            part_sizes_.push_back(std::move(sizes));
    }

    static std::vector<std::string> platform_problems() {
        std::vector<std::string> problems = isp_sim::problems();
        for (const auto &[tag, count] : isp_sim::live_allocations()) {
            if (count == 0) continue;
            char line[96];
            std::snprintf(line, sizeof line, "%d context allocation(s) under tag 0x%08X not freed",
                          count, tag);
            problems.push_back(line);
        }
        if (size_t n = isp_sim::live_wrappers())
            problems.push_back(std::to_string(n) + " wrapper(s) not destroyed");
        if (size_t n = isp_sim::live_dma_buffers())
            problems.push_back(std::to_string(n) + " statistics buffer(s) not freed");
        return problems;
    }

    const replay_settings &settings_;
    const step_sink &sink_;
    stderr_stream capture_;
    std::chrono::steady_clock::time_point last_progress_;
    PipeContext pipe_{};
    IspRegShadow shadow_{};
    std::vector<module_slot> slots_;
    std::vector<part_sizes> part_sizes_;
};

}  // namespace

replay_result replay(const replay_settings &settings, const step_sink &sink) {
    isp_sim::reset();
    isp_sim::set_log_echo(false);
    isp_sim::set_log_level(7);
    runner r(settings, sink);
    return r.run();
}

}  // namespace isp_case
