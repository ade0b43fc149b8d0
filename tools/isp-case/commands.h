/* The subcommands of isp-case, one file each: every command adds itself and its options to the
 * application and hands back what runs it once the command line is parsed. */
#ifndef ISP_CASE_COMMANDS_H
#define ISP_CASE_COMMANDS_H

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/core/settings.h"

namespace isp_case {

using command_runner = std::function<int()>;

command_runner add_replay_command(CLI::App &app);
command_runner add_check_command(CLI::App &app);
command_runner add_export_command(CLI::App &app);
command_runner add_diff_command(CLI::App &app);
command_runner add_batch_command(CLI::App &app);
command_runner add_report_command(CLI::App &app);

/* The exit statuses of every subcommand, as the help gives them. */
extern const char *const exit_statuses_help;

/* Values of the options shared by replay and check, with whether each was given. */
struct case_flags {
    std::string case_path, grid;
    int channels = 0, frames = 0;
    std::vector<std::string> modules;
    CLI::Option *grid_option = nullptr, *channels_option = nullptr, *frames_option = nullptr;

    case_options options() const;
};
void add_case_flags(CLI::App &command, case_flags &flags);

/* Refuses an empty path: "--dump ''" is a mistake, not "no dump". */
CLI::Validator non_empty_path();

/* Accepts module names only; the names are listed by the error message, not by the help. */
CLI::Validator module_name_check();

/* Settings from the options and the case, or false after a line on standard error. */
bool settings_or_report(const case_options &options, const char *command, run_settings &settings,
                        case_contents &contents);

/* The options of replay beyond the case's. */
struct replay_flags {
    std::vector<std::string> bypass;
    std::string dump_dir, log_level = "warning", format = "text";
    bool force = false, verbose = false, quiet = false, strict = false;
};

/* What the replay and check commands run, also run by batch in its children. */
int run_replay_command(const case_options &options, const replay_flags &flags);
int run_check_command(const case_options &options, bool strict, bool json);

}  // namespace isp_case

#endif
