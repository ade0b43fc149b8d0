/* isp-case diff: two dumps compared member by member. */
#include <memory>

#include "tools/compare/diff.h"
#include "tools/isp-case/commands.h"

namespace isp_case {

command_runner add_diff_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "diff", "Compare two dumps member by member: pushes one side lacks, members that differ");
    auto settings = std::make_shared<diff_settings>();
    cmd.footer(
        "Exit status: 0 identical dumps, 1 the dumps differ, 2 usage error, 3 a dump that "
        "cannot be read.");
    cmd.add_option("A", settings->a, "Dump directory (replay --dump)")
        ->required()
        ->type_name("DIR");
    cmd.add_option("B", settings->b, "Dump directory to compare with")
        ->required()
        ->type_name("DIR");
    cmd.add_option("--tolerance", settings->tolerance,
                   "Largest difference of real values (codes where a member has no format) that "
                   "counts as equal (default: 0)")
        ->type_name("X")
        ->check(CLI::NonNegativeNumber);
    auto format = std::make_shared<std::string>("text");
    add_format_option(cmd, *format, "the differences and the summary in one JSON document");
    return [settings, format] {
        settings->json = *format == "json";
        return diff_dumps(*settings, stdout, stderr);
    };
}

}  // namespace isp_case
