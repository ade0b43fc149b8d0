/* The diff subcommand: the engine's differences, merged over consecutive steps, printed as they
 * come, per step range and module. */
#include "tools/compare/diff.h"

#include <cmath>
#include <map>
#include <vector>

#include <fmt/core.h>
#include <picojson.h>

#include "tools/compare/engine.h"
#include "tools/compare/runs.h"
#include "tools/compare/wording.h"
#include "tools/core/settings.h"
#include "tools/output/json.h"
#include "tools/output/text_table.h"

namespace isp_case {
namespace {

using picojson::value;

/* "cmd01_ctrl", "chn1/cmd03_lin": the push's file name in its module's directory */
std::string push_label(const dump_push &p) {
    std::string label = fmt::format("cmd{:02}", p.command);
    if (!p.group.empty()) label += "_" + p.group;
    return p.channelled ? fmt::format("chn{}/{}", p.channel, label) : label;
}

bool push_only(const difference &d) {
    return d.kind == difference_kind::push_only_in_a || d.kind == difference_kind::push_only_in_b;
}

bool element_kind(const difference &d) {
    return d.kind == difference_kind::code || d.kind == difference_kind::value;
}

/* Element lines shown per member of a push in the text form; the JSON form lists them all. */
constexpr size_t k_shown_elements = 8;

/* The runs under a heading per step range and one per module, printed as they come. */
class text_printer {
  public:
    explicit text_printer(std::FILE *out) : out_(out) {}

    void operator()(const difference_run &r) {
        const difference &d     = r.first;
        const dump_push &p      = d.push();
        const std::string range = step_range_label(p.step, r.last);
        const std::string label = push_label(p);
        const bool same_place   = range == range_ && p.module == module_;
        if (!push_only(d) || d.kind != pending_kind_ || !same_place) flush_pending();
        if (!same_place || label != label_) flush_more();
        heading(range, p.module);
        label_ = label;
        if (push_only(d)) {
            pending_kind_ = d.kind;
            pending_ += (pending_.empty() ? "" : ", ") + label;
            return;
        }
        if (element_kind(d)) {
            auto &[count, name] = more_[d.member];
            if (name.empty()) name = member_name(p, d.member, false);
            if (count++ >= k_shown_elements) return;
        }
        fmt::print(out_, "    {}\n", difference_text(d, false, &r.last));
    }

    void finish() {
        flush_pending();
        flush_more();
    }

  private:
    void heading(const std::string &range, const std::string &module) {
        if (range != range_) {
            fmt::print(out_, "{}\n", range);
            range_ = range, module_.clear();
        }
        if (module != module_) {
            fmt::print(out_, "  {}\n", module);
            module_ = module;
        }
    }
    /* the pushes of a module one side lacks, on one line */
    void flush_pending() {
        if (!pending_.empty())
            fmt::print(out_, "    only in {}: {}\n",
                       pending_kind_ == difference_kind::push_only_in_a ? "A" : "B", pending_);
        pending_.clear();
    }
    void flush_more() {
        for (const auto &[member, seen] : more_)
            if (seen.first > k_shown_elements)
                fmt::print(out_, "    {}: {} more elements differ\n", seen.second,
                           seen.first - k_shown_elements);
        more_.clear();
    }

