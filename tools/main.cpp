/* isp-case: the replay, check and export of register-file cases on a workstation, with the
 * library and the simulated platform, the comparison of two dumps, and batches of cases for CI. */
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "tools/batch.h"
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
    "Exit status: 0 success (replay: every operation returned 0 and no error found; check: no "
    "error found; export: every C-model file written; diff: identical dumps; batch: every case "
    "passed), 1 failure (an error found: an operation failed or raised, a value could not be "
    "read, the platform saw a leak, a register file not converted, a file not written, a case "
    "failed; with --strict also a warning; diff: the dumps differ), 2 usage error, 3 no usable "
    "case or dump (no such directory or frame, no case found, files that would stop the library, "
    "a dump that cannot be read).";

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

bool settings_or_report(const case_options &options, const char *command, run_settings &settings,
                        case_contents &contents) {
    std::string error;
    if (resolve_settings(options, settings, contents, error)) return true;
    fmt::print(stderr, "isp-case {}: {}\n", command, error);
    return false;
}

/* The options of replay beyond the case's. */
struct replay_flags {
    std::vector<std::string> bypass;
    std::string dump_dir, log_level = "warning", format = "text";
    bool force = false, verbose = false, quiet = false, strict = false;
};

int run_replay(const case_options &options, const replay_flags &flags) {
    replay_settings settings;
    case_contents contents;
    if (!settings_or_report(options, "replay", settings.run, contents)) return exit_no_case;
    for (const std::string &name : flags.bypass) settings.bypass.push_back(find_module(name));

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
    if (!flags.dump_dir.empty()) {
        const std::string problem = prepare_output_dir(
            flags.dump_dir, flags.force ? existing_contents::replace : existing_contents::refuse);
        if (!problem.empty()) {
            fmt::print(stderr, "isp-case replay: {}: {}\n", flags.dump_dir, problem);
            return exit_failed;
        }
    }

    replay_output output;
    output.format    = flags.format == "json" ? output_format::json : output_format::text;
    output.detail    = flags.quiet     ? verbosity::quiet
                       : flags.verbose ? verbosity::verbose
                                       : verbosity::normal;
    output.log_level = parse_log_level(flags.log_level);
    output.strict    = flags.strict;
    /* a frame line on a terminal is progress enough */
    const bool lines_on_terminal = isatty(STDOUT_FILENO) && output.detail != verbosity::quiet;
    settings.progress =
        isatty(STDERR_FILENO) && !lines_on_terminal && settings.run.frames >= k_progress_frames;
    settings.keep_bytes = !flags.dump_dir.empty();

    replay_printer printer(stdout, settings, output, lint.findings);
    std::optional<dump_writer> dump;
    if (!flags.dump_dir.empty()) dump.emplace(flags.dump_dir, settings);
    const replay_result result = replay(settings, [&](const replay_step &step) {
        if (dump) dump->write_step(step);
        printer.step(step);
    });
    if (!dump) {
        printer.finish(result);
    } else {
        dump->finish();
        printer.finish(result, &dump->summary(), flags.dump_dir);
    }
    return printer.passed() ? exit_ok : exit_failed;
}

int run_check(const case_options &options, bool strict, bool json) {
    run_settings settings;
    case_contents contents;
    if (!settings_or_report(options, "check", settings, contents)) return exit_no_case;
    const check_result result = check_case(settings, contents);
    if (json)
        print_check_json(stdout, settings, result);
    else
        print_check(stdout, settings, result);
    return count_findings(result.findings).passed(strict) ? exit_ok : exit_failed;
}

/* One stage of a batch's case, in the batch's child process: the check, or a quiet replay. */
int run_stage(batch_stage stage, const batch_case &c, const batch_settings &batch) {
    case_options options;
    options.case_path = c.path;
    options.frames    = batch.frames;
    if (stage == batch_stage::check) return run_check(options, batch.strict, false);
    replay_flags flags;
    flags.quiet  = true;
    flags.strict = batch.strict;
    return run_replay(options, flags);
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
    replay_flags replay_options;
    bool check_strict        = false;
    std::string check_format = "text";
    export_settings exports;
    report_settings report;
    diff_settings diff;
    batch_settings batch;
    std::string shard;
    std::optional<int> batch_frames;
    CLI::App *replay_cmd = nullptr, *check_cmd = nullptr, *export_cmd = nullptr,
             *diff_cmd = nullptr, *batch_cmd = nullptr, *report_cmd = nullptr;
};

