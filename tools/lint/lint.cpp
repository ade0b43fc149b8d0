/* The case lint, driven by the library's register maps and the tool's module table. What reaches
 * the hardware is computed with the library's own encoding: saturate_to_int32 and sign_to_regval,
 * then the store into the member, then the bits the register keeps. */
#include "tools/lint/lint.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <stdexcept>

#include <fmt/core.h>

#include "convert/common/saturate.h"
#include "isp_json_utils.h"
#include "tools/core/closest_name.h"
#include "tools/core/converter_run.h"
#include "tools/core/file_probe.h"
#include "tools/core/stderr_stream.h"

namespace isp_case {
namespace {

using isp::field_row;
using isp::row_kind;

/* ---- formats and what the hardware keeps -------------------------------------------------- */

struct format_info {
    bool is_signed = false;
    int width      = 32; /* bits the register keeps: sign, integer and fraction bits, up to 32 */
};

/* The library reads the sign letter with its case bit cleared and every other character as
 * counts; the signed twin of a format encodes -1 as its sign bit and every bit below, which
 * gives the counts without a second parser. */
format_info format_of(const char *format) {
    format_info info;
    if (!format || !format[0]) return info;
    info.is_signed              = (format[0] & ~0x20) == 'S';
    const std::string as_signed = std::string("s") + (format + 1);
    const uint32_t ones         = sign_to_regval(-1, as_signed.c_str());
    int bits                    = 0;
    for (uint32_t v = ones; v != 0; v >>= 1) ++bits;
    info.width = ones == UINT32_MAX ? 32 : (info.is_signed ? bits : bits - 1);
    return info;
}

uint32_t low_bits(uint32_t code, int width) {
    return width >= 32 ? code : code & ((1u << width) - 1u);
}

/* The code as the member holds it: the store cuts it to the member's width. */
uint32_t stored(const isp::member_ref &member, uint32_t code) {
    if (member.elem_size == 0) return code;
    isp::member_ref at = member;
    at.offset          = 0;
    unsigned char scratch[8]{};
    isp::store_code(scratch, at, 0, code);
    return isp::load_code(scratch, at, 0);
}

int kept_width(const isp::member_ref &member, int width) {
    return member.elem_size == 0 ? width : std::min(width, int(member.elem_size) * 8);
}

int64_t signed_value(uint32_t code, int width) {
    if (width >= 32) return int32_t(code);
    const uint32_t sign = 1u << (width - 1);
    return (code & sign) ? int64_t(code) - (int64_t(1) << width) : int64_t(code);
}

std::string real_text(uint32_t code, const char *format) {
    return fmt::format("{} ({})", code, regval_to_float(int32_t(code), format));
}

/* One value's trip to the hardware: the causes of every change, the first one's kind. */
struct verdict {
    std::vector<finding_kind> kinds;
    std::vector<std::string> causes;
    uint32_t hardware = 0;
    void add(finding_kind kind, std::string cause) {
        kinds.push_back(kind);
        causes.push_back(std::move(cause));
    }
    finding_kind kind() const {
        for (finding_kind k : {finding_kind::saturated, finding_kind::sign_dropped,
                               finding_kind::too_wide, finding_kind::wrapped})
            if (std::find(kinds.begin(), kinds.end(), k) != kinds.end()) return k;
        return kinds.front();
    }
    std::string text() const {
        std::string joined;
        for (const std::string &c : causes) joined += (joined.empty() ? "" : ", ") + c;
        return joined;
    }
};

verdict judge_field(double value, const field_row &row) {
    verdict v;
    const format_info format = format_of(row.format);
    const int32_t integer    = isp::saturate_to_int32(value);
    if (value > 2147483647.0 || value < -2147483648.0)
        v.add(finding_kind::saturated,
              fmt::format("beyond the 32-bit range, it saturates to {}", integer));
    else if (value != double(integer))
        v.add(finding_kind::truncated,
              fmt::format("the fraction below one step is truncated to {}", integer));
    int64_t meant = integer;
    if (!format.is_signed && integer < 0) {
        meant = -int64_t(integer);
        v.add(finding_kind::sign_dropped, "the format is unsigned and the sign is dropped");
    }
    const int width = kept_width(row.member, format.width);
    v.hardware      = low_bits(stored(row.member, sign_to_regval(integer, row.format)), width);
    if (format.is_signed) {
        if (signed_value(v.hardware, width) != meant) {
            const int64_t top = width >= 32 ? INT32_MAX : (int64_t(1) << (width - 1)) - 1;
            v.add(finding_kind::wrapped,
                  fmt::format("beyond {} to {} of {}, the code wraps", -top - 1, top, row.format));
        }
    } else if (int64_t(v.hardware) != meant) {
        v.add(finding_kind::too_wide,
              fmt::format("wider than {} ({} bits), the register keeps the low {} bits", row.format,
                          format.width, width));
    }
    return v;
}

/* Raw numbers of curves and meshes are saturated into unsigned codes, stored into the member
 * and kept to the entry's width. */
/* A number written with a non-zero digit before its exponent that reads as 0 ("1e-400"). */
bool underflows(const std::string &written, double value) {
    if (value != 0) return false;
    for (char c : written) {
        if (c == 'e' || c == 'E') break;
        if (c >= '1' && c <= '9') return true;
    }
    return false;
}

verdict judge_entry(double value, const field_row &row) {
    verdict v;
    const format_info format = format_of(row.format);
    const uint32_t code      = isp::saturate_to_uint32(value);
    if (value > 4294967295.0)
        v.add(finding_kind::saturated,
              fmt::format("beyond the 32-bit range, it saturates to {}", code));
    else if (value <= -1.0)
        v.add(finding_kind::sign_dropped, "negative, it reads as 0");
    else if (value != std::trunc(value))
        v.add(finding_kind::truncated,
              fmt::format("the fraction below one step is truncated to {}", code));
    const int width = kept_width(row.member, format.width);
    v.hardware      = low_bits(stored(row.member, code), width);
    if (v.hardware != code)
        v.add(finding_kind::too_wide,
              fmt::format("wider than its {}-bit entries, the register keeps the low {} bits",
                          width, width));
    return v;
}

/* ---- paths through a register file --------------------------------------------------------- */

struct path_step {
    std::string key; /* empty: an array index */
    size_t index = 0;
};

struct found {
    const picojson::value *value = nullptr;
    const located_value *where   = nullptr;
    finding_kind failure         = finding_kind::missing_field; /* when value is null */
    std::string why;
    json_place at;
};

void place(finding &f, const json_place &at) {
    f.line   = at.line;
    f.column = at.column;
}

/* "d_gain.val" into register and field */
void split_label(const std::string &label, finding &f) {
    const size_t dot = label.rfind('.');
    f.reg            = dot == std::string::npos ? label : label.substr(0, dot);
    f.field          = dot == std::string::npos ? "" : label.substr(dot + 1);
}

std::string quoted(const std::string &key) {
    return "\"" + key + "\"";
}

found look_up(const picojson::value &root, const located_value &root_where,
              const std::vector<path_step> &steps, bool number_leaf) {
    const picojson::value *value = &root;
    const located_value *where   = &root_where;
    std::string container        = "the root";
    found f;
    for (const path_step &step : steps) {
        if (!step.key.empty()) {
            if (!value->is<picojson::object>()) {
                f.failure = finding_kind::type;
                f.why     = fmt::format("{} is {}, not an object", container,
                                        describe_value(*value, *where));
                f.at      = where->at;
                return f;
            }
            const picojson::object &o = value->get<picojson::object>();
            const auto it             = o.find(step.key);
            if (it == o.end()) {
                f.why = fmt::format("no {} in {}", quoted(step.key), container);
                f.at  = where->at;
                return f;
            }
            value     = &it->second;
            where     = &where->members.at(step.key);
            container = quoted(step.key);
            continue;
        }
        if (!value->is<picojson::array>()) {
            f.failure = finding_kind::type;
            f.why =
                fmt::format("{} is {}, not an array", container, describe_value(*value, *where));
            f.at = where->at;
            return f;
        }
        const picojson::array &a = value->get<picojson::array>();
        if (step.index >= a.size()) {
            f.why = fmt::format("{} has {} element{}, none at index {}", container, a.size(),
                                a.size() == 1 ? "" : "s", step.index);
            f.at  = where->at;
            return f;
        }
        value     = &a[step.index];
        where     = &where->items[step.index];
        container = fmt::format("{}[{}]", container, step.index);
    }
    if (number_leaf && !value->is<double>()) {
        f.failure = finding_kind::type;
        f.why     = "expected a number, got " + describe_value(*value, *where);
        f.at      = where->at;
        return f;
    }
    f.value = value;
    f.where = where;
    f.at    = where->at;
    return f;
}

/* One field a row reads: its path, its name in reports and in the converters' messages. */
struct field_read {
    std::vector<path_step> steps;
    std::string label;   /* "grp0[3].lin_lut_x.low" */
    std::string message; /* "lin_lut_x.low", as the converter reports it */
    uint32_t element = 0;
};

/* The element of a per-partition read: whichever partition is converted. */
constexpr uint32_t per_partition_element = UINT32_MAX;

std::vector<field_read> reads_of(const isp::block_map &map, const field_row &row) {
    std::vector<field_read> reads;
    if (row.kind != row_kind::read && row.kind != row_kind::table) return reads;
    const std::string array(row.keys.array), reg(row.keys.reg), field(row.keys.field);
    const path_step top{map.top_key, 0};
    if (row.kind == row_kind::table) {
        std::vector<path_step> steps = {top};
        if (!reg.empty()) steps.push_back({reg});
        steps.push_back({field});
        const std::string name = reg.empty() ? field : reg + "." + field;
        reads.push_back({steps, name, name, row.element});
        return reads;
    }
    for (uint32_t i = row.keys.first; i < row.keys.first + row.keys.count; ++i) {
        std::vector<path_step> steps = {top};
        std::string label;
        if (!array.empty()) {
            steps.push_back({array});
            steps.push_back({"", i});
            label = fmt::format("{}[{}].", array, i);
        }
        if (!reg.empty()) {
            steps.push_back({reg});
            label += reg + ".";
        }
        steps.push_back({field});
        reads.push_back({steps, label + field, (reg.empty() ? array : reg) + "." + field,
                         row.part_step ? per_partition_element : isp::element_of(row, i, 0)});
    }
    return reads;
}

/* ---- keys the block does not have ---------------------------------------------------------- */

/* The keys the rows read, as a tree; "[]" stands for the elements of an array. */
struct key_node {
    std::map<std::string, key_node> children;
    uint32_t elements = 0; /* arrays: how many the rows read */
};

void add_path(key_node &root, const std::vector<path_step> &steps, uint32_t elements) {
    key_node *node = &root;
    for (const path_step &step : steps) {
        if (!step.key.empty()) {
            node = &node->children[step.key];
            continue;
        }
        node           = &node->children["[]"];
        node->elements = std::max(node->elements, uint32_t(step.index + 1));
    }
    if (elements) node->children["[]"].elements = std::max(node->children["[]"].elements, elements);
}

key_node known_keys(const isp::block_map &map) {
    key_node root;
    for (size_t i = 0; i < map.row_count; ++i) {
        const field_row &row = map.rows[i];
        for (const field_read &read : reads_of(map, row))
            add_path(root, read.steps,
                     row.kind == row_kind::table ? row.keys.first + row.keys.count : 0);
    }
    return root;
}

/* The closest known key within two edits, or "". */
std::string near_miss(const std::string &key, const key_node &node) {
    std::vector<std::string> names;
    for (const auto &[name, child] : node.children)
        if (name != "[]") names.push_back(name);
    return closest_name(key, names);
}

struct key_walk {
    const std::string &file;
    std::vector<finding> &out;

