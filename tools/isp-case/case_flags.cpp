/* The options every command that reads a case shares, and the exit statuses they document. */
#include <fmt/core.h>

#include "tools/core/module_table.h"
#include "tools/isp-case/commands.h"

namespace isp_case {

const char *const exit_statuses_help =
    "Exit status: 0 success (replay: every operation returned 0 and no error found; check: no "
    "error found; export: every C-model file written; diff: identical dumps; batch: every case "
    "passed), 1 failure (an error found: an operation failed or raised, a value could not be "
    "read, the platform saw a leak, a register file not converted, a file not written, a case "
    "failed; with --strict also a warning; diff: the dumps differ), 2 usage error, 3 no usable "
    "case or dump (no such directory or frame, no case found, files that would stop the library, "
    "a dump that cannot be read).";

CLI::Validator non_empty_path() {
    return CLI::Validator(
        [](std::string &text) { return text.empty() ? std::string("empty path") : std::string(); },
        "");
}

CLI::Validator module_name_check() {
    std::vector<std::string> names;
    for (const module_info &m : modules()) names.push_back(m.name);
    return CLI::IsMember(names).description("");
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
                        case_contents &contents) {
    std::string error;
    if (resolve_settings(options, settings, contents, error)) return true;
    fmt::print(stderr, "isp-case {}: {}\n", command, error);
    return false;
}

}  // namespace isp_case
