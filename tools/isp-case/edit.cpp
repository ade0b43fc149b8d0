/* isp-case edit: a variant of a case with some register values changed, or a sweep of one value
 * over cases of their own, each a case that check and batch read like any other. */
#include <cctype>
#include <memory>

#include <fmt/core.h>

#include "tools/core/overrides.h"
#include "tools/isp-case/commands.h"
#include "tools/output/escape.h"
#include "tools/output/files.h"

namespace isp_case {

namespace {

struct edit_flags {
    std::string case_path, out, sweep;
    std::vector<std::string> sets;
    bool force = false;
};

/* A sweep case is named by its register without the block's top key, "=" and the value the
 * files hold: "d_gain.val=1.25", "matrix_list_1_.matrix_list0.val1=-0.5". Characters that
 * shells or other systems treat specially become "_". */
std::string sweep_name(const value_override &o) {
    const std::string &path = o.field->path;
    std::string name        = path.substr(path.find('.') + 1) + "=" + fmt::format("{}", o.value);
    for (char &c : name)
        if (!isalnum(static_cast<unsigned char>(c)) && c != '.' && c != '_' && c != '-' && c != '=')
            c = '_';
    return name;
}

/* One case written into dir, which prepare_output_dir made ready; "" or why not. */
std::string write_variant(const std::string &case_path, const std::vector<value_override> &sets,
                          const std::string &dir) {
    case_edit edit;
    std::string problem = plan_edit(case_path, sets, edit);
    if (problem.empty()) problem = write_case_copy(case_path, dir, edit, true);
    if (!problem.empty()) return problem;
    fmt::print("{}: {} file{} changed\n", terminal_text(dir), edit.changed.size(),
               edit.changed.size() == 1 ? "" : "s");
    for (const applied_override &o : edit.applied)
        fmt::print("  set {}\n", terminal_text(override_line(o)));
    return "";
}

int run_edit(const edit_flags &f) {
    if (!is_directory(f.case_path)) {
        fmt::print(stderr, "isp-case edit: {}: no such case directory\n",
                   terminal_text(f.case_path));
        return exit_no_case;
    }
    std::vector<value_override> sets(f.sets.size()), sweep;
    for (size_t i = 0; i < f.sets.size(); ++i) parse_override(f.sets[i], sets[i]);
    if (!f.sweep.empty()) parse_sweep(f.sweep, sweep);
    std::string problem = case_place_problem(f.out, f.case_path);
    if (problem.empty())
        problem = prepare_output_dir(
            f.out, f.force ? existing_contents::replace_cases : existing_contents::refuse);
    if (!problem.empty()) {
        fmt::print(stderr, "isp-case edit: {}: {}\n", terminal_text(f.out), problem);
        return exit_failed;
    }
    if (sweep.empty()) problem = write_variant(f.case_path, sets, f.out);
    /* the --set values first, so that the swept value is the one each case holds */
    for (const value_override &value : sweep) {
        std::vector<value_override> all = sets;
        all.push_back(value);
        const std::string dir = join_path(f.out, sweep_name(value));
        problem               = prepare_output_dir(dir, existing_contents::refuse);
        if (problem.empty()) problem = write_variant(f.case_path, all, dir);
        if (!problem.empty()) break;
    }
    if (problem.empty()) return exit_ok;
    fmt::print(stderr, "isp-case edit: {}\n", terminal_text(problem));
    /* a value the case does not hold is the case's, a file not written the output's */
    return problem.rfind("--set ", 0) == 0 ? exit_no_case : exit_failed;
}

}  // namespace

command_runner add_edit_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "edit",
        "Write a new case with register values changed and every other byte kept, or one case "
        "per value of a sweep");
    cmd.footer(
        "Exit status: 0 the case(s) written, 1 an output not written, 2 usage error, 3 no such "
        "case, or a --set the case cannot take (no such frame, partition or register).");
    auto flags    = std::make_shared<edit_flags>();
    edit_flags &f = *flags;
    cmd.add_option("CASE", f.case_path, "Case directory to start from")
        ->required()
        ->type_name("DIR");
    add_set_option(cmd, f.sets);
    const CLI::Validator sweep_check(
        [](std::string &text) {
            std::vector<value_override> values;
            return parse_sweep(text, values);
        },
        "");
    CLI::Option *sweep =
        cmd.add_option("--sweep", f.sweep,
                       "Write COUNT cases into the output directory, the register set to values "
                       "from START to STOP (inclusive, evenly spaced), each named REGISTER=VALUE "
                       "without the block's top key")
            ->type_name("REGISTER.FIELD=START:STOP:COUNT")
            ->check(sweep_check);
    add_out_option(cmd, f.out, "The new case, or with --sweep the directory of the cases", "DIR")
        ->required();
    cmd.add_flag("--force", f.force, "Replace a previous edit's output");
    cmd.callback([sweep, flags] {
        if (flags->sets.empty() && !sweep->count())
            throw CLI::ValidationError("edit", "give --set, --sweep or both");
    });
    return [flags] { return run_edit(*flags); };
}

}  // namespace isp_case
