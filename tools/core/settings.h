/* From command-line values to run settings: what was given, and defaults from the case for what
 * was not, so that "isp-case replay CASE" just works. */
#ifndef ISP_CASE_SETTINGS_H
#define ISP_CASE_SETTINGS_H

#include <optional>
#include <string>
#include <vector>

#include "tools/core/case_layout.h"

namespace isp_case {

/* Exit statuses of every subcommand. */
constexpr int exit_ok      = 0; /* replay: every operation returned 0; check: no error */
constexpr int exit_failed  = 1; /* an operation failed, errors found, a file not converted */
constexpr int exit_usage   = 2; /* unknown option, bad value, missing argument */
constexpr int exit_no_case = 3; /* no usable case: no such directory, or files that would stop
                                   the library before a replay could report anything */

struct case_options {
    std::string case_path;
    std::optional<std::string> grid; /* "HxV" */
    std::optional<int> channels;
    std::optional<int> frames;
    std::vector<std::string> modules; /* empty: all, in pipeline order */
    std::vector<std::string> sets;    /* --set values, applied to an overlay of the case */
};

/* "2x3" to 2 and 3; each count 0 to 255. */
bool parse_grid(const std::string &text, int &part_h, int &part_v);
/* "error" 3, "warning" 4, "debug" 7, or a number 0 to 7; -1 when neither. */
int parse_log_level(const std::string &text);

/* Fills settings from options and the case; on failure returns false with a message that names
 * the case directory and what is wrong. */
bool resolve_settings(const case_options &options, run_settings &settings, case_contents &contents,
                      std::string &error);

}  // namespace isp_case

#endif
