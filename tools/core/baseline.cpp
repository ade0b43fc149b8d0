/* Baselines: a fresh dump against a stored one, streamed push by push through the engine and
 * kept down to a count and the first difference, so that memory does not grow with the frames
 * or the differences. */
#include "tools/core/baseline.h"

#include <fnmatch.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>

#include <fmt/format.h>

#include "tools/compare/engine.h"
#include "tools/compare/wording.h"
#include "tools/core/file_probe.h"
#include "tools/core/run_record.h"
#include "tools/dump/manifest.h"
#include "tools/output/json.h"

namespace isp_case {
namespace {

namespace fs = std::filesystem;

const int k_max_depth = 32; /* directory levels searched for stored runs */

picojson::value optional_number(const std::optional<double> &x) {
    return x ? json_number(*x) : picojson::value();
}

std::optional<double> number_from(const picojson::value &v) {
    if (v.is<double>()) return v.get<double>();
    return std::nullopt;
}

void search(const fs::path &dir, const fs::path &root, int depth, std::vector<std::string> &out) {
    std::error_code error;
    if (fs::is_regular_file(dir / "manifest.json", error)) {
        out.push_back(dir.lexically_relative(root).string());
        return;
    }
    if (depth >= k_max_depth) return;
    fs::directory_iterator it(dir, fs::directory_options::skip_permission_denied, error), end;
    for (; !error && it != end; it.increment(error))
        if (it->is_directory(error) && !it->is_symlink(error))
            search(it->path(), root, depth + 1, out);
}

}  // namespace

divergence_fields divergence_of(const difference &d, size_t more) {
    const dump_push &p = d.push();
    divergence_fields v;
    v.kind   = kind_name(d.kind);
    v.step   = step_name(p.step);
    v.module = p.module;
    v.group  = p.group.empty() ? fmt::format("cmd{:02}", p.command) : p.group;
    if (p.step.kind != phase::teardown) v.frame_dir = fmt::format("f{}", p.step.dir);
    v.member        = d.member;
    v.element       = d.index;
    v.register_path = !d.in_a.location.empty() ? d.in_a.location : d.in_b.location;
    v.files         = d.files;
    if (d.in_a.present) v.code_a = d.in_a.code;
    if (d.in_b.present) v.code_b = d.in_b.code;
    if (d.in_a.present && std::isfinite(d.in_a.value)) v.value_a = d.in_a.value;
    if (d.in_b.present && std::isfinite(d.in_b.value)) v.value_b = d.in_b.value;
    v.text = first_divergence_text(d, more);
    return v;
}

std::string baseline_reason(const baseline_outcome &outcome) {
    switch (outcome.state) {
        case baseline_state::differs:
            return "baseline: " + (outcome.first ? outcome.first->text : std::string("differs"));
        case baseline_state::missing:
            return "baseline: not in baseline";
        case baseline_state::unreadable:
            return "baseline: " + outcome.problem;
        default:
            return "";
    }
}

json_fields baseline_outcome_json(const baseline_outcome &outcome) {
    json_fields o;
    o.add("state", enum_name(baseline_state_names, outcome.state))
        .add("differences", outcome.differences);
    if (outcome.first) {
        const divergence_fields &d = *outcome.first;
        o.add(
            "first_divergence",
            json_fields()
                .add("kind", d.kind)
                .add("step", d.step)
                .add("frame_dir", d.frame_dir)
                .add("module", d.module)
                .add("group", d.group)
                .add("member", d.member)
                .add("element", d.element >= 0 ? json_number(double(d.element)) : picojson::value())
                .add("register", d.register_path)
                .add("files", json_texts(d.files))
                .add("codes", picojson::value(picojson::array{optional_number(d.code_a),
                                                              optional_number(d.code_b)}))
                .add("values", picojson::value(picojson::array{optional_number(d.value_a),
                                                               optional_number(d.value_b)}))
                .add("more", outcome.differences - 1)
                .add("text", d.text));
    } else {
        o.add_null("first_divergence");
    }
    return o.add("problem", outcome.problem);
}

bool baseline_outcome_from_json(const picojson::value &value, baseline_outcome &out) {
    if (!value.is<picojson::object>()) return false;
    const picojson::value &state = value.get("state"), &count = value.get("differences"),
                          &first = value.get("first_divergence"), &problem = value.get("problem");
    baseline_outcome read;
    if (!state.is<std::string>() ||
        !enum_from_name(baseline_state_names, state.get<std::string>(), read.state) ||
        !count.is<double>() || !problem.is<std::string>())
        return false;
    read.differences = size_t(count.get<double>());
    read.problem     = problem.get<std::string>();
    if (first.is<picojson::object>()) {
        divergence_fields d;
        const auto text = [&](const char *key) {
            const picojson::value &v = first.get(key);
            return v.is<std::string>() ? v.get<std::string>() : std::string();
        };
        d.kind = text("kind"), d.step = text("step"), d.frame_dir = text("frame_dir");
        d.module = text("module"), d.group = text("group"), d.member = text("member");
        d.register_path = text("register"), d.text = text("text");
        if (first.get("files").is<picojson::array>())
            for (const picojson::value &f : first.get("files").get<picojson::array>())
                d.files.push_back(f.is<std::string>() ? f.get<std::string>() : "");
        if (first.get("element").is<double>()) d.element = long(first.get("element").get<double>());
        const picojson::value &codes = first.get("codes"), &values = first.get("values");
        if (!codes.is<picojson::array>() || codes.get<picojson::array>().size() != 2 ||
            !values.is<picojson::array>() || values.get<picojson::array>().size() != 2)
            return false;
        d.code_a = number_from(codes.get(0)), d.code_b = number_from(codes.get(1));
        d.value_a = number_from(values.get(0)), d.value_b = number_from(values.get(1));
        read.first = d;
    }
    out = std::move(read);
    return true;
}

bool ignored_member(const std::vector<std::string> &globs, const std::string &module,
                    const std::string &group, const std::string &member) {
    if (globs.empty() || member.empty()) return false;
    const std::string name = module + "." + group + "." + member;
    return std::any_of(globs.begin(), globs.end(), [&](const std::string &glob) {
        return fnmatch(glob.c_str(), name.c_str(), 0) == 0;
    });
}

bool read_ignore_file(const std::string &path, std::vector<std::string> &globs,
                      std::string &error) {
    std::string text;
    if (const file_read r = read_regular_file(path, max_register_file_bytes, text);
        !r.problem.empty()) {
        error = path + ": cannot be read: " + r.problem;
        return false;
    }
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        const size_t hash = line.find('#');
        if (hash != std::string::npos) line.erase(hash);
        const size_t first = line.find_first_not_of(" \t\r");
        if (first == std::string::npos) continue;
        globs.push_back(line.substr(first, line.find_last_not_of(" \t\r") + 1 - first));
    }
    return true;
}

