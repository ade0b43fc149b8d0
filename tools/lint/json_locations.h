/* A register file parsed exactly as the library parses it, with where each value was written:
 * picojson's own parser runs with a parse context that builds the same value and, beside it, a
 * tree of lines and columns, and notes every key that an object repeats (picojson keeps the last
 * value of a repeated key without a word). */
#ifndef ISP_CASE_JSON_LOCATIONS_H
#define ISP_CASE_JSON_LOCATIONS_H

#include <map>
#include <string>
#include <vector>

#include <picojson.h>

namespace isp_case {

struct json_place {
    int line = 0, column = 0; /* 1-based, columns in bytes */
};

/* One value of a document and where it was written; members and items mirror the value's. */
struct located_value {
    json_place at;     /* first character of the value */
    json_place key_at; /* opening quote of its key, for members of an object */
    std::string text;  /* a number, string, boolean or null as written */
    std::map<std::string, located_value> members;
    std::vector<located_value> items;
};

struct repeated_key {
    std::string key;
    std::vector<std::string> path; /* keys (and "[index]") of the object holding it */
    json_place first, kept;        /* the key's first occurrence and the one picojson keeps */
    std::string first_text, kept_text;
};

struct located_document {
    picojson::value root; /* what picojson::parse gives for the same text */
    located_value where;
    std::vector<repeated_key> repeated;
    std::string error;   /* the syntax error, in one short line; empty when the text parsed */
    json_place error_at; /* where it is; line 0 when picojson does not say */
    json_place trailing; /* text after the root value, which picojson ignores; line 0: none */
};

/* Parses the first JSON value of text. Like picojson::parse it raises std::overflow_error for a
 * number too large for a double. A syntax error says where (line and column) with at most a
 * few bytes of the text, escaped, rather than picojson's rest of the line; nesting past
 * picojson's depth limit is named as such. */
located_document parse_located(const std::string &text);

/* "the string \"12\"", "null", "a boolean", "an object", "an array", "the number 5". */
std::string describe_value(const picojson::value &value, const located_value &where);

}  // namespace isp_case

#endif
