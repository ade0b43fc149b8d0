/* Standard error redirected through a temporary file: a file rather than a pipe, so that a
 * chatty converter cannot fill a pipe buffer and block the process writing to itself. */
#include "tools/stderr_capture.h"

#include <unistd.h>

#include <sstream>

namespace isp_case {

stderr_capture::stderr_capture() {
    std::fflush(stderr);
    sink_  = std::tmpfile();
    saved_ = sink_ ? dup(STDERR_FILENO) : -1;
    if (saved_ >= 0) dup2(fileno(sink_), STDERR_FILENO);
}

stderr_capture::~stderr_capture() {
    finish();
}

std::vector<std::string> stderr_capture::finish() {
    std::vector<std::string> lines;
    if (saved_ < 0) return lines;
    std::fflush(stderr);
    dup2(saved_, STDERR_FILENO);
    close(saved_);
    saved_ = -1;

    std::string text;
    std::rewind(sink_);
    char buffer[4096];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, sink_)) > 0;) text.append(buffer, n);
    std::fclose(sink_);
    sink_ = nullptr;

    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) lines.push_back(line);
    return lines;
}

}  // namespace isp_case