    void object(const picojson::value &value, const located_value &where, const key_node &node,
                const std::string &container, int depth) {
        if (value.is<picojson::array>()) {
            const auto items = node.children.find("[]");
            if (items == node.children.end()) return;
            const picojson::array &a = value.get<picojson::array>();
            for (size_t i = 0; i < a.size() && i < items->second.elements; ++i)
                object(a[i], where.items[i], items->second, fmt::format("{}[{}]", container, i),
                       depth);
            if (a.size() > items->second.elements) {
                finding f;
                f.level = severity::warning;
                f.kind  = finding_kind::unknown_key;
                f.file  = file;
                place(f, where.items[items->second.elements].at);
                f.reg     = container;
                f.message = fmt::format(
                    "{} holds {} elements and the converters read {}: the last {} are ignored",
                    quoted(container), a.size(), items->second.elements,
                    a.size() - items->second.elements);
                out.push_back(f);
            }
            return;
        }
        if (!value.is<picojson::object>() || node.children.empty() || node.children.count("[]"))
            return;
        for (const auto &[key, member] : value.get<picojson::object>()) {
            const located_value &member_where = where.members.at(key);
            const auto known                  = node.children.find(key);
            if (known != node.children.end()) {
                object(member, member_where, known->second, key, depth + 1);
                continue;
            }
            const char *what = depth == 0                                       ? "top-level key"
                               : depth == 1                                     ? "register"
                               : node.children.begin()->second.children.empty() ? "field"
                                                                                : "register";
            finding f;
            f.level = severity::warning;
            f.kind  = finding_kind::unknown_key;
            f.file  = file;
            place(f, member_where.key_at);
            f.reg                    = depth <= 1 ? key : container;
            f.field                  = depth <= 1 ? "" : key;
            const std::string near   = near_miss(key, node);
            const std::string inside = depth == 0 ? "" : " in " + quoted(container);
            f.message  = fmt::format("unknown {} {}{}: ignored{}", what, quoted(key), inside,
                                    near.empty() ? "" : "; did you mean " + quoted(near) + "?");
            f.probably = near;
            out.push_back(f);
        }
    }
};

std::string names_of(const std::vector<const module_info *> &modules) {
    std::string names;
    for (const module_info *m : modules)
        names += (names.empty() ? "" : ", ") + std::string(m->name);
    return names;
}

finding make(severity level, finding_kind kind, const std::string &file, std::string message) {
    finding f;
    f.level   = level;
    f.kind    = kind;
    f.file    = file;
    f.message = std::move(message);
    return f;
}

/* ---- the run's settings and the case's frames ---------------------------------------------- */

void lint_settings(const run_settings &settings, const case_contents &contents,
                   std::vector<finding> &out) {
    std::vector<const module_info *> channelled, grid_checkers;
    for (const module_info *m : settings.modules) {
        if (file_kind_of(*m) == file_kind::per_channel) channelled.push_back(m);
        if (checks_grid(*m)) grid_checkers.push_back(m);
    }
    const std::string frame_path = join_path(settings.case_path, "cfgs/f");
    if (contents.frames == 0)
        out.push_back(make(severity::error, finding_kind::frame_directory, frame_path + "0",
                           "missing frame directory: init reads frame 0 from it"));
    if (!contents.unreached.empty()) {
        std::string never_read;
        for (int frame : contents.unreached)
            never_read += fmt::format("{}cfgs/f{}", never_read.empty() ? "" : ", ", frame);
        out.push_back(make(
            severity::warning, finding_kind::frame_directory,
            frame_path + std::to_string(contents.frames),
            "missing frame directory: the frames after it are never read (" + never_read + ")"));
    }
    for (const std::string &name : contents.misnamed)
        out.push_back(make(severity::warning, finding_kind::frame_directory,
                           join_path(settings.case_path, "cfgs/" + name),
                           fmt::format("frame directory {} is never read: the library reads "
                                       "frame directories named f0, f1, ... without leading zeros",
                                       name)));
    if (contents.frames > 0 && settings.frames > contents.frames)
        out.push_back(make(
            severity::warning, finding_kind::frames, "",
            fmt::format("{} frames asked for and the case holds {} (cfgs/f0 to cfgs/f{}): frames "
                        "{} to {} replay cfgs/f{} again",
                        settings.frames, contents.frames, contents.frames - 1, contents.frames,
                        settings.frames, contents.frames - 1)));

    const int partitions = settings.part_h * settings.part_v;
    if (!grid_checkers.empty() && partitions == 0)
        out.push_back(make(severity::error, finding_kind::grid, "",
                           fmt::format("grid {}x{} is empty: {} report \"partition err!!!.\"",
                                       settings.part_h, settings.part_v, names_of(grid_checkers))));
    if (partitions > 256)
        out.push_back(
            make(severity::warning, finding_kind::grid, "",
                 fmt::format("grid {}x{} has {} partitions and the partition index is 8 bits wide: "
                             "partitions 256 to {} read the files of p0 to p{} again{}",
                             settings.part_h, settings.part_v, partitions, partitions - 1,
                             std::min(partitions - 257, 255),
                             partitions > 512
                                 ? fmt::format(", up to {} times each", (partitions - 1) / 256)
                                 : "")));

    if (!channelled.empty() && (settings.channels < 0 || settings.channels > max_channels))
        out.push_back(make(severity::error, finding_kind::channels, "",
                           fmt::format("channel count {}: {} accept 0 to {} channels",
                                       settings.channels, names_of(channelled), max_channels)));
    if (!channelled.empty() && settings.channels == 0)
        out.push_back(make(severity::warning, finding_kind::channels, "",
                           fmt::format("channel count 0: {} read no file and push nothing",
                                       names_of(channelled))));

    /* A channelled module shares its block's wrapper slot with a single-channel one (blc and
     * lin): whichever initialises first owns the slot, whichever de-initialises first empties
     * it. */
    for (size_t i = 0; i < settings.modules.size(); ++i) {
        const module_info &a = *settings.modules[i];
        for (size_t j = i + 1; j < settings.modules.size(); ++j) {
            const module_info &b = *settings.modules[j];
            if (std::string(a.block) != b.block || (file_kind_of(a) == file_kind::per_channel) ==
                                                       (file_kind_of(b) == file_kind::per_channel))
                continue;
            if (file_kind_of(a) == file_kind::per_channel && settings.channels < 1)
                out.push_back(make(
                    severity::error, finding_kind::module_order, "",
                    fmt::format("channel count {}: {} creates no wrapper, and its deinit, which "
                                "runs before {}'s, empties the block's wrapper slot: {}'s "
                                "wrapper is never destroyed",
                                settings.channels, a.name, b.name, b.name)));
            if (file_kind_of(b) == file_kind::per_channel && settings.channels > 1 &&
                settings.channels <= max_channels)
                out.push_back(make(
                    severity::error, finding_kind::module_order, "",
                    fmt::format("{} runs before {} with {} channels: {} takes {}'s context (one "
                                "wrapper, then its frame index and flag) as its channel "
                                "wrappers, and the wrapper calls of {} fail",
                                a.name, b.name, settings.channels, b.name, a.name,
                                settings.channels == 2
                                    ? std::string("channel 1")
                                    : fmt::format("channels 1 to {}", settings.channels - 1))));
        }
    }
}

finding_kind kind_of(file_state state) {
    switch (state) {
        case file_state::missing:
            return finding_kind::missing_file;
        case file_state::byte_order_mark:
            return finding_kind::byte_order_mark;
        case file_state::syntax:
            return finding_kind::syntax;
        case file_state::non_finite:
            return finding_kind::non_finite;
        case file_state::not_object:
            return finding_kind::not_object;
        case file_state::ok:
        case file_state::unreadable:
            break;
    }
    return finding_kind::unreadable_file;
}

/* The values a load's partitions gave one member, by partition. */
struct load_values {
    std::string block;
    int frame = -1, channel = -1; /* as stamped on the load's findings */
    std::map<std::string, std::vector<std::pair<int, single_value>>> members;
    std::map<int, std::string> files;
};

class case_lint {
  public:
    case_lint(const run_settings &settings, lint_result &result)
        : settings_(settings), result_(result) {}

