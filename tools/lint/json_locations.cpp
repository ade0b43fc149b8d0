/* The located parse: a picojson parse context that mirrors the default one. */
#include "tools/lint/json_locations.h"

#include <algorithm>
#include <cstdio>

namespace isp_case {
namespace {

using text_iter = std::string::const_iterator;

/* What every context of one parse shares: the text, its line starts and the repeated keys. */
struct parse_state {
    const std::string &text;
    std::vector<size_t> line_starts;
    std::vector<std::string> path;
    std::vector<repeated_key> &repeated;
    size_t too_deep = std::string::npos; /* where the nesting passed picojson's limit */

    parse_state(const std::string &t, std::vector<repeated_key> &r) : text(t), repeated(r) {
        line_starts.push_back(0);
        for (size_t i = 0; i < text.size(); ++i)
            if (text[i] == '\n') line_starts.push_back(i + 1);
    }

    json_place place(size_t offset) const {
        const auto next   = std::upper_bound(line_starts.begin(), line_starts.end(), offset);
        const size_t line = size_t(next - line_starts.begin());
        return {int(line), int(offset - line_starts[line - 1] + 1)};
    }

    /* picojson skips these before a value */
    size_t skip_blanks(size_t at) const {
        while (at < text.size() &&
               (text[at] == ' ' || text[at] == '\t' || text[at] == '\n' || text[at] == '\r'))
            ++at;
        return at;
    }

    /* The opening quote of the key before the colon that ends just before `after_colon`. */
    size_t key_start(size_t after_colon) const {
        size_t at = after_colon - 1; /* the colon */
        while (at > 0 && text[at] != '"') --at;
        while (at > 0) {
            --at;
            if (text[at] != '"') continue;
            size_t slashes = 0;
            while (at > slashes && text[at - 1 - slashes] == '\\') ++slashes;
            if (slashes % 2 == 0) break;
        }
        return at;
    }

    std::string scalar_text(size_t begin, size_t end) const {
        if (begin >= text.size() || text[begin] == '{' || text[begin] == '[') return "";
        return text.substr(begin, end - begin);
    }
};

/* Builds the value as picojson's default_parse_context does, depth limit included, and the
 * located tree beside it. */
class located_context {
  public:
    located_context(picojson::value *out, located_value *where, parse_state &state,
                    size_t depths = picojson::DEFAULT_MAX_DEPTHS)
        : out_(out), where_(where), state_(state), depths_(depths) {}
    located_context(const located_context &)            = delete;
    located_context &operator=(const located_context &) = delete;

    bool set_null() {
        *out_ = picojson::value();
        return true;
    }
    bool set_bool(bool b) {
        *out_ = picojson::value(b);
        return true;
    }
    bool set_number(double f) {
        *out_ = picojson::value(f);
        return true;
    }
    bool parse_string(picojson::input<text_iter> &in) {
        *out_ = picojson::value(picojson::string_type, false);
        return picojson::_parse_string(out_->get<std::string>(), in);
    }
    bool parse_array_start() {
        if (depths_ == 0) return too_deep();
        --depths_;
        *out_ = picojson::value(picojson::array_type, false);
        where_->items.clear();
        return true;
    }
    bool parse_array_item(picojson::input<text_iter> &in, size_t index) {
        picojson::array &a = out_->get<picojson::array>();
        a.push_back(picojson::value());
        where_->items.emplace_back();
        state_.path.push_back("[" + std::to_string(index) + "]");
        const bool ok = parse_child(in, &a.back(), &where_->items.back());
        state_.path.pop_back();
        return ok;
    }
    bool parse_array_stop(size_t) {
        ++depths_;
        return true;
    }
    bool parse_object_start() {
        if (depths_ == 0) return too_deep();
        *out_ = picojson::value(picojson::object_type, false);
        where_->members.clear();
        return true;
    }
    bool parse_object_item(picojson::input<text_iter> &in, const std::string &key) {
        picojson::object &o     = out_->get<picojson::object>();
        const size_t after      = size_t(in.cur() - state_.text.begin());
        const json_place key_at = state_.place(state_.key_start(after));
        const auto earlier      = where_->members.find(key);
        repeated_key repeat;
        const bool repeats = earlier != where_->members.end();
        if (repeats) {
            repeat.key        = key;
            repeat.path       = state_.path;
            repeat.first      = earlier->second.key_at;
            repeat.first_text = earlier->second.text;
            repeat.kept       = key_at;
        }
        located_value &child = where_->members[key];
        child                = located_value();
        child.key_at         = key_at;
        state_.path.push_back(key);
        const bool ok = parse_child(in, &o[key], &child);
        state_.path.pop_back();
        if (ok && repeats) {
            repeat.kept_text = child.text;
            state_.repeated.push_back(repeat);
        }
        return ok;
    }
    bool parse_object_stop() {
        ++depths_;
        return true;
    }

