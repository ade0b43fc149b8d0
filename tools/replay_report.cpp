/* Tables and summary of a replay. */
#include "tools/replay_report.h"

#include <map>

#include <fmt/core.h>

#include "tools/text_table.h"

namespace isp_case {
namespace {

const size_t messages_per_row = 5;
const size_t findings_shown   = 10;

bool loads(op_kind kind) {
    return kind == op_kind::init || kind == op_kind::process;
}

std::string frames_text(const module_step &m) {
    for (const op_outcome &op : m.ops) {
        if (!loads(op.kind)) continue;
        if (m.module->kind == file_kind::pattern) return "ptn";
        if (op.frames_read.empty()) return "-";
        std::string text;
        for (int frame : op.frames_read) {
            const std::string name = "f" + std::to_string(frame);
            if (text.find(name) == std::string::npos) text += (text.empty() ? "" : ",") + name;
        }
        return text;
    }
    return "";
}

std::string trigger_text(const op_outcome &op) {
    if (op.ran && !op.failed() && op.wrapper_triggers == 0) return "no-op";
    return status_text(op);
}

std::string push_text(const pushed_group &p) {
    const std::string name = p.group ? p.group->name : "cmd";
    return fmt::format("{}#{} {}B", name, p.cmd, p.bytes.size());
}

/* The pushed groups of a row, one run per channel for channelled modules. */
std::vector<item_run> pushed_runs(const module_step &m) {
    std::map<int, std::vector<std::string>> by_channel;
    for (const op_outcome &op : m.ops)
        for (const pushed_group &p : op.pushes) by_channel[p.channel].push_back(push_text(p));
    const bool channelled = m.module->kind == file_kind::per_channel;
    std::vector<item_run> runs;
    for (auto &[channel, items] : by_channel)
        runs.push_back({channelled ? fmt::format("c{}: ", channel) : "", std::move(items)});
    return runs;
}

std::string trimmed(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return text;
}

std::vector<std::string> detail_lines(const module_step &m, int log_level) {
    std::vector<std::string> details;
    for (const op_outcome &op : m.ops) {
        for (const isp_sim::log_line &line : op.log)
            if (line.level <= log_level) details.push_back(trimmed(line.text));
        if (!op.exception.empty())
            details.push_back(fmt::format("{} raised: {}", op_name(op.kind), op.exception));
        for (size_t i = 0; i < op.messages.size() && i < messages_per_row; ++i)
            details.push_back("stderr: " + op.messages[i]);
        if (op.messages.size() > messages_per_row)
            details.push_back(fmt::format("stderr: ... and {} more lines",
                                          op.messages.size() - messages_per_row));
    }
    return details;
}

bool has_news(const module_step &m, const std::vector<std::string> &details) {
    if (!details.empty()) return true;
    for (const op_outcome &op : m.ops)
        if (op.failed() || !op.pushes.empty()) return true;
    return false;
}

/* One table per step. A step that loads nothing (teardown) lists only the modules that have
 * something to say. */
void print_step(std::FILE *out, const replay_step &step, int log_level) {
    std::vector<std::string> header = {"module"};
    std::string ops;
    bool with_loads = false, with_enable = false;
    for (const op_outcome &op : step.modules.front().ops) {
        ops += (ops.empty() ? "" : ", ") + std::string(op_name(op.kind));
        if (op.kind == op_kind::reg) continue;
        header.push_back(op_name(op.kind));
        with_loads  = with_loads || loads(op.kind);
        with_enable = with_enable || op.kind == op_kind::sync;
    }
    if (with_loads) header.push_back("read");
    if (with_enable) header.push_back("enable");
    header.push_back(with_loads ? "pushed (group#cmd size)" : "");
    const bool only_news = !with_loads;

    text_table table(header);
    size_t quiet = 0;
    for (const module_step &m : step.modules) {
        std::vector<std::string> details = detail_lines(m, log_level);
        if (only_news && !has_news(m, details)) {
            ++quiet;
            continue;
        }
        std::vector<std::string> cells = {m.module->name};
        for (const op_outcome &op : m.ops) {
            if (op.kind == op_kind::reg) continue;
            cells.push_back(op.kind == op_kind::trigger ? trigger_text(op) : status_text(op));
        }
        if (with_loads) cells.push_back(frames_text(m));
        if (with_enable)
            cells.push_back(m.enable < 0 ? "-"
                                         : fmt::format("b{}={}", m.module->enable_bit, m.enable));
        table.add(cells, pushed_runs(m), std::move(details));
    }
    fmt::print(out, "\n{}: {}\n", step.name, ops);
    if (quiet == step.modules.size())
        fmt::print(out, "  all {} modules ok\n", quiet);
    else
        table.print(out);
}

struct totals {
    size_t ops = 0, failed = 0, groups = 0, bytes = 0, messages = 0;
    std::map<int, size_t> log_by_level;
    std::vector<std::string> failures;
};

totals count(const replay_result &result) {
    totals t;
    for (const replay_step &step : result.steps) {
        for (const module_step &m : step.modules) {
            for (const op_outcome &op : m.ops) {
                if (!op.ran) continue;
                ++t.ops;
                t.groups += op.pushes.size();
                for (const pushed_group &p : op.pushes) t.bytes += p.bytes.size();
                t.messages += op.messages.size();
                for (const isp_sim::log_line &line : op.log) ++t.log_by_level[line.level];
                if (!op.failed()) continue;
                ++t.failed;
                t.failures.push_back(fmt::format("{} {} ({}): {}", m.module->name, op_name(op.kind),
                                                 step.name, status_text(op)));
            }
        }
    }
    return t;
}

void print_summary(std::FILE *out, const replay_settings &settings, const replay_result &result,
                   int log_level) {
    const totals t = count(result);
    auto level     = [&](int l) { return t.log_by_level.count(l) ? t.log_by_level.at(l) : 0; };
    fmt::print(out, "\nsummary\n");
    fmt::print(out, "  operations  {} run, {} failed\n", t.ops, t.failed);
    fmt::print(out, "  pushed      {} groups, {} bytes\n", t.groups, t.bytes);
    fmt::print(out, "  log lines   {} errors, {} warnings, {} debug (levels up to {} shown)\n",
               level(3), level(4), level(7), log_level);
    fmt::print(out, "  stderr      {} lines from the converters\n", t.messages);
    if (result.platform_problems.empty()) fmt::print(out, "  platform    no leaks, no misuse\n");
    for (const std::string &problem : result.platform_problems)
        fmt::print(out, "  platform    {}\n", problem);
    for (const std::string &failure : t.failures) fmt::print(out, "  failed      {}\n", failure);
    const finding_counts lint = count_findings(result.findings);
    fmt::print(out, "  findings    {} errors, {} warnings\n", lint.errors, lint.warnings);
    for (size_t i = 0; i < result.findings.size() && i < findings_shown; ++i)
        fmt::print(out, "  finding     {}\n", finding_line(result.findings[i]));
    if (result.findings.size() > findings_shown)
        fmt::print(out, "  finding     ... and {} more: isp-case check {} lists them all\n",
                   result.findings.size() - findings_shown, settings.run.case_path);
    const std::string done = fmt::format("{} modules, every operation returned 0 on {} frame{}",
                                         settings.run.modules.size(), settings.run.frames,
                                         settings.run.frames == 1 ? "" : "s");
    if (result.failed())
        fmt::print(out, "  result      FAILED\n");
    else if (lint.warnings > 0 || t.messages > 0)
        fmt::print(out, "  result      not clean: {} warnings, {} converter lines; {}\n",
                   lint.warnings, t.messages, done);
    else
        fmt::print(out, "  result      ok: {}\n", done);
}

}  // namespace

std::string status_text(const op_outcome &op) {
    if (!op.ran) return "-";
    if (!op.exception.empty()) return "raised";
    if (op.status == 0) return "ok";
    if (op.status == -1) return "-1";
    return fmt::format("0x{:08X}", static_cast<uint32_t>(op.status));
}

void print_replay(std::FILE *out, const replay_settings &settings, const replay_result &result,
                  int log_level) {
    const run_settings &run = settings.run;
    fmt::print(out, "replay of {}: grid {}x{}, {} channel{}, {} frame{}, {} modules\n",
               run.case_path, run.part_h, run.part_v, run.channels, run.channels == 1 ? "" : "s",
               run.frames, run.frames == 1 ? "" : "s", run.modules.size());
    if (!result.steps.empty() && !result.steps.front().modules.empty())
        for (const replay_step &step : result.steps) print_step(out, step, log_level);
    print_summary(out, settings, result, log_level);
}

}  // namespace isp_case
