/* Driving the modules as a pipeline framework does, on the simulated platform, and recording what
 * every operation did: its status, the groups it pushed, its triggers, log lines and the
 * converters' messages. */
#ifndef ISP_CASE_REPLAY_H
#define ISP_CASE_REPLAY_H

#include <stdint.h>

#include <string>
#include <vector>

#include "isp_sim.h"
#include "tools/case_layout.h"
#include "tools/findings.h"
#include "tools/module_table.h"

namespace isp_case {

enum class op_kind { reg, create, init, process, trigger, sync, deinit, destroy };
const char *op_name(op_kind kind);

/* One structure handed to vin_hal_wrapper_setup, as the simulated wrapper recorded it. */
struct pushed_group {
    uint32_t handle         = 0;
    uint8_t channel         = 0; /* register I/O channel of the wrapper */
    uint32_t cmd            = 0;
    const group_info *group = nullptr; /* null for a command the tool does not know */
    std::vector<uint8_t> bytes;
    /* colour correction init: the partition-size arrays its pointers lead to */
    std::vector<uint8_t> part_size_h, part_size_v;
};

struct op_outcome {
    op_kind kind   = op_kind::reg;
    bool ran       = false; /* false: the module has no such operation (no sync slot) */
    int32_t status = 0;
    std::string exception; /* what() of an exception the operation raised */
    std::vector<pushed_group> pushes;
    unsigned wrapper_triggers = 0;
    std::vector<isp_sim::log_line> log;
    std::vector<std::string> messages; /* what the library wrote on standard error */
    std::vector<int> frames_read;      /* loads: the frame directory of each channel's pass */

    bool failed() const { return ran && (status != 0 || !exception.empty()); }
};

/* The operations of one module in one step, and its enable bit after them (-1: none). */
struct module_step {
    const module_info *module = nullptr;
    std::vector<op_outcome> ops;
    int enable = -1;
};

/* "setup" (register, create, init), "frame 0" ... (process, trigger, sync), "teardown"
 * (deinit, destroy). */
struct replay_step {
    std::string name;
    std::vector<module_step> modules;
};

struct replay_settings {
    run_settings run;
    std::vector<const module_info *> bypass;
    bool progress = false; /* a progress line on standard error between frames */
};

struct replay_result {
    std::vector<replay_step> steps;
    std::vector<std::string> platform_problems; /* leaks and misuse seen by the platform */
    std::vector<finding> findings;              /* the case's lint, run before the replay */
    bool strict = false;                        /* warnings fail the replay too */
    /* an operation failed, the platform saw a problem, or a finding is an error (under strict,
     * any finding) */
    bool failed() const;
};

/* Runs the whole lifecycle once. The simulated platform is reset first and keeps the records
 * of this replay afterwards. */
replay_result replay(const replay_settings &settings);

}  // namespace isp_case

#endif