    void read(const planned_file &planned) {
        const std::string path    = join_path(settings_.case_path, planned.relative);
        const std::string read_at = join_path(settings_.read_root(), planned.relative);
        const std::string readers = names_of(planned.readers);
        ++result_.files_read;
        if (path.size() > max_library_path) {
            push(make(severity::error, finding_kind::path_too_long, path,
                      fmt::format("the path has {} characters and the library cuts every path "
                                  "at {}: it would not find the file",
                                  path.size(), max_library_path)),
                 readers);
            return;
        }
        const probed_file probe     = probe_file(read_at);
        const located_document &doc = probe.doc;
        switch (probe.state) {
            case file_state::ok:
            case file_state::not_object: /* its repeated keys first, then where it starts */
                break;
            case file_state::missing:
            case file_state::unreadable:
            case file_state::byte_order_mark:
            case file_state::syntax:
            case file_state::non_finite: {
                finding f = make(severity::error, kind_of(probe.state), path, describe(probe));
                if (probe.state == file_state::byte_order_mark) f.line = f.column = 1;
                if (probe.state == file_state::syntax) place(f, doc.error_at);
                push(f, readers);
                return;
            }
        }
        repeated(path, doc, readers);
        if (doc.trailing.line > 0) {
            finding f = make(severity::warning, finding_kind::trailing_content, path,
                             "content after the root value: picojson reads the first value and "
                             "the library ignores the rest without a word");
            place(f, doc.trailing);
            push(f, readers);
        }
        if (!doc.root.is<picojson::object>()) {
            finding f = make(severity::error, finding_kind::not_object, path, describe(probe));
            place(f, doc.where.at);
            push(f, readers);
            return;
        }

        const module_info &first  = *planned.readers.front();
        const isp::block_map *map = isp::find_block_map(first.block);
        std::vector<std::string> unreadable, raising;
        if (map && map->row_count > 0) {
            single_values singles;
            const group_readers run_by = [&](const char *group) {
                std::vector<const module_info *> modules;
                for (const module_info *m : planned.readers)
                    for (const converter_info &c : m->converters)
                        if (c.group && std::string(c.group->name) == group) modules.push_back(m);
                return names_of(modules);
            };
            for (finding &f : lint_rows(*map, doc, path, run_by, &singles, &unreadable, &raising))
                result_.findings.push_back(std::move(f));
            remember(planned, path, singles);
        }
        converters(planned, path, doc.root.get<picojson::object>(), unreadable, raising);
    }

