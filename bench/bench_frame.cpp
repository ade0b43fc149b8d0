/* A whole frame of the sample case (34 modules, 2x2 partitions, 2 channels) through process and
 * trigger on the simulated platform, against the floor: the register files that frame reads,
 * opened, read and parsed with picojson, nothing else. */
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/sample_case.h"
#include "isp_sim.h"

namespace isp_bench {
namespace {

/* Frames before the measured ones: the frame index settles on the case's last frame, so every
 * measured frame reads the same files. */
const int k_settling_frames = 2;

/* The simulated platform from scratch, its log lines recorded but not echoed. */
void quiet_platform() {
    isp_sim::reset();
    isp_sim::set_log_echo(false);
}

void frame_library(benchmark::State &state, const std::string &case_dir) {
    quiet_platform();
    frame_runner runner(case_dir);
    for (int i = 0; i < k_settling_frames; ++i) runner.frame();
    for (auto _ : state)
        if (!runner.frame()) state.SkipWithError("an operation did not return 0");
    const std::vector<std::string> files = runner.frame_files();
    state.counters["files"]              = static_cast<double>(files.size());
}

void frame_floor(benchmark::State &state, const std::string &case_dir) {
    std::vector<std::string> files;
    {
        quiet_platform();
        frame_runner runner(case_dir);
        files = runner.frame_files();
    }
    int64_t bytes = 0;
    for (const std::string &file : files) bytes += static_cast<int64_t>(file_size(file));
    for (auto _ : state)
        for (const std::string &file : files) {
            picojson::value document = parse_file(file);
            benchmark::DoNotOptimize(document);
        }
    state.counters["files"] = static_cast<double>(files.size());
    state.SetBytesProcessed(state.iterations() * bytes);
}

}  // namespace

size_t file_size(const std::string &path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 ? static_cast<size_t>(st.st_size) : 0;
}

void register_frame_benchmarks(const std::string &case_dir) {
    /* The floor first: the library's run leaves the platform's call records behind, and the
     * heap they fragment would slow whatever runs next. */
    benchmark::RegisterBenchmark("frame/sample_case/floor", frame_floor, case_dir)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("frame/sample_case/library", frame_library, case_dir)
        ->Unit(benchmark::kMillisecond);
}

int run_frames(const std::string &case_dir, const std::string &what, int frames) {
    quiet_platform();
    frame_runner runner(case_dir);
    for (int i = 0; i < k_settling_frames; ++i) runner.frame();
    if (what == "library") {
        for (int i = 0; i < frames; ++i)
            if (!runner.frame()) return 1;
        return 0;
    }
    if (what != "floor") {
        fprintf(stderr, "--profile: library or floor, not %s\n", what.c_str());
        return 2;
    }
    const std::vector<std::string> files = runner.frame_files();
    for (int i = 0; i < frames; ++i)
        for (const std::string &file : files) {
            picojson::value document = parse_file(file);
            benchmark::DoNotOptimize(document);
        }
    return 0;
}

}  // namespace isp_bench
