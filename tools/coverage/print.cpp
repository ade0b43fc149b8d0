/* The coverage printers: every view is written from the same report and the same order. */
#include "tools/coverage/print.h"

#include <fmt/core.h>

#include "tools/output/escape.h"
#include "tools/output/json.h"
#include "tools/output/text_table.h"
#include "tools/regmap/print.h"

namespace isp_case {
namespace {

struct totals {
    size_t held = 0, constant = 0, at_min = 0, at_max = 0;
};

totals totals_of(const coverage_report &r) {
    totals t;
    for (const field_coverage &c : r.fields) {
        t.held += c.held();
        t.constant += c.constant();
        t.at_min += c.at_min > 0;
        t.at_max += c.at_max > 0;
    }
    return t;
}

std::string plural(size_t n, const char *one, const char *many) {
    return fmt::format("{} {}", n, n == 1 ? one : many);
}

double real_of(const field_coverage &c, int64_t integer) {
    return double(integer) * c.range.step;
}

/* "256 (1)": the integer and its real value; "-" when no file holds the field */
std::string value_text(const field_coverage &c, int64_t integer) {
    return c.held() ? fmt::format("{} ({})", integer, real_of(c, integer)) : "-";
}

std::string distinct_text(const field_coverage &c) {
    return fmt::format("{}{}", c.distinct, c.more ? "+" : "");
}

/* The summary as lines, shared by the text view and the page. */
std::vector<std::string> summary_lines(const coverage_report &r) {
    const totals t                 = totals_of(r);
    std::vector<std::string> lines = {
        fmt::format("fields held: {} of {} ({} that no case holds)", t.held, r.fields.size(),
                    r.fields.size() - t.held),
        fmt::format("constant: {} never moved from one value across the suite",
                    plural(t.constant, "field", "fields")),
        fmt::format("at the format's limits: {} with a value at the largest code, {} at the "
                    "smallest",
                    plural(t.at_max, "field", "fields"), t.at_min),
    };
    if (r.files_unmapped > 0)
        lines.push_back(fmt::format("not read: {} of blocks without a register map",
                                    plural(r.files_unmapped, "file", "files")));
    if (!r.unreadable.empty())
        lines.push_back(fmt::format("unreadable: {}, their fields not counted",
                                    plural(r.unreadable.size(), "file", "files")));
    return lines;
}

std::string title_of(const coverage_report &r) {
    std::string blocks;
    for (const std::string &b : r.blocks) blocks += (blocks.empty() ? "" : ", ") + b;
    return fmt::format("Register coverage of {}: {} read, {} {}", plural(r.cases, "case", "cases"),
                       plural(r.files_read, "register file", "register files"),
                       r.blocks.size() == 1 ? "block" : "blocks", blocks.empty() ? "-" : blocks);
}

const char *const order_words =
    "least exercised first: fewest distinct values, then fewest cases, then fewest values";

json_fields value_json(const field_coverage &c, int64_t integer) {
    return json_fields().add("code", double(integer)).add("value", real_of(c, integer));
}

}  // namespace

void print_coverage_text(std::FILE *out, const coverage_report &report) {
    fmt::print(out, "{}\n", title_of(report));
    for (const std::string &line : summary_lines(report)) fmt::print(out, "  {}\n", line);
    for (const unreadable_file &u : report.unreadable)
        fmt::print(out, "    {}: {}\n", terminal_text(u.path), terminal_text(u.problem));
    fmt::print(out, "  {}\n\n", order_words);
    text_table table({"register", "format", "cases", "frames", "partitions", "values", "distinct",
                      "min", "max", "at min", "at max"},
                     1000);
    for (const field_coverage *c : least_exercised(report))
        table.add({c->field.path, c->field.row->format, std::to_string(c->cases),
                   std::to_string(c->frames), std::to_string(c->partitions),
                   std::to_string(c->values), distinct_text(*c), value_text(*c, c->min),
                   value_text(*c, c->max), std::to_string(c->at_min)},
                  {{"", {std::to_string(c->at_max)}}});
    table.print(out);
}

void print_coverage_json(std::FILE *out, const coverage_report &report) {
    const totals t = totals_of(report);
    std::vector<json_fields> unreadable, fields;
    for (const unreadable_file &u : report.unreadable)
        unreadable.push_back(json_fields().add("file", u.path).add("problem", u.problem));
    for (const field_coverage *c : least_exercised(report)) {
        json_fields o;
        o.add("block", c->field.map->block)
            .add("register", c->field.path)
            .add("format", c->field.row->format)
            .add("cases", size_t(c->cases))
            .add("frames", size_t(c->frames))
            .add("partitions", size_t(c->partitions))
            .add("values", size_t(c->values))
            .add("distinct", c->distinct)
            .add("distinct_capped", c->more)
            .add("constant", c->constant());
        if (c->held())
            o.add("min", value_json(*c, c->min)).add("max", value_json(*c, c->max));
        else
            o.add_null("min").add_null("max");
        o.add("at_min", size_t(c->at_min))
            .add("at_max", size_t(c->at_max))
            .add("format_min", value_json(*c, c->range.min))
            .add("format_max", value_json(*c, c->range.max));
        fields.push_back(o);
    }
    fmt::print(out, "{}\n",
               json_fields()
                   .add("cases", report.cases)
                   .add("files_read", report.files_read)
                   .add("files_unreadable", unreadable)
                   .add("files_without_register_map", report.files_unmapped)
                   .add("blocks", json_texts(report.blocks))
                   .add("distinct_cap", coverage_distinct_cap)
                   .add("summary", json_fields()
                                       .add("fields", report.fields.size())
                                       .add("held", t.held)
                                       .add("constant", t.constant)
                                       .add("at_min", t.at_min)
                                       .add("at_max", t.at_max))
                   .add("fields", fields)
                   .serialize());
}

void print_coverage_csv(std::FILE *out, const coverage_report &report) {
    fmt::print(out,
               "block,register,format,cases,frames,partitions,values,distinct,min_code,min_value,"
               "max_code,max_value,at_min,at_max,format_min_code,format_max_code\n");
    for (const field_coverage *c : least_exercised(report)) {
        const auto code = [&](int64_t v) { return c->held() ? std::to_string(v) : ""; };
        const auto real = [&](int64_t v) {
            return c->held() ? fmt::format("{}", real_of(*c, v)) : "";
        };
        const std::vector<std::string> cells = {c->field.map->block,
                                                c->field.path,
                                                c->field.row->format,
                                                std::to_string(c->cases),
                                                std::to_string(c->frames),
                                                std::to_string(c->partitions),
                                                std::to_string(c->values),
                                                distinct_text(*c),
                                                code(c->min),
                                                real(c->min),
                                                code(c->max),
                                                real(c->max),
                                                std::to_string(c->at_min),
                                                std::to_string(c->at_max),
                                                std::to_string(c->range.min),
                                                std::to_string(c->range.max)};
        std::string line;
        for (const std::string &cell : cells) line += (line.empty() ? "" : ",") + csv_cell(cell);
        fmt::print(out, "{}\n", line);
    }
}

std::string coverage_page(const coverage_report &report) {
    const auto html  = [](const std::string &text) { return markup_escape(text); };
    std::string page = fmt::format(
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>Register "
        "coverage</title><style>\n"
        "body{{font:14px/1.45 system-ui,sans-serif;color:#222;margin:0 24px 40px}}\n"
        "table{{border-collapse:collapse;font-size:13px}}\n"
        "th,td{{border:1px solid #d0d7de;padding:2px 7px;text-align:left}}\n"
        "th{{background:#eceff1;position:sticky;top:0}}td.n{{text-align:right}}\n"
        "tr.none td{{background:#fdecea}}tr.one td{{background:#fff8e1}}\n"
        "</style></head><body>\n<h1>{}</h1>\n<ul>\n",
        html(title_of(report)));
    for (const std::string &line : summary_lines(report)) page += "<li>" + html(line) + "</li>\n";
    for (const unreadable_file &u : report.unreadable)
        page += fmt::format("<li><code>{}</code>: {}</li>\n", html(u.path), html(u.problem));
    page += fmt::format(
        "</ul>\n<p>Rows in red: no case holds the field; in yellow: one value across the suite. "
        "Order: {}.</p>\n<table><tr><th>Register</th><th>Format</th><th>Cases</th><th>Frames</th>"
        "<th>Partitions</th><th>Values</th><th>Distinct</th><th>Min</th><th>Max</th>"
        "<th>At min</th><th>At max</th></tr>\n",
        html(order_words));
    for (const field_coverage *c : least_exercised(report))
        page += fmt::format(
            "<tr{}><td><code>{}</code></td><td>{}</td><td class=\"n\">{}</td><td "
            "class=\"n\">{}</td><td class=\"n\">{}</td><td class=\"n\">{}</td><td "
            "class=\"n\">{}</td><td>{}</td><td>{}</td><td class=\"n\">{}</td><td "
            "class=\"n\">{}</td></tr>\n",
            !c->held()      ? " class=\"none\""
            : c->constant() ? " class=\"one\""
                            : "",
            html(c->field.path), html(c->field.row->format), c->cases, c->frames, c->partitions,
            c->values, distinct_text(*c), html(value_text(*c, c->min)),
            html(value_text(*c, c->max)), c->at_min, c->at_max);
    return page + "</table>\n</body></html>\n";
}

}  // namespace isp_case