    /* The files each load reads, so that a load is judged and dropped once its last file is
     * read: the lint holds the values of the loads under way, not of every frame. */
    void expect(const std::vector<planned_file> &plan) {
        for (const planned_file &planned : plan) ++files_left_[load_key(planned)];
    }

    void file(const planned_file &planned) {
        const size_t first = result_.findings.size();
        read(planned);
        /* the file's place, for grouping, and its readers on what the key walk found */
        for (size_t i = first; i < result_.findings.size(); ++i) {
            finding &f = result_.findings[i];
            stamp(f, planned);
            if (f.module.empty()) f.module = names_of(planned.readers);
        }
        const std::string key = load_key(planned);
        if (--files_left_[key] > 0) return;
        files_left_.erase(key);
        const auto it = loads_.find(key);
        if (it == loads_.end()) return;
        disagreements(it->second, judged_[key]);
        loads_.erase(it);
    }

    /* The loads' disagreements, in the order of their keys as they always were listed. */
    void disagreements() {
        for (const auto &[key, values] : loads_) disagreements(values, judged_[key]);
        for (auto &[key, found] : judged_)
            for (finding &f : found) result_.findings.push_back(std::move(f));
    }

  private:
    static void stamp(finding &f, const planned_file &planned) {
        f.frame     = planned.frame;
        f.partition = planned.partition;
        f.channel =
            file_kind_of(*planned.readers.front()) == file_kind::per_channel ? planned.channel : -1;
    }

