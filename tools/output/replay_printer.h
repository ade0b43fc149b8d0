/* A replay as people and programs read it, printed while it runs: the tables of the steps (or one
 * line per frame), then a summary; or one JSON object per step and a JSON summary. */
#ifndef ISP_CASE_REPLAY_REPORT_H
#define ISP_CASE_REPLAY_REPORT_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "tools/dump/writer.h"
#include "tools/core/runner.h"
#include "tools/core/findings.h"

namespace isp_case {

/* Status as the table shows it: "ok", "-1", "0x80011980", "raised", "-" when not run. */
std::string status_text(const op_outcome &op);

struct replay_output {
    output_format format = output_format::text;
    /* quiet: the summary only; normal: the tables of setup and the first frame, one line for
     * every later frame (with the rows of the modules that failed or warned), the teardown's
     * news; verbose: the table of every step */
    verbosity detail = verbosity::normal;
    int log_level    = 4;     /* library log lines of this level and below are shown */
    bool strict      = false; /* warnings fail the replay */
};

/* What a step found, module by module: a failed or raising operation and a value a converter
 * could not read (its message on standard error) are errors, a library log line at warning
 * level or below from an operation that did not fail is a warning. Each names the step, the
 * module and the operation. */
std::vector<std::vector<finding>> findings_of(const replay_step &step);

/* Consumes the steps of a replay as they end and prints them, then the summary. */
class replay_printer {
  public:
    /* preflight: the findings of the case's lint, counted and listed before the replay's own */
    replay_printer(std::FILE *out, const replay_settings &settings, const replay_output &output,
                   const std::vector<finding> &preflight = {});
    void step(const replay_step &step);
    /* The summary, with the dump's when one was written under dump_dir. */
    void finish(const replay_result &result, const dump_summary *dump = nullptr,
                const std::string &dump_dir = "");
    /* No error, no warning under --strict, a clean platform and a complete dump; the summary
     * says "ok" only when there is no warning either. */
    bool passed() const { return passed_; }

  private:
    void text_step(const replay_step &step, const step_outcome &outcome,
                   const std::vector<std::vector<finding>> &findings);
    void json_step(const replay_step &step, const step_outcome &outcome);

    std::FILE *out_;
    const replay_settings &settings_;
    replay_output output_;
    size_t frames_seen_ = 0;
    bool after_block_   = false; /* the last thing printed was a table */
    bool passed_        = false;
    finding_tally tally_;
    size_t ops_ = 0, failed_ops_ = 0, groups_ = 0, bytes_ = 0, messages_ = 0;
    size_t log_by_level_[8] = {};
};

}  // namespace isp_case

#endif
