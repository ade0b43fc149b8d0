/* isp-case replay: the pipeline framework's lifecycle on the simulated platform, printed as it
 * runs, optionally dumped. */
#include <unistd.h>

#include <memory>
#include <optional>

#include <fmt/core.h>

#include "tools/core/run_record.h"
#include "tools/core/runner.h"
#include "tools/dump/writer.h"
#include "tools/isp-case/commands.h"
#include "tools/lint/lint.h"
#include "tools/output/escape.h"
#include "tools/output/files.h"
#include "tools/output/replay_printer.h"

namespace isp_case {

namespace {

/* only the progress of long replays is worth a line that keeps rewriting itself */
const int k_progress_frames = 10;

dump_options dump_options_of(const replay_flags &flags) {
    dump_options options;
    options.shared_store = flags.store_dir;
    options.raw_only     = flags.raw_only;
    return options;
}

}  // namespace

int run_replay_command(const case_options &options, const replay_flags &flags,
                       stage_report *report) {
    replay_settings settings;
    case_contents contents;
    case_overlay overlay;
    if (!settings_or_report(options, "replay", settings.run, contents, overlay, report))
        return exit_no_case;
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
                   blockers.size(), terminal_text(settings.run.case_path));
        for (const finding &f : blockers)
            fmt::print(stderr, "  {}: {}\n", terminal_text(f.file), terminal_text(f.message));
        fmt::print(stderr, "run 'isp-case check {}' for every problem of the case\n",
                   terminal_text(settings.run.case_path));
        if (report)
            report->problem = fmt::format("{} file(s) of {} would stop the library",
                                          blockers.size(), settings.run.case_path);
        return exit_no_case;
    }
    if (!flags.dump_dir.empty()) {
        const std::string problem = prepare_output_dir(
            flags.dump_dir, flags.force ? existing_contents::replace : existing_contents::refuse);
        if (!problem.empty()) {
            fmt::print(stderr, "isp-case replay: {}: {}\n", terminal_text(flags.dump_dir), problem);
            if (report) report->problem = flags.dump_dir + ": " + problem;
            return exit_failed;
        }
    }

    replay_output output;
    enum_from_name(output_format_names, flags.format, output.format);
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

    /* the lint's findings first, then the run's, in one record */
    run_record record;
    record.add(lint.findings);
    replay_printer printer(flags.out, settings, output);
    std::optional<dump_writer> dump;
    if (!flags.dump_dir.empty()) dump.emplace(flags.dump_dir, settings, dump_options_of(flags));
    const replay_result result = replay(settings, [&](const replay_step &step) {
        if (dump) dump->write_step(step);
        printer.step(step, record.add(step));
    });
    record.add_platform_problems(result.platform_problems);
    if (dump) {
        record.add_dump_problems(dump->summary().problems.size());
        /* a manifest that could not be written fails the run too */
        if (!dump->finish(record, judge(record, output.strict))) record.add_dump_problems(1);
    }
    const verdict judged = judge(record, output.strict);
    if (report) report->judge(record, output.strict);
    if (dump)
        printer.finish(record, judged, &dump->summary(), flags.dump_dir);
    else
        printer.finish(record, judged);
    return judged.passed() ? exit_ok : exit_failed;
}

command_runner add_replay_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "replay",
        "Drive every module through create, init, frames of process, trigger and sync, "
        "deinit and destroy, and show what was programmed");
    auto flags      = std::make_shared<case_flags>();
    auto options    = std::make_shared<replay_flags>();
    replay_flags &f = *options;
    cmd.footer(
        "Exit status: 0 every operation returned 0 and no error found, 1 an error found or a "
        "dump not written (--strict: a warning too), 2 usage error, 3 no such case, or files "
        "that would stop the library.");
    add_case_flags(cmd, *flags);
    cmd.add_option("--bypass", f.bypass, "Modules whose bypass flag is set (enable bit cleared)")
        ->delimiter(',')
        ->type_name("NAMES")
        ->check(module_name_check());
    CLI::Option *dump =
        cmd.add_option(
               "--dump", f.dump_dir,
               "Write every distinct pushed group once, raw into a store, decoded and as C-model "
               "JSON, with a manifest and index.txt, into this directory (new or empty), step by "
               "step as the replay runs")
            ->type_name("DIR")
            ->check(non_empty_path());
    cmd.add_option("--store", f.store_dir,
                   "Keep the dump's raw structures in this store directory, shared with other "
                   "dumps (each distinct structure once), instead of the dump's own")
        ->type_name("DIR")
        ->check(non_empty_path())
        ->needs(dump);
    cmd.add_flag("--raw-only", f.raw_only,
                 "Write the manifest and the raw structures only, no decoded JSON or C-model files")
        ->needs(dump);
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
    add_format_option(cmd, f.format,
                      "one JSON object per line for the start, each step and the summary");
    cmd.add_flag("--strict", f.strict, "Warnings (the case's and the replay's) fail it too");
    return [flags, options] { return run_replay_command(flags->options(), *options); };
}

}  // namespace isp_case
