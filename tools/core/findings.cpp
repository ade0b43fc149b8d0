/* Findings, their lines and tally, and the JSON form of reports. */
#include "tools/core/findings.h"

#include <fmt/core.h>

#include "tools/output/escape.h"

namespace isp_case {

std::string finding_line(const finding &f) {
    std::string where = !f.file.empty() ? f.file : !f.step.empty() ? f.step : "settings";
    if (f.line > 0) where += fmt::format(":{}:{}", f.line, f.column);
    return terminal_text(fmt::format("{}: {}: {}{} [{}]", where, severity_name(f.level),
                                     f.module.empty() ? "" : f.module + ": ", f.message,
                                     kind_name(f.kind)));
}

finding_counts count_findings(const std::vector<finding> &findings) {
    finding_counts counts;
    for (const finding &f : findings)
        ++(f.level == severity::error ? counts.errors : counts.warnings);
    return counts;
}

picojson::value finding_json(const finding &f) {
    const auto text = json_text;
    picojson::object o;
    o["severity"] = picojson::value(severity_name(f.level));
    o["kind"]     = picojson::value(kind_name(f.kind));
    o["file"]     = text(f.file);
    o["line"]     = picojson::value(double(f.line));
    o["column"]   = picojson::value(double(f.column));
    o["step"]     = text(f.step);
    o["module"]   = text(f.module);
    o["register"] = text(f.reg);
    o["field"]    = text(f.field);
    o["value"]    = text(f.value);
    o["format"]   = text(f.format);
    o["hardware"] = text(f.hardware);
    o["message"]  = text(f.message);
    return picojson::value(o);
}

picojson::value findings_json(const std::vector<finding> &findings) {
    picojson::array items;
    for (const finding &f : findings) items.push_back(finding_json(f));
    return picojson::value(items);
}

bool finding_from_json(const picojson::value &v, finding &out) {
    if (!v.is<picojson::object>()) return false;
    const picojson::object &o = v.get<picojson::object>();
    const auto text           = [&](const char *key, std::string &to) {
        const auto it = o.find(key);
        if (it == o.end() || !it->second.is<std::string>()) return false;
        to = it->second.get<std::string>();
        return true;
    };
    const auto number = [&](const char *key, int &to) {
        const auto it = o.find(key);
        if (it == o.end() || !it->second.is<double>()) return false;
        to = static_cast<int>(it->second.get<double>());
        return true;
    };
    std::string level, kind;
    finding f;
    if (!text("severity", level) || !text("kind", kind) || !text("file", f.file) ||
        !number("line", f.line) || !number("column", f.column) || !text("step", f.step) ||
        !text("module", f.module) || !text("register", f.reg) || !text("field", f.field) ||
        !text("value", f.value) || !text("format", f.format) || !text("hardware", f.hardware) ||
        !text("message", f.message))
        return false;
    if (level != severity_name(severity::error) && level != severity_name(severity::warning))
        return false;
    f.level    = level == severity_name(severity::error) ? severity::error : severity::warning;
    bool known = false;
    for (int k = 0; k <= int(finding_kind::library_warning) && !known; ++k)
        if (kind == kind_name(finding_kind(k))) {
            f.kind = finding_kind(k);
            known  = true;
        }
    if (!known) return false;
    out = std::move(f);
    return true;
}

void finding_tally::add(const finding &f) {
    ++(f.level == severity::error ? counts_.errors : counts_.warnings);
    if (kept_.size() < limit_) kept_.push_back(f);
}

std::string grouped(size_t value) {
    std::string digits = std::to_string(value), text;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) text += ',';
        text += digits[i];
    }
    return text;
}

std::string counted(size_t n, const char *word) {
    return fmt::format("{} {}{}", grouped(n), word, n == 1 ? "" : "s");
}

std::string without_line_end(std::string line) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    return line;
}

json_fields json_step(const step_outcome &step) {
    json_fields o;
    o.add("type", "step").add("step", step.name);
    for (const auto &[name, value] : step.counts) o.add(name, value);
    return o.add("findings", findings_json(step.findings));
}

}  // namespace isp_case
