/* Findings, their lines and tally, and the JSON form of reports. */
#include "tools/core/findings.h"

#include <cmath>

#include <fmt/core.h>

namespace isp_case {
namespace {

/* The length of the well-formed UTF-8 sequence starting at text[i], 0 when there is none. */
size_t utf8_length(const std::string &text, size_t i) {
    const auto byte          = [&](size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    size_t length            = 0;
    unsigned min             = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        min    = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        min    = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        min    = 0x10000;
    } else {
        return 0;
    }
    if (i + length > text.size()) return 0;
    unsigned code = lead & (0x7Fu >> length);
    for (size_t k = 1; k < length; ++k) {
        if ((byte(i + k) & 0xC0) != 0x80) return 0;
        code = (code << 6) | (byte(i + k) & 0x3F);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < min || code > 0x10FFFF || surrogate ? 0 : length;
}

}  // namespace

const char *severity_name(severity level) {
    return level == severity::error ? "error" : "warning";
}

const char *kind_name(finding_kind kind) {
    switch (kind) {
        case finding_kind::frame_directory:
            return "frame-directory";
        case finding_kind::frames:
            return "frames";
        case finding_kind::grid:
            return "grid";
        case finding_kind::channels:
            return "channels";
        case finding_kind::module_order:
            return "module-order";
        case finding_kind::missing_file:
            return "missing-file";
        case finding_kind::path_too_long:
            return "path-too-long";
        case finding_kind::unreadable_file:
            return "unreadable-file";
        case finding_kind::byte_order_mark:
            return "byte-order-mark";
        case finding_kind::syntax:
            return "syntax";
        case finding_kind::non_finite:
            return "number-out-of-range";
        case finding_kind::not_object:
            return "root-not-object";
        case finding_kind::trailing_content:
            return "trailing-content";
        case finding_kind::duplicate_key:
            return "duplicate-key";
        case finding_kind::unknown_key:
            return "unknown-key";
        case finding_kind::missing_field:
            return "missing-field";
        case finding_kind::type:
            return "type";
        case finding_kind::sign_dropped:
            return "sign-dropped";
        case finding_kind::too_wide:
            return "too-wide";
        case finding_kind::wrapped:
            return "wrapped";
        case finding_kind::truncated:
            return "truncated";
        case finding_kind::saturated:
            return "saturated";
        case finding_kind::underflow:
            return "underflow";
        case finding_kind::partitions_disagree:
            return "partitions-disagree";
        case finding_kind::field_not_read:
            return "field-not-read";
        case finding_kind::converter_raises:
            return "converter-raises";
        case finding_kind::operation_failed:
            return "operation-failed";
        case finding_kind::operation_raised:
            return "operation-raised";
        case finding_kind::library_warning:
            return "library-warning";
    }
    return "";
}

std::string finding_line(const finding &f) {
    std::string where = !f.file.empty() ? f.file : !f.step.empty() ? f.step : "settings";
    if (f.line > 0) where += fmt::format(":{}:{}", f.line, f.column);
    return fmt::format("{}: {}: {}{} [{}]", where, severity_name(f.level),
                       f.module.empty() ? "" : f.module + ": ", f.message, kind_name(f.kind));
}

finding_counts count_findings(const std::vector<finding> &findings) {
    finding_counts counts;
    for (const finding &f : findings)
        ++(f.level == severity::error ? counts.errors : counts.warnings);
    return counts;
}

picojson::value finding_json(const finding &f) {
    const auto text = [](const std::string &s) { return picojson::value(utf8_clean(s)); };
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

std::string utf8_clean(const std::string &text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const size_t length = static_cast<unsigned char>(text[i]) < 0x80 ? 1 : utf8_length(text, i);
        if (length)
            out.append(text, i, length);
        else
            out += "\xEF\xBF\xBD";
        i += length ? length : 1;
    }
    return out;
}

std::string json_string(const std::string &text) {
    std::string out = "\"";
    for (char byte : utf8_clean(text)) {
        const unsigned char c = static_cast<unsigned char>(byte);
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\r':
                out += "\\r";
                break;
            default:
                if (c < 0x20 || c == 0x7F)
                    out += fmt::format("\\u{:04x}", c);
                else
                    out += byte;
        }
    }
    return out + "\"";
}

json_object &json_object::key(const char *name) {
    body_ += body_.empty() ? "{" : ",";
    body_ += json_string(name) + ":";
    return *this;
}

json_object &json_object::add(const char *name, const std::string &value) {
    key(name).body_ += json_string(value);
    return *this;
}

json_object &json_object::add(const char *name, size_t value) {
    key(name).body_ += std::to_string(value);
    return *this;
}

json_object &json_object::add(const char *name, int value) {
    key(name).body_ += std::to_string(value);
    return *this;
}

json_object &json_object::add(const char *name, bool value) {
    key(name).body_ += value ? "true" : "false";
    return *this;
}

json_object &json_object::add(const char *name, double value) {
    key(name).body_ += std::isfinite(value) ? fmt::format("{}", value) : "null";
    return *this;
}

json_object &json_object::add_null(const char *name) {
    key(name).body_ += "null";
    return *this;
}

json_object &json_object::add_raw(const char *name, const std::string &value) {
    key(name).body_ += value;
    return *this;
}

std::string json_array(const std::vector<std::string> &elements) {
    std::string out = "[";
    for (size_t i = 0; i < elements.size(); ++i) out += (i ? "," : "") + elements[i];
    return out + "]";
}

json_object json_step(const step_outcome &step) {
    json_object o;
    o.add("type", "step").add("step", step.name);
    for (const auto &[name, value] : step.counts) o.add(name.c_str(), value);
    std::vector<std::string> findings;
    for (const finding &f : step.findings) findings.push_back(finding_json(f).serialize());
    o.add_raw("findings", json_array(findings));
    return o;
}

}  // namespace isp_case
