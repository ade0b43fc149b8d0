/* isp-case batch: every case of a suite checked and replayed in a process of its own. */
#include <memory>
#include <optional>

#include "tools/core/batch.h"
#include "tools/isp-case/commands.h"

namespace isp_case {

namespace {

struct batch_flags {
    batch_settings batch;
    std::string shard;
    std::optional<int> frames;
    std::vector<std::string> sets;
};

/* One stage of a batch's case, in the batch's child process: the check, or a quiet replay, in
 * text for the failure's output tail, with the report for the batch. */
int run_stage(batch_stage stage, const batch_case &c, const batch_flags &given,
              stage_report &report) {
    const batch_settings &batch = given.batch;
    case_options options;
    options.case_path = c.path;
    options.frames    = batch.frames;
    options.sets      = given.sets;
    if (stage == batch_stage::check)
        return run_check_command(options, batch.strict, "text", &report);
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
        "Exit status: 0 every case passed, 1 a case failed or a report not written, 2 usage "
        "error, 3 a path that is not a directory, or no case found.");
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
    add_set_option(cmd, options->sets);
    cmd.add_option("--timeout", b.timeout,
                   "Seconds a case may take before it is killed and fails as timed out; 0: no "
                   "limit (default: 300)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0, 86400));
    return [options] {
        batch_settings &b = options->batch;
        b.frames          = options->frames;
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
