/* The case check: the lint's findings for people and for scripts. */
#include "tools/output/check_output.h"

#include <map>

#include <fmt/core.h>

#include "tools/core/finding_groups.h"
#include "tools/core/overrides.h"
#include "tools/output/escape.h"
#include "tools/output/text_table.h"

namespace isp_case {

check_result check_case(const run_settings &settings, const case_contents &contents) {
    return lint_case(settings, contents);
}

namespace {

/* The check's findings, one entry per fault. */
finding_tally entries_of(const check_result &result) {
    finding_tally entries(SIZE_MAX);
    entries.add(result.findings);
    return entries;
}

}  // namespace

void print_check(std::FILE *out, const run_settings &settings, const check_result &result) {
    const finding_tally entries       = entries_of(result);
    const std::vector<finding> &found = entries.kept();
    fmt::print(out, "check of {}: grid {}x{}, {} channel{}, {} frame{}, {} modules\n",
               terminal_text(settings.case_path), settings.part_h, settings.part_v,
               settings.channels, settings.channels == 1 ? "" : "s", settings.frames,
               settings.frames == 1 ? "" : "s", settings.modules.size());
    if (!found.empty()) fmt::print(out, "\n");
    for (const finding &f : found) fmt::print(out, "{}\n", finding_line(f));

    /* kinds in the order of their first finding */
    std::vector<finding_kind> kinds;
    std::map<finding_kind, finding_counts> per_kind;
    for (const finding &f : found) {
        if (!per_kind.count(f.kind)) kinds.push_back(f.kind);
        finding_counts &c = per_kind[f.kind];
        ++(f.level == severity::error ? c.errors : c.warnings);
    }
    fmt::print(out, "\nsummary ({} files read)\n", result.files_read);
    for (const applied_override &o : settings.overrides)
        fmt::print(out, "  set {}\n", terminal_text(override_line(o)));
    const finding_counts total = entries.counts();
    if (!kinds.empty()) {
        text_table table({"finding", "errors", "warnings"});
        for (finding_kind kind : kinds)
            table.add({kind_name(kind), std::to_string(per_kind[kind].errors)},
                      {{"", {std::to_string(per_kind[kind].warnings)}}});
        table.print(out);
    }
    if (total.errors + total.warnings == 0)
        fmt::print(out, "  result: clean\n");
    else
        fmt::print(out, "  result: {} error{}, {} warning{}\n", total.errors,
                   total.errors == 1 ? "" : "s", total.warnings, total.warnings == 1 ? "" : "s");
}

void print_check_json(std::FILE *out, const run_settings &settings, const check_result &result) {
    const finding_tally entries = entries_of(result);
    const finding_counts total  = entries.counts();
    picojson::object doc;
    doc["case"]       = picojson::value(settings.case_path);
    doc["grid"]       = picojson::value(fmt::format("{}x{}", settings.part_h, settings.part_v));
    doc["channels"]   = picojson::value(double(settings.channels));
    doc["frames"]     = picojson::value(double(settings.frames));
    doc["modules"]    = picojson::value(double(settings.modules.size()));
    doc["files_read"] = picojson::value(double(result.files_read));
    doc["errors"]     = picojson::value(double(total.errors));
    doc["warnings"]   = picojson::value(double(total.warnings));
    doc["findings"]   = findings_json(entries.kept());
    if (!settings.overrides.empty()) doc["overrides"] = overrides_json(settings.overrides);
    fmt::print(out, "{}", picojson::value(doc).serialize(true));
}

void print_check_github(std::FILE *out, const check_result &result) {
    const finding_tally entries = entries_of(result);
    for (const finding &f : entries.kept()) fmt::print(out, "{}\n", finding_annotation(f));
}

}  // namespace isp_case
