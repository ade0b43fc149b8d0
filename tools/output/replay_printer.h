/* A replay as people and programs read it, printed while it runs: the tables of the steps (or one
 * line per frame), then a summary; or one JSON object per step and a JSON summary. */
#ifndef ISP_CASE_REPLAY_REPORT_H
#define ISP_CASE_REPLAY_REPORT_H

#include <cstdio>
#include <string>
#include <vector>

#include "tools/core/findings.h"
#include "tools/core/run_record.h"
#include "tools/core/runner.h"
#include "tools/dump/writer.h"

namespace isp_case {

struct replay_output {
    output_format format = output_format::text;
    /* quiet: the summary only; normal: the tables of setup and the first frame, one line for
     * every later frame (with the rows of the modules that failed or warned), the teardown's
     * news; verbose: the table of every step */
    verbosity detail = verbosity::normal;
    int log_level    = 4;     /* library log lines of this level and below are shown */
    bool strict      = false; /* warnings fail the replay */
};

/* Consumes the steps of a replay as they end and prints them, then the summary. */
class replay_printer {
  public:
    replay_printer(std::FILE *out, const replay_settings &settings, const replay_output &output);
    /* A step as it ends, with its outcome (run_record::add). */
    void step(const replay_step &step, const step_outcome &outcome);
    /* The summary of the record and its verdict, with the dump's when one was written under
     * dump_dir. */
    void finish(const run_record &record, const verdict &judged, const dump_summary *dump = nullptr,
                const std::string &dump_dir = "");

  private:
    void text_step(const replay_step &step, const step_outcome &outcome);
    void json_step(const replay_step &step, const step_outcome &outcome);

    std::FILE *out_;
    const replay_settings &settings_;
    replay_output output_;
    size_t frames_seen_ = 0;
    bool after_block_   = false; /* the last thing printed was a table */
};

}  // namespace isp_case

#endif