void add_replay(CLI::App &app, command_line &cl) {
    cl.replay_cmd = app.add_subcommand(
        "replay",
        "Drive every module through create, init, frames of process, trigger and sync, "
        "deinit and destroy, and show what was programmed");
    CLI::App &cmd   = *cl.replay_cmd;
    replay_flags &f = cl.replay_options;
    cmd.footer(k_exit_statuses);
    add_case_flags(cmd, cl.replay);
    cmd.add_option("--bypass", f.bypass, "Modules whose bypass flag is set (enable bit cleared)")
        ->delimiter(',')
        ->type_name("NAMES")
        ->check(module_name_check());
    cmd.add_option("--dump", f.dump_dir,
                   "Write every pushed group raw, decoded and as C-model JSON, with a manifest, "
                   "into this directory (new or empty), step by step as the replay runs")
        ->type_name("DIR");
    cmd.add_flag("--force", f.force, "Empty a dump directory that is not empty first");
    const CLI::Validator level_check(
        [](std::string &text) {
            return parse_log_level(text) < 0 ? std::string("expected error, warning, debug or 0-7")
                                             : std::string();
        },
        "");
    cmd.add_option("--log-level", f.log_level,
                   "Library log lines shown: error, warning, debug or 0-7 (default: warning)")
        ->type_name("LEVEL")
        ->check(level_check);
    CLI::Option *verbose =
        cmd.add_flag("-v,--verbose", f.verbose, "The table of every frame, not one line per frame");
    cmd.add_flag("-q,--quiet", f.quiet, "The summary only")->excludes(verbose);
    cmd.add_option("--format", f.format,
                   "text, or json: one JSON object per line for the start, each step and the "
                   "summary (default: text)")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"text", "json"}));
    cmd.add_flag("--strict", f.strict, "Warnings (the case's and the replay's) fail it too");
}

void add_check(CLI::App &app, command_line &cl) {
    cl.check_cmd = app.add_subcommand(
        "check",
        "Find every problem of a case that would stop or spoil a replay, without aborting");
    cl.check_cmd->footer(k_exit_statuses);
    add_case_flags(*cl.check_cmd, cl.check);
    cl.check_cmd->add_flag("--strict", cl.check_strict, "Warnings fail the check too");
    cl.check_cmd
        ->add_option("--format", cl.check_format,
                     "text (default) or json: every finding in one JSON document")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"text", "json"}));
}

void add_batch(CLI::App &app, command_line &cl) {
    cl.batch_cmd = app.add_subcommand(
        "batch",
        "Check and replay every case (a directory holding cfgs/) under the paths, each in a "
        "process of its own, a few at a time; report per case and as JUnit XML or JSON");
    CLI::App &cmd     = *cl.batch_cmd;
    batch_settings &b = cl.batch;
    cmd.footer(k_exit_statuses);
    cmd.add_option("CASE_OR_SUITE", b.paths, "Case directories, or directories searched for cases")
        ->required()
        ->type_name("DIR");
    cmd.add_option("-j,--jobs", b.jobs, "Cases run at a time (default: the processors available)")
        ->type_name("N")
        ->check(CLI::Range(1, 1024));
    const CLI::Validator shard_check(
        [](std::string &text) {
            int k = 0, n = 0;
            return parse_shard(text, k, n) ? std::string() : "expected K/N with 1 <= K <= N";
        },
        "");
    cmd.add_option("--shard", cl.shard,
                   "Run every N-th case of the sorted suite, starting at the K-th (1-based)")
        ->type_name("K/N")
        ->check(shard_check);
    cmd.add_option("--junit", b.junit_file, "Write JUnit XML: one testcase per case")
        ->type_name("FILE");
    cmd.add_option("--json", b.json_file, "Write the results as one JSON document")
        ->type_name("FILE");
    cmd.add_option("--frames", cl.batch_frames, "Frames each replay runs (default: the case's)")
        ->type_name("N")
        ->check(CLI::Range(0, 1000000));
    cmd.add_flag("--strict", b.strict, "Warnings fail a case too");
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
    app.set_version_flag("--version", "isp-case " ISP_JSON_VERSION);
    app.require_subcommand(1, 1);
    command_line cl;
    add_replay(app, cl);
    add_check(app, cl);
    add_export(app, cl);
    add_diff(app, cl);
    add_batch(app, cl);
    add_report(app, cl);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &e) {
        return app.exit(e) == 0 ? exit_ok : exit_usage;
    }
    if (cl.replay_cmd->parsed()) return run_replay(cl.replay.options(), cl.replay_options);
    if (cl.check_cmd->parsed())
        return run_check(cl.check.options(), cl.check_strict, cl.check_format == "json");
    if (cl.diff_cmd->parsed()) return diff_dumps(cl.diff, stdout, stderr);
    if (cl.batch_cmd->parsed()) {
        batch_settings &b = cl.batch;
        b.frames          = cl.batch_frames;
        if (!cl.shard.empty()) parse_shard(cl.shard, b.shard_index, b.shard_count);
        return run_batch(
            b, [&b](batch_stage stage, const batch_case &c) { return run_stage(stage, c, b); },
            stdout, stderr);
    }
    if (cl.report_cmd->parsed()) return run_report(cl.report);
    return run_export(cl.exports);
}
