/* Register files read and parsed the way the library does, with every failure reported. */
#include "tools/core/file_probe.h"

#include <errno.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace isp_case {
namespace {

const char *type_name(const picojson::value &value) {
    if (value.is<picojson::null>()) return "null";
    if (value.is<bool>()) return "a boolean";
    if (value.is<double>()) return "a number";
    if (value.is<std::string>()) return "a string";
    if (value.is<picojson::array>()) return "an array";
    return "an object";
}

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

probed_file read_text(const std::string &path, std::string &text) {
    probed_file probe;
    struct stat st;
    if (stat(path.c_str(), &st) != 0) {
        const int error   = errno;
        const bool absent = error == ENOENT || error == ENOTDIR;
        probe.state       = absent ? file_state::missing : file_state::unreadable;
        probe.detail      = absent ? "no such file" : std::strerror(error);
        return probe;
    }
    std::ifstream in(path, std::ios::in);
    if (S_ISDIR(st.st_mode) || !in) {
        probe.state  = file_state::unreadable;
        probe.detail = S_ISDIR(st.st_mode) ? "a directory" : "cannot be opened for reading";
        return probe;
    }
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return probe;
}

probed_file probe_file(const std::string &path) {
    std::string text;
    probed_file probe = read_text(path, text);
    if (probe.state != file_state::ok) return probe;
    std::string error;
    try {
        picojson::parse(probe.root, text.begin(), text.end(), &error);
    } catch (const std::overflow_error &) {
        probe.state  = file_state::non_finite;
        probe.detail = locate_non_finite(text);
        return probe;
    }
    if (!error.empty()) {
        probe.state  = file_state::syntax;
        probe.detail = error;
        return probe;
    }
    if (!probe.root.is<picojson::object>()) {
        probe.state  = file_state::not_object;
        probe.detail = std::string("the root is ") + type_name(probe.root);
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
