/* The register map's printers: every view is written from the same fields. */
#include "tools/regmap/print.h"

#include <algorithm>

#include <fmt/core.h>

#include "tools/output/escape.h"
#include "tools/output/json.h"
#include "tools/output/text_table.h"

namespace isp_case {
namespace {

const char *const no_map = "no register map: its converters read no field yet";

/* The driver elements a field lands in, one per module that pushes its structure; the block
 * and the converter group for a structure no module pushes. */
std::vector<std::string> driver_elements(const regmap_field &f, const std::string &element) {
    std::vector<std::string> out;
    for (const regmap_user &u : f.users)
        out.push_back(fmt::format("{}.{}.{}", u.module, u.group, element));
    if (out.empty()) out.push_back(fmt::format("{}.{}.{}", f.map->block, f.row->group, element));
    return out;
}

std::string joined(const std::vector<std::string> &items, const char *separator) {
    std::string out;
    for (const std::string &item : items) out += (out.empty() ? "" : separator) + item;
    return out;
}

std::string number_text(double value) {
    return fmt::format("{}", value);
}

json_fields field_json(const regmap_field &f) {
    const field_range r = range_of(f);
    std::vector<json_fields> users;
    for (const regmap_user &u : f.users)
        users.push_back(json_fields()
                            .add("module", u.module)
                            .add("group", u.group)
                            .add("command", size_t(u.command)));
    json_fields o;
    o.add("register", f.path)
        .add("field", f.field)
        .add("format", f.row->format)
        .add("signed", f.row->fixed.is_signed)
        .add("integer_bits", int(f.row->fixed.integer_bits))
        .add("fraction_bits", int(f.row->fixed.fraction_bits))
        .add("raw_number", f.raw_number())
        .add("file_min", double(r.min))
        .add("file_max", double(r.max))
        .add("min", double(r.min) * r.step)
        .add("max", double(r.max) * r.step)
        .add("step", r.step)
        .add("structure", f.type ? f.type->type : "")
        .add("group", f.row->group)
        .add("modules", users)
        .add("member", f.member ? f.member->name : f.row->member.name)
        .add("element", f.element_text)
        .add("element_index", size_t(f.member_element))
        .add("per_partition", f.per_partition());
    if (f.cmodel_key.empty())
        o.add_null("cmodel_key");
    else
        o.add("cmodel_key", f.cmodel_key);
    if (f.hand)
        o.add("hand_reader", f.hand);
    else
        o.add_null("hand_reader");
    return o;
}

const char *const k_page_style = R"(
body{font:14px/1.45 system-ui,sans-serif;color:#222;margin:0 24px 40px;background:#f6f7f8}
h1{font-size:20px}h2{font-size:17px;border-bottom:2px solid #cfd8dc;margin-top:28px}
table{border-collapse:collapse;font-size:13px;background:#fff}
th,td{border:1px solid #d0d7de;padding:2px 7px;text-align:left;vertical-align:top}
th{background:#eceff1;position:sticky;top:0}
code{font-family:ui-monospace,monospace}td.n{text-align:right}
.note{color:#555}
)";

std::string html(const std::string &text) {
    return markup_escape(text);
}

/* How one format's codes become real values, said once per format of a block. */
std::string decoding_words(const isp::fixed_format &format, const char *text) {
    const int bits = (format.is_signed ? 1 : 0) + format.integer_bits + format.fraction_bits;
    const int f    = format.fraction_bits;
    std::string words =
        fmt::format("<code>{}</code>: {} bit{}, ", html(text), bits, bits == 1 ? "" : "s");
    if (format.is_signed)
        words += fmt::format(
            "a sign bit (bit {0}) above {1} integer and {2} fraction bits. A code below "
            "2<sup>{0}</sup> is the value code / 2<sup>{2}</sup>; a code with the sign bit set "
            "is negative, &minus;((2<sup>{3}</sup> &minus; code) mod 2<sup>{0}</sup>) / "
            "2<sup>{2}</sup> (the sign bit alone decodes as 0). ",
            bits - 1, format.integer_bits, f, bits);
    else
        words += fmt::format(
            "unsigned, {} integer and {} fraction bits: the value is code / "
            "2<sup>{}</sup>. ",
            format.integer_bits, f, f);
    return words + fmt::format(
                       "The register file writes the integer before encoding: a real "
                       "value v is written as v &times; 2<sup>{}</sup>, truncated toward "
                       "zero{}.",
                       f, format.is_signed ? ", a negative one as a negative integer" : "");
}

}  // namespace

std::string csv_cell(const std::string &text) {
    if (text.find_first_of(",\"\n\r") == std::string::npos) return text;
    std::string out = "\"";
    for (char c : text) out += c == '"' ? std::string("\"\"") : std::string(1, c);
    return out + "\"";
}

std::string format_words(const isp::fixed_format &format, const char *text) {
    return fmt::format("{}: {}, {} integer and {} fraction bits", text,
                       format.is_signed ? "signed" : "unsigned", format.integer_bits,
                       format.fraction_bits);
}

std::string range_words(const regmap_field &f) {
    const field_range r = range_of(f);
    return fmt::format("{} .. {} step {}", number_text(double(r.min) * r.step),
                       number_text(double(r.max) * r.step), number_text(r.step));
}

std::string users_words(const regmap_field &f) {
    std::vector<std::string> users;
    for (const regmap_user &u : f.users)
        users.push_back(u.command ? fmt::format("{} {} cmd {}", u.module, u.group, u.command)
                                  : fmt::format("{} {} kept", u.module, u.group));
    return users.empty() ? fmt::format("{} (no module)", f.row->group) : joined(users, ", ");
}

void print_regmap_text(std::FILE *out, const std::vector<regmap_block> &blocks) {
    for (const regmap_block &b : blocks) {
        if (b.fields.empty()) {
            fmt::print(out, "{} ({}): {}\n", b.map->block, b.map->top_key, no_map);
            continue;
        }
        fmt::print(out, "{} ({}): {} fields\n", b.map->block, b.map->top_key, b.fields.size());
        text_table table({"register", "format", "real value", "element", "structure", "pushed by",
                          "C-model key"},
                         1000);
        for (const regmap_field &f : b.fields) {
            const std::string key = f.cmodel_key.empty() ? "-" : f.cmodel_key;
            table.add({f.path, f.row->format, range_words(f), f.element_text,
                       f.type ? f.type->type : "-", users_words(f)},
                      {{"", {key + (f.hand ? " (hand-read: " + std::string(f.hand) + ")" : "")}}});
        }
        table.print(out);
    }
}

void print_regmap_json(std::FILE *out, const std::vector<regmap_block> &blocks) {
    std::vector<json_fields> list;
    for (const regmap_block &b : blocks) {
        std::vector<json_fields> fields;
        for (const regmap_field &f : b.fields) fields.push_back(field_json(f));
        list.push_back(json_fields()
                           .add("block", b.map->block)
                           .add("top_key", b.map->top_key)
                           .add("register_map", !b.fields.empty())
                           .add("fields", fields));
    }
    fmt::print(out, "{}\n", json_fields().add("blocks", list).serialize());
}

void print_regmap_csv(std::FILE *out, const std::vector<regmap_block> &blocks) {
    fmt::print(out,
               "block,register,field,format,min,max,step,structure,group,modules,member,element,"
               "per_partition,cmodel_key\n");
    for (const regmap_block &b : blocks)
        for (const regmap_field &f : b.fields) {
            const field_range r                  = range_of(f);
            const std::vector<std::string> cells = {b.map->block,
                                                    f.path,
                                                    f.field,
                                                    f.row->format,
                                                    number_text(double(r.min) * r.step),
                                                    number_text(double(r.max) * r.step),
                                                    number_text(r.step),
                                                    f.type ? f.type->type : "",
                                                    f.row->group,
                                                    users_words(f),
                                                    f.member ? f.member->name : f.row->member.name,
                                                    f.element_text,
                                                    f.per_partition() ? "yes" : "no",
                                                    f.cmodel_key};
            std::string line;
            for (const std::string &c : cells) line += (line.empty() ? "" : ",") + csv_cell(c);
            fmt::print(out, "{}\n", line);
        }
}

std::string regmap_page(const std::vector<regmap_block> &blocks) {
    std::string page = fmt::format(
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>Register "
        "map</title><style>{}</style></head><body>\n<h1>Register map</h1>\n<p class=\"note\">"
        "Every field the converters read from a block's register files, in read order: the "
        "register path as the files spell it, its fixed-point format, the real values it "
        "carries, the driver structure element it lands in and the C-model key an exporter "
        "writes it under. <code>[p]</code> is the partition of the file.</p>\n",
        k_page_style);
    page += "<nav>";
    for (const regmap_block &b : blocks)
        page += fmt::format("<a href=\"#{0}\">{0}</a> ", html(b.map->block));
    page += "</nav>\n";
    for (const regmap_block &b : blocks) {
        page += fmt::format("<h2 id=\"{0}\">{0} <code>{1}</code></h2>\n", html(b.map->block),
                            html(b.map->top_key));
        if (b.fields.empty()) {
            page += fmt::format("<p>{}.</p>\n", html(no_map));
            continue;
        }
        std::vector<std::string> formats;
        page += "<ul>\n";
        for (const regmap_field &f : b.fields) {
            if (std::find(formats.begin(), formats.end(), f.row->format) != formats.end()) continue;
            formats.push_back(f.row->format);
            page += "<li>" +
                    (f.raw_number() ? fmt::format("<code>{}</code> (raw numbers of a table): the "
                                                  "number is the code, saturated to 32 bits.",
                                                  html(f.row->format))
                                    : decoding_words(f.row->fixed, f.row->format)) +
                    "</li>\n";
        }
        page +=
            "</ul>\n<table><tr><th>Register</th><th>Format</th><th>Real value</th><th>Element"
            "</th><th>Structure</th><th>Pushed by</th><th>Per partition</th><th>C-model key</th>"
            "</tr>\n";
        for (const regmap_field &f : b.fields)
            page += fmt::format(
                "<tr><td><code>{}</code></td><td>{}</td><td>{}</td><td><code>{}</code></td>"
                "<td><code>{}</code></td><td>{}</td><td>{}</td><td>{}</td></tr>\n",
                html(f.path), html(f.row->format), html(range_words(f)), html(f.element_text),
                html(f.type ? f.type->type : ""), html(users_words(f)),
                f.per_partition() ? "yes" : "", html(f.cmodel_key));
        page += "</table>\n";
    }
    return page + "</body></html>\n";
}

void print_where_text(std::FILE *out, const where_answer &a) {
    const regmap_field &f = *a.field;
    for (const std::string &element : driver_elements(f, element_for_partition(f, a.partition)))
        fmt::print(out, "{} -> {}  {}, {}{}\n", f.path, element,
                   format_words(f.row->fixed, f.row->format), range_words(f),
                   f.per_partition() ? ", per partition" : "");
}

void print_where_json(std::FILE *out, const std::vector<where_answer> &answers) {
    std::vector<json_fields> list;
    for (const where_answer &a : answers) {
        json_fields o = field_json(*a.field);
        o.add("elements",
              json_texts(driver_elements(*a.field, element_for_partition(*a.field, a.partition))));
        list.push_back(o);
    }
    fmt::print(out, "{}\n", json_fields().add("answers", list).serialize());
}

}  // namespace isp_case
