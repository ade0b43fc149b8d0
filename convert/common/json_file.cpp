/* JSON documents between files and picojson values. A register file that cannot be read or
 * parsed ends the process: replaying a case with a missing frame makes no sense. */

/* The abort stays in release builds, so the assertion machinery is wanted whatever NDEBUG
 * says; this must come before anything else pulls in assert.h. */
#undef NDEBUG
#include <assert.h>

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <string>

#include "isp_json_utils.h"

using std::string;

namespace {

const char read_function[] = "picojson::value read_json_file(const string&)";

/* The failure names this unit and the line of the check, whatever the build's source path. */
[[noreturn]] void read_failed(unsigned line) {
    __assert_fail("false", "convert/common/json_file.cpp", line, read_function);
}

/* The whole file straight into the text, without a stream buffer to allocate and copy through
 * (for a frame of register files that cost as much as the rest of reading them): a regular file
 * with one read of the size it has when opened, anything else (a pipe, a file under /proc) read
 * to its end. A read that fails ends the text where it is, so a directory gives no text. False
 * when the file cannot be opened. */
bool read_file(const string &path, string &text) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat st;
    const bool sized = fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0;
    size_t got       = 0;
    text.resize(sized ? static_cast<size_t>(st.st_size) : 4096);
    for (;;) {
        if (got == text.size()) {
            if (sized) break;
            text.resize(2 * text.size());
        }
        const ssize_t n = read(fd, &text[got], text.size() - got);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        got += static_cast<size_t>(n);
    }
    text.resize(got);
    close(fd);
    return true;
}

/* Gives standard output its own buffer back on every way out, also when the stream was set to
 * throw on a write into an unopened file. */
class stdout_redirect {
  public:
    explicit stdout_redirect(std::streambuf *target) : saved_(std::cout.rdbuf(target)) {}
    ~stdout_redirect() { std::cout.rdbuf(saved_); }
    stdout_redirect(const stdout_redirect &)            = delete;
    stdout_redirect &operator=(const stdout_redirect &) = delete;

  private:
    std::streambuf *saved_;
};

}  // namespace

ISP_JSON_API picojson::value read_json_file(const string &path) {
    string text;
    if (!read_file(path, text)) {
        std::cerr << std::endl << "[error] failed to read json file: " << path << std::endl;
        read_failed(12);
    }

    picojson::value value;
    const string error = picojson::parse(value, text);
    if (!error.empty()) {
        std::cerr << std::endl << "[error] readFile cannot parse json" << error << std::endl;
        read_failed(21);
    }
    return value;
}

/* The text reaches the file through standard output on purpose; nothing else may write to
 * standard output meanwhile. */
ISP_JSON_API void write_json_file(const string &path, const picojson::value &value) {
    std::ofstream file(path);
    const string text = value.serialize(true);
    {
        stdout_redirect redirect(file.rdbuf());
        std::cout << text << std::endl;
    }
    file.close();
}
