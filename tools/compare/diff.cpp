/* The diff subcommand: the engine's differences printed as they come, per step and module. */
#include "tools/compare/diff.h"

#include <cmath>
#include <map>
#include <vector>

#include <fmt/core.h>
#include <picojson.h>

#include "tools/compare/engine.h"
#include "tools/core/settings.h"

namespace isp_case {
namespace {

using picojson::value;

/* "cmd01_ctrl", "chn1/cmd03_lin": the push's file name in its module's directory */
std::string push_label(const dump_push &p) {
    std::string label = fmt::format("cmd{:02}", p.command);
    if (!p.group.empty()) label += "_" + p.group;
    return p.channelled ? fmt::format("chn{}/{}", p.channel, label) : label;
}

std::string number(double v) {
    return std::isfinite(v) ? fmt::format("{}", v) : "-";
}

/* Element lines shown per member of a push in the text form; the JSON form lists them all. */
constexpr size_t k_shown_elements = 8;

class text_printer {
  public:
    explicit text_printer(std::string &out) : out_(out) {}

    void operator()(const difference &d) {
        const dump_push &p = d.push();
        const bool only =
            d.kind == difference_kind::push_only_in_a || d.kind == difference_kind::push_only_in_b;
        if (!only || d.kind != pending_kind_ || !pending_push_ ||
            pending_push_->module != p.module ||
            step_label(pending_push_->step) != step_label(p.step))
            flush_pending();
        if (&p != push_) flush_more();
        push_ = &p;
        heading(p);
        if (only) {
            pending_kind_ = d.kind;
            pending_push_ = &p;
            pending_ += (pending_.empty() ? "" : ", ") + push_label(p);
            return;
        }
        const std::string label = push_label(p);
        const std::string name  = d.index < 0 ? d.member : fmt::format("{}[{}]", d.member, d.index);
        switch (d.kind) {
            case difference_kind::member_only_in_a:
            case difference_kind::member_only_in_b:
                out_ += fmt::format("    {} {}: member only in {}\n", label, d.member,
                                    d.kind == difference_kind::member_only_in_a ? "A" : "B");
                return;
            case difference_kind::format:
                out_ += fmt::format("    {} {}: format {} -> {}\n", label, d.member,
                                    shown(d.in_a.format), shown(d.in_b.format));
                return;
            case difference_kind::location:
                out_ += fmt::format("    {} {}: register {} -> {}\n", label, d.member,
                                    shown(d.in_a.location), shown(d.in_b.location));
                return;
            case difference_kind::bytes:
                out_ += fmt::format("    {}: bytes differ\n", label);
                return;
            default:
                break;
        }
        if (more_[d.member]++ >= k_shown_elements) return;
        std::string line = fmt::format("    {} {}: code {} -> {}", label, name,
                                       d.in_a.present ? number(d.in_a.code) : "-",
                                       d.in_b.present ? number(d.in_b.code) : "-");
        if (!d.in_a.format.empty() || !d.in_b.format.empty())
            line += fmt::format(", value {} -> {}", number(d.in_a.value), number(d.in_b.value));
        if (!d.in_a.location.empty()) line += " (" + d.in_a.location + ")";
        out_ += fmt::format("{}\n", line);
    }

    void finish() {
        flush_pending();
        flush_more();
    }

  private:
    static std::string shown(const std::string &s) { return s.empty() ? "none" : s; }

    void heading(const dump_push &p) {
        const std::string step = step_label(p.step);
        if (step != step_) {
            out_ += fmt::format("{}\n", step);
            step_ = step, module_.clear();
        }
        if (p.module != module_) {
            out_ += fmt::format("  {}\n", p.module);
            module_ = p.module;
        }
    }
    /* the pushes of a module one side lacks, on one line */
    void flush_pending() {
        if (!pending_.empty())
            out_ +=
                fmt::format("    only in {}: {}\n",
                            pending_kind_ == difference_kind::push_only_in_a ? "A" : "B", pending_);
        pending_.clear();
        pending_push_ = nullptr;
    }
    void flush_more() {
        for (const auto &[member, count] : more_)
            if (count > k_shown_elements)
                out_ += fmt::format("    {} {}: {} more elements differ\n", push_label(*push_),
                                    member, count - k_shown_elements);
        more_.clear();
    }