    static std::string load_key(const planned_file &planned) {
        return fmt::format("{} f{} c{}", planned.readers.front()->block, planned.frame,
                           planned.channel);
    }

    /* Members that are not per partition, compared over a load's partitions: the finding is
     * on the first file that differs from the majority (from p0 when there is none), and names
     * the one whose value reaches the hardware; a value warning of a partition that does not
     * win says so instead of what it would give the hardware. */
    void disagreements(const load_values &values, std::vector<finding> &out) {
        const int partitions = settings_.part_h * settings_.part_v;
        if (partitions < 2) return;
        const int last = (partitions - 1) % 256;
        for (const auto &[member, by_partition] : values.members) {
            std::map<std::vector<uint32_t>, size_t> votes;
            for (const auto &[p, v] : by_partition) ++votes[v.codes];
            if (votes.size() < 2) continue;
            const std::vector<uint32_t> *usual = &by_partition.front().second.codes;
            for (const auto &[codes, n] : votes)
                if (2 * n > by_partition.size()) usual = &codes;
            const auto kept             = std::find_if(by_partition.begin(), by_partition.end(),
                                                       [&](const auto &entry) { return entry.first == last; });
            const auto &[winner, shown] = kept != by_partition.end() ? *kept : by_partition.back();
            const auto odd =
                std::find_if(by_partition.begin(), by_partition.end(),
                             [&](const auto &entry) { return entry.second.codes != *usual; });
            std::string list, odd_files;
            for (size_t i = 0; i < by_partition.size();) {
                size_t j = i;
                while (j + 1 < by_partition.size() &&
                       by_partition[j + 1].second.codes == by_partition[i].second.codes &&
                       by_partition[j + 1].first == by_partition[j].first + 1)
                    ++j;
                list += fmt::format("{}p{}{} {}", list.empty() ? "" : ", ", by_partition[i].first,
                                    j > i ? fmt::format("-p{}", by_partition[j].first) : "",
                                    by_partition[i].second.text);
                i = j + 1;
            }
            for (const auto &[p, v] : by_partition)
                if (v.codes != *usual)
                    odd_files += (odd_files.empty() ? "" : ", ") + base_name(values.files.at(p));
            const bool majority = usual != &by_partition.front().second.codes ||
                                  2 * votes[*usual] > by_partition.size();
            finding f = make(
                severity::warning, finding_kind::partitions_disagree, values.files.at(odd->first),
                fmt::format("{} ({}) is not per partition and {} differ{} from {}: {}; only "
                            "p{}'s {} ({}) reaches the hardware",
                            shown.label, shown.format, odd_files,
                            odd_files.find(',') == std::string::npos ? "s" : "",
                            majority ? "the other partitions" : "p0", list, winner, shown.text,
                            base_name(values.files.at(winner))));
            place(f, odd->second.at);
            f.module    = shown.modules;
            f.value     = odd->second.text;
            f.format    = shown.format;
            f.hardware  = shown.codes.size() == 1 ? std::to_string(shown.codes.front()) : "";
            f.frame     = values.frame;
            f.channel   = values.channel;
            f.partition = odd->first;
            split_label(shown.label, f);
            out.push_back(f);
            for (const auto &[p, v] : by_partition)
                if (p != winner) overruled(values.files.at(p), v.label, winner, shown.text);
        }
    }

