/* The readable form of a replay: one table per step, then a summary. */
#ifndef ISP_CASE_REPLAY_REPORT_H
#define ISP_CASE_REPLAY_REPORT_H

#include <cstdint>
#include <cstdio>
#include <string>

#include "tools/replay.h"

namespace isp_case {

/* Status as the table shows it: "ok", "-1", "0x80011980", "raised", "-" when not run. */
std::string status_text(const op_outcome &op);

/* log_level: the library's log lines of this level and below are shown (3 errors, 4 warnings,
 * 7 debug); what the converters wrote on standard error is always shown. */
void print_replay(std::FILE *out, const replay_settings &settings, const replay_result &result,
                  int log_level);

}  // namespace isp_case

#endif
