/* Standard error appended to a temporary file: a file rather than a pipe, so that a chatty
 * converter cannot fill a pipe buffer and block the process writing to itself. */
#include "tools/core/stderr_stream.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace isp_case {
namespace {

/* What the handler of SIGABRT needs, as plain values it may read. */
volatile int g_sink_fd     = -1;
volatile int g_original_fd = -1;
volatile long g_taken      = 0; /* bytes of the file already taken */

struct sigaction g_previous;

/* The file is emptied once this much has been taken, so a long run keeps no more on disk. */
const long k_reuse_after = 1 << 20;

/* Copies the text not taken yet to the original stream; only async-signal-safe calls. */
void forward_rest() {
    char buffer[4096];
    long at = g_taken;
    for (ssize_t n; (n = pread(g_sink_fd, buffer, sizeof buffer, at)) > 0; at += n)
        for (ssize_t done = 0, w;
             done < n && (w = write(g_original_fd, buffer + done, size_t(n - done))) > 0;)
            done += w;
    g_taken = at;
}

extern "C" void forward_and_die(int signal_number) {
    forward_rest();
    dup2(g_original_fd, STDERR_FILENO);
    signal(signal_number, SIG_DFL);
    raise(signal_number);
}

}  // namespace

stderr_stream::stderr_stream() {
    std::fflush(stderr);
    sink_              = std::tmpfile();
    const int original = sink_ ? dup(STDERR_FILENO) : -1;
    original_          = original >= 0 ? fdopen(original, "w") : nullptr;
    if (!original_) {
        if (original >= 0) close(original);
        if (sink_) std::fclose(sink_);
        sink_ = nullptr;
        return;
    }
    std::setvbuf(original_, nullptr, _IONBF, 0);
    const int fd = fileno(sink_);
    /* appending, so that the file can be emptied under the writers */
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_APPEND);
    g_sink_fd     = fd;
    g_original_fd = original;
    g_taken       = 0;
    dup2(fd, STDERR_FILENO);
    struct sigaction action {};
    action.sa_handler = forward_and_die;
    sigemptyset(&action.sa_mask);
    sigaction(SIGABRT, &action, &g_previous);
}

stderr_stream::~stderr_stream() {
    if (!sink_) return;
    std::fflush(stderr);
    sigaction(SIGABRT, &g_previous, nullptr);
    forward_rest();
    dup2(g_original_fd, STDERR_FILENO);
    g_sink_fd = g_original_fd = -1;
    std::fclose(original_);
    std::fclose(sink_);
}

std::vector<std::string> stderr_stream::take() {
    std::vector<std::string> lines;
    if (!sink_) return lines;
    std::fflush(stderr);
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = pread(g_sink_fd, buffer, sizeof buffer, g_taken)) > 0; g_taken += n)
        text.append(buffer, size_t(n));
    for (size_t start = 0; start < text.size();) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        if (end > start) lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    if (g_taken >= k_reuse_after && ftruncate(g_sink_fd, 0) == 0) g_taken = 0;
    return lines;
}

}  // namespace isp_case