    /* A value warning on a partition whose value never reaches the hardware. */
    void overruled(const std::string &file, const std::string &label, int winner,
                   const std::string &text) {
        const std::string gets = "; the hardware gets ";
        for (finding &f : result_.findings) {
            if (f.file != file || f.level != severity::warning ||
                f.kind == finding_kind::unknown_key ||
                (f.message.rfind(label + " = ", 0) != 0 && f.message.rfind(label + "[", 0) != 0))
                continue;
            const size_t at = f.message.rfind(gets);
            if (at == std::string::npos) continue;
            f.message = fmt::format(
                "{}; this partition would give the hardware {}, but only "
                "p{}'s {} reaches it",
                f.message.substr(0, at), f.message.substr(at + gets.size()), winner, text);
            f.hardware = text;
        }
    }

    static std::string base_name(const std::string &path) {
        return path.substr(path.rfind('/') + 1);
    }

    void push(finding f, const std::string &modules) {
        f.module = modules;
        result_.findings.push_back(std::move(f));
    }

    void repeated(const std::string &path, const located_document &doc,
                  const std::string &readers) {
        for (const repeated_key &r : doc.repeated) {
            std::string where = "the root";
            if (!r.path.empty()) where = quoted(r.path.back());
            finding f = make(severity::warning, finding_kind::duplicate_key, path,
                             fmt::format("key {} repeats in {}: picojson keeps the last value, "
                                         "{} (line {}), and ignores {} (line {}, column {})",
                                         quoted(r.key), where, shown(r.kept_text), r.kept.line,
                                         shown(r.first_text), r.first.line, r.first.column));
            place(f, r.kept);
            f.reg   = r.path.empty() ? r.key : r.path.back();
            f.field = r.path.empty() ? "" : r.key;
            f.value = r.kept_text;
            push(f, readers);
        }
    }

