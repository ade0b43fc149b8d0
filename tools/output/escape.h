/* The one escaper per output language: markup (HTML pages, SVG, JUnit XML) and text for
 * terminals. Strings that come from files (keys, values, paths, dump manifests) go through them
 * before they reach a reader, so that no file can write markup or rewrite a terminal's lines. */
#ifndef ISP_CASE_OUTPUT_ESCAPE_H
#define ISP_CASE_OUTPUT_ESCAPE_H

#include <stddef.h>

#include <string>

namespace isp_case {

/* The length of the well-formed UTF-8 sequence starting at text[i]: 1 for ASCII, 0 when the
 * bytes there start no well-formed sequence (overlong forms and surrogates included). */
size_t utf8_length(const std::string &text, size_t i);

/* The text with every byte that does not start a well-formed UTF-8 sequence replaced by U+FFFD,
 * so that every JSON and XML reader accepts it. */
std::string utf8_clean(const std::string &text);

/* Where markup text goes: element content, or an attribute value between double quotes. */
enum class markup_context { text, attribute };

/* Text for HTML and XML alike: & < > always, " and ' in attributes, where tab, line feed and
 * carriage return are written as character references too (an XML reader would turn them into
 * spaces). Neither language can carry the other control characters, not even as references:
 * they are shown as \xNN, as invalid UTF-8 is. */
std::string markup_escape(const std::string &text, markup_context where = markup_context::text);

/* Text for a terminal: control characters (ESC, NUL, line breaks, C1 controls, DEL) and the
 * bidirectional overrides shown as \xNN, \n, \t, \r or \uNNNN, invalid UTF-8 as \xNN per byte;
 * everything else, backslashes included, as written. */
std::string terminal_text(const std::string &text);

}  // namespace isp_case

#endif