baseline_outcome compare_with_baseline(const std::string &stored_dir, const std::string &fresh_dir,
                                       const baseline_settings &settings) {
    baseline_outcome outcome;
    std::error_code error;
    if (!fs::is_regular_file(stored_dir + "/manifest.json", error)) {
        outcome.state = baseline_state::missing;
        return outcome;
    }
    try {
        const dump stored = open_dump(stored_dir), fresh = open_dump(fresh_dir);
        compare_options options;
        options.tolerance = settings.tolerance;
        std::optional<difference> first; /* its pushes are the dumps', alive here */
        compare_dumps(stored, fresh, options, [&](const difference &d) {
            const dump_push &p = d.push();
            if (ignored_member(settings.ignore, p.module, p.group, d.member)) return;
            if (!outcome.differences++) first = d;
        });
        if (first) outcome.first = divergence_of(*first, outcome.differences - 1);
    } catch (const dump_error &e) {
        outcome.state   = baseline_state::unreadable;
        outcome.problem = e.what();
        return outcome;
    }
    outcome.state = outcome.differences ? baseline_state::differs : baseline_state::same;
    return outcome;
}

bool same_objects(const dump &stored, const dump &run) {
    if (stored.pushes.size() != run.pushes.size()) return false;
    for (size_t i = 0; i < stored.pushes.size(); ++i) {
        const dump_push a = stored.pushes[i], b = run.pushes[i];
        if (a.object.empty() || a.object != b.object || a.pointees != b.pointees ||
            a.step != b.step || a.module != b.module || a.channel != b.channel ||
            a.command != b.command || a.size != b.size)
            return false;
    }
    return true;
}

std::string baseline_case_dir(const std::string &baseline_dir, const std::string &case_name) {
    std::string path = baseline_dir;
    for (const fs::path &part : fs::path(case_name).relative_path())
        if (part != "." && part != ".." && !part.empty()) path += "/" + part.string();
    return path;
}

std::vector<std::string> baseline_cases(const std::string &dir) {
    std::vector<std::string> names;
    std::error_code error;
    if (!fs::is_directory(dir, error)) return names;
    fs::directory_iterator it(dir, fs::directory_options::skip_permission_denied, error), end;
    for (; !error && it != end; it.increment(error))
        if (it->is_directory(error) && !it->is_symlink(error)) search(it->path(), dir, 1, names);
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace isp_case
