/* What the simulated platform remembers: the calls in order, the log lines, the problems it
 * found, the failures it was asked to inject; and the log sink itself. */
#include <stdarg.h>
#include <stdio.h>

#include <atomic>
#include <set>
#include <utility>

#include "sim_state.h"

namespace isp_sim {
namespace internal {

namespace {

/* A platform: its lock, its state and the memory a reset made it forget. */
struct platform {
    std::recursive_mutex lock;
    state records;
    std::set<void *> retired;
};

/* Common to every platform; the two settings alone are shared between threads with their own
 * platforms, which must not synchronise through anything else. */
std::atomic<bool> log_echo{true};
std::atomic<int32_t> log_max_level{7};

/* The calling thread's own platform, null while it uses the shared one. */
thread_local platform *own_platform = nullptr;

/* Never destroyed: memory the library still holds at exit stays reachable through the state,
 * so a leak checker reports only what nobody holds any more. */
platform &current() {
    if (own_platform) return *own_platform;
    static platform &shared = *new platform();
    return shared;
}

/* One formatting pass into a stack buffer, a second one only for lines that do not fit. */
std::string format_line(const char *format, va_list args) {
    char small[512];
    va_list again;
    va_copy(again, args);
    const int length = vsnprintf(small, sizeof small, format, args);
    std::string text;
    if (length < 0) {
        text = "";
    } else if (static_cast<size_t>(length) < sizeof small) {
        text.assign(small, static_cast<size_t>(length));
    } else {
        text.resize(static_cast<size_t>(length) + 1);
        vsnprintf(&text[0], text.size(), format, again);
        text.resize(static_cast<size_t>(length));
    }
    va_end(again);
    return text;
}

}  // namespace

std::recursive_mutex &platform_lock() {
    return current().lock;
}

state &sim() {
    return current().records;
}

std::set<void *> &retired_memory() {
    return current().retired;
}

call &record(const char *function) {
    std::vector<call> &calls = sim().calls;
    calls.emplace_back();
    calls.back().function = function;
    return calls.back();
}

bool failing_now(const char *function, call &record) {
    state &s             = sim();
    const unsigned count = ++s.call_counts[function];
    auto range           = s.failures.equal_range(function);
    for (auto it = range.first; it != range.second; ++it) {
        if (it->second.at_call != count) continue;
        record.result = it->second.result;
        s.failures.erase(it);
        return true;
    }
    return false;
}

void problem(const std::string &text) {
    sim().problems.push_back(text);
}

std::string hex(uint64_t value) {
    char text[24];
    snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(value));
    return text;
}

}  // namespace internal

using internal::sim;

/* Echo settings are the caller's choice of output and survive a reset. */
ISP_SIM_API void reset() {
    const internal::guard locked(internal::platform_lock());
    internal::forget_memory();
    sim() = internal::state();
}

thread_platform::thread_platform() : outer_(internal::own_platform) {
    internal::own_platform = new internal::platform();
}

/* What the thread still holds stays reachable from the platform it goes back to. */
thread_platform::~thread_platform() {
    internal::platform *own = internal::own_platform;
    internal::forget_memory();
    internal::own_platform = static_cast<internal::platform *>(outer_);
    {
        const internal::guard locked(internal::platform_lock());
        internal::retired_memory().insert(own->retired.begin(), own->retired.end());
    }
    delete own;
}

ISP_SIM_API const std::vector<call> &calls() {
    const internal::guard locked(internal::platform_lock());
    return sim().calls;
}

namespace {

size_t held_bytes(const internal::state &s) {
    size_t bytes = 0;
    for (const call &c : s.calls)
        bytes += sizeof c + c.function.size() + c.record.size() + c.payload.size() + c.name.size();
    for (const log_line &l : s.log) bytes += sizeof l + l.tag.size() + l.text.size();
    return bytes;
}

/* The records only grow between two forgets, so their peak is reached right before one. */
size_t note_peak(internal::state &s) {
    const size_t held = held_bytes(s);
    if (held > s.peak_held_bytes) s.peak_held_bytes = held;
    return held;
}

}  // namespace

ISP_SIM_API record_counters counters() {
    const internal::guard locked(internal::platform_lock());
    internal::state &s = sim();
    record_counters n;
    n.held_calls      = s.calls.size();
    n.held_log_lines  = s.log.size();
    n.calls           = s.forgotten_calls + n.held_calls;
    n.log_lines       = s.forgotten_log_lines + n.held_log_lines;
    n.held_bytes      = note_peak(s);
    n.peak_held_bytes = s.peak_held_bytes;
    return n;
}

ISP_SIM_API void forget_records() {
    const internal::guard locked(internal::platform_lock());
    internal::state &s = sim();
    note_peak(s);
    s.forgotten_calls += s.calls.size();
    s.forgotten_log_lines += s.log.size();
    s.calls.clear();
    s.log.clear();
}

ISP_SIM_API std::vector<call> calls_of(const std::string &function) {
    const internal::guard locked(internal::platform_lock());
    std::vector<call> selected;
    for (const call &c : sim().calls)
        if (c.function == function) selected.push_back(c);
    return selected;
}

ISP_SIM_API const std::vector<log_line> &log_lines() {
    const internal::guard locked(internal::platform_lock());
    return sim().log;
}
ISP_SIM_API void set_log_echo(bool echo) {
    internal::log_echo = echo;
}
ISP_SIM_API void set_log_level(int32_t max_level) {
    internal::log_max_level = max_level;
}

ISP_SIM_API void fail_call(const std::string &function, unsigned nth, int32_t result) {
    const internal::guard locked(internal::platform_lock());
    internal::state &s = sim();
    s.failures.emplace(function, internal::injected_failure{s.call_counts[function] + nth, result});
}

ISP_SIM_API void on_setup(std::function<void(uint32_t, const VinHalSetupCmd *)> hook) {
    const internal::guard locked(internal::platform_lock());
    sim().setup_hook = std::move(hook);
}

ISP_SIM_API const std::vector<std::string> &problems() {
    const internal::guard locked(internal::platform_lock());
    return sim().problems;
}

}  // namespace isp_sim

ISP_SIM_EXPORT int32_t QV_SYS_LogPrint(int32_t level, const char *tag, int32_t flag,
                                       const char *format, ...) {
    const isp_sim::internal::guard locked(isp_sim::internal::platform_lock());
    va_list args;
    va_start(args, format);
    isp_sim::log_line line;
    line.level = level;
    line.tag   = tag ? tag : "";
    line.flag  = flag;
    line.text  = format ? isp_sim::internal::format_line(format, args) : "";
    va_end(args);
    if (isp_sim::internal::log_echo && level <= isp_sim::internal::log_max_level) {
        fwrite(line.text.data(), 1, line.text.size(), stderr);
        fflush(stderr);
    }
    isp_sim::sim().log.push_back(std::move(line));
    return 0;
}
