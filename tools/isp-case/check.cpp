/* isp-case check: the lint of every file a replay reads, without aborting. */
#include <memory>

#include "tools/core/run_record.h"
#include "tools/isp-case/commands.h"
#include "tools/output/check_output.h"

namespace isp_case {

int run_check_command(const case_options &options, bool strict, const std::string &format,
                      stage_report *report) {
    run_settings settings;
    case_contents contents;
    case_overlay overlay;
    if (!settings_or_report(options, "check", settings, contents, overlay, report))
        return exit_no_case;
    const check_result result = check_case(settings, contents);
    if (format == "json")
        print_check_json(stdout, settings, result);
    else if (format == "github")
        print_check_github(stdout, result);
    else
        print_check(stdout, settings, result);
    run_record record;
    record.add(result.findings);
    if (report) report->judge(record, strict);
    return judge(record, strict).passed() ? exit_ok : exit_failed;
}

command_runner add_check_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "check",
        "Find every problem of a case that would stop or spoil a replay, without aborting");
    cmd.footer(
        "Exit status: 0 no error found, 1 an error found (--strict: a warning too), 2 usage "
        "error, 3 no such case or frame.");
    auto flags  = std::make_shared<case_flags>();
    auto strict = std::make_shared<bool>(false);
    auto format = std::make_shared<std::string>("text");
    add_case_flags(cmd, *flags);
    cmd.add_flag("--strict", *strict, "Warnings fail the check too");
    add_format_option(cmd, *format, "every finding in one JSON document",
                      "one workflow annotation per finding, for CI");
    return
        [flags, strict, format] { return run_check_command(flags->options(), *strict, *format); };
}

}  // namespace isp_case