    static std::string shown(const std::string &text) {
        return text.empty() ? "a container" : text;
    }

    void remember(const planned_file &planned, const std::string &path,
                  const single_values &singles) {
        load_values &values             = loads_[load_key(planned)];
        values.files[planned.partition] = path;
        finding where;
        stamp(where, planned);
        values.frame   = where.frame;
        values.channel = where.channel;
        for (const auto &[member, value] : singles)
            values.members[member].push_back({planned.partition, value});
    }

    void converters(const planned_file &planned, const std::string &path,
                    const picojson::object &root, const std::vector<std::string> &unreadable,
                    const std::vector<std::string> &raising) {
        struct report {
            size_t count = 0;
            std::vector<const module_info *> modules;
        };
        std::map<std::string, report> messages;
        std::vector<std::string> order;
        const std::string prefix = "read json_obj failed: ";
        for (const module_info *module : planned.readers) {
            const converter_run outcome = run_converters(
                load_order(*module), root, static_cast<uint8_t>(planned.partition), capture_);
            for (const std::string &line : outcome.messages) {
                const std::string name =
                    line.rfind(prefix, 0) == 0 ? line.substr(prefix.size()) : line;
                if (std::find(unreadable.begin(), unreadable.end(), name) != unreadable.end())
                    continue;
                report &r = messages[line];
                if (r.count++ == 0) order.push_back(line);
                if (r.modules.empty() || r.modules.back() != module) r.modules.push_back(module);
            }
            if (!outcome.raised.empty() &&
                std::find(raising.begin(), raising.end(), outcome.raised_by->group->name) ==
                    raising.end())
                push(make(severity::error, finding_kind::converter_raises, path, outcome.raised),
                     module->name);
        }
        for (const std::string &line : order) {
            const report &r = messages[line];
            finding f       = make(severity::error, finding_kind::field_not_read, path,
                             r.count > 1 ? fmt::format("{} (x{})", line, r.count) : line);
            /* the register and field, which the replay's same message is matched on */
            if (line.rfind(prefix, 0) == 0) split_label(line.substr(prefix.size()), f);
            push(f, names_of(r.modules));
        }
    }

