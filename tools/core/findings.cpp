/* Findings, their lines and tally, and the JSON form of reports. */
#include "tools/core/findings.h"

#include <fmt/core.h>

#include "tools/core/finding_groups.h"
#include "tools/output/escape.h"

namespace isp_case {

namespace {

/* "MODULES: MESSAGE (PLACES)", what every form of a finding says after its place */
std::string finding_text(const finding &f) {
    const std::string places = places_text(f);
    return fmt::format("{}{}{}", f.module.empty() ? "" : f.module + ": ", f.message,
                       places.empty() ? "" : " (" + places + ")");
}

/* GitHub's workflow commands end a value at a line end, a property also at ',' and ':' */
std::string annotation_escaped(const std::string &text, bool property) {
    std::string out;
    for (char c : text) {
        if (c == '%' || c == '\r' || c == '\n' || (property && (c == ',' || c == ':')))
            out += fmt::format("%{:02X}", static_cast<unsigned char>(c));
        else
            out += c;
    }
    return out;
}

}  // namespace

std::string finding_line(const finding &f) {
    std::string where = !f.file.empty() ? f.file : !f.step.empty() ? f.step : "settings";
    if (f.line > 0) where += fmt::format(":{}:{}", f.line, f.column);
    return terminal_text(fmt::format("{}: {}: {} [{}]", where, severity_name(f.level),
                                     finding_text(f), kind_name(f.kind)));
}

std::string finding_annotation(const finding &f) {
    std::string properties;
    if (!f.file.empty()) {
        properties = "file=" + annotation_escaped(f.file, true);
        if (f.line > 0) properties += fmt::format(",line={},col={}", f.line, f.column);
        properties += ",";
    }
    const std::string text =
        (f.file.empty() ? (f.step.empty() ? "settings" : f.step) + ": " : "") + finding_text(f);
    return terminal_text(fmt::format("::{} {}title={}::{}", severity_name(f.level), properties,
                                     kind_name(f.kind), annotation_escaped(text, false)));
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
    o["probably"] = text(f.probably);
    picojson::array places;
    for (const finding_place &p : f.places) {
        picojson::object at;
        at["file"]      = text(p.file);
        at["step"]      = text(p.step);
        at["frame"]     = picojson::value(double(p.frame));
        at["partition"] = picojson::value(double(p.partition));
        at["channel"]   = picojson::value(double(p.channel));
        places.push_back(picojson::value(at));
    }
    o["places"]            = picojson::value(places);
    o["places_not_listed"] = picojson::value(double(f.places_not_kept));
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
    /* what grouped findings add; absent from the manifests of older dumps */
    text("probably", f.probably);
    const auto places = o.find("places");
    if (places != o.end() && places->second.is<picojson::array>())
        for (const picojson::value &p : places->second.get<picojson::array>()) {
            finding_place at;
            const auto number = [&](const char *key) {
                const picojson::value &n = p.get(key);
                return n.is<double>() ? int(n.get<double>()) : -1;
            };
            if (!p.get("file").is<std::string>() || !p.get("step").is<std::string>()) return false;
            at.file      = p.get("file").get<std::string>();
            at.step      = p.get("step").get<std::string>();
            at.frame     = number("frame");
            at.partition = number("partition");
            at.channel   = number("channel");
            f.places.push_back(std::move(at));
        }
    int more = 0;
    if (number("places_not_listed", more)) f.places_not_kept = size_t(more);
    out = std::move(f);
    return true;
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
