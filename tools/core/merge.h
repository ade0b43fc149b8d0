/* The reports of a suite's shards (batch --shard K/N --json) put together into one: every case
 * of the suite once, the time of each shard, and the shards and cases no report holds. */
#ifndef ISP_CASE_MERGE_H
#define ISP_CASE_MERGE_H

#include <cstdio>
#include <string>
#include <vector>

namespace isp_case {

struct merge_settings {
    std::vector<std::string> reports; /* batch --json files */
    std::string junit_file, json_file;
    bool json = false; /* the merged document on standard output instead of the text */
};

/* Returns the exit status: 0 every case of the suite ran and passed, 1 a case failed or is
 * missing (a shard without a report) or a report not written, 3 a report that cannot be read,
 * is not a batch's, or does not fit the others (another suite, another count of shards, a
 * shard given twice). */
int run_merge(const merge_settings &settings, std::FILE *out, std::FILE *err);

}  // namespace isp_case

#endif
