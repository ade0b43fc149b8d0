/* The case check: the replay's read plan walked file by file. */
#include "tools/check.h"

#include <exception>
#include <map>

#include <fmt/core.h>

#include "tools/file_probe.h"
#include "tools/stderr_capture.h"
#include "tools/text_table.h"

namespace isp_case {
namespace {

struct kind_label {
    problem_kind kind;
    const char *label;
};
const kind_label k_labels[] = {
    {problem_kind::frame_directory, "missing frame directory"},
    {problem_kind::missing_file, "missing file"},
    {problem_kind::unreadable_file, "unreadable file"},
    {problem_kind::syntax, "JSON does not parse"},
    {problem_kind::non_finite, "number out of range"},
    {problem_kind::not_object, "root is not an object"},
    {problem_kind::field, "field not read"},
    {problem_kind::raises, "converter raises"},
    {problem_kind::channels, "channel count rejected"},
    {problem_kind::grid, "empty grid rejected"},
};

problem_kind kind_of(file_state state) {
    switch (state) {
        case file_state::missing:
            return problem_kind::missing_file;
        case file_state::unreadable:
            return problem_kind::unreadable_file;
        case file_state::syntax:
            return problem_kind::syntax;
        case file_state::non_finite:
            return problem_kind::non_finite;
        default:
            return problem_kind::not_object;
    }
}

std::string names_of(const std::vector<const module_info *> &modules) {
    std::string names;
    for (const module_info *m : modules)
        names += (names.empty() ? "" : ", ") + std::string(m->name);
    return names;
}

/* Runs the module's converters on a copy of the file's root in the loader's order, as one load
 * of that file does: the first exception ends the load. */
void convert_file(const module_info &module, const picojson::object &root, uint8_t partition,
                  std::vector<std::string> &messages, std::vector<std::string> &raised) {
    picojson::object copy = root;
    stderr_capture capture;
    for (const char *name : module.converters) {
        const group_info *group = find_group(module.block, name);
        if (!group) continue;
        std::vector<max_align_t> scratch((group->size + sizeof(max_align_t) - 1) /
                                         sizeof(max_align_t));
        try {
            group->convert(copy, scratch.data(), partition);
        } catch (const std::exception &e) {
            raised.push_back(
                fmt::format("{} ({}) raises: {}", group->converter, module.name, e.what()));
            break;
        }
    }
    for (std::string &line : capture.finish()) messages.push_back(std::move(line));
}

void check_settings(const run_settings &settings, check_result &result) {
    std::vector<const module_info *> channelled, grid_checkers;
    for (const module_info *m : settings.modules) {
        if (m->kind == file_kind::per_channel) channelled.push_back(m);
        if (m->checks_grid) grid_checkers.push_back(m);
    }
    if (!channelled.empty() && (settings.channels < 0 || settings.channels > max_channels))
        result.problems.push_back(
            {problem_kind::channels, "",
             fmt::format("channel count {}: {} accept 0 to {} channels", settings.channels,
                         names_of(channelled), max_channels)});
    if (!grid_checkers.empty() && settings.part_h * settings.part_v == 0)
        result.problems.push_back(
            {problem_kind::grid, "",
             fmt::format("grid {}x{} is empty: {} report \"partition err!!!.\"", settings.part_h,
                         settings.part_v, names_of(grid_checkers))});
}

void check_frames(const run_settings &settings, const case_contents &contents,
                  check_result &result) {
    const std::string first_gap =
        join_path(settings.case_path, fmt::format("cfgs/f{}", contents.frames));
    if (contents.frames == 0)
        result.problems.push_back({problem_kind::frame_directory, first_gap,
                                   "missing frame directory: init reads frame 0 from it"});
    if (contents.unreached.empty()) return;
    std::string never_read;
    for (int frame : contents.unreached)
        never_read += fmt::format("{}cfgs/f{}", never_read.empty() ? "" : ", ", frame);
    result.problems.push_back(
        {problem_kind::frame_directory, first_gap,
         "missing frame directory: the frames after it are never read (" + never_read + ")"});
}

void check_file(const run_settings &settings, const planned_file &file, check_result &result) {
    const std::string path  = join_path(settings.case_path, file.relative);
    const probed_file probe = probe_file(path);
    ++result.files_read;
    if (probe.state != file_state::ok) {
        result.problems.push_back({kind_of(probe.state), path,
                                   describe(probe) + " (read by " + names_of(file.readers) + ")"});
        return;
    }
    /* each message once, with how often and which modules printed it */
    struct field_report {
        size_t count = 0;
        std::vector<const module_info *> modules;
    };
    std::map<std::string, field_report> fields;
    std::vector<std::string> order, raised;
    for (const module_info *module : file.readers) {
        std::vector<std::string> messages;
        convert_file(*module, probe.root.get<picojson::object>(),
                     static_cast<uint8_t>(file.partition), messages, raised);
        for (const std::string &line : messages) {
            field_report &report = fields[line];
            if (report.count++ == 0) order.push_back(line);
            if (report.modules.empty() || report.modules.back() != module)
                report.modules.push_back(module);
        }
    }
    for (const std::string &line : order)
        result.problems.push_back({problem_kind::field, path,
                                   line + " (" + names_of(fields[line].modules) + ")",
                                   fields[line].count});
    for (const std::string &text : raised)
        result.problems.push_back({problem_kind::raises, path, text});
}

}  // namespace

std::vector<problem> replay_blockers(const run_settings &settings) {
    std::vector<problem> blockers;
    for (const planned_file &file : plan_reads(settings)) {
        const std::string path  = join_path(settings.case_path, file.relative);
        const probed_file probe = probe_file(path);
        if (probe.state != file_state::ok && probe.state != file_state::not_object)
            blockers.push_back({kind_of(probe.state), path, describe(probe)});
    }
    return blockers;
}

check_result check_case(const run_settings &settings, const case_contents &contents) {
    check_result result;
    check_settings(settings, result);
    check_frames(settings, contents, result);
    for (const planned_file &file : plan_reads(settings)) check_file(settings, file, result);
    return result;
}

void print_check(std::FILE *out, const run_settings &settings, const check_result &result) {
    fmt::print(out, "check of {}: grid {}x{}, {} channel{}, {} frame{}, {} modules\n",
               settings.case_path, settings.part_h, settings.part_v, settings.channels,
               settings.channels == 1 ? "" : "s", settings.frames, settings.frames == 1 ? "" : "s",
               settings.modules.size());

    std::string where = "-";
    for (const problem &p : result.problems) {
        const std::string place = p.where.empty() ? "settings" : p.where;
        if (place != where) fmt::print(out, "\n{}\n", place);
        where = place;
        fmt::print(out, "  {}{}\n", p.text, p.count > 1 ? fmt::format(" (x{})", p.count) : "");
    }

    text_table table({"problem", "files", "count"});
    size_t total = 0;
    for (const kind_label &label : k_labels) {
        std::map<std::string, bool> files;
        size_t count = 0;
        for (const problem &p : result.problems) {
            if (p.kind != label.kind) continue;
            count += p.count;
            if (!p.where.empty()) files[p.where] = true;
        }
        total += count;
        table.add({label.label, std::to_string(files.size())}, {{"", {std::to_string(count)}}});
    }
    fmt::print(out, "\nsummary ({} files read)\n", result.files_read);
    table.print(out);
    if (total == 0)
        fmt::print(out, "  result: clean\n");
    else
        fmt::print(out, "  result: {} problem{}\n", total, total == 1 ? "" : "s");
}

}  // namespace isp_case
