/* The benchmark groups of isp_json_bench and the measurements they share. */
#ifndef ISP_BENCH_BENCHMARKS_H
#define ISP_BENCH_BENCHMARKS_H

#include <stddef.h>

#include <string>

namespace isp_bench {

/* partition/<block>/library and partition/<block>/floor for each block with a register map */
void register_partition_benchmarks(const std::string &case_dir);
/* frame/sample_case/library and frame/sample_case/floor */
void register_frame_benchmarks(const std::string &case_dir);

/* Runs frames of the sample case ("library") or their floor ("floor") and nothing else, for a
 * profiler; returns the process status. */
int run_frames(const std::string &case_dir, const std::string &what, int frames);

/* Loads one block's partition file ("library") or parses it bare ("floor") so many times and
 * nothing else, for a profiler; returns the process status. */
int run_partition(const std::string &case_dir, const std::string &block, const std::string &what,
                  int loads);

size_t file_size(const std::string &path);

}  // namespace isp_bench

#endif
