/* What a step's operations count as, the run's totals and the verdict. */
#include "tools/core/run_record.h"

#include <fmt/core.h>

namespace isp_case {

std::string status_text(const op_outcome &op) {
    if (!op.ran) return "-";
    if (!op.exception.empty()) return "raised";
    if (op.status == 0) return "ok";
    if (op.status == -1) return "-1";
    return fmt::format("0x{:08X}", static_cast<uint32_t>(op.status));
}

std::vector<finding> findings_of(const step_id &step, const module_step &m) {
    std::vector<finding> found;
    for (const op_outcome &op : m.ops) {
        const auto add = [&](severity level, finding_kind kind, const std::string &text) {
            finding f;
            f.level   = level;
            f.kind    = kind;
            f.step    = step_name(step);
            f.frame   = step.kind == phase::teardown ? -1 : step.dir;
            f.module  = m.module->name;
            f.message = std::string(op_name(op.kind)) + ": " + text;
            found.push_back(std::move(f));
        };
        if (!op.exception.empty())
            add(severity::error, finding_kind::operation_raised, "raised: " + op.exception);
        else if (op.failed())
            add(severity::error, finding_kind::operation_failed, "returned " + status_text(op));
        for (const std::string &message : op.messages) {
            add(severity::error, finding_kind::field_not_read, message);
            /* "read json_obj failed: d_gain.val": the register and field, so that the lint's
             * finding on the value can own the message */
            const std::string failed = "read json_obj failed: ";
            if (message.rfind(failed, 0) != 0) continue;
            const std::string name = message.substr(failed.size());
            const size_t dot       = name.rfind('.');
            found.back().reg       = name.substr(0, dot);
            found.back().field     = dot == std::string::npos ? "" : name.substr(dot + 1);
        }
        /* a failed operation's own error report is part of its failure */
        for (const isp_sim::log_line &line : op.log)
            if (line.level <= 4 && !op.failed())
                add(severity::warning, finding_kind::library_warning, without_line_end(line.text));
    }
    return found;
}

namespace {

/* A step's counts, as outcome_of lists them. */
struct step_totals {
    size_t ok = 0, failed = 0, warned = 0, ops = 0, failed_ops = 0, groups = 0, bytes = 0,
           messages = 0, log = 0;
};

step_totals totals_of(const replay_step &step) {
    step_totals t;
    for (const module_step &m : step.modules) {
        for (const op_outcome &op : m.ops) {
            if (!op.ran) continue;
            ++t.ops;
            t.failed_ops += op.failed();
            t.groups += op.pushes.size();
            for (const pushed_group &p : op.pushes) t.bytes += p.size;
            t.messages += op.messages.size();
            t.log += op.log.size();
        }
        const finding_counts counts = count_findings(m.findings);
        t.ok += m.findings.empty();
        t.failed += counts.errors > 0;
        t.warned += counts.errors == 0 && counts.warnings > 0;
    }
    return t;
}

}  // namespace

step_outcome outcome_of(const replay_step &step) {
    const step_totals t = totals_of(step);
    step_outcome outcome;
    outcome.name = step_name(step.id);
    for (const module_step &m : step.modules)
        outcome.findings.insert(outcome.findings.end(), m.findings.begin(), m.findings.end());
    outcome.counts = {{"modules", step.modules.size()},
                      {"ok", t.ok},
                      {"failed", t.failed},
                      {"warned", t.warned},
                      {"operations", t.ops},
                      {"failed_operations", t.failed_ops},
                      {"groups", t.groups},
                      {"bytes", t.bytes},
                      {"log_lines", t.log},
                      {"stderr_lines", t.messages}};
    return outcome;
}

const char *result_name(run_result result) {
    switch (result) {
        case run_result::ok:
            return "ok";
        case run_result::not_clean:
            return "not clean";
        case run_result::failed:
            return "FAILED";
    }
    return "";
}

std::string verdict::counts_text() const {
    return counted(errors, "error") + ", " + counted(warnings, "warning") +
           (result == run_result::failed && errors == 0 ? " (--strict)" : "");
}

std::string verdict::text() const {
    switch (result) {
        case run_result::ok:
            return "ok";
        case run_result::not_clean:
            return "not clean: " + counted(warnings, "warning");
        case run_result::failed:
            if (errors == 0) return "FAILED: " + counted(warnings, "warning") + " (--strict)";
            return "FAILED: " + counted(errors, "error") +
                   (warnings ? ", " + counted(warnings, "warning") : "");
    }
    return "";
}

void run_record::add(const std::vector<finding> &findings) {
    tally_.add(findings);
}

step_outcome run_record::add(const replay_step &step) {
    for (const module_step &m : step.modules) {
        add(m.findings);
        for (const op_outcome &op : m.ops)
            for (const isp_sim::log_line &line : op.log)
                if (line.level >= 0 && line.level < 8) ++log_by_level[line.level];
    }
    const step_totals t = totals_of(step);
    operations += t.ops;
    failed_operations += t.failed_ops;
    groups += t.groups;
    bytes += t.bytes;
    stderr_lines += t.messages;
    frames += step.id.kind == phase::frame;
    return outcome_of(step);
}

void run_record::add_platform_problems(const std::vector<std::string> &problems) {
    platform_.insert(platform_.end(), problems.begin(), problems.end());
}

verdict judge(const run_record &record, bool strict) {
    verdict v;
    v.errors   = record.errors();
    v.warnings = record.warnings();
    v.strict   = strict;
    if (v.errors > 0 || (strict && v.warnings > 0))
        v.result = run_result::failed;
    else if (v.warnings > 0)
        v.result = run_result::not_clean;
    return v;
}

picojson::value verdict_json(const verdict &v) {
    picojson::object o;
    o["result"]   = picojson::value(result_name(v.result));
    o["errors"]   = picojson::value(static_cast<double>(v.errors));
    o["warnings"] = picojson::value(static_cast<double>(v.warnings));
    o["strict"]   = picojson::value(v.strict);
    o["text"]     = picojson::value(v.text());
    return picojson::value(o);
}

bool verdict_from_json(const picojson::value &value, verdict &out) {
    if (!value.is<picojson::object>()) return false;
    const picojson::value &result = value.get("result"), &errors = value.get("errors"),
                          &warnings = value.get("warnings"), &strict = value.get("strict");
    if (!result.is<std::string>() || !errors.is<double>() || !warnings.is<double>() ||
        !strict.is<bool>())
        return false;
    for (run_result r : {run_result::ok, run_result::not_clean, run_result::failed})
        if (result.get<std::string>() == result_name(r)) {
            out.result   = r;
            out.errors   = static_cast<size_t>(errors.get<double>());
            out.warnings = static_cast<size_t>(warnings.get<double>());
            out.strict   = strict.get<bool>();
            return true;
        }
    return false;
}

}  // namespace isp_case
