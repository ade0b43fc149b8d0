/* The tool's one JSON writer: picojson serialises every key and value; json_fields only keeps
 * an object's members in the order they were added, where the documented outputs (replay's JSON
 * lines, batch's document) give an order that is not picojson's alphabetical one. */
#ifndef ISP_CASE_OUTPUT_JSON_H
#define ISP_CASE_OUTPUT_JSON_H

#include <stddef.h>

#include <string>
#include <utility>
#include <vector>

#include <picojson.h>

namespace isp_case {

/* A JSON string of any bytes: invalid UTF-8 replaced by U+FFFD (utf8_clean). */
picojson::value json_text(const std::string &text);
/* A number; null when it is not finite, which picojson refuses to hold. */
picojson::value json_number(double value);
/* Strings as one array of json_text. */
picojson::value json_texts(const std::vector<std::string> &texts);

/* One JSON object written on one line with its members in the order added:
 * {"type":"step","step":"setup",...}. */
class json_fields {
  public:
    json_fields &add(const std::string &key, const picojson::value &value);
    json_fields &add(const std::string &key, const json_fields &object);
    json_fields &add(const std::string &key, const std::vector<json_fields> &objects);
    json_fields &add(const std::string &key, const std::string &text) {
        return add(key, json_text(text));
    }
    json_fields &add(const std::string &key, const char *text) { return add(key, json_text(text)); }
    json_fields &add(const std::string &key, bool value) {
        return add(key, picojson::value(value));
    }
    json_fields &add(const std::string &key, int value) { return add(key, json_number(value)); }
    json_fields &add(const std::string &key, size_t value) {
        return add(key, json_number(double(value)));
    }
    /* the shortest text that reads back as the same number ("0.28", where picojson would write
     * 0.28000000000000003); null when not finite */
    json_fields &add(const std::string &key, double value);
    json_fields &add_null(const std::string &key) { return add(key, picojson::value()); }

    std::string serialize() const;

  private:
    /* each key and value already serialised by picojson */
    std::vector<std::pair<std::string, std::string>> members_;
};

}  // namespace isp_case

#endif
