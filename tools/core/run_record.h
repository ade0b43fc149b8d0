/* The record of a run: each step as the runner hands it on (per module the operations with their
 * statuses, pushes, log lines, converter messages and what they count as), and the run's totals
 * with a bounded list of its findings. Text, JSON lines, the dump's manifest, batch and the
 * report page are views of it; judge() alone says whether the run passed. */
#ifndef ISP_CASE_RUN_RECORD_H
#define ISP_CASE_RUN_RECORD_H

#include <stdint.h>

#include <string>
#include <vector>

#include "isp_sim.h"
#include "tools/core/enum_list.h"
#include "tools/core/finding_groups.h"
#include "tools/core/findings.h"
#include "tools/core/module_table.h"
#include "tools/core/step.h"

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

/* Status as the outputs show it: "ok", "-1", "0x80011980", "raised", "-" when not run. */
std::string status_text(const op_outcome &op);

/* The operations of one module in one step, its enable bit after them (-1: none), and what they
 * count as (findings_of). */
struct module_step {
    const module_info *module = nullptr;
    std::vector<op_outcome> ops;
    int enable = -1;
    std::vector<finding> findings;
};

struct replay_step {
    step_id id;
    std::vector<module_step> modules;
};

/* What a module's operations in a step count as: a failed or raising operation and a value a
 * converter could not read (its message on standard error) are errors, a library log line at
 * warning level or below from an operation that did not fail is a warning. Each names the step,
 * the module and the operation. */
std::vector<finding> findings_of(const step_id &step, const module_step &m);

/* One step's counts, in the order the outputs show them, and its findings. */
step_outcome outcome_of(const replay_step &step);

/* The verdict on a run: errors fail it, warnings too under --strict; a run that passed with
 * warnings is "not clean". */
enum class run_result { ok, not_clean, failed };
const char *result_name(run_result result); /* "ok", "not clean", "FAILED" */

struct verdict {
    run_result result = run_result::ok;
    size_t errors = 0, warnings = 0;
    bool strict = false;

    bool passed() const { return result != run_result::failed; }
    /* "ok", "not clean: 2 warnings", "FAILED: 12 errors", "FAILED: 9 errors, 1 warning",
     * "FAILED: 2 warnings (--strict)" */
    std::string text() const;
    /* "9 errors, 1 warning", and " (--strict)" when only warnings failed it */
    std::string counts_text() const;
};

/* The run as a whole: the findings of the case's lint and of every step (counted in full, kept
 * up to a limit), the totals of the steps, and the problems of the platform and of the dump,
 * which count as errors. */
class run_record {
  public:
    explicit run_record(size_t kept_findings = 20) : tally_(kept_findings) {}

    void add(const finding &f) { tally_.add(f); }
    void add(const std::vector<finding> &findings);
    /* Adds a step's findings and totals; returns the step's outcome. */
    step_outcome add(const replay_step &step);
    void add_platform_problems(const std::vector<std::string> &problems);
    void add_dump_problems(size_t count) { dump_problems_ += count; }

    const finding_tally &findings() const { return tally_; }
    const std::vector<std::string> &platform_problems() const { return platform_; }
    size_t errors() const { return tally_.counts().errors + platform_.size() + dump_problems_; }
    size_t warnings() const { return tally_.counts().warnings; }

    size_t frames = 0, operations = 0, failed_operations = 0, groups = 0, bytes = 0,
           stderr_lines    = 0;
    size_t log_by_level[8] = {};

  private:
    finding_tally tally_;
    std::vector<std::string> platform_;
    size_t dump_problems_ = 0;
};

verdict judge(const run_record &record, bool strict);

/* {"result": "not clean", "errors": 0, "warnings": 2, "strict": false,
 *  "text": "not clean: 2 warnings"}, as the manifest and batch's children write it */
picojson::value verdict_json(const verdict &v);
/* False when the value is not a verdict. */
bool verdict_from_json(const picojson::value &value, verdict &out);

}  // namespace isp_case

#endif
