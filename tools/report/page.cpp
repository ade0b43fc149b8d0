/* The report page: summary, what changed, the pushes of every step, then for each step shown its
 * pictures and every group's members. */
#include "tools/report/page.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include <fmt/core.h>

#include "isp_json_utils.h"
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

std::string channel_label(int channel) {
    return channel < 0 ? std::string() : fmt::format("c{}", channel);
}

std::string push_id(const push_view &p) {
    return fmt::format("g-{}-{}{}-{}-{}", p.step, p.module,
                       p.channel < 0 ? "" : "-c" + std::to_string(p.channel), p.command, p.group);
}

std::string push_title(const push_view &p) {
    std::string t = p.module;
    if (p.channel >= 0) t += " " + channel_label(p.channel);
    return t + " " + p.group + "#" + std::to_string(p.command);
}

/* The names of the steps a dump's directories hold ("frame 2 (f1 again)"), from its pushes. */
std::map<std::string, std::string> step_titles(const dump_view &d) {
    std::map<std::string, std::string> titles;
    for (const push_view &p : d.pushes) titles.emplace(p.step, step_name(p.id));
    return titles;
}

std::string step_title(const dump_view &d, const std::string &dir) {
    for (const push_view &p : d.pushes)
        if (p.step == dir) return step_name(p.id);
    return dir;
}

/* The values a picture draws: real values where the member has a format, codes otherwise. */
const std::vector<double> &drawn(const member_view &m) {
    return m.values.empty() ? m.codes : m.values;
}

/* The member's format; "code" for a member no register row reads, whose numbers are shown as
 * they are stored. */
std::string format_label(const member_view &m) {
    return m.format.empty() ? "code" : m.format;
}

/* Elements whose codes (the bytes the hardware gets) differ. */
std::vector<size_t> differing(const member_view &a, const member_view &b) {
    const std::vector<double> &x = a.codes, &y = b.codes;
    std::vector<size_t> out;
    for (size_t i = 0; i < std::max(x.size(), y.size()); ++i)
        if (i >= x.size() || i >= y.size() || x[i] != y[i]) out.push_back(i);
    return out;
}

struct push_key {
    std::string step, module, group;
    int channel, command;
    bool operator<(const push_key &o) const {
        return std::tie(step, module, channel, command, group) <
               std::tie(o.step, o.module, o.channel, o.command, o.group);
    }
};

push_key key_of(const push_view &p) {
    return {p.step, p.module, p.group, p.channel, p.command};
}

/* The pushes of two dumps paired by step, module, channel, command and group. */
class pairing {
  public:
    explicit pairing(const dump_view *b) : b_(b) {
        if (!b) return;
        for (const push_view &p : b->pushes) by_key_[key_of(p)] = &p;
    }
    bool comparing() const { return b_ != nullptr; }
    const push_view *other(const push_view &p) const {
        const auto it = by_key_.find(key_of(p));
        return it == by_key_.end() ? nullptr : it->second;
    }
    const member_view *other(const push_view &p, const member_view &m) const {
        const push_view *o = other(p);
        return o ? o->member(m.name) : nullptr;
    }
    bool differs(const push_view &p) const {
        if (!b_) return false;
        const push_view *o = other(p);
        if (!o || o->size != p.size || o->members.size() != p.members.size()) return true;
        for (const member_view &m : p.members) {
            const member_view *n = o->member(m.name);
            if (!n || !differing(m, *n).empty()) return true;
        }
        return false;
    }

