/* isp_json_memory [FRAMES]: the heap over frames of the sample case (100 by default), on a
 * platform that records nothing. For every frame: the heap at its start, how far above that it
 * went, and what it kept; then the largest single register file's parsed tree for comparison.
 * The library keeps nothing from one frame to the next and holds one file's tree at a time, so
 * the first two columns stay flat and the third stays 0. Exits 1 when they do not. */
#include <stdio.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "bench/heap_meter.h"
#include "bench/sample_case.h"

namespace {

/* Peak resident set of the process so far, from the kernel. */
long peak_rss_kib() {
    FILE *status = fopen("/proc/self/status", "r");
    if (!status) return -1;
    char line[256];
    long kib = -1;
    while (fgets(line, sizeof line, status))
        if (sscanf(line, "VmHWM: %ld kB", &kib) == 1) break;
    fclose(status);
    return kib;
}

/* The heap one file's text and tree take at their largest, over the files of a frame. */
long long largest_tree(const std::vector<std::string> &files, std::string *which) {
    long long largest = 0;
    for (const std::string &file : files) {
        const long long start = isp_bench::heap::live();
        isp_bench::heap::reset_peak();
        { picojson::value document = isp_bench::parse_file(file); }
        if (isp_bench::heap::peak() - start > largest) {
            largest = isp_bench::heap::peak() - start;
            *which  = file;
        }
    }
    return largest;
}

}  // namespace

int main(int argc, char **argv) {
    const int frames = argc >= 2 ? atoi(argv[1]) : 100;
    isp_bench::heap::count(true);
    isp_bench::frame_runner runner(isp_bench::sample_case_dir());
    printf("%6s %14s %16s %8s %12s\n", "frame", "heap at start", "peak over start", "kept",
           "peak RSS");
    long long first_start = -1, first_peak = -1, max_peak = 0, kept_total = 0;
    for (int frame = 1; frame <= frames; ++frame) {
        const long long start = isp_bench::heap::live();
        isp_bench::heap::reset_peak();
        if (!runner.frame()) {
            fprintf(stderr, "frame %d: an operation did not return 0\n", frame);
            return 1;
        }
        const long long excess = isp_bench::heap::peak() - start;
        const long long kept   = isp_bench::heap::live() - start;
        if (first_start < 0) first_start = start;
        if (frame == 3) first_peak = excess;  // once the frame index has settled
        if (frame >= 3 && excess > max_peak) max_peak = excess;
        if (frame >= 3) kept_total += kept;
        if (frame <= 3 || frame % 10 == 0)
            printf("%6d %14lld %16lld %8lld %8ld KiB\n", frame, start, excess, kept,
                   peak_rss_kib());
    }
    std::string which;
    const long long tree = largest_tree(runner.frame_files(), &which);
    printf("largest register file, text and tree: %lld bytes (%s)\n", tree, which.c_str());
    printf("frames 3 to %d: peak over start %lld to %lld bytes, %lld bytes kept in all\n", frames,
           first_peak, max_peak, kept_total);
    return kept_total == 0 && max_peak == first_peak ? 0 : 1;
}
