/* Register files read and parsed the way the library does, with every failure reported. */
#include "tools/core/file_probe.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace isp_case {
namespace {

bool starts_number(char c) {
    return c == '-' || (c >= '0' && c <= '9');
}
bool in_number(char c) {
    return starts_number(c) || c == '+' || c == '.' || c == 'e' || c == 'E';
}

}  // namespace

/* The first number outside strings whose value does not fit a double, with its line. */
std::string locate_non_finite(const std::string &text) {
    int line    = 1;
    bool quoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\n') ++line;
        if (quoted) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                quoted = false;
            continue;
        }
        if (c == '"') {
            quoted = true;
            continue;
        }
        if (!starts_number(c)) continue;
        size_t end = i;
        while (end < text.size() && in_number(text[end])) ++end;
        const std::string token = text.substr(i, end - i);
        if (!std::isfinite(std::strtod(token.c_str(), nullptr)))
            return "line " + std::to_string(line) + ": " + token;
        i = end - 1;
    }
    return "";
}

const char *kind_of(mode_t mode) {
    if (S_ISDIR(mode)) return "a directory";
    if (S_ISFIFO(mode)) return "a FIFO";
    if (S_ISCHR(mode)) return "a character device";
    if (S_ISBLK(mode)) return "a block device";
    if (S_ISSOCK(mode)) return "a socket";
    return "not a regular file";
}

file_read read_regular_file(const std::string &path, long long limit, std::string &text) {
    file_read result;
    /* non-blocking: a FIFO without a writer would hold the open forever; the type is taken from
     * what was opened, so a link that changes afterwards cannot lead elsewhere */
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) {
        const int error = errno;
        result.absent   = error == ENOENT || error == ENOTDIR;
        result.problem  = result.absent ? "no such file" : std::strerror(error);
        return result;
    }
    struct stat st;
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        result.problem = fstat(fd, &st) != 0 ? std::strerror(errno) : kind_of(st.st_mode);
    } else if (st.st_size > limit) {
        result.problem = std::to_string(st.st_size) + " bytes, more than the " +
                         std::to_string(limit >> 20) + " MiB read of such a file";
    } else {
        /* the size when opened bounds the text, however the file grows meanwhile */
        text.resize(size_t(st.st_size));
        size_t got = 0;
        while (got < text.size()) {
            const ssize_t n = read(fd, &text[got], text.size() - got);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) break;
            got += size_t(n);
        }
        text.resize(got);
    }
    close(fd);
    return result;
}

probed_file read_text(const std::string &path, std::string &text) {
    probed_file probe;
    const file_read read = read_regular_file(path, max_register_file_bytes, text);
    if (!read.problem.empty()) {
        probe.state  = read.absent ? file_state::missing : file_state::unreadable;
        probe.detail = read.problem;
        return probe;
    }
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        probe.state = file_state::byte_order_mark;
        probe.detail =
            "the file starts with a UTF-8 byte-order mark, which picojson does not "
            "accept: the library aborts";
    }
    return probe;
}

probed_file probe_file(const std::string &path) {
    std::string text;
    probed_file probe = read_text(path, text);
    if (probe.state != file_state::ok) return probe;
    try {
        probe.doc = parse_located(text);
    } catch (const std::overflow_error &) {
        probe.state  = file_state::non_finite;
        probe.detail = locate_non_finite(text);
        return probe;
    }
    if (!probe.doc.error.empty()) {
        probe.state  = file_state::syntax;
        probe.detail = probe.doc.error;
        return probe;
    }
    if (!probe.doc.root.is<picojson::object>()) {
        probe.state  = file_state::not_object;
        probe.detail = "the root is " + describe_value(probe.doc.root, probe.doc.where);
    }
    return probe;
}

std::string describe(const probed_file &probe) {
    switch (probe.state) {
        case file_state::ok:
            return "ok";
        case file_state::missing:
            return "missing file";
        case file_state::unreadable:
            return "cannot read the file: " + probe.detail;
        case file_state::byte_order_mark:
            return probe.detail;
        case file_state::syntax:
            return "JSON does not parse: " + probe.detail;
        case file_state::non_finite:
            return "number out of range (picojson raises overflow_error): " + probe.detail;
        case file_state::not_object:
            return "root is not an object: " + probe.detail;
    }
    return "";
}

}  // namespace isp_case
