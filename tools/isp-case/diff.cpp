/* isp-case diff: two dumps compared member by member. */
#include <cstdlib>
#include <memory>

#include "tools/compare/diff.h"
#include "tools/compare/engine.h"
#include "tools/isp-case/commands.h"

namespace isp_case {

/* A tolerance is a finite number, zero or more: NaN would make every difference vanish. */
CLI::Validator tolerance_check() {
    return CLI::Validator(
        [](std::string &text) -> std::string {
            char *end              = nullptr;
            const double tolerance = std::strtod(text.c_str(), &end);
            if (text.empty() || *end != '\0') return text + " is not a number";
            const std::string problem = tolerance_problem(tolerance);
            return problem.empty() ? "" : text + " is " + problem;
        },
        "FLOAT >= 0, finite");
}

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
                   "Largest difference of real values that counts as equal; codes always "
                   "compare exactly (default: 0)")
        ->type_name("X")
        ->check(tolerance_check());
    cmd.add_option(
           "--frame", settings->frame,
           "Compare only frame N, the cycle that read cfgs/fN (0: setup, which reads cfgs/f0)")
        ->type_name("N")
        ->check(CLI::Range(0, 1000000));
    auto format = std::make_shared<std::string>("text");
    add_format_option(cmd, *format, "the differences and the summary in one JSON document");
    return [settings, format] {
        settings->json = *format == "json";
        return diff_dumps(*settings, stdout, stderr);
    };
}

}  // namespace isp_case
