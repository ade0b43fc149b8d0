/* A suite of cases run as a batch: every case found under the paths given, each checked and
 * replayed in a process of its own, a few at a time, with a line per case, a summary, and JUnit
 * XML or JSON for CI. */
#ifndef ISP_CASE_BATCH_H
#define ISP_CASE_BATCH_H

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <picojson.h>

#include "tools/core/baseline.h"
#include "tools/core/enum_list.h"
#include "tools/core/findings.h"
#include "tools/core/run_record.h"

namespace isp_case {

/* One case of a suite: its directory and its name, the path relative to the suite it was
 * found in (the path as given for a case given directly). */
struct batch_case {
    std::string path, name;
};

/* Every directory holding cfgs/ at or under the paths, sorted by path, each once; a case's own
 * subdirectories are not searched. False with a message when a path is not a directory. */
bool find_cases(const std::vector<std::string> &paths, std::vector<batch_case> &cases,
                std::string &error);

/* The cases of shard index (1-based) of count: every count-th case starting at the index-th. */
std::vector<batch_case> shard_of(const std::vector<batch_case> &cases, int index, int count);

/* "2/5" to 2 and 5, with 1 <= index <= count. */
bool parse_shard(const std::string &text, int &index, int &count);

#define ISP_CASE_BATCH_STAGES(X) X(check, "check") X(replay, "replay")
ISP_CASE_ENUM(batch_stage, ISP_CASE_BATCH_STAGES);

/* What a stage of a case found, as its child process reports it to the batch: the verdict of
 * its run record with the findings kept, or the problem that left no case to run. The child
 * writes it as JSON into a file of its own; its standard output and error are for people. */
struct stage_report {
    bool judged = false; /* false: the stage stopped before it could judge anything */
    verdict run;
    std::vector<finding> findings;
    size_t findings_not_listed = 0;
    std::string problem;       /* why there was no case to run: "no such directory", ... */
    baseline_outcome baseline; /* the replay's run against the baseline, saved or compared */

    void judge(const run_record &record, bool strict);
};
picojson::value stage_report_json(const stage_report &report);
/* False when the value is not a stage report. */
bool stage_report_from_json(const picojson::value &value, stage_report &out);

/* Runs one stage of one case in the calling process, fills the report and returns its exit
 * status; it is called in a child process of the batch, whose standard output and error go to
 * the batch. */
using stage_runner =
    std::function<int(batch_stage stage, const batch_case &c, stage_report &report)>;

struct batch_settings {
    std::vector<std::string> paths;
    int jobs        = 0; /* cases at a time; 0: the processors this process may use */
    int shard_index = 1, shard_count = 1;
    std::string junit_file, json_file;
    std::optional<int> frames;
    bool strict = false;
    int timeout = 300;             /* seconds a case may take, both stages; 0: no limit */
    std::vector<std::string> sets; /* --set as given, applied to every case */
    baseline_settings baseline;
};

/* The identity of a suite as its shards see it: a hash of its sorted case names, the same for
 * every shard of the same suite, so that merge can refuse reports of different suites. */
std::string suite_id(const std::vector<batch_case> &cases);

/* One testcase of a JUnit report, as batch and merge write it. */
struct junit_case {
    std::string name, failure_type; /* failure_type empty for a case that passed */
    std::string reason, output;
    size_t errors = 0, warnings = 0;
    double seconds = 0;
};
/* The JUnit XML of a suite's cases: one testsuite named suite, one testcase per case. */
std::string junit_document(const std::string &suite, const std::vector<junit_case> &cases,
                           double seconds);

/* The processors this process may run on. */
int available_processors();

/* Runs the batch; returns the exit status: 0 when every case passed, 1 otherwise, 3 when a path
 * is not a directory or no case was found. A case over the time limit is killed and fails as
 * timed out. SIGINT, SIGTERM or a closed output stop the batch: the children under way are
 * ended and reaped, the reports are written with the cases not finished marked interrupted, and
 * the status is 1. */
int run_batch(const batch_settings &settings, const stage_runner &run_stage, std::FILE *out,
              std::FILE *err);

}  // namespace isp_case

#endif
