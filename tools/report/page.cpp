/* The report page: summary, what changed, the pushes of every step, then for each step shown its
 * pictures and every group's members. */
#include "tools/report/page.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include <fmt/core.h>

#include "convert/common/register_map.h"
#include "isp_json_utils.h"
#include "tools/core/finding_groups.h"
#include "tools/core/findings.h"
#include "tools/core/overrides.h"
#include "tools/output/escape.h"
#include "tools/report/svg.h"

namespace isp_case {
namespace report {
namespace {

/* One stylesheet for the page and its pictures. */
const char *const k_style = R"(
body{font:14px/1.45 system-ui,-apple-system,"Segoe UI",Roboto,"DejaVu Sans",sans-serif;color:#222;margin:0;background:#f6f7f8}
header{background:#263238;color:#fff;padding:14px 24px}
header h1{font-size:20px;margin:0 0 2px}
header p{margin:0;color:#cfd8dc}
nav{background:#fff;border-bottom:1px solid #d0d7de;padding:6px 24px;font-size:13px}
nav a{margin-right:16px;color:#1f6fb4;text-decoration:none}
main{padding:4px 24px 40px}
h2{font-size:18px;border-bottom:2px solid #cfd8dc;padding-bottom:4px;margin:28px 0 10px}
h3{font-size:15px;margin:18px 0 8px;color:#37474f}
table{border-collapse:collapse;font-size:13px;background:#fff}
th,td{border:1px solid #d0d7de;padding:3px 8px;text-align:left;vertical-align:top}
th{background:#eceff1;font-weight:600}
td.n{text-align:right;font-variant-numeric:tabular-nums}
tr.diff>td,td.diff{background:#fce4ec}
mark{background:#f8bbd0;color:inherit}
.figs{display:flex;flex-wrap:wrap;gap:14px;align-items:flex-start}
figure{margin:0;background:#fff;border:1px solid #d0d7de;border-radius:4px;padding:6px 6px 4px}
figcaption{font-size:12px;color:#555;max-width:480px;margin-top:2px}
svg text{font-family:inherit}
svg .ttl{font-size:13px;font-weight:600;fill:#222}
svg .lbl{font-size:12px;fill:#333}
svg .tick{font-size:11px;fill:#555}
svg .grid{stroke:#e8e8e8}
svg .frame{fill:none;stroke:#888}
svg .axis{stroke:#888}
svg .cell{fill:#fff;stroke:#b0bec5}
svg .cell.mark{fill:#fce4ec;stroke:#c2185b;stroke-width:2}
details{margin:4px 0;background:#fff;border:1px solid #d0d7de;border-radius:4px}
details.diff{border-color:#c2185b}
summary{cursor:pointer;padding:4px 8px}
summary .t{color:#666;font-size:12px}
details>div{padding:2px 8px 8px;overflow-x:auto}
.arr{max-width:560px;max-height:7.5em;overflow:auto;font-family:ui-monospace,"DejaVu Sans Mono",monospace;font-size:12px}
.mat td{font-family:ui-monospace,"DejaVu Sans Mono",monospace}
.mat td.sum{background:#f1f8e9}
.ok{color:#2e7d32;font-weight:600}.bad{color:#c62828;font-weight:600}.warn{color:#ef6c00;font-weight:600}
.key{display:inline-block;width:22px;height:4px;vertical-align:middle;margin:0 4px 0 10px}
.muted{color:#666}
.verdict{font-size:18px;margin:14px 0 8px}
)";

constexpr size_t k_change_rows = 200; /* beyond this many changed members, a count suffices */

/* A shown push as the page draws it: its facts from the manifest and its members. */
struct push_view {
    step_id step;
    std::string module, block, group, type, file, problem;
    int channel = -1; /* -1 for the modules without channels */
    int command = 0;
    size_t size = 0, index = 0;
    std::vector<dump_member> members;
    const dump_member *member(const std::string &name) const {
        for (const dump_member &m : members)
            if (m.name == name) return &m;
        return nullptr;
    }
};

push_view view_of(const shown_push &s) {
    push_view v;
    const dump_push &p = s.push;
    v.step             = p.step;
    v.module           = p.module;
    v.block            = p.block;
    v.group            = p.group;
    v.type             = p.type;
    v.file             = push_file(p);
    v.problem          = s.decoded.problem;
    v.channel          = p.channelled ? p.channel : -1;
    v.command          = int(p.command);
    v.size             = p.size;
    v.index            = s.index;
    v.members          = s.decoded.members;
    return v;
}

std::string channel_label(int channel) {
    return channel < 0 ? std::string() : fmt::format("c{}", channel);
}

std::string push_id(const dump_push &p) {
    return fmt::format("g-{}-{}{}-{}-{}", step_dir(p.step), p.module,
                       p.channelled ? "-c" + std::to_string(p.channel) : "", p.command, p.group);
}

std::string push_id(const push_view &p) {
    return fmt::format("g-{}-{}{}-{}-{}", step_dir(p.step), p.module,
                       p.channel < 0 ? "" : "-c" + std::to_string(p.channel), p.command, p.group);
}

std::string push_title(const std::string &module, int channel, const std::string &group,
                       uint32_t command) {
    std::string t = module;
    if (channel >= 0) t += " " + channel_label(channel);
    return t + " " + group + "#" + std::to_string(command);
}

std::string push_title(const push_view &p) {
    return push_title(p.module, p.channel, p.group, uint32_t(p.command));
}

std::string push_title(const dump_push &p) {
    return push_title(p.module, p.channelled ? p.channel : -1, p.group, p.command);
}

/* The values a picture draws: real values where the member has a format, codes otherwise. */
const std::vector<double> &drawn(const dump_member &m) {
    return m.values.empty() ? m.codes : m.values;
}

/* The member's format; "code" for a member no register row reads, whose numbers are shown as
 * they are stored. */
std::string format_label(const dump_member &m) {
    return m.format.empty() ? "code" : m.format;
}

/* The pushes of the two runs as the comparison engine paired them, and what it found. */
class pairing {
  public:
    explicit pairing(const page_input &in) : in_(in) {
        if (!comparing()) return;
        for (const shown_push &s : in.b.shown) views_b_.emplace(s.index, view_of(s));
    }
    bool comparing() const { return in_.b.run != nullptr; }
    const push_view *other(const push_view &p) const {
        if (!comparing() || p.index >= in_.b_of_a.size()) return nullptr;
        const auto it = views_b_.find(in_.b_of_a[p.index]);
        return it == views_b_.end() ? nullptr : &it->second;
    }
    bool differs(size_t push) const {
        return comparing() && push < in_.changes.differs.size() && in_.changes.differs[push];
    }
    bool differs(const push_view &p) const { return differs(p.index); }
    /* elements of a member of a shown push that differ */
    std::set<size_t> differing(const push_view &p, const std::string &member) const {
        const auto it = in_.changes.marks.find(p.index);
        if (it == in_.changes.marks.end()) return {};
        const auto m = it->second.find(member);
        return m == it->second.end() ? std::set<size_t>{} : m->second;
    }

  private:
    const page_input &in_;
    std::map<size_t, push_view> views_b_;
};

std::string figure(const std::string &svg, const std::string &caption) {
    return "<figure>" + svg + "<figcaption>" + caption + "</figcaption></figure>";
}

/* ---- summary ---------------------------------------------------------------------------- */

std::string joined(const std::vector<std::string> &items) {
    std::string out;
    for (const std::string &i : items) out += (out.empty() ? "" : " ") + i;
    return out;
}

std::vector<std::pair<std::string, std::string>> facts(const dump &m) {
    size_t bytes = 0;
    for (size_t i = 0; i < m.pushes.size(); ++i) bytes += m.pushes.listed(i).size;
    std::vector<std::pair<std::string, std::string>> shown = {{"dump", m.dir},
                                                              {"case", m.case_path}};
    for (const applied_override &o : m.overrides) shown.push_back({"set", override_line(o)});
    const std::vector<std::pair<std::string, std::string>> rest = {
        {"grid", fmt::format("{}x{} ({} partitions)", m.part_h, m.part_v, m.part_h * m.part_v)},
        {"channels", std::to_string(m.channels)},
        {"frames", std::to_string(m.frames)},
        {"modules", fmt::format("{}: {}", m.modules.size(), joined(m.modules))},
        {"bypass", m.bypass.empty() ? "none" : joined(m.bypass)},
        {"pushes", fmt::format("{} groups, {} bytes", m.pushes.size(), bytes)},
        {"tool", m.tool},
        {"library", m.library}};
    shown.insert(shown.end(), rest.begin(), rest.end());
    return shown;
}

std::string steps_text(const std::vector<step_id> &steps) {
    std::string shown;
    for (const step_id &s : steps) shown += (shown.empty() ? "" : ", ") + step_label(s);
    return shown;
}

void summary(std::string &out, const dump &a, const dump *b, const std::vector<step_id> &steps) {
    out += "<section id=\"summary\"><h2>Summary</h2><table class=\"facts\">";
    const auto fa = facts(a);
    const auto fb = b ? facts(*b) : decltype(fa){};
    if (b) out += "<tr><th></th><th>A</th><th>B</th></tr>";
    for (size_t i = 0; i < fa.size(); ++i) {
        const bool diff = b && i > 0 && fa[i].second != fb[i].second;
        out += fmt::format("<tr{}><th>{}</th><td>{}</td>", diff ? " class=\"diff\"" : "",
                           fa[i].first, markup_escape(fa[i].second));
        if (b) out += "<td>" + markup_escape(fb[i].second) + "</td>";
        out += "</tr>";
    }
    out += fmt::format("<tr><th>shown</th><td{}>{}</td></tr></table>", b ? " colspan=\"2\"" : "",
                       markup_escape(steps_text(steps)));

    out += "</section>";
}

/* ---- verdict and findings ------------------------------------------------------------------- */

const char *verdict_class(const dump_verdict &v) {
    return v.result == "ok" ? "ok" : v.result == "not clean" ? "warn" : "bad";
}

/* The run's verdict, then its findings in the form the replay's summary lists them. */
void verdict_of(std::string &out, const dump &d, const std::string &run) {
    if (!d.verdict.recorded) {
        out += "<p class=\"verdict\">" + run +
               (d.recording ? "no verdict: a recording made on the board judges nothing.</p>"
                            : "no verdict: the manifest is of an older isp-case, which recorded "
                              "none.</p>");
        return;
    }
    /* the text says "(--strict)" where the flag decided the verdict */
    out += fmt::format("<p class=\"verdict\">{}<span class=\"{}\">{}</span></p>", run,
                       verdict_class(d.verdict), markup_escape(d.verdict.text));
    if (d.findings.empty()) return;
    out +=
        "<table><tr><th>where</th><th>severity</th><th>module</th><th>finding</th>"
        "<th>kind</th></tr>";
    for (const picojson::value &recorded : d.findings) {
        finding f;
        if (!finding_from_json(recorded, f)) continue;
        std::string where = !f.file.empty() ? f.file : !f.step.empty() ? f.step : "settings";
        if (f.line > 0) where += fmt::format(":{}:{}", f.line, f.column);
        const std::string places = places_text(f);
        out += fmt::format(
            "<tr><td>{}</td><td class=\"{}\">{}</td><td>{}</td><td>{}</td><td>{}</td></tr>",
            markup_escape(where), f.level == severity::error ? "bad" : "warn",
            severity_name(f.level), markup_escape(f.module),
            markup_escape(f.message + (places.empty() ? "" : " (" + places + ")")),
            kind_name(f.kind));
    }
    out += "</table>";
    if (d.findings_not_listed)
        out += fmt::format("<p class=\"muted\">and {} more findings.</p>", d.findings_not_listed);
}

void verdicts(std::string &out, const dump &a, const dump *b) {
    out += "<section id=\"verdict\"><h2>Verdict</h2>";
    verdict_of(out, a, b ? "A: " : "");
    if (b) verdict_of(out, *b, "B: ");
    out += "</section>";
}

/* ---- what changed ----------------------------------------------------------------------- */

/* The element as the page shows it: its real value where it has a format, its code otherwise. */
std::string element_text(const element_side &s) {
    if (!s.present) return "missing";
    return number_label(s.format.empty() ? s.code : s.value, 6);
}

std::string change_text(const change_row &r) {
    const difference &d = r.first;
    switch (d.kind) {
        case difference_kind::member_only_in_a:
            return "not in B";
        case difference_kind::member_only_in_b:
            return "not in A";
        case difference_kind::format:
            return fmt::format("format {} &#8594; {}", markup_escape(d.in_a.format),
                               markup_escape(d.in_b.format));
        case difference_kind::location:
            return fmt::format("register {} &#8594; {}", markup_escape(d.in_a.location),
                               markup_escape(d.in_b.location));
        case difference_kind::bytes:
            return "raw bytes";
        default:
            break;
    }
    /* the register that fills this element, which need not be the member's first */
    const std::string &from = d.in_a.location.empty() ? d.in_b.location : d.in_a.location;
    return fmt::format("[{}] {} &#8594; {} ({}){}", d.index < 0 ? 0 : d.index, element_text(d.in_a),
                       element_text(d.in_b), markup_escape(r.format.empty() ? "code" : r.format),
                       from.empty() ? "" : " from " + markup_escape(from));
}

void changes(std::string &out, const dump &a, const dump &b, const page_changes &c) {
    out += "<section id=\"changes\"><h2>What changed</h2>";
    const std::vector<change_row> &rows = c.rows;
    if (rows.empty()) {
        out +=
            "<p class=\"ok\">No difference: both runs pushed the same groups with the same "
            "codes.</p></section>";
        return;
    }
    size_t members = 0;
    for (const change_row &r : rows) members += !r.only_a && !r.only_b;
    out += fmt::format(
        "<p><span class=\"bad\">{} member(s) differ in {} pushed group(s)</span>; A is drawn in "
        "<span class=\"key\" style=\"background:{}\"></span>{}, B in <span class=\"key\" "
        "style=\"background:{}\"></span>{} (dashed).</p>",
        members, c.summary.differing + c.summary.only_a + c.summary.only_b, palette::run_a,
        markup_escape(a.dir), palette::run_b, markup_escape(b.dir));
    out +=
        "<table><tr><th>step</th><th>group</th><th>member</th><th>elements differing</th>"
        "<th>first difference: A &#8594; B</th></tr>";
    for (size_t i = 0; i < rows.size() && i < k_change_rows; ++i) {
        const change_row &r    = rows[i];
        const std::string step = markup_escape(step_label(r.push->step));
        if (r.only_a)
            out += fmt::format(
                "<tr><td>{}</td><td><a href=\"#{}\">{}</a></td><td colspan=\"3\">pushed by A "
                "only</td></tr>",
                step, push_id(*r.push), markup_escape(push_title(*r.push)));
        else if (r.only_b)
            out += fmt::format(
                "<tr><td>{}</td><td>{}</td><td colspan=\"3\">pushed by B only</td></tr>", step,
                markup_escape(push_title(*r.push)));
        else
            out += fmt::format(
                "<tr><td>{}</td><td><a href=\"#{}\">{}</a></td><td>{}</td><td class=\"n\">{} of "
                "{}</td><td>{}</td></tr>",
                step, push_id(*r.push), markup_escape(push_title(*r.push)), markup_escape(r.member),
                r.elements, std::max(r.total, size_t(1)), change_text(r));
    }
    out += "</table>";
    if (rows.size() > k_change_rows)
        out += fmt::format("<p class=\"muted\">and {} more rows.</p>", rows.size() - k_change_rows);
    out += "</section>";
}

/* ---- pushes of every step ----------------------------------------------------------------- */

void pushes(std::string &out, const dump &a, const pairing &pairs) {
    out += fmt::format(
        "<section id=\"pushes\"><h2>Pushed groups</h2><details><summary>{} pushes in {} "
        "steps: per step and module, group#command and size, per channel for the channelled "
        "modules</summary><div><table><tr><th>module</th>",
        a.pushes.size(), a.steps.size());
    for (const step_id &s : a.steps) out += "<th>" + markup_escape(step_label(s)) + "</th>";
    out += "</tr>";
    std::vector<std::string> order = a.modules;
    std::map<std::string, size_t> row_of;
    for (size_t i = 0; i < order.size(); ++i) row_of.emplace(order[i], i);
    /* one pass over the pushes: a cell per module and step, in replay order */
    struct cell {
        std::string text;
        int channel  = -2;
        bool changed = false;
    };
    std::vector<std::vector<cell>> cells(order.size(), std::vector<cell>(a.steps.size()));
    size_t step = 0;
    for (size_t i = 0; i < a.pushes.size(); ++i) {
        const dump_push &p    = a.pushes.listed(i);
        const step_id &p_step = a.pushes.step(i);
        while (step + 1 < a.steps.size() &&
               (a.steps[step].kind != p_step.kind || a.steps[step].number != p_step.number))
            ++step;
        if (!row_of.count(p.module)) {
            row_of.emplace(p.module, order.size());
            order.push_back(p.module);
            cells.emplace_back(a.steps.size());
        }
        cell &c           = cells[row_of[p.module]][step];
        const int channel = p.channelled ? p.channel : -1;
        if (channel != c.channel && channel >= 0)
            c.text += (c.text.empty() ? "" : "<br/>") + channel_label(channel) + ": ";
        else if (!c.text.empty())
            c.text += ", ";
        c.channel = channel;
        c.text += fmt::format("{}#{} {}B", markup_escape(p.group), p.command, p.size);
        c.changed = c.changed || pairs.differs(i);
    }
    for (size_t r = 0; r < order.size(); ++r) {
        out += "<tr><th>" + markup_escape(order[r]) + "</th>";
        for (const cell &c : cells[r])
            out += fmt::format("<td{}>{}</td>", c.changed ? " class=\"diff\"" : "",
                               c.text.empty() ? "-" : c.text);
        out += "</tr>";
    }
    out += "</table></div></details></section>";
}

/* ---- pictures ----------------------------------------------------------------------------- */

/* The structures the page draws, by their type in the library's layouts; which members it draws
 * and how their entries sit come from the layouts and register rows. */
enum class picture { curve, linearisation, mesh, colour_matrices, csc_matrix };

struct picture_row {
    const char *type;
    picture kind;
    const char *title;
};

const picture_row k_pictures[] = {
    {"_isp_gamma_user_lut_t", picture::curve, "gamma curve"},
    {"_isp_hdrc_user_hdrc_lut_t", picture::curve, "hdrc compression curve"},
    {"_isp_hidrc_user_hidrc_lut_t", picture::curve, "hidrc inverse-compression curve"},
    {"_isp_blc_user_lin_t", picture::linearisation, ""},
    {"_isp_lsc_user_mesh_t", picture::mesh, ""},
    {"_isp_clc_user_clc_t", picture::colour_matrices, ""},
    {"_isp_csc_user_core_t", picture::csc_matrix, ""},
};

const picture_row *picture_of(const std::string &type) {
    for (const picture_row &row : k_pictures)
        if (type == row.type) return &row;
    return nullptr;
}

/* How a curve's entries sit in its member: the register rows read `count` entries of `bits`
 * each, `per_word` of them to an element (the lowest first); per_word 1: an entry per element. */
struct curve_packing {
    unsigned per_word = 1, bits = 0;
    size_t count = 0;
};

curve_packing packing_of(const std::string &block, const isp::struct_desc &type,
                         const isp::member_desc &m) {
    curve_packing packing;
    const isp::block_map *map = isp::find_block_map(block.c_str());
    const isp::field_row *row = map ? isp::member_row(*map, type, m) : nullptr;
    if (!row || row->kind != isp::row_kind::table || row->member.elem_size >= m.elem_size)
        return packing;
    packing.per_word = m.elem_size / row->member.elem_size;
    packing.bits     = 8u * row->member.elem_size;
    packing.count    = row->keys.count;
    return packing;
}

/* The entries of a packed curve as real values of the member's format. */
std::vector<double> unpacked(const dump_member &m, const curve_packing &packing) {
    if (packing.per_word == 1) return drawn(m);
    std::vector<double> entries;
    const uint64_t mask = (uint64_t{1} << packing.bits) - 1;
    for (size_t k = 0; k < packing.count && k / packing.per_word < m.codes.size(); ++k) {
        const uint64_t word  = uint64_t(m.codes[k / packing.per_word]);
        const uint32_t entry = uint32_t((word >> (packing.bits * (k % packing.per_word))) & mask);
        entries.push_back(m.format.empty() ? entry
                                           : regval_to_float(int32_t(entry), m.format.c_str()));
    }
    return entries;
}

/* The squarest grid of a mesh's nodes, wider than tall: 285 nodes are 19 across, 15 down. */
std::pair<size_t, size_t> mesh_shape(size_t nodes) {
    size_t rows = 1;
    for (size_t r = 1; r * r <= nodes; ++r)
        if (nodes % r == 0) rows = r;
    return {nodes / std::max(rows, size_t(1)), rows};
}

std::vector<double> indices(size_t n) {
    std::vector<double> x(n);
    for (size_t i = 0; i < n; ++i) x[i] = double(i);
    return x;
}

struct step_pictures {
    std::vector<std::string> curves, meshes, matrices, grids;
};

class picture_maker {
  public:
    picture_maker(const dump &a, const dump *b, const std::vector<push_view> &shown,
                  const pairing &pairs)
        : a_(a), b_(b), shown_(shown), pairs_(pairs) {}

    step_pictures make(const step_id &step) const {
        step_pictures pics;
        for (const push_view &p : shown_) {
            if (step_dir(p.step) != step_dir(step)) continue;
            const push_view *o           = pairs_.other(p);
            const picture_row *row       = picture_of(p.type);
            const isp::struct_desc *type = row ? isp::find_struct(p.type.c_str()) : nullptr;
            if (type && type->member_count > 0) switch (row->kind) {
                    case picture::curve:
                        curve(pics, p, o, *type, row->title);
                        break;
                    case picture::linearisation:
                        linearisation(pics, p, o);
                        break;
                    case picture::mesh:
                        meshes(pics, p, o, *type);
                        break;
                    case picture::colour_matrices:
                        colour_matrices(pics, p, o);
                        break;
                    case picture::csc_matrix:
                        csc_matrix(pics, p, o);
                        break;
                }
            partition_members(pics, p, o);
        }
        return pics;
    }

  private:
    std::string legend_name(char which) const {
        return std::string(1, which) + ": " + (which == 'A' ? a_.dir : b_->dir);
    }

    /* A curve table, the structure's one member, drawn from its real values. */
    void curve(step_pictures &pics, const push_view &p, const push_view *o,
               const isp::struct_desc &type, const std::string &title) const {
        const char *member   = type.members[0].name;
        const dump_member *m = p.member(member);
        if (!m) return;
        const curve_packing packing = packing_of(p.block, type, type.members[0]);
        const auto values = [&packing](const dump_member &v) { return unpacked(v, packing); };
        line_chart chart;
        chart.title        = title + " (" + push_title(p) + ")";
        const size_t count = values(*m).size();
        chart.x_label =
            fmt::format("input: curve point (0-{}, {} = full scale)", count - 1, count - 1);
        chart.y_label = "output, real value (" + format_label(*m) + ")";
        chart.lines.push_back(
            {b_ ? legend_name('A') : m->name, indices(count), values(*m), palette::run_a});
        const dump_member *n = o ? o->member(member) : nullptr;
        std::string caption =
            fmt::format("{} points of <code>{}</code>", count, markup_escape(m->name));
        if (packing.per_word > 1)
            caption +=
                fmt::format(", {} {}-bit entries to a pushed word", packing.per_word, packing.bits);
        if (n) {
            const std::vector<double> other = values(*n);
            chart.lines.push_back(
                {legend_name('B'), indices(other.size()), other, palette::run_b, true});
            const size_t diff = pairs_.differing(p, m->name).size();
            caption += diff ? fmt::format(", <span class=\"bad\">{} differ</span>", diff)
                            : ", identical in A and B";
        }
        pics.curves.push_back(figure(render(chart), caption));
    }

    void linearisation(step_pictures &pics, const push_view &p, const push_view *o) const {
        const dump_member *x = p.member("lin_lut_x"), *y = p.member("lin_lut_y");
        if (!x || !y) return;
        static const char *const names[4] = {"r", "gr", "gb", "b"};
        line_chart chart;
        chart.title    = "black-level linearisation (" + push_title(p) + ")";
        chart.x_label  = "input knot, real value (" + format_label(*x) + ")";
        chart.y_label  = "output, real value (" + format_label(*y) + ")";
        const auto add = [&](const push_view &push, bool dashed, const std::string &prefix) {
            const dump_member *px = push.member("lin_lut_x"), *py = push.member("lin_lut_y");
            if (!px || !py) return;
            /* knot-major: knot e of channel c at 4e + c */
            for (size_t c = 0; c < 4; ++c) {
                series s{prefix + names[c], drawn(*px), {}, palette::channel[c], dashed, true};
                for (size_t e = 0; e < drawn(*px).size() && 4 * e + c < drawn(*py).size(); ++e)
                    s.y.push_back(drawn(*py)[4 * e + c]);
                chart.lines.push_back(s);
            }
        };
        add(p, false, b_ ? "A " : "");
        std::string caption = fmt::format("{} knots per Bayer channel", drawn(*x).size());
        if (o) {
            add(*o, true, "B ");
            const bool same = !pairs_.differs(p);
            caption +=
                same ? ", identical in A and B" : ", <span class=\"bad\">differs</span> (B dashed)";
        }
        pics.curves.push_back(figure(render(chart), caption));
    }

    /* One heat map per member of the mesh structure: a table per Bayer channel, in the order
     * R, Gr, Gb, B. */
    void meshes(step_pictures &pics, const push_view &p, const push_view *o,
                const isp::struct_desc &type) const {
        static const char *const channels[4] = {"R", "Gr", "Gb", "B"};
        /* one colour scale for the four channels, so that their gains compare */
        double lo = INFINITY, hi = -INFINITY;
        for (const push_view *push : {&p, o})
            for (uint32_t c = 0; c < type.member_count; ++c) {
                const dump_member *m = push ? push->member(type.members[c].name) : nullptr;
                if (!m) continue;
                for (double v : m->codes) lo = std::min(lo, v), hi = std::max(hi, v);
            }
        for (uint32_t c = 0; c < type.member_count && c < 4; ++c) {
            const char *table    = type.members[c].name;
            const dump_member *m = p.member(table);
            if (!m) continue;
            /* row by row, on the squarest grid of the table's nodes */
            heat_map map;
            const auto [cols, rows] = mesh_shape(type.members[c].count);
            map.cols = int(cols), map.rows = int(rows);
            map.unit = "code";
            map.lo = lo, map.hi = hi;
            map.title  = fmt::format("lsc gain mesh {}{}", channels[c], b_ ? " (A)" : "");
            map.values = m->codes;
            std::string figs =
                figure(render(map), fmt::format("<code>{}</code> of {}, {} nodes: codes, the "
                                                "mesh has no fixed-point format",
                                                markup_escape(m->name),
                                                markup_escape(push_title(p)), map.values.size()));
            const dump_member *n = o ? o->member(table) : nullptr;
            if (n) {
                heat_map other = map;
                other.title    = fmt::format("lsc gain mesh {} (B)", channels[c]);
                other.values   = n->codes;
                heat_map diff  = map;
                diff.title     = fmt::format("lsc mesh {}: B - A", channels[c]);
                diff.unit      = "difference";
                diff.diverging = true;
                diff.lo = diff.hi = 0;
                diff.values.clear();
                for (size_t i = 0; i < map.values.size() && i < other.values.size(); ++i)
                    diff.values.push_back(other.values[i] - map.values[i]);
                const size_t changed = pairs_.differing(p, m->name).size();
                figs += figure(render(other), "<code>" + n->name + "</code> of B");
                figs += figure(render(diff), changed ? fmt::format("<span class=\"bad\">{} "
                                                                   "nodes differ</span>",
                                                                   changed)
                                                     : "identical in A and B");
            }
            pics.meshes.push_back(figs);
        }
    }

    /* A matrix as a table, coefficients in rows, with the sum of each row's colour
     * coefficients (1 for a row that keeps the level). */
    std::string matrix_table(const std::string &title, const dump_member &m, const dump_member *n,
                             size_t first, size_t rows, size_t cols, size_t summed,
                             const std::vector<std::string> &row_names,
                             const std::vector<std::string> &col_names) const {
        std::string t = "<figure><table class=\"mat\"><caption>" + markup_escape(title) +
                        "</caption><tr><th></th>";
        for (const std::string &c : col_names) t += "<th>" + c + "</th>";
        t += "<th>row sum</th></tr>";
        const std::vector<double> &v = drawn(m);
        for (size_t r = 0; r < rows; ++r) {
            t += "<tr><th>" + row_names[r] + "</th>";
            double sum_a = 0, sum_b = 0;
            for (size_t c = 0; c < cols; ++c) {
                const size_t i = first + r * cols + c;
                const double x = i < v.size() ? v[i] : NAN;
                const double y = n && i < drawn(*n).size() ? drawn(*n)[i] : x;
                if (c < summed) sum_a += x, sum_b += y;
                t += x == y ? fmt::format("<td class=\"n\">{}</td>", number_label(x, 6))
                            : fmt::format("<td class=\"n diff\">{} &#8594; {}</td>",
                                          number_label(x, 6), number_label(y, 6));
            }
            t += sum_a == sum_b ? fmt::format("<td class=\"n sum\">{}</td>", number_label(sum_a, 6))
                                : fmt::format("<td class=\"n diff\">{} &#8594; {}</td>",
                                              number_label(sum_a, 6), number_label(sum_b, 6));
            t += "</tr>";
        }
        return t + "</table></figure>";
    }

    void colour_matrices(step_pictures &pics, const push_view &p, const push_view *o) const {
        const dump_member *m = p.member("matrix_list");
        if (!m) return;
        const dump_member *n = o ? o->member("matrix_list") : nullptr;
        /* eight matrices of three rows: three colour coefficients and an offset each */
        for (size_t k = 0; k < 8 && 12 * k + 12 <= drawn(*m).size(); ++k)
            pics.matrices.push_back(
                matrix_table(fmt::format("cc matrix {} ({})", k, format_label(*m)), *m, n, 12 * k,
                             3, 4, 3, {"row 0", "row 1", "row 2"}, {"R", "G", "B", "offset"}));
    }

    void csc_matrix(step_pictures &pics, const push_view &p, const push_view *o) const {
        const dump_member *m = p.member("matrix");
        if (!m || drawn(*m).size() < 9) return;
        pics.matrices.push_back(matrix_table("csc RGB to YUV matrix (" + format_label(*m) + ")", *m,
                                             o ? o->member("matrix") : nullptr, 0, 3, 3, 3,
                                             {"Y", "U", "V"}, {"R", "G", "B"}));
    }

    void partition_members(step_pictures &pics, const push_view &p, const push_view *o) const {
        const int parts = a_.partitions();
        if (parts <= 0) return;
        for (const dump_member &m : p.members) {
            if (!m.per_partition) continue;
            const dump_member *n         = o ? o->member(m.name) : nullptr;
            const std::vector<double> &v = drawn(m);
            const size_t per             = std::max(v.size() / size_t(parts), size_t(1));
            partition_grid grid;
            grid.title  = push_title(p) + " " + m.name + " (" + format_label(m) + ")";
            grid.part_h = a_.part_h, grid.part_v = a_.part_v;
            const auto cell = [per](const std::vector<double> &values, size_t part) {
                std::string text;
                for (size_t k = 0; k < per && k < 3; ++k) {
                    const size_t i = part * per + k;
                    text += (k ? ", " : "") +
                            (i < values.size() ? number_label(values[i], 4) : std::string("-"));
                }
                return per > 3 ? text + ", ..." : text;
            };
            for (size_t part = 0; part < size_t(parts); ++part) {
                std::string text = cell(v, part);
                bool marked      = false;
                if (n) {
                    const std::string other = cell(drawn(*n), part);
                    marked                  = other != text;
                    if (marked) text += " \u2192 " + other;
                }
                grid.cells.push_back(text);
                grid.marked.push_back(marked);
            }
            pics.grids.push_back(render(grid));
        }
    }

    const dump &a_;
    const dump *b_;
    const std::vector<push_view> &shown_;
    const pairing &pairs_;
};

void picture_section(std::string &out, const std::string &title,
                     const std::vector<std::string> &items, const std::string &note) {
    if (items.empty()) return;
    out += "<h3>" + title + "</h3>";
    if (!note.empty()) out += "<p class=\"muted\">" + note + "</p>";
    out += "<div class=\"figs\">";
    for (const std::string &i : items) out += i;
    out += "</div>";
}

/* ---- member tables ------------------------------------------------------------------------ */

/* Elements joined by spaces; those in `marked` highlighted. */
std::string elements(const std::vector<double> &v, const std::set<size_t> &marked, int decimals) {
    std::string out;
    for (size_t i = 0; i < v.size(); ++i) {
        const std::string s = number_label(v[i], decimals);
        out += (i ? " " : "") + (marked.count(i) ? "<mark>" + s + "</mark>" : s);
    }
    return out;
}

std::string value_cell(const std::vector<double> &v, const dump_member &m,
                       const std::set<size_t> &marked, int decimals) {
    if (v.empty()) return "<td class=\"muted\">-</td>";
    if (m.scalar) return "<td class=\"n\">" + elements(v, marked, decimals) + "</td>";
    return "<td><div class=\"arr\">" + elements(v, marked, decimals) + "</div></td>";
}

/* "[129]", "[256] per partition, 4 shown", "pointer, leads to 4 per partition" */
std::string shape_text(const dump_member &m) {
    if (m.pointer)
        return fmt::format("pointer (dumped as 0), leads to {}{}", m.codes.size(),
                           m.per_partition ? " per partition" : "");
    std::string s = m.scalar ? "" : fmt::format("[{}]", m.count);
    if (m.per_partition) s += fmt::format(" per partition, {} shown", m.codes.size());
    return s;
}

/* The member's register path; for a member whose elements come from rows of their own, the
 * first element's and the last's. */
std::string registers_text(const dump_member &m) {
    if (m.location.empty()) return "no register row";
    const std::vector<std::string> &all = m.locations;
    if (all.size() < 2 ||
        std::all_of(all.begin(), all.end(), [&](const std::string &l) { return l == all.front(); }))
        return markup_escape(m.location);
    return fmt::format("{} &#8230; {} (element by element)", markup_escape(all.front()),
                       markup_escape(all.back()));
}

void member_tables(std::string &out, const std::vector<push_view> &shown, const pairing &pairs,
                   const step_id &step) {
    out +=
        "<h3>Every group</h3><p class=\"muted\">Each pushed structure, member by member: the "
        "raw code in the structure and its real value through the format of the register row "
        "that writes it; members no register row writes have codes only.";
    if (pairs.comparing()) out += " Groups that differ are open, differing members highlighted.";
    out += "</p>";
    for (const push_view &p : shown) {
        if (step_dir(p.step) != step_dir(step)) continue;
        const push_view *o = pairs.other(p);
        const bool diff    = pairs.differs(p);
        out += fmt::format(
            "<details id=\"{}\"{}><summary><b>{}</b> <span class=\"t\">{} B{}{}</span>{}"
            "</summary><div><table><tr><th>member</th><th>format</th>",
            push_id(p), diff ? " class=\"diff\" open=\"open\"" : "", markup_escape(push_title(p)),
            p.size, markup_escape(p.type.empty() ? "" : ", " + p.type),
            p.file.empty() ? "" : ", " + markup_escape(p.file),
            diff ? " <span class=\"bad\">differs</span>" : "");
        out += pairs.comparing() ? "<th>A raw code</th><th>A real value</th><th>B raw "
                                   "code</th><th>B real value</th></tr>"
                                 : "<th>raw code</th><th>real value</th></tr>";
        for (const dump_member &m : p.members) {
            const dump_member *n = o ? o->member(m.name) : nullptr;
            std::set<size_t> marked;
            if (pairs.comparing()) {
                marked = pairs.differing(p, m.name);
                if (!n) marked.insert(0);
            }
            out += fmt::format(
                "<tr{}><td>{}<br/><span class=\"t muted\">{}</span></td><td>{}<br/><span "
                "class=\"t muted\">{}</span></td>",
                marked.empty() ? "" : " class=\"diff\"", markup_escape(m.name), shape_text(m),
                m.format.empty() ? "none" : markup_escape(m.format), registers_text(m));
            out += value_cell(m.codes, m, {}, 0) + value_cell(m.values, m, {}, 6);
            if (pairs.comparing()) {
                if (n)
                    out +=
                        value_cell(n->codes, *n, marked, 0) + value_cell(n->values, *n, marked, 6);
                else
                    out += "<td colspan=\"2\">not in B</td>";
            }
            out += "</tr>";
        }
        if (p.members.empty())
            out += "<tr><td colspan=\"6\">no members: " + markup_escape(p.problem) + "</td></tr>";
        out += "</table></div></details>";
    }
}

}  // namespace

std::vector<step_id> shown_steps(const dump &d, int frame, std::string &error) {
    std::vector<step_id> steps;
    const step_id *last = nullptr;
    for (const step_id &s : d.steps) {
        if (s.kind == phase::setup) steps.push_back(s);
        if (s.kind == phase::frame) last = &s;
    }
    const step_id *wanted = frame < 0 ? last : find_frame(d, frame);
    if (frame >= 0 && !wanted) {
        error = fmt::format("no step frame {} in the dump (its frames: 1 to {})", frame, d.frames);
        return {};
    }
    if (wanted && wanted->kind != phase::setup) steps.push_back(*wanted);
    return steps;
}

std::string render_page(const page_input &in) {
    const dump &a = *in.a.run;
    const dump *b = in.b.run;
    const pairing pairs(in);
    std::vector<push_view> shown;
    shown.reserve(in.a.shown.size());
    for (const shown_push &s : in.a.shown) shown.push_back(view_of(s));
    std::string title = "isp-case report: " + a.case_path;
    if (b) title += " against " + b->case_path;
    std::string out =
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"/>"
        "<meta name=\"viewport\" content=\"width=device-width\"/><title>" +
        markup_escape(title) + "</title><style>" + k_style + "</style></head><body>";
    out +=
        "<header><h1>" + markup_escape(title) + "</h1><p>" +
        markup_escape(b ? "A: " + a.dir + ", B: " + b->dir : "dump " + a.dir) + ", grid " +
        fmt::format("{}x{}, {} channel(s), {} frame(s)", a.part_h, a.part_v, a.channels, a.frames) +
        "</p></header><nav><a href=\"#verdict\">Verdict</a><a href=\"#summary\">Summary</a>";
    if (b) out += "<a href=\"#changes\">What changed</a>";
    out += "<a href=\"#pushes\">Pushed groups</a>";
    for (const step_id &s : in.steps)
        out += "<a href=\"#step-" + step_dir(s) + "\">" + markup_escape(step_label(s)) + "</a>";
    out += "</nav><main>";

    verdicts(out, a, b);
    summary(out, a, b, in.steps);
    if (b) changes(out, a, *b, in.changes);
    pushes(out, a, pairs);

    const picture_maker maker(a, b, shown, pairs);
    for (const step_id &step : in.steps) {
        out += "<section id=\"step-" + step_dir(step) + "\"><h2>" +
               markup_escape(step_label(step)) + "</h2>";
        const step_pictures pics = maker.make(step);
        picture_section(out, "Curves", pics.curves, "");
        picture_section(out, "Lens shading gain meshes", pics.meshes,
                        "One heat map per Bayer channel on a common colour scale; hover a node "
                        "for its value.");
        picture_section(out, "Matrices", pics.matrices,
                        "Real values; the row sum adds a row's colour coefficients.");
        picture_section(out, "Per-partition members", pics.grids,
                        "One cell per picture partition, laid out like the partitions.");
        member_tables(out, shown, pairs, step);
        out += "</section>";
    }
    return out + "</main></body></html>\n";
}

}  // namespace report
}  // namespace isp_case