  private:
    /* the opening bracket has just been read */
    bool too_deep() {
        if (state_.too_deep == std::string::npos && in_)
            state_.too_deep = size_t(in_->cur() - state_.text.begin()) - 1;
        return false;
    }

    bool parse_child(picojson::input<text_iter> &in, picojson::value *out, located_value *where) {
        const size_t begin = state_.skip_blanks(size_t(in.cur() - state_.text.begin()));
        where->at          = state_.place(begin);
        located_context child(out, where, state_, depths_);
        child.in_ = &in;
        if (!picojson::_parse(child, in)) return false;
        where->text = state_.scalar_text(begin, size_t(in.cur() - state_.text.begin()));
        return true;
    }

    picojson::value *out_;
    located_value *where_;
    parse_state &state_;
    size_t depths_;
    const picojson::input<text_iter> *in_ = nullptr; /* none for the root */
};

/* At most a few bytes of text, bytes outside printable ASCII written as \xNN. */
std::string excerpt(const std::string &bytes) {
    const size_t shown = 16;
    std::string out;
    for (size_t i = 0; i < bytes.size() && i < shown; ++i) {
        const unsigned char c = static_cast<unsigned char>(bytes[i]);
        if (c >= 0x20 && c < 0x7f && c != '\\') {
            out += char(c);
        } else {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02X", c);
            out += hex;
        }
    }
    return bytes.size() > shown ? out + "..." : out;
}

/* picojson's error ends with the rest of the line from where it stopped (control characters
 * left out), however long; parsing stopped after that line, so its start is found by walking
 * back over as many kept bytes. */
std::string short_error(const std::string &error, const std::string &text, size_t stop,
                        const parse_state &state, json_place &where) {
    if (state.too_deep != std::string::npos) {
        const json_place at = where = state.place(state.too_deep);
        return "nesting deeper than picojson's limit of " +
               std::to_string(picojson::DEFAULT_MAX_DEPTHS) + " levels at line " +
               std::to_string(at.line) + " column " + std::to_string(at.column);
    }
    const std::string marker = " near: ";
    const size_t at          = error.find(marker);
    if (at == std::string::npos) return error;
    const std::string rest = error.substr(at + marker.size());
    size_t from            = std::min(stop, text.size());
    if (from > 0 && text[from - 1] == '\n') --from;
    for (size_t kept = 0; from > 0 && kept < rest.size();)
        if (static_cast<unsigned char>(text[--from]) >= 0x20) ++kept;
    /* parsing that stopped at the end of the text took no newline: picojson's line is right */
    json_place place = state.place(from);
    int line         = 0;
    if (std::sscanf(error.c_str(), "syntax error at line %d", &line) == 1 && line != place.line &&
        line > 0 && size_t(line) <= state.line_starts.size())
        place = {line, int(std::min(stop, text.size()) - state.line_starts[size_t(line) - 1] + 1)};
    where = place;
    return "syntax error at line " + std::to_string(place.line) + " column " +
           std::to_string(place.column) + " near: " + excerpt(rest);
}

}  // namespace

located_document parse_located(const std::string &text) {
    located_document doc;
    parse_state state(text, doc.repeated);
    const size_t begin = state.skip_blanks(0);
    doc.where.at       = state.place(begin);
    located_context context(&doc.root, &doc.where, state);
    const text_iter end = picojson::_parse(context, text.begin(), text.end(), &doc.error);
    const size_t stop   = size_t(end - text.begin());
    if (!doc.error.empty()) {
        doc.error = short_error(doc.error, text, stop, state, doc.error_at);
        return doc;
    }
    doc.where.text     = state.scalar_text(begin, stop);
    const size_t after = state.skip_blanks(stop);
    if (after < text.size()) doc.trailing = state.place(after);
    return doc;
}

std::string describe_value(const picojson::value &value, const located_value &where) {
    if (value.is<picojson::null>()) return "null";
    if (value.is<bool>()) return "the boolean " + where.text;
    if (value.is<double>()) return "the number " + where.text;
    if (value.is<std::string>()) return "the string " + where.text;
    if (value.is<picojson::array>()) return "an array";
    return "an object";
}

}  // namespace isp_case
