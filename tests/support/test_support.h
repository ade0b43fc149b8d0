/* Shared helpers of the test suite: temporary case directories, captured standard error and a
 * pipeline context wired to the simulated platform. */
#ifndef ISP_TEST_SUPPORT_H
#define ISP_TEST_SUPPORT_H

#include <stdint.h>

#include <string>
#include <vector>

#include <picojson.h>

#include "isp_framework.h"

namespace isp_test {

/* A fresh directory under the system's temporary directory, removed with everything in it. */
class temp_dir {
public:
    temp_dir();
    ~temp_dir();
    temp_dir(const temp_dir &) = delete;
    temp_dir &operator=(const temp_dir &) = delete;

    const std::string &path() const { return path_; }
    /* Writes text to path()/relative, creating the directories on the way; returns the path. */
    std::string write(const std::string &relative, const std::string &text) const;
    std::string mkdir(const std::string &relative) const;

private:
    std::string path_;
};

std::string read_file(const std::string &path);
/* Parses text as JSON and returns its root object (fails the test on a parse error). */
picojson::object parse_object(const std::string &text);
std::vector<std::string> split_lines(const std::string &text);

/* A pipeline context with a grid, a case path and its own register shadow. */
struct pipe {
    PipeContext ctx{};
    IspRegShadow shadow{};
    pipe(uint8_t part_h, uint8_t part_v, const std::string &case_path, int32_t channels = 1);
    JsonModuleHandle handle(uint32_t trigger_arg = 0);
};

}  // namespace isp_test

#endif
