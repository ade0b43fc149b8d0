/* Standard error captured once for a whole run: what the library writes there between two
 * take() calls is what the operation in between wrote, without any descriptor juggling per
 * operation. */
#ifndef ISP_CASE_STDERR_STREAM_H
#define ISP_CASE_STDERR_STREAM_H

#include <cstdio>
#include <string>
#include <vector>

namespace isp_case {

/* From construction to destruction descriptor 2 writes into a temporary file; take() reads what
 * has been appended since the previous take(). The tool's own messages go to original(). A
 * process that the library ends with abort() still shows what it wrote last: the text not yet
 * taken is copied to the original stream before the process dies. One at a time. */
class stderr_stream {
  public:
    stderr_stream();
    ~stderr_stream();
    stderr_stream(const stderr_stream &)            = delete;
    stderr_stream &operator=(const stderr_stream &) = delete;

    /* The lines written since the last take, empty lines left out. */
    std::vector<std::string> take();
    /* The standard error stream as it was before the capture; stderr when none is active. */
    std::FILE *original() const { return original_ ? original_ : stderr; }

  private:
    std::FILE *sink_     = nullptr;
    std::FILE *original_ = nullptr;
    std::string partial_; /* a line not yet ended */
};

}  // namespace isp_case

#endif
