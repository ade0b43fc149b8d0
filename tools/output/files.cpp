/* Preparing output directories and writing files whose every byte is checked. */
#include "tools/output/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "isp_json_utils.h"
#include "tools/core/case_layout.h"

namespace isp_case {
namespace {

namespace fs = std::filesystem;

/* The size of a file; -1 when it does not exist or is not a regular file. */
long long file_size_of(const std::string &path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) return -1;
    const auto size = fs::file_size(path, error);
    return error ? -1 : static_cast<long long>(size);
}

/* The path with symbolic links resolved where it exists, made absolute and without a trailing
 * separator. */
fs::path real_path(const std::string &path) {
    std::error_code error;
    fs::path real = fs::weakly_canonical(fs::absolute(path, error), error);
    if (error) real = fs::absolute(path).lexically_normal();
    if (!real.has_filename() && real.has_relative_path()) real = real.parent_path();
    return real;
}

/* Whether every component of outer begins inner. */
bool starts_with(const fs::path &inner, const fs::path &outer) {
    auto i = inner.begin();
    for (auto o = outer.begin(); o != outer.end(); ++o, ++i)
        if (i == inner.end() || *i != *o) return false;
    return true;
}

/* A previous dump: its manifest is a regular file at the root. Nothing else is ever emptied. */
bool holds_dump(const std::string &dir) {
    std::error_code error;
    return fs::is_regular_file(dir + "/manifest.json", error);
}

}  // namespace

overlap overlap_of(const std::string &output, const std::string &input) {
    const fs::path out = real_path(output), in = real_path(input);
    if (out == in) return overlap::same;
    if (starts_with(in, out)) return overlap::holds;
    if (starts_with(out, in)) return overlap::inside;
    return overlap::apart;
}

std::string case_place_problem(const std::string &out_dir, const std::string &case_path) {
    switch (overlap_of(out_dir, case_path)) {
        case overlap::same:
            return "is the case directory itself";
        case overlap::holds:
            return "holds the case " + case_path;
        case overlap::inside:
            if (overlap_of(out_dir, join_path(case_path, "cfgs")) != overlap::apart)
                return "lies inside the case's cfgs/, where the library looks for frame "
                       "directories";
            return "";
        case overlap::apart:
            return "";
    }
    return "";
}

std::string prepare_output_dir(const std::string &dir, existing_contents contents) {
    std::error_code error;
    const fs::file_status status = fs::status(dir, error);
    if (fs::exists(status) && !fs::is_directory(status)) return "not a directory";
    if (!fs::exists(status)) {
        if (!fs::create_directories(dir, error) && error)
            return "cannot create it: " + error.message();
    } else if (contents != existing_contents::keep && !fs::is_empty(dir, error)) {
        if (error) return "cannot read it: " + error.message();
        if (contents == existing_contents::refuse)
            return "not empty (--force replaces its contents)";
        if (!holds_dump(dir))
            return "not empty and not a dump (no manifest.json): --force empties only a "
                   "previous dump";
        for (const fs::directory_entry &entry : fs::directory_iterator(dir, error)) {
            fs::remove_all(entry.path(), error);
            if (error) return "cannot empty it: " + entry.path().string() + ": " + error.message();
        }
        if (error) return "cannot empty it: " + error.message();
    }
    /* permission bits do not tell: root ignores them, a read-only mount does not show in them */
    const std::string probe = dir + "/.isp-case-write-check";
    const int fd            = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (fd < 0) return std::string("cannot write into it: ") + std::strerror(errno);
    ::close(fd);
    ::unlink(probe.c_str());
    return "";
}

void reserve_standard_streams() {
    for (int fd = 0; fd <= 2; ++fd)
        if (fcntl(fd, F_GETFD) < 0 && errno == EBADF) {
            const int opened = ::open("/dev/null", O_RDONLY);
            if (opened >= 0 && opened != fd) ::close(opened);
        }
}

std::string finish_standard_output() {
    errno            = 0;
    const bool flush = std::fflush(stdout) == 0;
    const int reason = errno;
    if (flush && !std::ferror(stdout)) return "";
    return reason ? std::strerror(reason) : "a write failed";
}

bool write_text_file(const std::string &path, const std::string &text, std::string &error) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, 0666);
    if (fd < 0) {
        error = std::string("cannot be written: ") + std::strerror(errno);
        return false;
    }
    size_t done = 0;
    int reason  = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            reason = n < 0 ? errno : ENOSPC;
            break;
        }
        done += size_t(n);
    }
    if (::close(fd) != 0 && reason == 0) reason = errno;
    /* a regular file must hold the whole text; a device (/dev/null) took what write accepted */
    const long long size = file_size_of(path);
    if (reason == 0 && size >= 0 && size != static_cast<long long>(text.size())) reason = EIO;
    if (reason == 0) return true;
    error = std::string("cannot be written: ") + std::strerror(reason);
    return false;
}

bool write_json_checked(const std::string &path, const picojson::value &value, std::string &error) {
    /* the writer prints the text and a newline through the standard output stream */
    const long long expected = static_cast<long long>(value.serialize(true).size()) + 1;
    errno                    = 0;
    write_json_file(path, value);
    const int reason         = errno;
    const bool stream_failed = std::cout.fail();
    std::cout.clear();
    if (!stream_failed && file_size_of(path) == expected) return true;
    error = std::string("cannot be written: ") + (reason ? std::strerror(reason) : "short write");
    return false;
}

scratch_dir::scratch_dir(const std::string &prefix) {
    std::error_code error;
    std::string pattern = (fs::temp_directory_path(error) / (prefix + "-XXXXXX")).string();
    if (!error && mkdtemp(pattern.data())) path_ = pattern;
}

scratch_dir::~scratch_dir() {
    std::error_code ignored;
    if (!path_.empty()) fs::remove_all(path_, ignored);
}

}  // namespace isp_case
