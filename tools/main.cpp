/* isp-case: the replay, check and export of register-file cases on a workstation, with the
 * library and the simulated platform. */
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "tools/check.h"
#include "tools/dump.h"
#include "tools/export_case.h"
#include "tools/replay.h"
#include "tools/replay_report.h"
#include "tools/settings.h"

namespace {

using namespace isp_case;

const char *const k_exit_statuses =
    "Exit status: 0 success (replay: every operation returned 0; check: a clean case; export: "
    "every C-model file written), 1 failure (an operation failed or raised, the platform saw a "
    "leak, problems found, a register file not converted), 2 usage error, 3 no usable case (no "
    "such directory, or files that would stop the library).";

/* only the progress of long replays is worth a line that keeps rewriting itself */
const int k_progress_frames = 10;

std::vector<std::string> module_names() {
    std::vector<std::string> names;
    for (const module_info &m : modules()) names.push_back(m.name);
    return names;
}

/* Values of the options shared by replay and check, with whether each was given. */
struct case_flags {
    std::string case_path, grid;
    int channels = 0, frames = 0;
    std::vector<std::string> modules;
    CLI::Option *grid_option = nullptr, *channels_option = nullptr, *frames_option = nullptr;

    case_options options() const {
        case_options o;
        o.case_path = case_path;
        if (grid_option->count()) o.grid = grid;
        if (channels_option->count()) o.channels = channels;
        if (frames_option->count()) o.frames = frames;
        o.modules = modules;
        return o;
    }
};

void add_case_flags(CLI::App &command, case_flags &flags) {
    const CLI::Validator grid_check(
        [](std::string &text) {
            int h = 0, v = 0;
            return parse_grid(text, h, v) ? std::string() : "expected HxV with H, V from 0 to 255";
        },
        "HxV");
    command.add_option("CASE", flags.case_path, "Case directory: cfgs/f<frame>/ and pattern files")
        ->required();
    flags.grid_option =
        command.add_option("--grid", flags.grid, "Partition grid (default: from the files of f0)")
            ->check(grid_check);
    flags.channels_option =
        command
            .add_option("--channels", flags.channels,
                        "Channel count of the pipe (default: from the _chn files of f0)")
            ->check(CLI::Range(0, 255));
    flags.frames_option =
        command
            .add_option("--frames", flags.frames,
                        "Frames to run after init (default: the frame directories found)")
            ->check(CLI::Range(0, 1000000));
    command
        .add_option("--modules", flags.modules,
                    "Modules to run, in this order (default: all 34 in pipeline order)")
        ->delimiter(',')
        ->check(CLI::IsMember(module_names()));
}

bool settings_or_report(const case_flags &flags, const char *command, run_settings &settings,
                        case_contents &contents) {
    std::string error;
    if (resolve_settings(flags.options(), settings, contents, error)) return true;
    fmt::print(stderr, "isp-case {}: {}\n", command, error);
    return false;
}

int run_replay(const case_flags &flags, const std::vector<std::string> &bypass,
               const std::string &dump_dir, const std::string &log_level) {
    replay_settings settings;
    case_contents contents;
    if (!settings_or_report(flags, "replay", settings.run, contents)) return exit_no_case;
    for (const std::string &name : bypass) settings.bypass.push_back(find_module(name));

    const std::vector<problem> blockers = replay_blockers(settings.run);
    if (!blockers.empty()) {
        fmt::print(stderr, "isp-case replay: {} file(s) of {} would stop the library:\n",
                   blockers.size(), settings.run.case_path);
        for (const problem &p : blockers) fmt::print(stderr, "  {}: {}\n", p.where, p.text);
        fmt::print(stderr, "run 'isp-case check {}' for every problem of the case\n",
                   settings.run.case_path);
        return exit_no_case;
    }

    settings.progress          = isatty(STDERR_FILENO) && settings.run.frames >= k_progress_frames;
    const replay_result result = replay(settings);
    print_replay(stdout, settings, result, parse_log_level(log_level));
    bool failed = result.failed();
    if (!dump_dir.empty()) {
        const dump_summary dump = write_dump(dump_dir, settings, result);
        fmt::print("  dump        {} raw files, {} C-model files under {}\n", dump.raw_files,
                   dump.cmodel_files, dump_dir);
        for (const std::string &p : dump.problems) fmt::print("  dump        {}\n", p);
        failed = failed || !dump.problems.empty();
    }
    return failed ? exit_failed : exit_ok;
}

int run_check(const case_flags &flags) {
    run_settings settings;
    case_contents contents;
    if (!settings_or_report(flags, "check", settings, contents)) return exit_no_case;
    const check_result result = check_case(settings, contents);
    print_check(stdout, settings, result);
    return result.problems.empty() ? exit_ok : exit_failed;
}

int run_export(const export_settings &settings) {
    if (!is_directory(settings.case_path)) {
        fmt::print(stderr, "isp-case export: {}: no such case directory\n", settings.case_path);
        return exit_no_case;
    }
    const export_result result = export_case(settings);
    print_export(stdout, settings, result);
    return result.errors.empty() ? exit_ok : exit_failed;
}

}  // namespace

