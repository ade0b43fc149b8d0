/* isp-case: the replay, check and export of register-file cases on a workstation, with the
 * library and the simulated platform. */
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "tools/check.h"
#include "tools/diff.h"
#include "tools/dump.h"
#include "tools/export_case.h"
#include "tools/output_dir.h"
#include "tools/replay.h"
#include "tools/replay_report.h"
#include "tools/report/report.h"
#include "tools/settings.h"

namespace {

using namespace isp_case;

const char *const k_exit_statuses =
    "Exit status: 0 success (replay: every operation returned 0; check: a clean case; export: "
    "every C-model file written; diff: identical dumps), 1 failure (an operation failed or "
    "raised, the platform saw a leak, errors found or warnings under --strict, a register file "
    "not converted, a file not written; diff: the dumps differ), 2 usage error, 3 no usable case "
    "or dump (no such directory or frame, files that would stop the library, a dump that cannot "
    "be read).";

/* only the progress of long replays is worth a line that keeps rewriting itself */
const int k_progress_frames = 10;

/* Accepts module names only; the names are listed by the error message, not by the help. */
CLI::Validator module_name_check() {
    std::vector<std::string> names;
    for (const module_info &m : modules()) names.push_back(m.name);
    return CLI::IsMember(names).description("");
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

bool settings_or_report(const case_flags &flags, const char *command, run_settings &settings,
                        case_contents &contents) {
    std::string error;
    if (resolve_settings(flags.options(), settings, contents, error)) return true;
    fmt::print(stderr, "isp-case {}: {}\n", command, error);
    return false;
}

int run_replay(const case_flags &flags, const std::vector<std::string> &bypass,
               const std::string &dump_dir, bool force, const std::string &log_level,
               bool strict) {
    replay_settings settings;
    case_contents contents;
    if (!settings_or_report(flags, "replay", settings.run, contents)) return exit_no_case;
    for (const std::string &name : bypass) settings.bypass.push_back(find_module(name));

    /* the pre-flight: the check's own lint, so that check and replay never disagree */
    const lint_result lint = lint_case(settings.run, contents);
    std::vector<finding> blockers;
    for (const finding &f : lint.findings)
        if (stops_library(f)) blockers.push_back(f);
    if (!blockers.empty()) {
        fmt::print(stderr, "isp-case replay: {} file(s) of {} would stop the library:\n",
                   blockers.size(), settings.run.case_path);
        for (const finding &f : blockers) fmt::print(stderr, "  {}: {}\n", f.file, f.message);
        fmt::print(stderr, "run 'isp-case check {}' for every problem of the case\n",
                   settings.run.case_path);
        return exit_no_case;
    }
    if (!dump_dir.empty()) {
        const std::string problem = prepare_output_dir(
            dump_dir, force ? existing_contents::replace : existing_contents::refuse);
        if (!problem.empty()) {
            fmt::print(stderr, "isp-case replay: {}: {}\n", dump_dir, problem);
            return exit_failed;
        }
    }

    settings.progress    = isatty(STDERR_FILENO) && settings.run.frames >= k_progress_frames;
    replay_result result = replay(settings);
    result.findings      = lint.findings;
    result.strict        = strict;
    print_replay(stdout, settings, result, parse_log_level(log_level));
    bool failed = result.failed();
    if (!dump_dir.empty()) {
        const dump_summary dump = write_dump(dump_dir, settings, result);
        fmt::print("  dump        {} pushes: {} raw, {} decoded and {} C-model files under {}\n",
                   dump.pushes, dump.raw_files, dump.decoded_files, dump.cmodel_files, dump_dir);
        for (const std::string &p : dump.problems) fmt::print(stderr, "isp-case replay: {}\n", p);
        failed = failed || !dump.problems.empty();
    }
    return failed ? exit_failed : exit_ok;
}

int run_check(const case_flags &flags, bool strict, const std::string &format) {
    run_settings settings;
    case_contents contents;
    if (!settings_or_report(flags, "check", settings, contents)) return exit_no_case;
    const check_result result = check_case(settings, contents);
    if (format == "json")
        print_check_json(stdout, settings, result);
    else
        print_check(stdout, settings, result);
    const finding_counts counts = count_findings(result.findings);
    return counts.errors > 0 || (strict && counts.warnings > 0) ? exit_failed : exit_ok;
}

int run_export(const export_settings &settings) {
    if (!is_directory(settings.case_path)) {
        fmt::print(stderr, "isp-case export: {}: no such case directory\n", settings.case_path);
        return exit_no_case;
    }
    const export_result result = export_case(settings);
    if (!result.refused.empty()) {
        fmt::print(stderr, "isp-case export: {}\n", result.refused);
        return result.no_frame ? exit_no_case : exit_failed;
    }
    print_export(stdout, settings, result);
    return result.errors.empty() ? exit_ok : exit_failed;
}

/* The values of every subcommand's options, filled by the parser. */
struct command_line {
    case_flags replay, check;
    std::vector<std::string> bypass;
    std::string dump_dir, log_level = "warning", check_format = "text";
    bool replay_strict = false, check_strict = false, force = false;
    export_settings exports;
    report_settings report;
    diff_settings diff;
    CLI::App *replay_cmd = nullptr, *check_cmd = nullptr, *export_cmd = nullptr,
             *diff_cmd = nullptr, *report_cmd = nullptr;
};

void add_replay(CLI::App &app, command_line &cl) {
    cl.replay_cmd = app.add_subcommand(
        "replay",
        "Drive every module through create, init, frames of process, trigger and sync, "
        "deinit and destroy, and show what was programmed");
    CLI::App &cmd = *cl.replay_cmd;
    cmd.footer(k_exit_statuses);
    add_case_flags(cmd, cl.replay);
    cmd.add_option("--bypass", cl.bypass, "Modules whose bypass flag is set (enable bit cleared)")
        ->delimiter(',')
        ->type_name("NAMES")
        ->check(module_name_check());
    cmd.add_option("--dump", cl.dump_dir,
                   "Write every pushed group raw, decoded and as C-model JSON, with a manifest, "
                   "into this directory (new or empty)")
        ->type_name("DIR");
    cmd.add_flag("--force", cl.force, "Empty a dump directory that is not empty first");
    const CLI::Validator level_check(
        [](std::string &text) {
            return parse_log_level(text) < 0 ? std::string("expected error, warning, debug or 0-7")
                                             : std::string();
        },
        "");
    cmd.add_option("--log-level", cl.log_level,
                   "Library log lines shown: error, warning, debug or 0-7 (default: warning)")
        ->type_name("LEVEL")
        ->check(level_check);
    cmd.add_flag("--strict", cl.replay_strict, "Fail on the case's warnings too, not only errors");
}

void add_check(CLI::App &app, command_line &cl) {
    cl.check_cmd = app.add_subcommand(
        "check",
        "Find every problem of a case that would stop or spoil a replay, without aborting");
    cl.check_cmd->footer(k_exit_statuses);
    add_case_flags(*cl.check_cmd, cl.check);
    cl.check_cmd->add_flag("--strict", cl.check_strict, "Exit with 1 on warnings too");
    cl.check_cmd
        ->add_option("--format", cl.check_format,
                     "text (default) or json: every finding in one JSON document")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"text", "json"}));
}

