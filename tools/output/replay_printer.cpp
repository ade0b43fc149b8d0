/* Tables, one-line frames, JSON lines and the summary of a replay. */
#include "tools/output/replay_printer.h"

#include <algorithm>
#include <map>
#include <utility>

#include <fmt/core.h>

#include "tools/output/escape.h"
#include "tools/output/json.h"
#include "tools/output/text_table.h"

namespace isp_case {
namespace {

const size_t messages_per_row = 5;

bool loads(op_kind kind) {
    return kind == op_kind::init || kind == op_kind::process;
}

std::string frames_text(const module_step &m) {
    for (const op_outcome &op : m.ops) {
        if (!loads(op.kind)) continue;
        if (file_kind_of(*m.module) == file_kind::pattern) return "ptn";
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
    return fmt::format("{}#{} {}B", name, p.cmd, p.size);
}

/* The pushed groups of a row, one run per channel for channelled modules. */
std::vector<item_run> pushed_runs(const module_step &m) {
    std::map<int, std::vector<std::string>> by_channel;
    for (const op_outcome &op : m.ops)
        for (const pushed_group &p : op.pushes) by_channel[p.channel].push_back(push_text(p));
    const bool channelled = file_kind_of(*m.module) == file_kind::per_channel;
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

enum class rows { all, news, findings };

/* A row has news when it failed, pushed or has something to say. */
bool has_news(const module_step &m, const std::vector<std::string> &details) {
    if (!details.empty()) return true;
    for (const op_outcome &op : m.ops)
        if (op.failed() || !op.pushes.empty()) return true;
    return false;
}

std::string ops_text(const replay_step &step) {
    std::string ops;
    for (const op_outcome &op : step.modules.front().ops)
        ops += (ops.empty() ? "" : ", ") + std::string(op_name(op.kind));
    return ops;
}

/* The table of a step: every module, those with news, or those with findings. Prints nothing and
 * returns the number of rows left out when none is left. */
size_t print_table(std::FILE *out, const replay_step &step, int log_level, rows which,
                   const std::vector<std::vector<finding>> &findings) {
    std::vector<std::string> header = {"module"};
    bool with_loads = false, with_enable = false;
    for (const op_outcome &op : step.modules.front().ops) {
        if (op.kind == op_kind::reg) continue;
        header.push_back(op_name(op.kind));
        with_loads  = with_loads || loads(op.kind);
        with_enable = with_enable || op.kind == op_kind::sync;
    }
    if (with_loads) header.push_back("read");
    if (with_enable) header.push_back("enable");
    header.push_back(with_loads ? "pushed (group#cmd size)" : "");

    text_table table(header);
    size_t left_out = 0;
    for (size_t i = 0; i < step.modules.size(); ++i) {
        const module_step &m             = step.modules[i];
        std::vector<std::string> details = detail_lines(m, log_level);
        if ((which == rows::news && !has_news(m, details)) ||
            (which == rows::findings && findings[i].empty())) {
            ++left_out;
            continue;
        }
        std::vector<std::string> cells = {m.module->name};
        for (const op_outcome &op : m.ops) {
            if (op.kind == op_kind::reg) continue;
            cells.push_back(op.kind == op_kind::trigger ? trigger_text(op) : status_text(op));
        }
        if (with_loads) cells.push_back(frames_text(m));
        if (with_enable)
            cells.push_back(
                m.enable < 0 ? "-" : fmt::format("b{}={}", enable_bit_of(*m.module), m.enable));
        for (std::string &line : details) line = terminal_text(line);
        table.add(cells, pushed_runs(m), std::move(details));
    }
    if (left_out < step.modules.size()) table.print(out);
    return left_out;
}

std::string plural(size_t n, const char *word) {
    return fmt::format("{} {}{}", grouped(n), word, n == 1 ? "" : "s");
}

size_t count_of(const step_outcome &o, const char *name) {
    for (const auto &[key, value] : o.counts)
        if (key == name) return value;
    return 0;
}

/* "frame 17: 34 modules ok, 465 groups, 85,674 bytes" */
std::string one_line(const step_outcome &o) {
    std::string text = o.name + ": " + plural(count_of(o, "ok"), "module") + " ok";
    if (size_t n = count_of(o, "failed")) text += fmt::format(", {} failed", n);
    if (size_t n = count_of(o, "warned")) text += fmt::format(", {} with warnings", n);
    return text + ", " + plural(count_of(o, "groups"), "group") + ", " +
           plural(count_of(o, "bytes"), "byte");
}

json_fields json_module(const module_step &m, int log_level) {
    json_fields ops;
    for (const op_outcome &op : m.ops)
        ops.add(op_name(op.kind), op.kind == op_kind::trigger ? trigger_text(op) : status_text(op));
    std::vector<json_fields> pushed;
    for (const op_outcome &op : m.ops)
        for (const pushed_group &p : op.pushes)
            pushed.push_back(json_fields()
                                 .add("group", p.group ? p.group->name : "")
                                 .add("cmd", size_t(p.cmd))
                                 .add("channel", int(p.channel))
                                 .add("bytes", p.size));
    json_fields o;
    o.add("module", m.module->name).add("operations", ops);
    o.add("read", frames_text(m));
    if (m.enable < 0)
        o.add_null("enable");
    else
        o.add("enable", m.enable);
    return o.add("pushed", pushed).add("details", json_texts(detail_lines(m, log_level)));
}

}  // namespace

std::vector<std::vector<finding>> findings_of(const replay_step &step) {
    std::vector<std::vector<finding>> all(step.modules.size());
    for (size_t i = 0; i < step.modules.size(); ++i) {
        const module_step &m = step.modules[i];
        for (const op_outcome &op : m.ops) {
            const auto add = [&](severity level, finding_kind kind, const std::string &text) {
                finding f;
                f.level   = level;
                f.kind    = kind;
                f.step    = step.name;
                f.module  = m.module->name;
                f.message = std::string(op_name(op.kind)) + ": " + text;
                all[i].push_back(std::move(f));
            };
            if (!op.exception.empty())
                add(severity::error, finding_kind::operation_raised, "raised: " + op.exception);
            else if (op.failed())
                add(severity::error, finding_kind::operation_failed, "returned " + status_text(op));
            for (const std::string &message : op.messages)
                add(severity::error, finding_kind::field_not_read, message);
            /* a failed operation's own error report is part of its failure */
            for (const isp_sim::log_line &line : op.log)
                if (line.level <= 4 && !op.failed())
                    add(severity::warning, finding_kind::library_warning, trimmed(line.text));
        }
    }
    return all;
}

std::string status_text(const op_outcome &op) {
    if (!op.ran) return "-";
    if (!op.exception.empty()) return "raised";
    if (op.status == 0) return "ok";
    if (op.status == -1) return "-1";
    return fmt::format("0x{:08X}", static_cast<uint32_t>(op.status));
}

replay_printer::replay_printer(std::FILE *out, const replay_settings &settings,
                               const replay_output &output, const std::vector<finding> &preflight)
    : out_(out), settings_(settings), output_(output) {
    for (const finding &f : preflight) tally_.add(f);
    if (output.detail == verbosity::quiet) return;
    const run_settings &run = settings.run;
    if (output.format == output_format::json) {
        std::vector<std::string> names;
        for (const module_info *m : run.modules) names.push_back(m->name);
        fmt::print(out, "{}\n",
                   json_fields()
                       .add("type", "start")
                       .add("command", "replay")
                       .add("case", run.case_path)
                       .add("grid", fmt::format("{}x{}", run.part_h, run.part_v))
                       .add("channels", run.channels)
                       .add("frames", run.frames)
                       .add("modules", json_texts(names))
                       .serialize());
    } else {
        fmt::print(out, "replay of {}: grid {}x{}, {}, {}, {} modules\n",
                   terminal_text(run.case_path), run.part_h, run.part_v,
                   plural(size_t(run.channels), "channel"), plural(size_t(run.frames), "frame"),
                   run.modules.size());
    }
    std::fflush(out);
}

void replay_printer::step(const replay_step &step) {
    if (step.modules.empty()) return;
    const std::vector<std::vector<finding>> findings = findings_of(step);
    step_outcome outcome;
    outcome.name = step.name;
    size_t ok = 0, failed = 0, warned = 0, ops = 0, failed_ops = 0, groups = 0, bytes = 0,
           messages = 0, log = 0;
    for (size_t i = 0; i < step.modules.size(); ++i) {
        for (const op_outcome &op : step.modules[i].ops) {
            if (!op.ran) continue;
            ++ops;
            failed_ops += op.failed();
            groups += op.pushes.size();
            for (const pushed_group &p : op.pushes) bytes += p.size;
            messages += op.messages.size();
            log += op.log.size();
            for (const isp_sim::log_line &line : op.log)
                if (line.level >= 0 && line.level < 8) ++log_by_level_[line.level];
        }
        bool error = false;
        for (const finding &f : findings[i]) {
            error = error || f.level == severity::error;
            tally_.add(f);
            outcome.findings.push_back(f);
        }
        ok += findings[i].empty();
        failed += error;
        warned += !findings[i].empty() && !error;
    }
    ops_ += ops;
    failed_ops_ += failed_ops;
    groups_ += groups;
    bytes_ += bytes;
    messages_ += messages;
    outcome.counts = {{"modules", step.modules.size()},
                      {"ok", ok},
                      {"failed", failed},
                      {"warned", warned},
                      {"operations", ops},
                      {"failed_operations", failed_ops},
                      {"groups", groups},
                      {"bytes", bytes},
                      {"log_lines", log},
                      {"stderr_lines", messages}};
    if (output_.detail != verbosity::quiet) {
        if (output_.format == output_format::json)
            json_step(step, outcome);
        else
            text_step(step, outcome, findings);
        std::fflush(out_);
    }
    if (step.name.rfind("frame ", 0) == 0) ++frames_seen_;
}

void replay_printer::text_step(const replay_step &step, const step_outcome &outcome,
                               const std::vector<std::vector<finding>> &findings) {
    const bool frame = step.name.rfind("frame ", 0) == 0;
    if (frame && frames_seen_ > 0 && output_.detail == verbosity::normal) {
        fmt::print(out_, "{}{}\n", after_block_ ? "\n" : "", one_line(outcome));
        after_block_ = false;
        if (!outcome.findings.empty())
            print_table(out_, step, output_.log_level, rows::findings, findings);
        return;
    }
    fmt::print(out_, "\n{}: {}\n", step.name, ops_text(step));
    const bool loading =
        step.modules.front().ops.size() > 0 &&
        std::any_of(step.modules.front().ops.begin(), step.modules.front().ops.end(),
                    [](const op_outcome &op) { return loads(op.kind); });
    const size_t left_out =
        print_table(out_, step, output_.log_level, loading ? rows::all : rows::news, findings);
    if (left_out == step.modules.size()) fmt::print(out_, "  all {} modules ok\n", left_out);
    after_block_ = true;
}

void replay_printer::json_step(const replay_step &step, const step_outcome &outcome) {
    json_fields o = isp_case::json_step(outcome);
    if (output_.detail == verbosity::verbose) {
        std::vector<json_fields> modules;
        for (const module_step &m : step.modules)
            modules.push_back(json_module(m, output_.log_level));
        o.add("rows", modules);
    }
    fmt::print(out_, "{}\n", o.serialize());
}

void replay_printer::finish(const replay_result &result, const dump_summary *dump,
                            const std::string &dump_dir) {
    const finding_counts &found = tally_.counts();
    const size_t errors =
        found.errors + result.platform_problems.size() + (dump ? dump->problems.size() : 0);
    const size_t warnings   = found.warnings;
    passed_                 = errors == 0 && (!output_.strict || warnings == 0);
    const char *verdict     = !passed_ ? "failed" : warnings ? "not clean" : "ok";
    const run_settings &run = settings_.run;
    if (output_.format == output_format::json) {
        json_fields o;
        o.add("type", "summary").add("command", "replay").add("case", run.case_path);
        o.add("frames", frames_seen_).add("operations", ops_).add("failed_operations", failed_ops_);
        o.add("groups", groups_).add("bytes", bytes_);
        o.add("log_lines", json_fields()
                               .add("error", log_by_level_[3])
                               .add("warning", log_by_level_[4])
                               .add("debug", log_by_level_[7]));
        o.add("stderr_lines", messages_).add("platform", json_texts(result.platform_problems));
        if (dump)
            o.add("dump", json_fields()
                              .add("dir", dump_dir)
                              .add("pushes", dump->pushes)
                              .add("raw_files", dump->raw_files)
                              .add("decoded_files", dump->decoded_files)
                              .add("cmodel_files", dump->cmodel_files)
                              .add("problems", json_texts(dump->problems)));
        o.add("errors", errors).add("warnings", warnings);
        o.add("findings", findings_json(tally_.kept()))
            .add("findings_not_listed", tally_.not_kept());
        o.add("strict", output_.strict).add("result", verdict);
        o.add("exit_status", passed_ ? 0 : 1);
        fmt::print(out_, "{}\n", o.serialize());
        std::fflush(out_);
        return;
    }
    fmt::print(out_, "{}summary\n", output_.detail == verbosity::quiet ? "" : "\n");
    fmt::print(out_, "  operations  {} run, {} failed\n", ops_, failed_ops_);
    fmt::print(out_, "  pushed      {} groups, {} bytes\n", groups_, bytes_);
    fmt::print(out_, "  log lines   {} errors, {} warnings, {} debug (levels up to {} shown)\n",
               log_by_level_[3], log_by_level_[4], log_by_level_[7], output_.log_level);
    fmt::print(out_, "  stderr      {} lines from the converters\n", messages_);
    if (result.platform_problems.empty()) fmt::print(out_, "  platform    no leaks, no misuse\n");
    for (const std::string &problem : result.platform_problems)
        fmt::print(out_, "  platform    {}\n", terminal_text(problem));
    fmt::print(out_, "  findings    {}, {}\n", plural(found.errors, "error"),
               plural(found.warnings, "warning"));
    for (const finding &f : tally_.kept()) fmt::print(out_, "  finding     {}\n", finding_line(f));
    if (tally_.not_kept())
        fmt::print(out_, "  finding     ... and {} more\n", grouped(tally_.not_kept()));
    if (dump) {
        fmt::print(
            out_, "  dump        {} pushes: {} raw, {} decoded and {} C-model files under {}\n",
            dump->pushes, dump->raw_files, dump->decoded_files, dump->cmodel_files, dump_dir);
        for (const std::string &p : dump->problems)
            fmt::print(out_, "  dump        {}\n", terminal_text(p));
    }
    const std::string done =
        fmt::format("{}, every operation returned 0 on {}", plural(run.modules.size(), "module"),
                    plural(frames_seen_, "frame"));
    if (!passed_)
        fmt::print(out_, "  result      FAILED: {}, {}{}\n", plural(errors, "error"),
                   plural(warnings, "warning"), errors == 0 ? " (--strict)" : "");
    else if (warnings)
        fmt::print(out_, "  result      not clean: {}; {}\n", plural(warnings, "warning"), done);
    else
        fmt::print(out_, "  result      ok: {}\n", done);
    std::fflush(out_);
}

}  // namespace isp_case
