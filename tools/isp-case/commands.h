/* The subcommands of isp-case, one file each: every command adds itself and its options to the
 * application and hands back what runs it once the command line is parsed. */
#ifndef ISP_CASE_COMMANDS_H
#define ISP_CASE_COMMANDS_H

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/core/batch.h"
#include "tools/core/overrides.h"
#include "tools/core/runner.h"
#include "tools/core/settings.h"

namespace isp_case {

using command_runner = std::function<int()>;

command_runner add_replay_command(CLI::App &app);
command_runner add_check_command(CLI::App &app);
command_runner add_export_command(CLI::App &app);
command_runner add_diff_command(CLI::App &app);
command_runner add_batch_command(CLI::App &app);
command_runner add_report_command(CLI::App &app);
command_runner add_regmap_command(CLI::App &app);
command_runner add_where_command(CLI::App &app);
command_runner add_template_command(CLI::App &app);
command_runner add_coverage_command(CLI::App &app);
command_runner add_edit_command(CLI::App &app);
command_runner add_merge_command(CLI::App &app);

/* The exit statuses of every subcommand, as isp-case --help gives them; each subcommand's help
 * gives its own in one line. */
extern const char *const exit_statuses_help;

/* Values of the options shared by replay and check, with whether each was given. */
struct case_flags {
    std::string case_path, grid;
    int channels = 0, frames = 0;
    std::vector<std::string> modules, sets;
    CLI::Option *grid_option = nullptr, *channels_option = nullptr, *frames_option = nullptr;

    case_options options() const;
};
void add_case_flags(CLI::App &command, case_flags &flags);

/* Accepts the given names only, one entry of a comma-separated list at a time: an unknown entry
 * is answered with the closest name ("did you mean") or with the names to choose from. */
CLI::Validator name_check(const std::vector<std::string> &names, const std::string &what);

/* Accepts a finite tolerance, zero or more (diff, report --against). */
CLI::Validator tolerance_check();

/* Refuses an empty path: "--dump ''" is a mistake, not "no dump". */
CLI::Validator non_empty_path();

CLI::Validator module_name_check();

/* The options every command spells the same way: --format text|json for how it writes to
 * standard output (`json` says what the JSON form is, `github`, where given, what the workflow
 * annotations are), -o,--out PATH for what it writes. */
CLI::Option *add_format_option(CLI::App &command, std::string &format, const std::string &json,
                               const std::string &github = "");
/* --format for a command with views beyond text and json (regmap: csv, html). */
CLI::Option *add_view_format_option(CLI::App &command, std::string &format,
                                    const std::vector<std::string> &formats);
CLI::Option *add_out_option(CLI::App &command, std::string &path, const std::string &what,
                            const std::string &type_name);

/* --set [fFRAMES:][pN:]REGISTER.FIELD=VALUE, repeatable, checked as it is parsed. */
CLI::Option *add_set_option(CLI::App &command, std::vector<std::string> &sets);

/* Settings from the options and the case, or false after a line on standard error (and the
 * problem in the report, when there is one). The --set values go into `overlay`, which the run
 * then reads. */
bool settings_or_report(const case_options &options, const char *command, run_settings &settings,
                        case_contents &contents, case_overlay &overlay,
                        stage_report *report = nullptr);

/* The options of replay beyond the case's. */
struct replay_flags {
    std::vector<std::string> bypass;
    std::string dump_dir, log_level = "warning", format = "text";
    std::string store_dir; /* --store: the dump's raw structures go to this shared store */
    bool raw_only = false; /* --raw-only: no decoded files beside the raw structures */
    bool force = false, verbose = false, quiet = false, strict = false;
    std::FILE *out = stdout; /* the replay's lines; diff replays a case without them */
};

/* What the replay and check commands run, also run by batch in its children, which pass a
 * report to fill: the verdict and findings, or why there was no case to run. */
int run_replay_command(const case_options &options, const replay_flags &flags,
                       stage_report *report = nullptr);
int run_check_command(const case_options &options, bool strict, const std::string &format,
                      stage_report *report = nullptr);

}  // namespace isp_case

#endif
