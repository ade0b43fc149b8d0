/* Shared helpers of the test suite: temporary case directories, captured standard error and a
 * pipeline context wired to the simulated platform. */
#ifndef ISP_TEST_SUPPORT_H
#define ISP_TEST_SUPPORT_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

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

/* The bytes of a driver structure as the wrapper receives them. */
template <typename T>
std::vector<uint8_t> bytes_of(const T &value) {
    const uint8_t *bytes = reinterpret_cast<const uint8_t *>(&value);
    return std::vector<uint8_t>(bytes, bytes + sizeof value);
}

/* Clears a structure in place, padding included: a copy need not keep padding bytes, so an
 * expected structure is cleared where it lives and then filled member by member. */
template <typename T>
void clear(T &value) {
    memset(&value, 0, sizeof value);
}

/* Stores codes into a member array in index order (at most its length). */
template <typename T, size_t N>
void fill(T (&member)[N], const std::vector<uint32_t> &codes) {
    for (size_t i = 0; i < N && i < codes.size(); ++i) member[i] = static_cast<T>(codes[i]);
}

/* A pipeline context with a grid, a case path and its own register shadow. */
struct pipe {
    PipeContext ctx{};
    IspRegShadow shadow{};
    pipe(uint8_t part_h, uint8_t part_v, const std::string &case_path, int32_t channels = 1);
    JsonModuleHandle handle(uint32_t trigger_arg = 0);
};

}  // namespace isp_test

#endif
