/* Driving the modules as a pipeline framework does, on the simulated platform, and recording what
 * every operation did: its status, the groups it pushed, its triggers, log lines, the converters'
 * messages and what they count as. Each step is handed on as soon as it ends and dropped
 * afterwards, so a replay of any length holds one step at a time. */
#ifndef ISP_CASE_REPLAY_H
#define ISP_CASE_REPLAY_H

#include <functional>
#include <string>
#include <vector>

#include "tools/core/case_layout.h"
#include "tools/core/run_record.h"

namespace isp_case {

struct replay_settings {
    run_settings run;
    std::vector<const module_info *> bypass;
    bool progress   = false; /* a progress line on standard error between frames */
    bool keep_bytes = false; /* a copy of every pushed structure in the steps (for a dump) */
    bool keep_platform_records = false; /* the simulated platform keeps all its records */
};

struct replay_result {
    std::vector<std::string> platform_problems; /* leaks and misuse seen by the platform */
};

/* Receives each step as soon as it ends; the step is dropped when it returns. */
using step_sink = std::function<void(const replay_step &)>;

/* Runs the whole lifecycle once. The simulated platform is reset first; it forgets its records
 * of each operation once they are read, unless asked to keep them. Standard error is captured for
 * the whole run; the progress line goes to the stream it had before. */
replay_result replay(const replay_settings &settings, const step_sink &sink);

}  // namespace isp_case

#endif
