/* Reading a register file without the library's abort: every way the library's file reader or
 * loader would stop the process is reported instead, with picojson's own error text. */
#ifndef ISP_CASE_FILE_PROBE_H
#define ISP_CASE_FILE_PROBE_H

#include <string>

#include <picojson.h>

#include "tools/lint/json_locations.h"

namespace isp_case {

enum class file_state {
    ok,
    missing,    /* no such file: the library aborts */
    unreadable, /* exists but is not read: not a regular file (a directory, a FIFO, a device), no
                   permission, or larger than max_register_file_bytes */
    byte_order_mark, /* the text starts with one, which picojson rejects: the library aborts */
    syntax,          /* picojson reports a syntax error: the library aborts */
    non_finite,      /* a number too large for a double: picojson raises overflow_error */
    not_object,      /* the root is not an object: the loader raises a type error */
};

struct probed_file {
    file_state state = file_state::ok;
    std::string detail;   /* what is wrong, in picojson's words where it has some */
    located_document doc; /* the parsed text with where each value was written */
};

/* The one reader of register files: read_text, then the parse the library makes, with where
 * each value was written. */
probed_file probe_file(const std::string &path);

/* "line N: TOKEN" for the first number outside strings that does not fit a double. */
std::string locate_non_finite(const std::string &text);

/* How a read of a file went: problem is empty when the text is all there. */
struct file_read {
    bool absent = false; /* no such file */
    std::string
        problem; /* "no such file", "a FIFO", "Permission denied", "N bytes, more than..." */
};

/* Every file the tool reads goes through here: opened without blocking, read only when it is a
 * regular file of at most limit bytes, and at most the size it had when opened. */
file_read read_regular_file(const std::string &path, long long limit, std::string &text);

/* Far more than any register file holds; a larger one is refused rather than parsed into memory
 * many times its size. */
constexpr long long max_register_file_bytes = 4 << 20;

/* The library formats every path it opens into 255 bytes: a longer path is cut to this many
 * characters. */
constexpr size_t max_library_path = 254;

/* The one reader of register files: a file's bytes as the library's file reader would get them,
 * without ever blocking: regular files only, at most max_register_file_bytes, and a text that
 * starts with a byte-order mark is refused as the library's parser refuses it (at line 1,
 * column 1). Missing and unreadable files leave text
 * empty and say why in the probe (whose root stays null). */
probed_file read_text(const std::string &path, std::string &text);

/* A one-line description of a probe that is not ok, e.g. "JSON does not parse: syntax error at
 * line 3 near: ...". */
std::string describe(const probed_file &probe);

}  // namespace isp_case

#endif