  private:
    const dump_view *b_;
    std::map<push_key, const push_view *> by_key_;
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

std::vector<std::pair<std::string, std::string>> facts(const dump_view &d) {
    const manifest &m = d.facts;
    size_t bytes      = 0;
    for (const push_view &p : d.pushes) bytes += p.size;
    return {{"dump", d.dir},
            {"case", m.case_path},
            {"grid", fmt::format("{}x{} ({} partitions)", m.part_h, m.part_v, m.part_h * m.part_v)},
            {"channels", std::to_string(m.channels)},
            {"frames", std::to_string(m.frames)},
            {"modules", fmt::format("{}: {}", m.modules.size(), joined(m.modules))},
            {"bypass", m.bypass.empty() ? "none" : joined(m.bypass)},
            {"pushes", fmt::format("{} groups, {} bytes", d.pushes.size(), bytes)},
            {"tool", m.tool},
            {"library", m.library}};
}

void summary(std::string &out, const dump_view &a, const dump_view *b,
             const std::vector<std::string> &steps) {
    out += "<section id=\"summary\"><h2>Summary</h2><table class=\"facts\">";
    const auto fa = facts(a);
    const auto fb = b ? facts(*b) : decltype(fa){};
    if (b) out += "<tr><th></th><th>A</th><th>B</th></tr>";
    for (size_t i = 0; i < fa.size(); ++i) {
        const bool diff = b && i > 0 && fa[i].second != fb[i].second;
        out += fmt::format("<tr{}><th>{}</th><td>{}</td>", diff ? " class=\"diff\"" : "",
                           fa[i].first, escape(fa[i].second));
        if (b) out += "<td>" + escape(fb[i].second) + "</td>";
        out += "</tr>";
    }
    std::string shown;
    for (const std::string &s : steps) shown += (shown.empty() ? "" : ", ") + step_title(a, s);
    out += fmt::format("<tr><th>shown</th><td{}>{}</td></tr></table>", b ? " colspan=\"2\"" : "",
                       escape(shown));

    out += "</section>";
}

/* ---- verdict and findings ------------------------------------------------------------------- */

const char *verdict_class(const verdict &v) {
    return v.result == run_result::ok ? "ok" : v.result == run_result::not_clean ? "warn" : "bad";
}

/* The run's verdict, then its findings in the form the replay's summary lists them. */
void verdict_of(std::string &out, const dump_view &d, const std::string &run) {
    const manifest &m = d.facts;
    if (!m.judged) {
        out += "<p class=\"verdict\">" + run +
               "no verdict: the manifest is of an older isp-case, which recorded none.</p>";
        return;
    }
    /* the text says "(--strict)" where the flag decided the verdict */
    out += fmt::format("<p class=\"verdict\">{}<span class=\"{}\">{}</span></p>", run,
                       verdict_class(m.run), escape(m.run.text()));
    if (m.findings.empty()) return;
    out +=
        "<table><tr><th>where</th><th>severity</th><th>module</th><th>finding</th>"
        "<th>kind</th></tr>";
    for (const finding &f : m.findings) {
        std::string where = !f.file.empty() ? f.file : !f.step.empty() ? f.step : "settings";
        if (f.line > 0) where += fmt::format(":{}:{}", f.line, f.column);
        out += fmt::format(
            "<tr><td>{}</td><td class=\"{}\">{}</td><td>{}</td><td>{}</td><td>{}</td></tr>",
            escape(where), f.level == severity::error ? "bad" : "warn", severity_name(f.level),
            escape(f.module), escape(f.message), kind_name(f.kind));
    }
    out += "</table>";
    if (m.findings_not_listed)
        out += fmt::format("<p class=\"muted\">and {} more findings.</p>", m.findings_not_listed);
}

void verdicts(std::string &out, const dump_view &a, const dump_view *b) {
    out += "<section id=\"verdict\"><h2>Verdict</h2>";
    verdict_of(out, a, b ? "A: " : "");
    if (b) verdict_of(out, *b, "B: ");
    out += "</section>";
}

/* ---- what changed ----------------------------------------------------------------------- */

std::string element_text(const member_view &m, size_t i) {
    const std::vector<double> &v = drawn(m);
    return i < v.size() ? number_label(v[i], 6) : "-";
}

void changes(std::string &out, const dump_view &a, const dump_view &b, const pairing &pairs) {
    out += "<section id=\"changes\"><h2>What changed</h2>";
    std::vector<std::string> rows;
    size_t groups = 0, members = 0;
    for (const push_view &p : a.pushes) {
        const push_view *o = pairs.other(p);
        if (!o) {
            rows.push_back(fmt::format(
                "<tr><td>{}</td><td><a href=\"#{}\">{}</a></td><td colspan=\"3\">pushed by A "
                "only</td></tr>",
                step_name(p.id), push_id(p), escape(push_title(p))));
            ++groups;
            continue;
        }
        bool counted = false;
        for (const member_view &m : p.members) {
            const member_view *n           = o->member(m.name);
            const std::vector<size_t> diff = n ? differing(m, *n) : std::vector<size_t>{0};
            if (diff.empty()) continue;
            ++members;
            groups += counted ? 0 : 1;
            counted            = true;
            const size_t first = diff.front();
            const size_t count = std::max(drawn(m).size(), size_t(1));
            rows.push_back(fmt::format(
                "<tr><td>{}</td><td><a href=\"#{}\">{}</a></td><td>{}</td><td class=\"n\">{} of "
                "{}</td><td>[{}] {} &#8594; {} ({})</td></tr>",
                step_name(p.id), push_id(p), escape(push_title(p)), escape(m.name), diff.size(),
                count, first, element_text(m, first), n ? element_text(*n, first) : "missing",
                format_label(m)));
        }
    }
    std::set<push_key> in_a;
    for (const push_view &p : a.pushes) in_a.insert(key_of(p));
    for (const push_view &p : b.pushes)
        if (!in_a.count(key_of(p))) {
            ++groups;
            rows.push_back(fmt::format(
                "<tr><td>{}</td><td>{}</td><td colspan=\"3\">pushed by B only</td></tr>",
                step_name(p.id), escape(push_title(p))));
        }
    if (rows.empty()) {
        out +=
            "<p class=\"ok\">No difference: both runs pushed the same groups with the same "
            "codes.</p></section>";
        return;
    }
    out += fmt::format(
        "<p><span class=\"bad\">{} member(s) differ in {} pushed group(s)</span>; A is drawn in "
        "<span class=\"key\" style=\"background:{}\"></span>{}, B in <span class=\"key\" "
        "style=\"background:{}\"></span>{} (dashed).</p>",
        members, groups, palette::run_a, escape(a.dir), palette::run_b, escape(b.dir));
    out +=
        "<table><tr><th>step</th><th>group</th><th>member</th><th>elements differing</th>"
        "<th>first difference: A &#8594; B</th></tr>";
    for (size_t i = 0; i < rows.size() && i < k_change_rows; ++i) out += rows[i];
    out += "</table>";
    if (rows.size() > k_change_rows)
        out += fmt::format("<p class=\"muted\">and {} more rows.</p>", rows.size() - k_change_rows);
    out += "</section>";
}

/* ---- pushes of every step ----------------------------------------------------------------- */

void pushes(std::string &out, const dump_view &a, const pairing &pairs) {
    out += fmt::format(
        "<section id=\"pushes\"><h2>Pushed groups</h2><details><summary>{} pushes in {} "
        "steps: per step and module, group#command and size, per channel for the channelled "
        "modules</summary><div><table><tr><th>module</th>",
        a.pushes.size(), a.steps.size());
    const std::map<std::string, std::string> titles = step_titles(a);
    for (const std::string &s : a.steps) out += "<th>" + escape(titles.at(s)) + "</th>";
    out += "</tr>";
    std::vector<std::string> order = a.facts.modules;
    for (const push_view &p : a.pushes)
        if (std::find(order.begin(), order.end(), p.module) == order.end())
            order.push_back(p.module);
    for (const std::string &module : order) {
        out += "<tr><th>" + escape(module) + "</th>";
        for (const std::string &step : a.steps) {
            std::string cell;
            int channel  = -2;
            bool changed = false;
            for (const push_view &p : a.pushes) {
                if (p.step != step || p.module != module) continue;
                if (p.channel != channel && p.channel >= 0)
                    cell += (cell.empty() ? "" : "<br/>") + channel_label(p.channel) + ": ";
                else if (!cell.empty())
                    cell += ", ";
                channel = p.channel;
                cell += fmt::format("{}#{} {}B", escape(p.group), p.command, p.size);
                changed = changed || pairs.differs(p);
            }
            out += fmt::format("<td{}>{}</td>", changed ? " class=\"diff\"" : "",
                               cell.empty() ? "-" : cell);
        }
        out += "</tr>";
    }
    out += "</table></div></details></section>";
}

/* ---- pictures ----------------------------------------------------------------------------- */

/* The 257 16-bit entries of the compression curve, two to a pushed word (the even entry in the
 * low half) and the last one alone, as real values of the member's format. */
std::vector<double> unpacked_hdrc(const member_view &m) {
    std::vector<double> entries;
    for (size_t i = 0; i < m.codes.size(); ++i) {
        const uint32_t word = uint32_t(m.codes[i]);
        for (const uint32_t entry : {word & 0xFFFFu, word >> 16}) {
            if (entries.size() == 2 * m.codes.size() - 1) break;
            entries.push_back(m.format.empty() ? entry
                                               : regval_to_float(int32_t(entry), m.format.c_str()));
        }
    }
    return entries;
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
    picture_maker(const dump_view &a, const dump_view *b, const pairing &pairs)
        : a_(a), b_(b), pairs_(pairs) {}

    step_pictures make(const std::string &step) const {
        step_pictures pics;
        for (const push_view &p : a_.pushes) {
            if (p.step != step) continue;
            const push_view *o = pairs_.other(p);
            if (p.module == "gamma" && p.group == "lut")
                curve(pics, p, o, "gam_lut", "gamma curve", false);
            else if (p.module == "hdrc" && p.group == "hdrc_lut")
                curve(pics, p, o, "hdrc_lut", "hdrc compression curve", true);
            else if (p.module == "hidrc" && p.group == "hidrc_lut")
                curve(pics, p, o, "hidrc_lut", "hidrc inverse-compression curve", false);
            else if (p.group == "lin" && (p.module == "lin" || p.module == "blc"))
                linearisation(pics, p, o);
            else if (p.module == "lsc" && p.group == "mesh")
                meshes(pics, p, o);
            else if (p.module == "cc" && p.group == "clc")
                colour_matrices(pics, p, o);
            else if (p.module == "csc" && p.group == "core")
                csc_matrix(pics, p, o);
            partition_members(pics, p, o);
        }
        return pics;
    }

  private:
    std::string legend_name(char which) const {
        return std::string(1, which) + ": " + (which == 'A' ? a_.dir : b_->dir);
    }

    /* A curve table drawn from its real values; `packed`: two entries to a word. */
    void curve(step_pictures &pics, const push_view &p, const push_view *o, const char *member,
               const std::string &title, bool packed) const {
        const member_view *m = p.member(member);
        if (!m) return;
        const auto values = [packed](const member_view &v) {
            return packed ? unpacked_hdrc(v) : drawn(v);
        };
        line_chart chart;
        chart.title        = title + " (" + push_title(p) + ")";
        const size_t count = values(*m).size();
        chart.x_label =
            fmt::format("input: curve point (0-{}, {} = full scale)", count - 1, count - 1);
        chart.y_label = "output, real value (" + format_label(*m) + ")";
        chart.lines.push_back(
            {b_ ? legend_name('A') : m->name, indices(count), values(*m), palette::run_a});
        const member_view *n = o ? o->member(member) : nullptr;
        std::string caption  = fmt::format("{} points of <code>{}</code>{}", count, m->name,
                                          packed ? ", two 16-bit entries to a pushed word" : "");
        if (n) {
            const std::vector<double> other = values(*n);
            chart.lines.push_back(
                {legend_name('B'), indices(other.size()), other, palette::run_b, true});
            const size_t diff = differing(*m, *n).size();
            caption += diff ? fmt::format(", <span class=\"bad\">{} differ</span>", diff)
                            : ", identical in A and B";
        }
        pics.curves.push_back(figure(render(chart), caption));
    }

    void linearisation(step_pictures &pics, const push_view &p, const push_view *o) const {
        const member_view *x = p.member("lin_lut_x"), *y = p.member("lin_lut_y");
        if (!x || !y) return;
        static const char *const names[4] = {"r", "gr", "gb", "b"};
        line_chart chart;
        chart.title    = "black-level linearisation (" + push_title(p) + ")";
        chart.x_label  = "input knot, real value (" + format_label(*x) + ")";
        chart.y_label  = "output, real value (" + format_label(*y) + ")";
        const auto add = [&](const push_view &push, bool dashed, const std::string &prefix) {
            const member_view *px = push.member("lin_lut_x"), *py = push.member("lin_lut_y");
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

    void meshes(step_pictures &pics, const push_view &p, const push_view *o) const {
        static const char *const tables[4]   = {"rr_mesh", "gr_mesh", "gb_mesh", "bb_mesh"};
        static const char *const channels[4] = {"R", "Gr", "Gb", "B"};
        /* one colour scale for the four channels, so that their gains compare */
        double lo = INFINITY, hi = -INFINITY;
        for (const push_view *push : {&p, o})
            for (const char *t : tables) {
                const member_view *m = push ? push->member(t) : nullptr;
                if (!m) continue;
                for (double v : m->codes) lo = std::min(lo, v), hi = std::max(hi, v);
            }
        for (int c = 0; c < 4; ++c) {
            const member_view *m = p.member(tables[c]);
            if (!m) continue;
            /* the mesh is 19 nodes across and 15 down, row by row */
            heat_map map;
            map.cols = 19, map.rows = 15;
            map.unit = "code";
            map.lo = lo, map.hi = hi;
            map.title  = fmt::format("lsc gain mesh {}{}", channels[c], b_ ? " (A)" : "");
            map.values = m->codes;
            std::string figs =
                figure(render(map), fmt::format("<code>{}</code> of {}, {} nodes: codes, the "
                                                "mesh has no fixed-point format",
                                                m->name, escape(push_title(p)), map.values.size()));
            const member_view *n = o ? o->member(tables[c]) : nullptr;
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
                const size_t changed = differing(*m, *n).size();
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
    std::string matrix_table(const std::string &title, const member_view &m, const member_view *n,
                             size_t first, size_t rows, size_t cols, size_t summed,
                             const std::vector<std::string> &row_names,
                             const std::vector<std::string> &col_names) const {
        std::string t =
            "<figure><table class=\"mat\"><caption>" + escape(title) + "</caption><tr><th></th>";
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
        const member_view *m = p.member("matrix_list");
        if (!m) return;
        const member_view *n = o ? o->member("matrix_list") : nullptr;
        /* eight matrices of three rows: three colour coefficients and an offset each */
        for (size_t k = 0; k < 8 && 12 * k + 12 <= drawn(*m).size(); ++k)
            pics.matrices.push_back(
                matrix_table(fmt::format("cc matrix {} ({})", k, format_label(*m)), *m, n, 12 * k,
                             3, 4, 3, {"row 0", "row 1", "row 2"}, {"R", "G", "B", "offset"}));
    }

    void csc_matrix(step_pictures &pics, const push_view &p, const push_view *o) const {
        const member_view *m = p.member("matrix");
        if (!m || drawn(*m).size() < 9) return;
        pics.matrices.push_back(matrix_table("csc RGB to YUV matrix (" + format_label(*m) + ")", *m,
                                             o ? o->member("matrix") : nullptr, 0, 3, 3, 3,
                                             {"Y", "U", "V"}, {"R", "G", "B"}));
    }

    void partition_members(step_pictures &pics, const push_view &p, const push_view *o) const {
        const int parts = a_.facts.part_h * a_.facts.part_v;
        if (parts <= 0) return;
        for (const member_view &m : p.members) {
            if (!m.per_partition) continue;
            const member_view *n         = o ? o->member(m.name) : nullptr;
            const std::vector<double> &v = drawn(m);
            const size_t per             = std::max(v.size() / size_t(parts), size_t(1));
            partition_grid grid;
            grid.title  = push_title(p) + " " + m.name + " (" + format_label(m) + ")";
            grid.part_h = a_.facts.part_h, grid.part_v = a_.facts.part_v;
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

    const dump_view &a_;
    const dump_view *b_;
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

std::string value_cell(const std::vector<double> &v, const member_view &m,
                       const std::set<size_t> &marked, int decimals) {
    if (v.empty()) return "<td class=\"muted\">-</td>";
    if (m.scalar) return "<td class=\"n\">" + elements(v, marked, decimals) + "</td>";
    return "<td><div class=\"arr\">" + elements(v, marked, decimals) + "</div></td>";
}

/* "[129]", "[256] per partition, 4 shown", "pointer, leads to 4 per partition" */
std::string shape_text(const member_view &m) {
    if (m.pointer)
        return fmt::format("pointer (dumped as 0), leads to {}{}", m.codes.size(),
                           m.per_partition ? " per partition" : "");
    std::string s = m.scalar ? "" : fmt::format("[{}]", m.count);
    if (m.per_partition) s += fmt::format(" per partition, {} shown", m.codes.size());
    return s;
}

void member_tables(std::string &out, const dump_view &a, const pairing &pairs,
                   const std::string &step) {
    out +=
        "<h3>Every group</h3><p class=\"muted\">Each pushed structure, member by member: the "
        "raw code in the structure and its real value through the format of the register row "
        "that writes it; members no register row writes have codes only.";
    if (pairs.comparing()) out += " Groups that differ are open, differing members highlighted.";
    out += "</p>";
    for (const push_view &p : a.pushes) {
        if (p.step != step) continue;
        const push_view *o = pairs.other(p);
        const bool diff    = pairs.differs(p);
        out += fmt::format(
            "<details id=\"{}\"{}><summary><b>{}</b> <span class=\"t\">{} B{}{}</span>{}"
            "</summary><div><table><tr><th>member</th><th>format</th>",
            push_id(p), diff ? " class=\"diff\" open=\"open\"" : "", escape(push_title(p)), p.size,
            escape(p.type.empty() ? "" : ", " + p.type),
            p.file.empty() ? "" : ", " + escape(p.file),
            diff ? " <span class=\"bad\">differs</span>" : "");
        out += pairs.comparing() ? "<th>A raw code</th><th>A real value</th><th>B raw "
                                   "code</th><th>B real value</th></tr>"
                                 : "<th>raw code</th><th>real value</th></tr>";
        for (const member_view &m : p.members) {
            const member_view *n = o ? o->member(m.name) : nullptr;
            std::set<size_t> marked;
            if (pairs.comparing()) {
                if (n)
                    for (size_t i : differing(m, *n)) marked.insert(i);
                else
                    marked.insert(0);
            }
            out += fmt::format(
                "<tr{}><td>{}<br/><span class=\"t muted\">{}</span></td><td>{}<br/><span "
                "class=\"t muted\">{}</span></td>",
                marked.empty() ? "" : " class=\"diff\"", escape(m.name), shape_text(m),
                m.format.empty() ? "none" : escape(m.format),
                m.location.empty() ? "no register row" : escape(m.location));
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
            out += "<tr><td colspan=\"6\">no members: " + escape(p.problem) + "</td></tr>";
        out += "</table></div></details>";
    }
}

}  // namespace

std::vector<std::string> shown_steps(const dump_view &dump, int frame, std::string &error) {
    std::vector<std::string> frames;
    for (const push_view &p : dump.pushes)
        if (p.id.kind == phase::frame && (frames.empty() || frames.back() != p.step))
            frames.push_back(p.step);
    std::vector<std::string> steps;
    const std::string setup = step_dir(setup_step());
    if (std::find(dump.steps.begin(), dump.steps.end(), setup) != dump.steps.end())
        steps.push_back(setup);
    if (frame < 0) {
        if (!frames.empty()) steps.push_back(frames.back());
        return steps;
    }
    const std::string wanted = step_dir(frame_step(frame, frame));
    if (std::find(frames.begin(), frames.end(), wanted) == frames.end()) {
        error = fmt::format("frame {} is not in the dump ({} frame step(s))", frame, frames.size());
        return {};
    }
    steps.push_back(wanted);
    return steps;
}

std::string render_page(const dump_view &a, const dump_view *b,
                        const std::vector<std::string> &steps) {
    const pairing pairs(b);
    std::string title = "isp-case report: " + a.facts.case_path;
    if (b) title += " against " + b->facts.case_path;
    std::string out =
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"/>"
        "<meta name=\"viewport\" content=\"width=device-width\"/><title>" +
        escape(title) + "</title><style>" + k_style + "</style></head><body>";
    out += "<header><h1>" + escape(title) + "</h1><p>" +
           escape(b ? "A: " + a.dir + ", B: " + b->dir : "dump " + a.dir) + ", grid " +
           fmt::format("{}x{}, {} channel(s), {} frame(s)", a.facts.part_h, a.facts.part_v,
                       a.facts.channels, a.facts.frames) +
           "</p></header><nav><a href=\"#verdict\">Verdict</a><a href=\"#summary\">Summary</a>";
    if (b) out += "<a href=\"#changes\">What changed</a>";
    out += "<a href=\"#pushes\">Pushed groups</a>";
    for (const std::string &s : steps)
        out += "<a href=\"#step-" + s + "\">" + escape(step_title(a, s)) + "</a>";
    out += "</nav><main>";

    verdicts(out, a, b);
    summary(out, a, b, steps);
    if (b) changes(out, a, *b, pairs);
    pushes(out, a, pairs);

    const picture_maker maker(a, b, pairs);
    for (const std::string &step : steps) {
        out += "<section id=\"step-" + step + "\"><h2>" + escape(step_title(a, step)) + "</h2>";
        const step_pictures pics = maker.make(step);
        picture_section(out, "Curves", pics.curves, "");
        picture_section(out, "Lens shading gain meshes", pics.meshes,
                        "One heat map per Bayer channel on a common colour scale; hover a node "
                        "for its value.");
        picture_section(out, "Matrices", pics.matrices,
                        "Real values; the row sum adds a row's colour coefficients.");
        picture_section(out, "Per-partition members", pics.grids,
                        "One cell per picture partition, laid out like the partitions.");
        member_tables(out, a, pairs, step);
        out += "</section>";
    }
    return out + "</main></body></html>\n";
}

}  // namespace report
}  // namespace isp_case
