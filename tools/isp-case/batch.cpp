/* isp-case batch: every case of a suite checked and replayed in a process of its own. */
#include <filesystem>
#include <memory>
#include <optional>

#include "tools/core/batch.h"
#include "tools/dump/reader.h"
#include "tools/isp-case/commands.h"
#include "tools/output/files.h"

namespace isp_case {

namespace {

struct batch_flags {
    batch_settings batch;
    std::string shard, save_baseline, ignore_file;
    std::optional<int> frames;
};

/* The replay of a case whose run goes into a dump of a baseline (store: the baseline's
 * directory, whose one store its cases share) or into a fresh dump to compare with one (store
 * empty: the dump's own): the one place that says how a baseline's runs are written. A
 * baseline keeps what the hardware received, the raw structures; they are decoded when read. */
replay_flags baseline_replay_flags(const std::string &dump_dir, const std::string &store,
                                   bool strict) {
    replay_flags flags;
    flags.quiet     = true;
    flags.strict    = strict;
    flags.dump_dir  = dump_dir;
    flags.store_dir = store;
    flags.raw_only  = true;
    flags.force     = true; /* a stored run is replaced as a whole */
    return flags;
}

/* Replays the case into the baseline's directory of the case. */
int save_run(const case_options &options, const batch_case &c, const batch_settings &batch,
             stage_report &report) {
    const std::string dir = baseline_case_dir(batch.baseline.dir, c.name);
    std::error_code error;
    std::filesystem::create_directories(dir, error);
    const int status = run_replay_command(
        options, baseline_replay_flags(dir, batch.baseline.dir, batch.strict), &report);
    if (status == exit_ok || report.judged) report.baseline.state = baseline_state::saved;
    return status;
}

/* Replays the case once, dumped raw into a scratch directory: a run whose objects are the
 * stored run's is the same run; one that differs is compared with the stored one by the engine,
 * to say where and how. Asked to, the run is then stored in place of one that differs or is
 * missing. */
int compare_run(const case_options &options, const batch_case &c, const batch_settings &batch,
                stage_report &report) {
    const std::string stored_dir = baseline_case_dir(batch.baseline.dir, c.name);
    std::optional<dump> stored;
    std::error_code error;
    if (std::filesystem::is_regular_file(stored_dir + "/manifest.json", error)) {
        try {
            stored.emplace(open_dump(stored_dir));
        } catch (const dump_error &e) {
            report.baseline.state   = baseline_state::unreadable;
            report.baseline.problem = e.what();
        }
    }
    std::optional<scratch_dir> fresh;
    if (stored) fresh.emplace("isp-case-run");
    replay_flags flags;
    if (fresh && !fresh->path().empty()) flags = baseline_replay_flags(fresh->path(), "", false);
    flags.quiet      = true;
    flags.strict     = batch.strict;
    const int status = run_replay_command(options, flags, &report);
    if (!report.judged || report.baseline.state == baseline_state::unreadable) return status;
    if (!stored) {
        report.baseline.state = baseline_state::missing;
    } else if (flags.dump_dir.empty()) {
        report.baseline.state   = baseline_state::unreadable;
        report.baseline.problem = "this build's run could not be dumped for the comparison";
        return status;
    } else {
        try {
            if (same_objects(*stored, open_dump(fresh->path()))) {
                report.baseline.state = baseline_state::same;
                return status;
            }
        } catch (const dump_error &) {
            /* the engine reads the run again and names what is wrong with it */
        }
        report.baseline = compare_with_baseline(stored_dir, fresh->path(), batch.baseline);
    }
    const baseline_state state = report.baseline.state;
    if (batch.baseline.update &&
        (state == baseline_state::differs || state == baseline_state::missing)) {
        stage_report again;
        std::filesystem::create_directories(stored_dir, error);
        run_replay_command(
            options, baseline_replay_flags(stored_dir, batch.baseline.dir, batch.strict), &again);
        report.baseline.state =
            state == baseline_state::differs ? baseline_state::updated : baseline_state::added;
    }
    return status;
}

/* One stage of a batch's case, in the batch's child process: the check, or a quiet replay, in
 * text for the failure's output tail, with the report for the batch. */
int run_stage(batch_stage stage, const batch_case &c, const batch_flags &given,
              stage_report &report) {
    const batch_settings &batch = given.batch;
    case_options options;
    options.case_path = c.path;
    options.frames    = batch.frames;
    options.sets      = batch.sets;
    if (stage == batch_stage::check)
        return run_check_command(options, batch.strict, "text", &report);
    if (batch.baseline.mode == baseline_mode::save) return save_run(options, c, batch, report);
    if (batch.baseline.mode == baseline_mode::compare)
        return compare_run(options, c, batch, report);
    replay_flags flags;
    flags.quiet  = true;
    flags.strict = batch.strict;
    return run_replay_command(options, flags, &report);
}

}  // namespace

command_runner add_batch_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "batch",
        "Check and replay every case (a directory holding cfgs/) under the paths, each in a "
        "process of its own, a few at a time; report per case and as JUnit XML or JSON");
    auto options      = std::make_shared<batch_flags>();
    batch_settings &b = options->batch;
    cmd.footer(
        "Exit status: 0 every case passed, 1 a case failed (or differs from its baseline, or "
        "a baseline case is not in the suite) or a report not written, 2 usage error, 3 a path "
        "that is not a directory, or no case found.");
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
    cmd.add_option("--shard", options->shard,
                   "Run every N-th case of the sorted suite, starting at the K-th (1-based)")
        ->type_name("K/N")
        ->check(shard_check);
    cmd.add_option("--junit", b.junit_file, "Write JUnit XML: one testcase per case")
        ->type_name("FILE")
        ->check(non_empty_path());
    cmd.add_option("--json", b.json_file, "Write the results as one JSON document")
        ->type_name("FILE")
        ->check(non_empty_path());
    cmd.add_option("--frames", options->frames, "Frames each replay runs (default: the case's)")
        ->type_name("N")
        ->check(CLI::Range(0, 1000000));
    cmd.add_flag("--strict", b.strict, "Warnings fail a case too");
    add_set_option(cmd, options->batch.sets);
    cmd.add_option("--timeout", b.timeout,
                   "Seconds a case may take before it is killed and fails as timed out; 0: no "
                   "limit (default: 300)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0, 86400));
    CLI::Option *save = cmd.add_option("--save-baseline", options->save_baseline,
                                       "Store every case's run (a dump) in DIR/<case name>/, "
                                       "replacing what a case stored before")
                            ->type_name("DIR")
                            ->check(non_empty_path());
    CLI::Option *against =
        cmd.add_option("--baseline", b.baseline.dir,
                       "Compare every case's run with the one stored in DIR/<case name>/: a case "
                       "that differs fails with its first divergence")
            ->type_name("DIR")
            ->check(CLI::ExistingDirectory)
            ->excludes(save);
    cmd.add_option("--tolerance", b.baseline.tolerance,
                   "With --baseline: the largest difference of real values that counts as "
                   "equal; codes always compare exactly (default: 0)")
        ->type_name("X")
        ->check(tolerance_check())
        ->needs(against);
    cmd.add_option("--ignore", b.baseline.ignore,
                   "With --baseline: leave out the members matching this glob over "
                   "module.group.member (repeatable)")
        ->type_name("PATTERN")
        ->needs(against);
    cmd.add_option("--ignore-file", options->ignore_file,
                   "With --baseline: globs to leave out, one per line, # comments")
        ->type_name("FILE")
        ->check(CLI::ExistingFile)
        ->needs(against);
    cmd.add_flag("--update-baseline", b.baseline.update,
                 "With --baseline: store the runs that differ, and those missing, in place of "
                 "the stored ones (once a person has looked at the differences)")
        ->needs(against);
    return [options] {
        batch_settings &b = options->batch;
        b.frames          = options->frames;
        if (!options->save_baseline.empty()) {
            b.baseline.mode = baseline_mode::save;
            b.baseline.dir  = options->save_baseline;
        } else if (!b.baseline.dir.empty()) {
            b.baseline.mode = baseline_mode::compare;
        }
        std::string error;
        if (!options->ignore_file.empty() &&
            !read_ignore_file(options->ignore_file, b.baseline.ignore, error)) {
            std::fprintf(stderr, "isp-case batch: %s\n", error.c_str());
            return exit_usage;
        }
        if (!options->shard.empty()) parse_shard(options->shard, b.shard_index, b.shard_count);
        return run_batch(
            b,
            [&options](batch_stage stage, const batch_case &c, stage_report &report) {
                return run_stage(stage, c, *options, report);
            },
            stdout, stderr);
    };
}

}  // namespace isp_case
