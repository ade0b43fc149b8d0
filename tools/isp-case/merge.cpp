/* isp-case merge: the JSON reports of a suite's shards as one report. */
#include <memory>

#include "tools/core/merge.h"
#include "tools/isp-case/commands.h"

namespace isp_case {

command_runner add_merge_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "merge",
        "Combine the --json reports of batch --shard K/N runs into one report: every case of "
        "the suite once, the time of each shard, the shards and cases missing named");
    auto settings = std::make_shared<merge_settings>();
    cmd.footer(
        "Exit status: 0 every case of the suite ran and passed, 1 a case failed or is missing, "
        "or a report not written, 2 usage error, 3 a report that cannot be read or does not "
        "fit the others (another suite, another count of shards, a shard twice).");
    cmd.add_option("RESULT", settings->reports, "Reports written by batch --shard K/N --json")
        ->required()
        ->type_name("JSON");
    cmd.add_option("--junit", settings->junit_file, "Write JUnit XML: one testcase per case")
        ->type_name("FILE")
        ->check(non_empty_path());
    cmd.add_option("--json", settings->json_file, "Write the merged report as one JSON document")
        ->type_name("FILE")
        ->check(non_empty_path());
    auto format = std::make_shared<std::string>("text");
    add_format_option(cmd, *format, "the merged report on standard output");
    return [settings, format] {
        settings->json = *format == "json";
        return run_merge(*settings, stdout, stderr);
    };
}

}  // namespace isp_case