    std::FILE *out_;
    std::string range_, module_, label_;
    /* differing elements per member of the push, with the member's name */
    std::map<std::string, std::pair<size_t, std::string>> more_;
    difference_kind pending_kind_ = difference_kind::push_only_in_a;
    std::string pending_;
};

json_fields step_json(const step_id &s) {
    return json_fields().add("phase", phase_name(s.kind)).add("frame", s.number).add("dir", s.dir);
}

json_fields side_json(const element_side &s) {
    json_fields o;
    o.add("code", s.present ? value(s.code) : value());
    o.add("value", s.present ? json_number(s.value) : value());
    o.add("format", s.format.empty() ? value() : json_text(s.format));
    o.add("register", s.location.empty() ? value() : json_text(s.location));
    return o;
}

/* file_a and file_b are in the dumps: none for a case replayed into a dump since removed */
struct kept_dumps {
    bool a = true, b = true;
};

json_fields difference_json(const difference &d, const step_id &last, size_t steps,
                            kept_dumps kept) {
    const dump_push &p = d.push();
    json_fields o;
    o.add("kind", kind_name(d.kind))
        .add("step", step_json(p.step))
        .add("last_step", step_json(last))
        .add("steps", steps)
        .add("step_name", step_range_label(p.step, last))
        .add("module", p.module)
        .add("channel", p.channel)
        .add("cmd", double(p.command))
        .add("group", p.group);
    if (!d.member.empty()) {
        o.add("member", d.member)
            .add("index", d.index < 0 ? value() : value(double(d.index)))
            .add("a", side_json(d.in_a))
            .add("b", side_json(d.in_b));
    }
    o.add("files", json_texts(d.files))
        .add("file_a", d.a && kept.a ? json_text(push_file(*d.a)) : value())
        .add("file_b", d.b && kept.b ? json_text(push_file(*d.b)) : value())
        .add("text", difference_text(d, true, &last));
    return o;
}

json_fields summary_json(const comparison_summary &s) {
    return json_fields()
        .add("pushes_a", s.pushes_a)
        .add("pushes_b", s.pushes_b)
        .add("differing", s.differing)
        .add("differences", s.differences)
        .add("only_in_a", s.only_a)
        .add("only_in_b", s.only_b);
}

/* The differences per module and group, in the order the runs first push them. */
class stat_counter {
  public:
    void operator()(const difference &d) {
        const dump_push &p = d.push();
        const auto key     = std::make_pair(p.module, p.group);
        auto it            = index_.find(key);
        if (it == index_.end()) {
            it = index_.emplace(key, rows_.size()).first;
            rows_.push_back({p.module, p.group});
        }
        row &r = rows_[it->second];
        if (push_only(d)) {
            ++(d.kind == difference_kind::push_only_in_a ? r.only_a : r.only_b);
            return;
        }
        ++r.differences;
        /* a push's differences come one after another */
        if (d.push_a != r.last_push) ++r.pushes, r.last_push = d.push_a;
    }

    void print_text(std::FILE *out) const {
        text_table table({"module", "group", "differences", "pushes", "only in A", "only in B"});
        for (const row &r : rows_)
            table.add({r.module, r.group.empty() ? "-" : r.group, std::to_string(r.differences),
                       std::to_string(r.pushes), std::to_string(r.only_a)},
                      {{"", {std::to_string(r.only_b)}}});
        if (!rows_.empty()) table.print(out);
    }

    std::string json() const {
        std::string out;
        for (const row &r : rows_)
            out += (out.empty() ? "\n" : ",\n") + json_fields()
                                                      .add("module", r.module)
                                                      .add("group", r.group)
                                                      .add("differences", r.differences)
                                                      .add("pushes", r.pushes)
                                                      .add("only_in_a", r.only_a)
                                                      .add("only_in_b", r.only_b)
                                                      .serialize();
        return "[" + out + "\n]";
    }

