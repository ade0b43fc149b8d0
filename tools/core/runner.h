/* Driving the modules as a pipeline framework does, on the simulated platform, and recording what
 * every operation did: its status, the groups it pushed, its triggers, log lines and the
 * converters' messages. Each step is handed on as soon as it ends and dropped afterwards, so a
 * replay of any length holds one step at a time. */
#ifndef ISP_CASE_REPLAY_H
#define ISP_CASE_REPLAY_H

#include <stdint.h>

#include <functional>
#include <string>
#include <vector>

#include "isp_sim.h"
#include "tools/core/case_layout.h"
#include "tools/core/enum_list.h"
#include "tools/core/module_table.h"

namespace isp_case {

/* A module's operations, named as the tables and JSON show them. */
#define ISP_CASE_OP_KINDS(X) \
    X(reg, "register")       \
    X(create, "create")      \
    X(init, "init")          \
    X(process, "process")    \
    X(trigger, "trigger")    \
    X(sync, "sync")          \
    X(deinit, "deinit")      \
    X(destroy, "destroy")
ISP_CASE_ENUM(op_kind, ISP_CASE_OP_KINDS);
inline const char *op_name(op_kind kind) {
    return enum_name(op_kind_names, kind);
}

/* One structure handed to vin_hal_wrapper_setup, as the simulated wrapper recorded it. */
struct pushed_group {
    uint32_t handle         = 0;
    uint8_t channel         = 0; /* register I/O channel of the wrapper */
    uint32_t cmd            = 0;
    const group_info *group = nullptr; /* null for a command the tool does not know */
    size_t size             = 0;       /* bytes pushed */
    std::vector<uint8_t> bytes;        /* a copy of them, when the replay keeps the bytes */
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