void add_export(CLI::App &app, command_line &cl) {
    cl.export_cmd = app.add_subcommand(
        "export", "Convert one partition's register files into C-model parameter files");
    CLI::App &cmd      = *cl.export_cmd;
    export_settings &e = cl.exports;
    e.out_dir          = "cmodel";
    cmd.footer(k_exit_statuses);
    cmd.add_option("CASE", e.case_path, "Case directory")->required()->type_name("DIR");
    cmd.add_option("--frame", e.frame, "Frame directory f<F>")
        ->required()
        ->check(CLI::Range(0, 1000000));
    cmd.add_option("--partition", e.partition, "Partition index")
        ->required()
        ->check(CLI::Range(0, 255));
    cmd.add_option("--channel", e.channel, "Channel of the channelled blocks' files (default: 0)")
        ->check(CLI::Range(0, 255));
    cmd.add_option("--out", e.out_dir, "Output directory (default: cmodel)")->type_name("DIR");
}

void add_diff(CLI::App &app, command_line &cl) {
    cl.diff_cmd = app.add_subcommand(
        "diff", "Compare two dumps member by member: pushes one side lacks, members that differ");
    CLI::App &cmd = *cl.diff_cmd;
    cmd.footer(k_exit_statuses);
    cmd.add_option("A", cl.diff.a, "Dump directory (replay --dump)")->required()->type_name("DIR");
    cmd.add_option("B", cl.diff.b, "Dump directory to compare with")->required()->type_name("DIR");
    cmd.add_option("--tolerance", cl.diff.tolerance,
                   "Largest difference of real values (codes where a member has no format) that "
                   "counts as equal (default: 0)")
        ->type_name("X")
        ->check(CLI::NonNegativeNumber);
    cmd.add_option_function<std::string>(
           "--format", [&cl](const std::string &f) { cl.diff.json = f == "json"; },
           "Output: text (default) or json")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"text", "json"}));
}

void add_report(CLI::App &app, command_line &cl) {
    cl.report_cmd = app.add_subcommand(
        "report", "Write one HTML page that shows and draws what a dumped replay programmed");
    CLI::App &cmd      = *cl.report_cmd;
    report_settings &r = cl.report;
    cmd.footer(
        "Exit status: 0 page written, 1 the page could not be written, 2 usage error, 3 a "
        "dump that cannot be read or a frame it does not hold.");
    cmd.add_option("DUMP", r.dump_dir, "Dump directory of 'isp-case replay --dump'")
        ->required()
        ->type_name("DIR");
    cmd.add_option("--against", r.against_dir, "Another dump to compare with, side by side")
        ->type_name("DIR");
    cmd.add_option("-o,--out", r.out_file, "Page to write (default: report.html)")
        ->type_name("FILE");
    cmd.add_option("--frame", r.frame, "Frame shown beside init (default: the last one)")
        ->check(CLI::Range(0, 1000000));
}

}  // namespace

int main(int argc, char **argv) {
    CLI::App app(
        "Replays, checks and exports the register-file cases of the ISP JSON modules with the "
        "library and a simulated platform.",
        "isp-case");
    app.footer(k_exit_statuses);
    app.set_version_flag("--version", "isp-case 2.0.0");
    app.require_subcommand(1, 1);
    command_line cl;
    add_replay(app, cl);
    add_check(app, cl);
    add_export(app, cl);
    add_diff(app, cl);
    add_report(app, cl);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &e) {
        return app.exit(e) == 0 ? exit_ok : exit_usage;
    }
    if (cl.replay_cmd->parsed())
        return run_replay(cl.replay, cl.bypass, cl.dump_dir, cl.force, cl.log_level,
                          cl.replay_strict);
    if (cl.check_cmd->parsed()) return run_check(cl.check, cl.check_strict, cl.check_format);
    if (cl.diff_cmd->parsed()) return diff_dumps(cl.diff, stdout, stderr);
    if (cl.report_cmd->parsed()) return run_report(cl.report);
    return run_export(cl.exports);
}