    std::string &out_; /* printed once the whole comparison has been read */
    std::string step_, module_;
    const dump_push *push_ = nullptr;
    std::map<std::string, size_t> more_; /* differing elements per member of the push */
    difference_kind pending_kind_  = difference_kind::push_only_in_a;
    const dump_push *pending_push_ = nullptr;
    std::string pending_;
};

value step_json(const step_id &s) {
    picojson::object o;
    o["phase"] = value(std::string(phase_name(s.kind)));
    o["frame"] = value(double(s.number));
    o["dir"]   = value(double(s.dir));
    return value(o);
}

value side_json(const element_side &s) {
    picojson::object o;
    o["code"]     = s.present ? value(s.code) : value();
    o["value"]    = s.present && std::isfinite(s.value) ? value(s.value) : value();
    o["format"]   = s.format.empty() ? value() : value(s.format);
    o["register"] = s.location.empty() ? value() : value(s.location);
    return value(o);
}

value difference_json(const difference &d) {
    const dump_push &p = d.push();
    picojson::object o;
    o["kind"]      = value(std::string(kind_name(d.kind)));
    o["step"]      = step_json(p.step);
    o["step_name"] = value(step_label(p.step));
    o["module"]    = value(p.module);
    o["channel"]   = value(double(p.channel));
    o["cmd"]       = value(double(p.command));
    o["group"]     = value(p.group);
    o["file_a"]    = d.a ? value(push_file(*d.a)) : value();
    o["file_b"]    = d.b ? value(push_file(*d.b)) : value();
    if (!d.member.empty()) {
        o["member"] = value(d.member);
        o["index"]  = d.index < 0 ? value() : value(double(d.index));
        o["a"]      = side_json(d.in_a);
        o["b"]      = side_json(d.in_b);
    }
    return value(o);
}

value summary_json(const comparison_summary &s) {
    picojson::object o;
    o["pushes_a"]    = value(double(s.pushes_a));
    o["pushes_b"]    = value(double(s.pushes_b));
    o["differing"]   = value(double(s.differing));
    o["differences"] = value(double(s.differences));
    o["only_in_a"]   = value(double(s.only_a));
    o["only_in_b"]   = value(double(s.only_b));
    return value(o);
}

}  // namespace

int diff_dumps(const diff_settings &settings, std::FILE *out, std::FILE *err) {
    try {
        const dump a = open_dump(settings.a), b = open_dump(settings.b);
        if (settings.frame)
            for (const dump *d : {&a, &b})
                if (!find_frame(*d, *settings.frame))
                    throw dump_error(
                        fmt::format("{}: no step frame {} (the dump's frames: 1 to {})", d->dir,
                                    *settings.frame, d->frames));
        compare_options options;
        options.tolerance                    = settings.tolerance;
        options.frame                        = settings.frame;
        const std::vector<std::string> notes = header_notes(a, b);
        comparison_summary summary;
        if (settings.json) {
            picojson::array differences;
            summary = compare_dumps(a, b, options, [&](const difference &d) {
                differences.push_back(difference_json(d));
            });
            picojson::object o;
            o["a"]         = value(settings.a);
            o["b"]         = value(settings.b);
            o["tolerance"] = value(settings.tolerance);
            o["frame"]     = settings.frame ? value(double(*settings.frame)) : value();
            picojson::array note_values;
            for (const std::string &n : notes) note_values.push_back(value(n));
            o["notes"]       = value(note_values);
            o["differences"] = value(differences);
            o["summary"]     = summary_json(summary);
            o["identical"]   = value(summary.identical());
            fmt::print(out, "{}\n", value(o).serialize(true));
        } else {
            std::string text = fmt::format("diff of {} and {}\n", settings.a, settings.b);
            for (const std::string &n : notes) text += fmt::format("  note: {}\n", n);
            text_printer printer(text);
            summary = compare_dumps(a, b, options, std::ref(printer));
            printer.finish();
            fmt::print(out, "{}", text);
            fmt::print(out,
                       "summary: {} pushes in A, {} in B; {} differ ({} differences), {} only in "
                       "A, {} only in B\n",
                       summary.pushes_a, summary.pushes_b, summary.differing,
                       summary.differences - summary.only_a - summary.only_b, summary.only_a,
                       summary.only_b);
            fmt::print(out, "result: {}\n", summary.identical() ? "identical" : "different");
        }
        return summary.identical() ? exit_ok : exit_failed;
    } catch (const dump_error &e) {
        fmt::print(err, "isp-case diff: {}\n", e.what());
        return exit_no_case;
    }
}

}  // namespace isp_case
