/* Ordered JSON objects over picojson's serialiser. */
#include "tools/output/json.h"

#include <cmath>

#include <fmt/format.h>

#include "tools/output/escape.h"

namespace isp_case {

picojson::value json_text(const std::string &text) {
    return picojson::value(utf8_clean(text));
}

picojson::value json_number(double value) {
    return std::isfinite(value) ? picojson::value(value) : picojson::value();
}

picojson::value json_texts(const std::vector<std::string> &texts) {
    picojson::array items;
    items.reserve(texts.size());
    for (const std::string &t : texts) items.push_back(json_text(t));
    return picojson::value(items);
}

json_fields &json_fields::add(const std::string &key, const picojson::value &value) {
    members_.emplace_back(json_text(key).serialize(), value.serialize());
    return *this;
}

json_fields &json_fields::add(const std::string &key, double value) {
    if (!std::isfinite(value)) return add_null(key);
    members_.emplace_back(json_text(key).serialize(), fmt::format("{}", value));
    return *this;
}

json_fields &json_fields::add(const std::string &key, const json_fields &object) {
    members_.emplace_back(json_text(key).serialize(), object.serialize());
    return *this;
}

json_fields &json_fields::add(const std::string &key, const std::vector<json_fields> &objects) {
    std::string items = "[";
    for (size_t i = 0; i < objects.size(); ++i) items += (i ? "," : "") + objects[i].serialize();
    members_.emplace_back(json_text(key).serialize(), items + "]");
    return *this;
}

std::string json_fields::serialize() const {
    std::string out = "{";
    for (size_t i = 0; i < members_.size(); ++i)
        out += (i ? "," : "") + members_[i].first + ":" + members_[i].second;
    return out + "}";
}

}  // namespace isp_case
