/* isp-case replay: the pipeline framework's lifecycle on the simulated platform, printed as it
 * runs, optionally dumped. */
#include <unistd.h>

#include <memory>
#include <optional>

#include <fmt/core.h>

#include "tools/core/runner.h"
#include "tools/dump/writer.h"
#include "tools/isp-case/commands.h"
#include "tools/lint/lint.h"
#include "tools/output/files.h"
#include "tools/output/replay_printer.h"

namespace isp_case {

namespace {

/* only the progress of long replays is worth a line that keeps rewriting itself */
const int k_progress_frames = 10;

}  // namespace

int run_replay_command(const case_options &options, const replay_flags &flags) {
    replay_settings settings;
    case_contents contents;
    if (!settings_or_report(options, "replay", settings.run, contents)) return exit_no_case;
    for (const std::string &name : flags.bypass) settings.bypass.push_back(find_module(name));

    if (!flags.dump_dir.empty()) {
        const std::string problem = case_place_problem(flags.dump_dir, settings.run.case_path);
        if (!problem.empty()) {
            fmt::print(stderr, "isp-case replay: {}: {}\n", flags.dump_dir, problem);
            return exit_failed;
        }
    }
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

command_runner add_replay_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "replay",
        "Drive every module through create, init, frames of process, trigger and sync, "
        "deinit and destroy, and show what was programmed");
    auto flags      = std::make_shared<case_flags>();
    auto options    = std::make_shared<replay_flags>();
    replay_flags &f = *options;
    cmd.footer(exit_statuses_help);
    add_case_flags(cmd, *flags);
    cmd.add_option("--bypass", f.bypass, "Modules whose bypass flag is set (enable bit cleared)")
        ->delimiter(',')
        ->type_name("NAMES")
        ->check(module_name_check());
    cmd.add_option("--dump", f.dump_dir,
                   "Write every pushed group raw, decoded and as C-model JSON, with a manifest, "
                   "into this directory (new or empty), step by step as the replay runs")
        ->type_name("DIR")
        ->check(non_empty_path());
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
    return [flags, options] { return run_replay_command(flags->options(), *options); };
}

}  // namespace isp_case
