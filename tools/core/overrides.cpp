/* Overrides: parsed, resolved through the register map, written into copies of register files. */
#include "tools/core/overrides.h"

#include <stdlib.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <stdexcept>

#include <fmt/format.h>

#include "convert/common/fixed_format.h"
#include "tools/core/closest_name.h"
#include "tools/core/file_probe.h"
#include "tools/lint/json_locations.h"
#include "tools/output/files.h"
#include "tools/output/json.h"

namespace isp_case {
namespace {

namespace fs = std::filesystem;

/* Digits only, at most nine of them; -1 otherwise. */
int small_number(const std::string &text) {
    if (text.empty() || text.size() > 9) return -1;
    for (char c : text)
        if (c < '0' || c > '9') return -1;
    return std::stoi(text);
}

/* "f3", "f3-5" */
bool parse_frames(const std::string &text, int &first, int &last) {
    const size_t dash = text.find('-');
    first             = small_number(text.substr(1, dash == std::string::npos ? dash : dash - 1));
    last              = dash == std::string::npos ? first : small_number(text.substr(dash + 1));
    return first >= 0 && last >= first;
}

std::string format_name(const regmap_field &f) {
    return f.row->format;
}

/* Real values print shortest, as the C model's files write them: 1023.99609375, 1.5, -2. */
std::string real_text(double value) {
    return fmt::format("{}", value);
}

std::string range_problem(const std::string &given, const regmap_field &f, bool raw) {
    const field_range r = range_of(f);
    if (raw)
        return fmt::format("raw {} is out of range for {} ({} to {})", given, format_name(f), r.min,
                           r.max);
    return fmt::format("{} is out of range for {} ({} to {})", given, format_name(f),
                       real_text(double(r.min) * r.step), real_text(double(r.max) * r.step));
}

/* The value's text into the integer the register file holds: raw:N as it is, a real value
 * scaled by the format's fraction bits and rounded to the nearest integer. */
std::string encode_value(const std::string &text, const regmap_field &f, int64_t &raw,
                         double &value) {
    const field_range r      = range_of(f);
    const bool is_raw        = text.rfind("raw:", 0) == 0;
    const std::string number = is_raw ? text.substr(4) : text;
    if (number.empty()) return "no value after \"=\"";
    char *end = nullptr;
    errno     = 0;
    if (is_raw) {
        const long long n = strtoll(number.c_str(), &end, 10);
        if (*end || errno) return fmt::format("raw:{} is not an integer", number);
        if (n < r.min || n > r.max) return range_problem(number, f, true);
        raw = n;
    } else {
        const double real = strtod(number.c_str(), &end);
        if (*end || !std::isfinite(real))
            return fmt::format("\"{}\" is not a number (raw:N gives the register file's integer)",
                               number);
        const double scaled = std::round(real / r.step);
        if (scaled < double(r.min) || scaled > double(r.max))
            return range_problem(number, f, false);
        raw = int64_t(scaled);
    }
    /* the code the converter makes of the integer, decoded as the C model reads it back; a
     * table's raw numbers go to the hardware as they are */
    const isp::fixed_format &format = f.row->fixed;
    value                           = f.raw_number() ? double(raw)
                                                     : isp::decode(int32_t(isp::encode(int32_t(raw), format)), format);
    return "";
}

const std::vector<regmap_field> &every_field() {
    static const std::vector<regmap_field> all = all_fields();
    return all;
}

std::string resolve_register(const std::string &path, const regmap_field *&field) {
    std::string not_found;
    const std::vector<where_answer> found = path.rfind("isp_", 0) == 0
                                                ? where(every_field(), path, not_found)
                                                : std::vector<where_answer>();
    if (!found.empty()) {
        field = found.front().field;
        return "";
    }
    std::vector<std::string> paths;
    for (const regmap_field &f : every_field()) paths.push_back(f.path);
    const std::string near = closest_name(path, paths);
    if (!near.empty())
        return fmt::format("unknown register \"{}\"; did you mean \"{}\"?", path, near);
    return fmt::format("unknown register \"{}\" (isp-case regmap BLOCK lists a block's registers)",
                       path);
}

/* The value's place in a located register file, following the row's keys; null when the file
 * does not hold it as a number. */
const located_value *place_of(const located_document &doc, const regmap_field &f) {
    auto member = [](const located_value *v, std::string_view key) -> const located_value * {
        if (!v) return nullptr;
        auto it = v->members.find(std::string(key));
        return it == v->members.end() ? nullptr : &it->second;
    };
    auto item = [](const located_value *v, uint32_t index) -> const located_value * {
        return v && index < v->items.size() ? &v->items[index] : nullptr;
    };
    const isp::register_keys &k = f.row->keys;
    const located_value *at     = member(&doc.where, f.map->top_key);
    if (f.raw_number()) {
        if (!k.reg.empty()) at = member(at, k.reg);
        at = item(member(at, k.field), f.index);
    } else {
        if (!k.array.empty()) at = item(member(at, k.array), f.index);
        if (!k.reg.empty()) at = member(at, k.reg);
        at = member(at, k.field);
    }
    if (!at || at->text.empty() || !(at->text[0] == '-' || isdigit((unsigned char)at->text[0])))
        return nullptr;
    return at;
}

size_t offset_of(const std::string &text, const json_place &at) {
    size_t offset = 0;
    for (int line = 1; line < at.line; ++line) offset = text.find('\n', offset) + 1;
    return offset + size_t(at.column - 1);
}

/* The register files of the field's block in a frame directory: those its modules read. */
std::vector<std::string> block_files(const std::string &case_path, const case_contents &contents,
                                     const regmap_field &f, int frame, int partition) {
    std::vector<std::string> files;
    for (const module_info *m : pipeline_order()) {
        if (std::strcmp(m->block, f.map->block) != 0 || file_kind_of(*m) == file_kind::pattern)
            continue;
        const int channels = file_kind_of(*m) == file_kind::per_channel ? max_channels : 1;
        for (int p = 0; p < contents.partitions; ++p)
            for (int c = 0; c < channels; ++c) {
                const std::string file = relative_file(*m, frame, p, c);
                if ((partition < 0 || p == partition) &&
                    std::find(files.begin(), files.end(), file) == files.end() &&
                    fs::is_regular_file(join_path(case_path, file)))
                    files.push_back(file);
            }
    }
    return files;
}

std::string apply_one(const std::string &case_path, const case_contents &contents,
                      const value_override &o, case_edit &edit) {
    const int first = o.first_frame < 0 ? 0 : o.first_frame;
    const int last  = o.first_frame < 0 ? contents.frames - 1 : o.last_frame;
    if (last >= contents.frames)
        return fmt::format("the case has no frame directory f{} (it has f0 to f{})", last,
                           contents.frames - 1);
    if (o.partition >= contents.partitions)
        return fmt::format("the case has no partition {} (its files cover {})", o.partition,
                           contents.partitions);
    applied_override applied{o.text, o.value, o.raw, 0};
    for (int frame = first; frame <= last; ++frame)
        for (const std::string &file :
             block_files(case_path, contents, *o.field, frame, o.partition)) {
            auto it = edit.changed.find(file);
            std::string text;
            if (it != edit.changed.end())
                text = it->second;
            else if (const file_read r = read_regular_file(join_path(case_path, file),
                                                           max_register_file_bytes, text);
                     !r.problem.empty())
                return file + ": cannot be read: " + r.problem;
            /* a file that does not parse is left for the lint to report */
            located_document doc;
            try {
                doc = parse_located(text);
            } catch (const std::overflow_error &) {
                continue;
            }
            const located_value *at = doc.error.empty() ? place_of(doc, *o.field) : nullptr;
            if (!at) continue;
            text.replace(offset_of(text, at->at), at->text.size(), std::to_string(o.raw));
            edit.changed[file] = text;
            ++applied.files;
        }
    if (applied.files == 0)
        return fmt::format("no register file of the selected frames and partitions holds {}",
                           o.field->path);
    edit.applied.push_back(applied);
    return "";
}

bool link_or_copy(const fs::path &from, const fs::path &to, bool copies, std::error_code &error) {
    fs::create_hard_link(from, to, error);
    if (!error) return true;
    error.clear();
    if (copies)
        fs::copy_file(from, to, error);
    else
        fs::create_symlink(fs::absolute(from), to, error);
    return !error;
}

}  // namespace

std::string parse_override(const std::string &text, value_override &out) {
    out              = value_override();
    out.text         = text;
    std::string rest = text;
    if (rest.size() > 1 && rest[0] == 'f' && isdigit((unsigned char)rest[1])) {
        const size_t colon = rest.find(':');
        if (colon == std::string::npos ||
            !parse_frames(rest.substr(0, colon), out.first_frame, out.last_frame))
            return "a frame selector is fN: or fA-B: with A <= B";
        rest = rest.substr(colon + 1);
    }
    if (rest.size() > 1 && rest[0] == 'p' && isdigit((unsigned char)rest[1])) {
        const size_t colon = rest.find(':');
        out.partition = colon == std::string::npos ? -1 : small_number(rest.substr(1, colon - 1));
        if (out.partition < 0 || out.partition > 255)
            return "a partition selector is pN: with N from 0 to 255";
        rest = rest.substr(colon + 1);
    }
    const size_t equals = rest.find('=');
    if (equals == std::string::npos)
        return "expected [fFRAMES:][pN:]REGISTER.FIELD=VALUE (VALUE a real value or raw:N)";
    const std::string problem = resolve_register(rest.substr(0, equals), out.field);
    if (!problem.empty()) return problem;
    return encode_value(rest.substr(equals + 1), *out.field, out.raw, out.value);
}

std::string parse_sweep(const std::string &text, std::vector<value_override> &out) {
    out.clear();
    const size_t equals = text.find('=');
    std::vector<std::string> parts;
    if (equals != std::string::npos) {
        std::stringstream rest(text.substr(equals + 1));
        for (std::string part; std::getline(rest, part, ':');) parts.push_back(part);
    }
    char *end_start = nullptr, *end_stop = nullptr;
    const double start = parts.size() == 3 ? strtod(parts[0].c_str(), &end_start) : 0;
    const double stop  = parts.size() == 3 ? strtod(parts[1].c_str(), &end_stop) : 0;
    const int count    = parts.size() == 3 ? small_number(parts[2]) : -1;
    if (count < 1 || *end_start || *end_stop || parts[0].empty() || parts[1].empty())
        return "expected REGISTER.FIELD=START:STOP:COUNT (COUNT 1 or more)";
    const std::string path = text.substr(0, equals);
    for (int i = 0; i < count; ++i) {
        const double v = count == 1 ? start : start + (stop - start) * i / (count - 1);
        value_override o;
        const std::string problem = parse_override(path + "=" + real_text(v), o);
        if (!problem.empty()) return problem;
        for (const value_override &before : out)
            if (before.raw == o.raw)
                return fmt::format(
                    "{} and {} are the same value in {} (raw {}): choose fewer "
                    "values or a wider range",
                    real_text(before.value), real_text(v), format_name(*o.field), o.raw);
        out.push_back(o);
    }
    return "";
}

std::string plan_edit(const std::string &case_path, const std::vector<value_override> &overrides,
                      case_edit &edit) {
    const case_contents contents = discover(case_path);
    for (const value_override &o : overrides) {
        const std::string problem = apply_one(case_path, contents, o, edit);
        if (!problem.empty()) return "--set " + o.text + ": " + problem;
    }
    return "";
}

std::string write_case_copy(const std::string &case_path, const std::string &dir,
                            const case_edit &edit, bool copies) {
    std::error_code error;
    /* a frame directory or file may be a symbolic link: the copy holds what it points to */
    for (auto it = fs::recursive_directory_iterator(
             case_path, fs::directory_options::follow_directory_symlink, error);
         !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
        const fs::path relative = it->path().lexically_relative(case_path);
        const fs::path target   = fs::path(dir) / relative;
        if (it->is_directory(error)) {
            fs::create_directory(target, error);
        } else if (!edit.changed.count(relative.string())) {
            std::error_code dangling;
            const fs::path source = fs::canonical(it->path(), dangling);
            link_or_copy(dangling ? it->path() : source, target, copies, error);
        } else {
            std::string problem;
            if (!write_text_file(target.string(), edit.changed.at(relative.string()), problem))
                return target.string() + ": " + problem;
        }
        if (error) return target.string() + ": " + error.message();
    }
    return error ? case_path + ": " + error.message() : "";
}

case_overlay::~case_overlay() {
    std::error_code error;
    if (!dir_.empty()) fs::remove_all(dir_, error);
}

std::string case_overlay::apply(const std::vector<std::string> &sets, run_settings &settings) {
    if (sets.empty()) return "";
    std::vector<value_override> overrides(sets.size());
    for (size_t i = 0; i < sets.size(); ++i) {
        const std::string problem = parse_override(sets[i], overrides[i]);
        if (!problem.empty()) return "--set " + sets[i] + ": " + problem;
    }
    case_edit edit;
    std::string problem = plan_edit(settings.case_path, overrides, edit);
    if (!problem.empty()) return problem;
    const char *tmp     = getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/isp-case-set.XXXXXX";
    if (!mkdtemp(pattern.data()))
        return "cannot create an overlay: " + std::string(strerror(errno));
    dir_    = pattern;
    problem = write_case_copy(settings.case_path, dir_, edit, false);
    if (!problem.empty()) return "cannot build the overlay: " + problem;
    settings.files_at  = dir_;
    settings.overrides = edit.applied;
    return "";
}

std::string override_line(const applied_override &o) {
    return fmt::format("{} (value {}, raw {}) in {} file{}", o.set, real_text(o.value), o.raw,
                       o.files, o.files == 1 ? "" : "s");
}

picojson::value overrides_json(const std::vector<applied_override> &overrides) {
    picojson::array out;
    for (const applied_override &o : overrides) {
        picojson::object item;
        item["set"]   = json_text(o.set);
        item["value"] = json_number(o.value);
        item["raw"]   = json_number(double(o.raw));
        item["files"] = json_number(o.files);
        out.push_back(picojson::value(item));
    }
    return picojson::value(out);
}

}  // namespace isp_case