int main(int argc, char **argv) {
    CLI::App app(
        "Replays, checks and exports the register-file cases of the ISP JSON modules "
        "with the library and a simulated platform.",
        "isp-case");
    app.footer(k_exit_statuses);
    app.set_version_flag("--version", "isp-case 2.0.0");
    app.require_subcommand(1, 1);

    case_flags replay_flags;
    std::vector<std::string> bypass;
    std::string dump_dir, log_level = "warning";
    CLI::App *replay_cmd = app.add_subcommand(
        "replay",
        "Drive every module through create, init, frames of process, trigger and sync, "
        "deinit and destroy, and show what was programmed");
    replay_cmd->footer(k_exit_statuses);
    add_case_flags(*replay_cmd, replay_flags);
    replay_cmd
        ->add_option("--bypass", bypass,
                     "Modules whose bypass flag is set (their enable bit is "
                     "cleared)")
        ->delimiter(',')
        ->check(CLI::IsMember(module_names()));
    replay_cmd->add_option(
        "--dump", dump_dir,
        "Write every pushed group, raw and as C-model JSON, under this directory");
    replay_cmd
        ->add_option("--log-level", log_level,
                     "Library log lines shown: error, warning, debug or 0-7 (default: warning)")
        ->check(CLI::Validator(
            [](std::string &text) {
                return parse_log_level(text) < 0
                           ? std::string("expected error, warning, debug or 0-7")
                           : std::string();
            },
            "LEVEL"));

    case_flags check_flags;
    CLI::App *check_cmd = app.add_subcommand(
        "check",
        "Find every problem of a case that would stop or spoil a replay, without aborting");
    check_cmd->footer(k_exit_statuses);
    add_case_flags(*check_cmd, check_flags);

    export_settings export_opts;
    export_opts.out_dir  = "cmodel";
    CLI::App *export_cmd = app.add_subcommand(
        "export", "Convert one partition's register files into C-model parameter files");
    export_cmd->footer(k_exit_statuses);
    export_cmd->add_option("CASE", export_opts.case_path, "Case directory")->required();
    export_cmd->add_option("--frame", export_opts.frame, "Frame directory f<F>")
        ->required()
        ->check(CLI::Range(0, 1000000));
    export_cmd->add_option("--partition", export_opts.partition, "Partition index")
        ->required()
        ->check(CLI::Range(0, 255));
    export_cmd
        ->add_option("--channel", export_opts.channel, "Channel of the channelled blocks' files")
        ->check(CLI::Range(0, 255));
    export_cmd->add_option("--out", export_opts.out_dir, "Output directory (default: cmodel)");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &e) {
        const int status = app.exit(e);
        return status == 0 ? exit_ok : exit_usage;
    }
    if (replay_cmd->parsed()) return run_replay(replay_flags, bypass, dump_dir, log_level);
    if (check_cmd->parsed()) return run_check(check_flags);
    return run_export(export_opts);
}