    const run_settings &settings_;
    lint_result &result_;
    std::map<std::string, load_values> loads_; /* the loads under way */
    std::map<std::string, size_t> files_left_;
    std::map<std::string, std::vector<finding>> judged_; /* by load, listed at the end */
    stderr_stream capture_; /* what the converters write, for the whole lint */
};

}  // namespace

std::vector<finding> lint_rows(const isp::block_map &map, const located_document &doc,
                               const std::string &file, const group_readers &readers,
                               single_values *singles, std::vector<std::string> *unreadable,
                               std::vector<std::string> *raising) {
    std::vector<finding> out;
    const key_node root = known_keys(map);
    key_walk{file, out}.object(doc.root, doc.where, root, "", 0);

    for (size_t i = 0; i < map.row_count; ++i) {
        const field_row &row      = map.rows[i];
        const std::string modules = readers(row.group);
        if (modules.empty()) continue;
        const bool table = row.kind == row_kind::table;
        for (const field_read &read : reads_of(map, row)) {
            finding f;
            f.file   = file;
            f.module = modules;
            f.format = row.format ? row.format : "";
            split_label(read.message, f);
            const found at = look_up(doc.root, doc.where, read.steps, !table);
            if (!at.value) {
                f.kind = at.failure;
                place(f, at.at);
                f.hardware = table ? "" : real_text(sign_to_regval(0, row.format), row.format);
                f.message  = fmt::format(
                     "{} ({}): {}; {}", read.label, f.format, at.why,
                    table ? "the converter raises picojson's type error" : "the field reads as 0");
                out.push_back(f);
                if (table && raising) raising->push_back(row.group);
                if (!table && unreadable) unreadable->push_back(read.message);
                continue;
            }
            const bool per_partition = read.element == per_partition_element;
            single_value single{read.label, at.where->text, f.format, modules, at.at, {}};
            if (!table) {
                verdict v = judge_field(at.value->get<double>(), row);
                if (underflows(at.where->text, at.value->get<double>()))
                    v.add(finding_kind::underflow, "too small for a double, it reads as 0");
                single.codes = {v.hardware};
                if (!per_partition && singles)
                    (*singles)[fmt::format("{}/{}[{}]", row.group, row.member.name, read.element)] =
                        single;
                if (v.kinds.empty()) continue;
                f.kind  = v.kind();
                f.level = severity::warning;
                place(f, at.at);
                f.value    = at.where->text;
                f.hardware = real_text(v.hardware, row.format);
                f.message  = fmt::format("{} = {} ({}): {}; the hardware gets {}", read.label,
                                         f.value, f.format, v.text(), f.hardware);
                out.push_back(f);
                continue;
            }
            /* a table: every entry, the first faulty one reported with a count of the rest */
            const picojson::array &entries = at.value->get<picojson::array>();
            size_t faults                  = 0;
            finding first;
            for (uint32_t k = 0; k < row.keys.first + row.keys.count; ++k) {
                if (k >= entries.size() || !entries[k].is<double>()) {
                    f.kind = k >= entries.size() ? finding_kind::missing_field : finding_kind::type;
                    place(f, k >= entries.size() ? at.at : at.where->items[k].at);
                    f.message = fmt::format(
                        "{}[{}] ({}): {}; the converter raises picojson's type error", read.label,
                        k, f.format,
                        k >= entries.size()
                            ? fmt::format("the table has {} entries, {} are read", entries.size(),
                                          row.keys.first + row.keys.count)
                            : "expected a number, got " +
                                  describe_value(entries[k], at.where->items[k]));
                    out.push_back(f);
                    if (raising) raising->push_back(row.group);
                    faults = 0;
                    single.codes.clear();
                    break;
                }
                verdict v = judge_entry(entries[k].get<double>(), row);
                if (underflows(at.where->items[k].text, entries[k].get<double>()))
                    v.add(finding_kind::underflow, "too small for a double, it reads as 0");
                single.codes.push_back(v.hardware);
                if (v.kinds.empty() || faults++ > 0) continue;
                first       = f;
                first.kind  = v.kind();
                first.level = severity::warning;
                place(first, at.where->items[k].at);
                first.value    = at.where->items[k].text;
                first.hardware = std::to_string(v.hardware);
                first.message =
                    fmt::format("{}[{}] = {} ({}): {}; the hardware gets {}", read.label, k,
                                first.value, f.format, v.text(), v.hardware);
            }
            if (faults > 0) {
                if (faults > 1)
                    first.message += fmt::format(" (and {} more entr{} of this table)", faults - 1,
                                                 faults == 2 ? "y" : "ies");
                out.push_back(first);
            }
            if (!per_partition && singles && !single.codes.empty()) {
                single.text = fmt::format("{} entries", single.codes.size());
                (*singles)[fmt::format("{}/{}", row.group, row.member.name)] = single;
            }
        }
    }
    return out;
}

void read_integers(const isp::block_map &map, const located_document &doc,
                   const field_integer &each) {
    for (size_t i = 0; i < map.row_count; ++i) {
        const field_row &row               = map.rows[i];
        const bool table                   = row.kind == row_kind::table;
        const std::vector<field_read> read = reads_of(map, row);
        for (size_t r = 0; r < read.size(); ++r) {
            const found at = look_up(doc.root, doc.where, read[r].steps, !table);
            if (!at.value) continue;
            if (!table) {
                each(row, row.keys.first + uint32_t(r),
                     isp::saturate_to_int32(at.value->get<double>()));
                continue;
            }
            if (!at.value->is<picojson::array>()) continue;
            const picojson::array &entries = at.value->get<picojson::array>();
            const uint32_t end =
                uint32_t(std::min<size_t>(row.keys.first + row.keys.count, entries.size()));
            for (uint32_t k = row.keys.first; k < end; ++k)
                if (entries[k].is<double>())
                    each(row, k, isp::saturate_to_uint32(entries[k].get<double>()));
        }
    }
}

bool stops_library(const finding &f) {
    switch (f.kind) {
        case finding_kind::missing_file:
        case finding_kind::path_too_long:
        case finding_kind::unreadable_file:
        case finding_kind::byte_order_mark:
        case finding_kind::syntax:
        case finding_kind::non_finite:
            return true;
        default:
            return false;
    }
}

lint_result lint_case(const run_settings &settings, const case_contents &contents) {
    lint_result result;
    lint_settings(settings, contents, result.findings);
    case_lint lint(settings, result);
    const std::vector<planned_file> plan = plan_reads(settings);
    lint.expect(plan);
    for (const planned_file &file : plan) {
        const size_t first = result.findings.size();
        lint.file(file);
        /* in the order of the file's lines, the findings without a line last */
        std::stable_sort(result.findings.begin() + long(first), result.findings.end(),
                         [](const finding &a, const finding &b) {
                             const int la = a.line ? a.line : INT32_MAX;
                             const int lb = b.line ? b.line : INT32_MAX;
                             return la != lb ? la < lb : a.column < b.column;
                         });
    }
    lint.disagreements();
    return result;
}

}  // namespace isp_case
