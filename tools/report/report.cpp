/* isp-case report: the dumps read and compared, then the page written. */
#include "tools/report/report.h"

#include <filesystem>
#include <fstream>
#include <set>

#include <fmt/core.h>

#include "tools/core/settings.h"
#include "tools/report/page.h"

namespace isp_case {
namespace {

namespace fs = std::filesystem;

/* What of the dump the page would replace (the manifest, a file it lists, a directory of it),
 * as a few words; empty when nothing: a dump overwritten by its own page would be lost. */
std::string overwrites(const std::string &out_file, const dump &d) {
    std::error_code error;
    const fs::path out  = fs::weakly_canonical(out_file, error);
    const fs::path root = fs::weakly_canonical(d.dir, error);
    if (error) return "";
    /* a shared store lies outside the dump */
    if (d.version >= 3)
        for (const char *file : {k_pack_file, k_index_file})
            if (out == fs::weakly_canonical(d.store.dir() + "/" + file, error))
                return "the store of the dump " + d.dir;
    const fs::path relative = out.lexically_relative(root);
    if (relative.empty() || *relative.begin() == "..") return "";
    std::set<std::string> files = {"manifest.json"};
    for (const dump_push &p : d.pushes.all_listed()) {
        files.insert({p.bin, p.json});
        files.insert(p.cmodel.begin(), p.cmodel.end());
        files.insert(p.targets.begin(), p.targets.end());
    }
    const std::string name = relative.generic_string();
    if (files.count(name)) return "a file of the dump " + d.dir;
    /* a directory of the dump is no place for the page either */
    const auto inside = files.lower_bound(name + "/");
    if (name == "." || (inside != files.end() && inside->rfind(name + "/", 0) == 0))
        return "a directory of the dump " + d.dir;
    return "";
}

/* The pushes of the shown steps, read and checked. */
std::vector<report::shown_push> read_shown(const dump &d, const std::vector<step_id> &steps,
                                           const std::vector<size_t> *only) {
    std::vector<report::shown_push> shown;
    const auto wanted = [&](const step_id &s) {
        for (const step_id &w : steps)
            if (w.kind == s.kind && w.number == s.number) return true;
        return false;
    };
    const auto add = [&](size_t i) {
        const dump_push push = d.pushes[i];
        shown.push_back({i, push, read_push(d, push)});
    };
    if (only)
        for (size_t i : *only) add(i);
    else
        for (size_t i = 0; i < d.pushes.size(); ++i)
            if (wanted(d.pushes.step(i))) add(i);
    return shown;
}

/* The engine's differences gathered per member: one row each, marks for the shown pushes. */
report::page_changes gather(const dump &a, const dump &b, const report_settings &s,
                            const std::vector<step_id> &steps) {
    report::page_changes c;
    c.differs.assign(a.pushes.size(), false);
    std::set<size_t> shown;
    for (size_t i = 0; i < a.pushes.size(); ++i)
        for (const step_id &w : steps)
            if (w.kind == a.pushes.step(i).kind && w.number == a.pushes.step(i).number)
                shown.insert(i);
    compare_options options;
    options.tolerance = s.tolerance;
    c.summary         = compare_dumps(a, b, options, [&](const difference &d) {
        const bool only_a = d.kind == difference_kind::push_only_in_a,
                   only_b = d.kind == difference_kind::push_only_in_b;
        if (!only_b) c.differs[d.push_a] = true;
        if (!only_a && !only_b && shown.count(d.push_a) && d.index >= -1)
            c.marks[d.push_a][d.member].insert(size_t(std::max(d.index, 0L)));
        report::change_row *row = c.rows.empty() ? nullptr : &c.rows.back();
        const bool same_member  = row && !only_a && !only_b && !row->only_a && !row->only_b &&
                                 row->index == d.push_a && row->member == d.member;
        const bool element = d.kind == difference_kind::code || d.kind == difference_kind::value;
        if (!same_member) {
            c.rows.emplace_back();
            row         = &c.rows.back();
            row->push   = &d.push();
            row->index  = only_b ? d.push_b : d.push_a;
            row->only_a = only_a, row->only_b = only_b;
            row->member = d.member;
            row->format = d.in_a.format;
            row->first  = d;
        } else if (element && row->elements == 0 && row->first.kind != difference_kind::code &&
                   row->first.kind != difference_kind::value) {
            row->first = d; /* an element says more than the format alone */
        }
        row->elements += element;
        row->total = d.count;
    });
    return c;
}

}  // namespace

int run_report(const report_settings &settings) {
    const bool against = !settings.against_dir.empty();
    try {
        const dump a = open_dump(settings.dump_dir);
        const dump b = against ? open_dump(settings.against_dir) : dump();
        for (const dump *d : {&a, against ? &b : nullptr})
            if (d)
                if (const std::string what = overwrites(settings.out_file, *d); !what.empty()) {
                    fmt::print(stderr,
                               "isp-case report: {}: {} the page is made from; write the page "
                               "elsewhere\n",
                               settings.out_file, what);
                    return exit_usage;
                }
        std::string error;
        report::page_input in;
        in.steps = report::shown_steps(a, settings.frame, error);
        if (in.steps.empty()) {
            fmt::print(stderr, "isp-case report: {}: {}\n", settings.dump_dir,
                       error.empty() ? "no step in the dump" : error);
            return exit_no_case;
        }
        in.a.run   = &a;
        in.a.shown = read_shown(a, in.steps, nullptr);
        if (against) {
            in.b.run   = &b;
            in.b_of_a  = pair_pushes(a, b).b_of_a;
            in.changes = gather(a, b, settings, in.steps);
            std::vector<size_t> paired;
            for (const report::shown_push &s : in.a.shown)
                if (in.b_of_a[s.index] != push_pairs::npos) paired.push_back(in.b_of_a[s.index]);
            in.b.shown = read_shown(b, in.steps, &paired);
        }
        const std::string page = report::render_page(in);
        std::ofstream out(settings.out_file, std::ios::binary);
        out << page;
        out.close();
        if (!out) {
            fmt::print(stderr, "isp-case report: {}: cannot be written\n", settings.out_file);
            return exit_failed;
        }
        fmt::print("report of {}{} written to {} ({} bytes)\n", settings.dump_dir,
                   against ? " against " + settings.against_dir : "", settings.out_file,
                   page.size());
        return exit_ok;
    } catch (const dump_error &e) {
        fmt::print(stderr, "isp-case report: {}\n", e.what());
        return exit_no_case;
    }
}

}  // namespace isp_case
