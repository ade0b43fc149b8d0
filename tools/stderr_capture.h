/* Collects what the library writes on the standard error stream during a call: the converters
 * report unreadable fields there and nowhere else. */
#ifndef ISP_CASE_STDERR_CAPTURE_H
#define ISP_CASE_STDERR_CAPTURE_H

#include <cstdio>
#include <string>
#include <vector>

namespace isp_case {

/* Redirects file descriptor 2 into a temporary file from construction until finish(); the
 * destructor restores it if finish() was not called. Not nestable. */
class stderr_capture {
  public:
    stderr_capture();
    ~stderr_capture();
    stderr_capture(const stderr_capture &)            = delete;
    stderr_capture &operator=(const stderr_capture &) = delete;

    /* Restores the stream and returns everything written meanwhile, one entry per line. */
    std::vector<std::string> finish();

  private:
    std::FILE *sink_ = nullptr;
    int saved_       = -1;
};

}  // namespace isp_case

#endif
