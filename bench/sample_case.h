/* The sample case as the benchmarks use it: where it lies, the 34 modules driven through whole
 * frames on the simulated platform, and the files one frame reads. */
#ifndef ISP_BENCH_SAMPLE_CASE_H
#define ISP_BENCH_SAMPLE_CASE_H

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

#include <picojson.h>

#include "isp_framework.h"

namespace isp_bench {

/* examples/sample_case, or the directory named by ISP_BENCH_CASE. */
std::string sample_case_dir();

/* The floor of every comparison: open the file, read it whole with one read, parse it with
 * picojson, nothing else. Ends the process on a file that cannot be read or parsed. */
picojson::value parse_file(const std::string &path);

const uint8_t k_grid_h = 2, k_grid_v = 2;
const int32_t k_channels = 2;

/* A pipe running every module of the library, as the pipeline framework does: register,
 * create and init all in pipeline order, then frames of process and trigger, then deinit and
 * destroy, on whichever platform the program is linked with. */
class frame_runner {
  public:
    explicit frame_runner(const std::string &case_dir);
    ~frame_runner();
    frame_runner(const frame_runner &)            = delete;
    frame_runner &operator=(const frame_runner &) = delete;

    /* process, then trigger, of every module; false when an operation did not return 0 */
    bool frame();
    /* every register file one frame reads once the frame index has settled on the last frame,
     * in reading order, a file read by several modules listed once per read */
    std::vector<std::string> frame_files() const;

  private:
    struct module;
    std::string case_dir_;
    PipeContext pipe_{};
    IspRegShadow shadow_{};
    std::vector<module> modules_;
};

}  // namespace isp_bench

#endif
