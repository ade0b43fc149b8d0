/* Names, lines and the JSON form of findings. */
#include "tools/findings.h"

#include <fmt/core.h>

namespace isp_case {

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
        case finding_kind::partitions_disagree:
            return "partitions-disagree";
        case finding_kind::field_not_read:
            return "field-not-read";
        case finding_kind::converter_raises:
            return "converter-raises";
    }
    return "";
}

const char *severity_name(severity level) {
    return level == severity::error ? "error" : "warning";
}

std::string finding_line(const finding &f) {
    std::string where = f.file.empty() ? "settings" : f.file;
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

picojson::value findings_json(const std::vector<finding> &findings) {
    picojson::array items;
    for (const finding &f : findings) {
        picojson::object o;
        o["severity"] = picojson::value(severity_name(f.level));
        o["kind"]     = picojson::value(kind_name(f.kind));
        o["file"]     = picojson::value(f.file);
        o["line"]     = picojson::value(double(f.line));
        o["column"]   = picojson::value(double(f.column));
        o["module"]   = picojson::value(f.module);
        o["register"] = picojson::value(f.reg);
        o["field"]    = picojson::value(f.field);
        o["value"]    = picojson::value(f.value);
        o["format"]   = picojson::value(f.format);
        o["hardware"] = picojson::value(f.hardware);
        o["message"]  = picojson::value(f.message);
        items.push_back(picojson::value(o));
    }
    return picojson::value(items);
}

}  // namespace isp_case
