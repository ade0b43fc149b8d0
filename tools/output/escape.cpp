/* Escaping for markup and terminals over one UTF-8 decoder. */
#include "tools/output/escape.h"

#include <fmt/core.h>

namespace isp_case {
namespace {

/* The code point of the well-formed sequence of the given length at text[i]. */
unsigned code_point(const std::string &text, size_t i, size_t length) {
    const auto byte = [&](size_t k) { return static_cast<unsigned char>(text[k]); };
    if (length == 1) return byte(i);
    unsigned code = byte(i) & (0x7Fu >> length);
    for (size_t k = 1; k < length; ++k) code = (code << 6) | (byte(i + k) & 0x3F);
    return code;
}

/* C0 and C1 controls and DEL: a terminal acts on them instead of showing them. */
bool control(unsigned code) {
    return code < 0x20 || (code >= 0x7F && code <= 0x9F);
}

/* Marks that reorder the text shown after them, so that a line reads differently from what it
 * holds. */
bool reorders(unsigned code) {
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

/* A character as \xNN (ASCII) or \uNNNN. */
std::string shown(unsigned code) {
    return fmt::format(code < 0x80 ? "\\x{:02x}" : "\\u{:04x}", code);
}

void bad_byte(unsigned char byte, std::string &out) {
    out += fmt::format("\\x{:02x}", byte);
}

/* The text, character by character: `replace` writes what a character becomes and says whether
 * it did (the character is copied when not), `bad` writes what a byte that starts no well-formed
 * sequence becomes. */
template <typename Replace, typename Bad>
std::string rewrite(const std::string &text, Replace replace, Bad bad) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const size_t length = utf8_length(text, i);
        if (!length) {
            bad(static_cast<unsigned char>(text[i]), out);
            ++i;
            continue;
        }
        if (!replace(code_point(text, i, length), out)) out.append(text, i, length);
        i += length;
    }
    return out;
}

}  // namespace

size_t utf8_length(const std::string &text, size_t i) {
    const auto byte          = [&](size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    size_t length            = 0;
    unsigned min             = 0;
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        min    = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        min    = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        min    = 0x10000;
    } else {
        return 0;
    }
    if (i + length > text.size()) return 0;
    for (size_t k = 1; k < length; ++k)
        if ((byte(i + k) & 0xC0) != 0x80) return 0;
    const unsigned code  = code_point(text, i, length);
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < min || code > 0x10FFFF || surrogate ? 0 : length;
}

std::string utf8_clean(const std::string &text) {
    return rewrite(
        text, [](unsigned, std::string &) { return false; },
        [](unsigned char, std::string &out) { out += "\xEF\xBF\xBD"; });
}

std::string markup_escape(const std::string &text, markup_context where) {
    const bool attribute = where == markup_context::attribute;
    return rewrite(
        text,
        [attribute](unsigned code, std::string &out) {
            const bool space = code == '\t' || code == '\n' || code == '\r';
            if (code == '&')
                out += "&amp;";
            else if (code == '<')
                out += "&lt;";
            else if (code == '>')
                out += "&gt;";
            else if (code == '"' && attribute)
                out += "&quot;";
            else if (code == '\'' && attribute)
                out += "&#39;";
            else if (space && attribute)
                out += fmt::format("&#{};", code);
            else if (control(code) && !space)
                out += shown(code);
            else
                return false;
            return true;
        },
        bad_byte);
}

std::string terminal_text(const std::string &text) {
    return rewrite(
        text,
        [](unsigned code, std::string &out) {
            if (code == '\n')
                out += "\\n";
            else if (code == '\t')
                out += "\\t";
            else if (code == '\r')
                out += "\\r";
            else if (control(code) || reorders(code))
                out += shown(code);
            else
                return false;
            return true;
        },
        bad_byte);
}

}  // namespace isp_case
