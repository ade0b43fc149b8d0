/* isp-case diff: two dumps compared member by member. */
#include <memory>

#include "tools/compare/diff.h"
#include "tools/isp-case/commands.h"

namespace isp_case {

command_runner add_diff_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "diff", "Compare two dumps member by member: pushes one side lacks, members that differ");
    auto settings = std::make_shared<diff_settings>();
    cmd.footer(exit_statuses_help);
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
    cmd.add_option_function<std::string>(
           "--format", [settings](const std::string &f) { settings->json = f == "json"; },
           "Output: text (default) or json")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"text", "json"}));
    return [settings] { return diff_dumps(*settings, stdout, stderr); };
}

}  // namespace isp_case
