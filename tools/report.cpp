/* Findings, their tally and the JSON form of reports. */
#include "tools/report.h"

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

void finding_tally::add(const finding &f) {
    ++(f.level == severity::error ? errors_ : warnings_);
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

std::string json_finding(const finding &f) {
    json_object o;
    o.add("severity", severity_name(f.level));
    if (!f.step.empty()) o.add("step", f.step);
    return o.add("where", f.where).add("text", f.text).text();
}

json_object json_step(const step_outcome &step) {
    json_object o;
    o.add("type", "step").add("step", step.name);
    for (const auto &[name, value] : step.counts) o.add(name.c_str(), value);
    std::vector<std::string> findings;
    for (const finding &f : step.findings) findings.push_back(json_finding(f));
    o.add_raw("findings", json_array(findings));
    return o;
}

}  // namespace isp_case