  private:
    struct row {
        std::string module, group;
        size_t differences = 0, pushes = 0, only_a = 0, only_b = 0;
        size_t last_push = push_pairs::npos;
    };
    std::map<std::pair<std::string, std::string>, size_t> index_;
    std::vector<row> rows_;
};

std::string summary_text(const comparison_summary &s) {
    return fmt::format(
        "summary: {} pushes in A, {} in B; {} differ ({} differences), {} only in A, {} only in "
        "B\n",
        s.pushes_a, s.pushes_b, s.differing, s.differences - s.only_a - s.only_b, s.only_a,
        s.only_b);
}

/* The JSON document's members before its differences, as one object's opening. */
std::string json_head(const diff_settings &settings, const std::vector<std::string> &notes) {
    json_fields head;
    head.add("a", settings.a)
        .add("b", settings.b)
        .add("tolerance", settings.tolerance)
        .add("frame", settings.frame ? value(double(*settings.frame)) : value())
        .add("notes", json_texts(notes));
    std::string text = head.serialize();
    text.pop_back(); /* the closing brace: the document goes on */
    return text;
}

/* What every view prints with. */
struct view_context {
    const dump &a, &b;
    compare_options options;
    std::FILE *out;
    bool json;
    std::string head; /* the JSON document's opening */
    kept_dumps kept;
};

comparison_summary print_first(const view_context &c) {
    const divergence found = first_divergence(c.a, c.b, c.options);
    if (c.json) {
        const std::string first =
            found.first
                ? difference_json(*found.first, found.first->push().step, 1, c.kept).serialize()
                : "null";
        fmt::print(c.out, "{},\"first\":{}", c.head, first);
    } else if (found.first) {
        fmt::print(c.out, "first divergence: {}\n",
                   first_divergence_text(*found.first, std::nullopt));
    }
    return found.summary;
}

comparison_summary print_stat(const view_context &c) {
    stat_counter counter;
    const comparison_summary summary = compare_dumps(c.a, c.b, c.options, std::ref(counter));
    if (c.json)
        fmt::print(c.out, "{},\"stat\":{}", c.head, counter.json());
    else
        counter.print_text(c.out);
    return summary;
}

comparison_summary print_all(const view_context &c) {
    comparison_summary summary;
    if (c.json) {
        fmt::print(c.out, "{},\"differences\":[", c.head);
        size_t printed = 0;
        run_merger merger(c.a, c.b, [&](const difference_run &r) {
            fmt::print(c.out, "{}\n{}", printed++ ? "," : "",
                       difference_json(r.first, r.last, r.steps, c.kept).serialize());
        });
        summary = compare_dumps(c.a, c.b, c.options, std::ref(merger));
        merger.finish();
        fmt::print(c.out, "\n]");
    } else {
        text_printer printer(c.out);
        run_merger merger(c.a, c.b, std::ref(printer));
        summary = compare_dumps(c.a, c.b, c.options, std::ref(merger));
        merger.finish();
        printer.finish();
    }
    return summary;
}

comparison_summary print_view(diff_view view, const view_context &c) {
    switch (view) {
        case diff_view::first:
            return print_first(c);
        case diff_view::stat:
            return print_stat(c);
        case diff_view::all:
            return print_all(c);
        case diff_view::quiet:
            break;
    }
    return compare_dumps(c.a, c.b, c.options, [](const difference &) {});
}

}  // namespace

int diff_dumps(const diff_settings &settings, std::FILE *out, std::FILE *err) {
    try {
        const dump a = open_dump(settings.dump_a.empty() ? settings.a : settings.dump_a);
        const dump b = open_dump(settings.dump_b.empty() ? settings.b : settings.dump_b);
        if (settings.frame)
            for (const dump *d : {&a, &b})
                if (!find_frame(*d, *settings.frame))
                    throw dump_error(
                        fmt::format("{}: no step frame {} (the dump's frames: 1 to {})", d->dir,
                                    *settings.frame, d->frames));
        const std::vector<std::string> notes = header_notes(a, b);
        view_context c{a,
                       b,
                       {},
                       out,
                       settings.json,
                       json_head(settings, notes),
                       {settings.dump_a.empty(), settings.dump_b.empty()}};
        c.options.tolerance = settings.tolerance;
        c.options.frame     = settings.frame;
        /* only the answer is wanted: the first difference gives it */
        if (settings.view == diff_view::first || settings.view == diff_view::quiet)
            c.options.limit = 1;
        if (!settings.json && settings.view != diff_view::quiet) {
            fmt::print(out, "diff of {} and {}\n", settings.a, settings.b);
            for (const std::string &n : notes) fmt::print(out, "  note: {}\n", n);
        }
        const comparison_summary summary = print_view(settings.view, c);
        if (settings.json && settings.view != diff_view::quiet) {
            /* a comparison cut short at its first difference counts no further */
            if (settings.view != diff_view::first)
                fmt::print(out, ",\"summary\":{}", summary_json(summary).serialize());
            fmt::print(out, ",\"identical\":{}}}\n", summary.identical());
        } else if (settings.view != diff_view::quiet) {
            if (settings.view != diff_view::first) fmt::print(out, "{}", summary_text(summary));
            fmt::print(out, "result: {}\n", summary.identical() ? "identical" : "different");
        }
        return summary.identical() ? exit_ok : exit_failed;
    } catch (const dump_error &e) {
        fmt::print(err, "isp-case diff: {}\n", e.what());
        return exit_no_case;
    }
}

}  // namespace isp_case
