/* isp_json_bench: Google Benchmark's command line, and after the runs a table of each library
 * measurement over its floor.
 *   isp_json_bench --profile library|floor [FRAMES]
 *   isp_json_bench --profile-partition BLOCK library|floor [LOADS]
 * run frames of the sample case, or loads of one block's partition file (or their floors), and
 * nothing else instead, for callgrind or perf; FRAMES and LOADS are 100 by default. The case is
 * examples/sample_case unless ISP_BENCH_CASE names another. */
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <map>
#include <string>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/sample_case.h"

namespace {

/* The console output, then "<group>/<name>/library" over "<group>/<name>/floor" for every pair
 * that ran: from the medians when the runs were repeated, else from the single run. */
class ratio_reporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run> &runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            if (run.error_occurred) continue;
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.run_type == Run::RT_Aggregate && !median) continue;
            std::string name = run.run_name.function_name;
            entry &e         = times_[name];
            if (median || !e.median) e = entry{run.GetAdjustedRealTime(), median};
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        bool header = false;
        for (const auto &t : times_) {
            const std::string suffix = "/library";
            const std::string &name  = t.first;
            if (name.size() <= suffix.size() ||
                name.compare(name.size() - suffix.size(), suffix.size(), suffix) != 0)
                continue;
            const std::string stem = name.substr(0, name.size() - suffix.size());
            auto floor             = times_.find(stem + "/floor");
            if (floor == times_.end() || floor->second.time <= 0) continue;
            if (!header) printf("\n%-28s %12s\n", "library over floor", "ratio");
            header = true;
            printf("%-28s %12.2f\n", stem.c_str(), t.second.time / floor->second.time);
        }
    }

  private:
    struct entry {
        double time;
        bool median;
    };
    std::map<std::string, entry> times_;
};

}  // namespace

int main(int argc, char **argv) {
    const std::string case_dir = isp_bench::sample_case_dir();
    if (argc >= 3 && strcmp(argv[1], "--profile") == 0)
        return isp_bench::run_frames(case_dir, argv[2], argc >= 4 ? atoi(argv[3]) : 100);
    if (argc >= 4 && strcmp(argv[1], "--profile-partition") == 0)
        return isp_bench::run_partition(case_dir, argv[2], argv[3],
                                        argc >= 5 ? atoi(argv[4]) : 100);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    isp_bench::register_partition_benchmarks(case_dir);
    isp_bench::register_frame_benchmarks(case_dir);
    ratio_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
