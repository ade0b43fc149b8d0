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

std::vector<std::string> detail_lines(const module_step &m, int log_level) {
    std::vector<std::string> details;
    for (const op_outcome &op : m.ops) {
        for (const isp_sim::log_line &line : op.log)
            if (line.level <= log_level) details.push_back(without_line_end(line.text));
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
size_t print_table(std::FILE *out, const replay_step &step, int log_level, rows which) {
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
            (which == rows::findings && m.findings.empty())) {
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

size_t count_of(const step_outcome &o, const char *name) {
    for (const auto &[key, value] : o.counts)
        if (key == name) return value;
    return 0;
}

/* "frame 17: 34 modules ok, 465 groups, 85,674 bytes" */
std::string one_line(const step_outcome &o) {
    std::string text = o.name + ": " + counted(count_of(o, "ok"), "module") + " ok";
    if (size_t n = count_of(o, "failed")) text += fmt::format(", {} failed", n);
    if (size_t n = count_of(o, "warned")) text += fmt::format(", {} with warnings", n);
    return text + ", " + counted(count_of(o, "groups"), "group") + ", " +
           counted(count_of(o, "bytes"), "byte");
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

replay_printer::replay_printer(std::FILE *out, const replay_settings &settings,
                               const replay_output &output)
    : out_(out), settings_(settings), output_(output) {
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
                   counted(size_t(run.channels), "channel"), counted(size_t(run.frames), "frame"),
                   run.modules.size());
    }
    std::fflush(out);
}

void replay_printer::step(const replay_step &step, const step_outcome &outcome) {
    if (step.modules.empty()) return;
    if (output_.detail != verbosity::quiet) {
        if (output_.format == output_format::json)
            json_step(step, outcome);
        else
            text_step(step, outcome);
        std::fflush(out_);
    }
    if (step.id.kind == phase::frame) ++frames_seen_;
}

void replay_printer::text_step(const replay_step &step, const step_outcome &outcome) {
    if (step.id.kind == phase::frame && frames_seen_ > 0 && output_.detail == verbosity::normal) {
        fmt::print(out_, "{}{}\n", after_block_ ? "\n" : "", one_line(outcome));
        after_block_ = false;
        if (!outcome.findings.empty()) print_table(out_, step, output_.log_level, rows::findings);
        return;
    }
    fmt::print(out_, "\n{}: {}\n", outcome.name, ops_text(step));
    const bool loading =
        step.modules.front().ops.size() > 0 &&
        std::any_of(step.modules.front().ops.begin(), step.modules.front().ops.end(),
                    [](const op_outcome &op) { return loads(op.kind); });
    const size_t left_out =
        print_table(out_, step, output_.log_level, loading ? rows::all : rows::news);
    if (left_out == step.modules.size()) fmt::print(out_, "  all {} modules ok\n", left_out);
    after_block_ = true;
}

void replay_printer::json_step(const replay_step &step, const step_outcome &outcome) {
    json_fields o = isp_case::json_step(outcome);
    o.add("phase", phase_name(step.id.kind)).add("frame", step.id.number);
    o.add("files", step_files(step.id));
    if (output_.detail == verbosity::verbose) {
        std::vector<json_fields> modules;
        for (const module_step &m : step.modules)
            modules.push_back(json_module(m, output_.log_level));
        o.add("rows", modules);
    }
    fmt::print(out_, "{}\n", o.serialize());
}

void replay_printer::finish(const run_record &record, const verdict &judged,
                            const dump_summary *dump, const std::string &dump_dir) {
    const finding_tally &found = record.findings();
    const run_settings &run    = settings_.run;
    if (output_.format == output_format::json) {
        json_fields o;
        o.add("type", "summary").add("command", "replay").add("case", run.case_path);
        o.add("frames", record.frames).add("operations", record.operations);
        o.add("failed_operations", record.failed_operations);
        o.add("groups", record.groups).add("bytes", record.bytes);
        o.add("log_lines", json_fields()
                               .add("error", record.log_by_level[3])
                               .add("warning", record.log_by_level[4])
                               .add("debug", record.log_by_level[7]));
        o.add("stderr_lines", record.stderr_lines)
            .add("platform", json_texts(record.platform_problems()));
        if (dump)
            o.add("dump", json_fields()
                              .add("dir", dump_dir)
                              .add("pushes", dump->pushes)
                              .add("raw_objects", dump->raw_objects)
                              .add("decoded_files", dump->decoded_files)
                              .add("cmodel_files", dump->cmodel_files)
                              .add("problems", json_texts(dump->problems)));
        o.add("errors", judged.errors).add("warnings", judged.warnings);
        o.add("findings", findings_json(found.kept())).add("findings_not_listed", found.not_kept());
        o.add("strict", judged.strict);
        o.add("result",
              judged.result == run_result::failed ? "failed" : result_name(judged.result));
        o.add("verdict", judged.text()).add("exit_status", judged.passed() ? 0 : 1);
        fmt::print(out_, "{}\n", o.serialize());
        std::fflush(out_);
        return;
    }
    fmt::print(out_, "{}summary\n", output_.detail == verbosity::quiet ? "" : "\n");
    fmt::print(out_, "  operations  {} run, {} failed\n", record.operations,
               record.failed_operations);
    fmt::print(out_, "  pushed      {} groups, {} bytes\n", record.groups, record.bytes);
    fmt::print(out_, "  log lines   {} errors, {} warnings, {} debug (levels up to {} shown)\n",
               record.log_by_level[3], record.log_by_level[4], record.log_by_level[7],
               output_.log_level);
    fmt::print(out_, "  stderr      {} lines from the converters\n", record.stderr_lines);
    if (record.platform_problems().empty()) fmt::print(out_, "  platform    no leaks, no misuse\n");
    for (const std::string &problem : record.platform_problems())
        fmt::print(out_, "  platform    {}\n", terminal_text(problem));
    fmt::print(out_, "  findings    {}, {}\n", counted(found.counts().errors, "error"),
               counted(found.counts().warnings, "warning"));
    /* as check prints them, for editors and annotators that read FILE:LINE:COLUMN lines */
    for (const finding &f : found.kept()) fmt::print(out_, "{}\n", finding_line(f));
    if (found.not_kept())
        fmt::print(out_, "  findings    ... and {} more\n", grouped(found.not_kept()));
    if (dump) {
        fmt::print(out_,
                   "  dump        {} pushes: {} new raw objects, {} decoded and {} C-model files "
                   "under {}\n",
                   dump->pushes, dump->raw_objects, dump->decoded_files, dump->cmodel_files,
                   dump_dir);
        for (const std::string &p : dump->problems)
            fmt::print(out_, "  dump        {}\n", terminal_text(p));
    }
    /* what passed is said in full: how many modules on how many frames */
    const std::string done =
        fmt::format("{}, every operation returned 0 on {}", counted(run.modules.size(), "module"),
                    counted(record.frames, "frame"));
    if (judged.result == run_result::ok)
        fmt::print(out_, "  result      ok: {}\n", done);
    else if (judged.result == run_result::not_clean)
        fmt::print(out_, "  result      {}; {}\n", judged.text(), done);
    else
        fmt::print(out_, "  result      {}\n", judged.text());
    std::fflush(out_);
}

}  // namespace isp_case
