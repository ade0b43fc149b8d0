/* What the fuzz harnesses share: parsing fuzzed text the way the library does, and telling the
 * exceptions the library documents from any other. */
#ifndef ISP_FUZZ_SUPPORT_H
#define ISP_FUZZ_SUPPORT_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#include <exception>
#include <stdexcept>
#include <string>

#include <picojson.h>

namespace isp_fuzz {

/* Parses text with picojson's default context, as read_json_file does. False for text that is
 * not JSON and for numbers picojson cannot hold (it throws std::overflow_error for them): the
 * library stops the process or passes the error on for those, and the harnesses test that
 * elsewhere. */
inline bool parse(const uint8_t *data, size_t size, picojson::value &document) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    try {
        return picojson::parse(document, text).empty();
    } catch (const std::overflow_error &) {
        return false;
    }
}

/* picojson's checked access failing: "\"type mismatch! call is<type>() before get<type>()\" &&
 * is<object>()", or the same ending in is<array>() or is<double>(). */
inline bool is_type_error(const std::exception &error) {
    static const std::string prefix =
        "\"type mismatch! call is<type>() before get<type>()\" && is<";
    const std::string text = error.what();
    return dynamic_cast<const std::runtime_error *>(&error) &&
           text.compare(0, prefix.size(), prefix) == 0;
}

/* An exception the library does not document: report it and stop, so the fuzzer keeps the
 * input. */
[[noreturn]] inline void unexpected(const char *where, const char *what) {
    fprintf(stderr, "unexpected exception from %s: %s\n", where, what);
    abort();
}

}  // namespace isp_fuzz

#endif
