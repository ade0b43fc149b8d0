/* What the subcommands share on the command line: the case options, the one spelling of
 * --format and -o/--out, lists checked entry by entry with a "did you mean", and the table of
 * exit statuses isp-case --help shows. */
#include <algorithm>

#include <fmt/format.h>

#include "tools/core/closest_name.h"
#include "tools/core/findings.h"
#include "tools/core/module_table.h"
#include "tools/isp-case/commands.h"

namespace isp_case {

const char *const exit_statuses_help =
    "Exit status of every subcommand:\n"
    "  0  success: replay: every operation returned 0 and no error found; check: no error "
    "found;\n     export: every C-model file written; diff: identical dumps; batch: every case "
    "passed;\n     merge: every case of the suite ran and passed; report: the page written;\n"
    "     regmap, template: written; where: found\n"
    "  1  failure: an error found (an operation failed or raised, a value could not be read, "
    "the\n     platform saw a leak), a register file not converted, a file not written, a case "
    "failed\n     or differs from its baseline; with --strict also a warning; diff: the dumps "
    "differ;\n     merge: a case failed or missing; where: nothing found\n"
    "  2  usage error\n"
    "  3  no usable case or dump: no such directory or frame, no case found, files that would\n"
    "     stop the library, a dump that cannot be read, shard reports that do not fit together";

CLI::Validator name_check(const std::vector<std::string> &names, const std::string &what) {
    return CLI::Validator(
        [names, what](std::string &entry) -> std::string {
            if (std::find(names.begin(), names.end(), entry) != names.end()) return "";
            const std::string near = closest_name(entry, names);
            if (!near.empty())
                return fmt::format("unknown {} \"{}\"; did you mean \"{}\"?", what, entry, near);
            return fmt::format("unknown {} \"{}\" (one of: {})", what, entry,
                               fmt::join(names, ", "));
        },
        "");
}

CLI::Validator non_empty_path() {
    return CLI::Validator(
        [](std::string &text) { return text.empty() ? std::string("empty path") : std::string(); },
        "");
}

CLI::Validator module_name_check() {
    std::vector<std::string> names;
    for (const module_info *m : pipeline_order()) names.push_back(m->name);
    return name_check(names, "module");
}

CLI::Option *add_format_option(CLI::App &command, std::string &format, const std::string &json,
                               const std::string &github) {
    std::vector<std::string> formats(std::begin(output_format_names),
                                     std::end(output_format_names));
    if (!github.empty()) formats.push_back("github");
    return command
        .add_option(
            "--format", format,
            "text (default), or json: " + json + (github.empty() ? "" : "; or github: " + github))
        ->type_name(github.empty() ? "text|json" : "text|json|github")
        ->check(name_check(formats, "format"));
}

CLI::Option *add_out_option(CLI::App &command, std::string &path, const std::string &what,
                            const std::string &type_name) {
    return command.add_option("-o,--out", path, what)
        ->type_name(type_name)
        ->check(non_empty_path());
}

case_options case_flags::options() const {
    case_options o;
    o.case_path = case_path;
    if (grid_option->count()) o.grid = grid;
    if (channels_option->count()) o.channels = channels;
    if (frames_option->count()) o.frames = frames;
    o.modules = modules;
    return o;
}

void add_case_flags(CLI::App &command, case_flags &flags) {
    const CLI::Validator grid_check(
        [](std::string &text) {
            int h = 0, v = 0;
            return parse_grid(text, h, v) ? std::string() : "expected HxV with H, V from 0 to 255";
        },
        "");
    command.add_option("CASE", flags.case_path, "Case directory: cfgs/f<frame>/ and pattern files")
        ->required()
        ->type_name("DIR");
    flags.grid_option =
        command.add_option("--grid", flags.grid, "Partition grid (default: from the files of f0)")
            ->type_name("HxV")
            ->check(grid_check);
    flags.channels_option =
        command
            .add_option("--channels", flags.channels,
                        "Channel count of the pipe (default: from the _chn files of f0)")
            ->type_name("N")
            ->check(CLI::Range(0, 255));
    flags.frames_option =
        command
            .add_option("--frames", flags.frames,
                        "Frames to run after init (default: the frame directories found)")
            ->type_name("N")
            ->check(CLI::Range(0, 1000000));
    command
        .add_option("--modules", flags.modules,
                    "Modules to run, in this order (default: all 34 in pipeline order)")
        ->delimiter(',')
        ->type_name("NAMES")
        ->check(module_name_check());
}

bool settings_or_report(const case_options &options, const char *command, run_settings &settings,
                        case_contents &contents, stage_report *report) {
    std::string error;
    if (resolve_settings(options, settings, contents, error)) return true;
    fmt::print(stderr, "isp-case {}: {}\n", command, error);
    if (report) report->problem = error;
    return false;
}

}  // namespace isp_case
