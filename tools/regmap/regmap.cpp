/* The register map model: the library's rows walked in read order, one field per index. */
#include "tools/regmap/regmap.h"

#include <string.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <mutex>

#include <fmt/core.h>

#include "modules/tables.h"

namespace isp_case {
namespace {

using isp::field_row;
using isp::member_desc;
using isp::row_kind;

const member_desc *member_of(const isp::struct_desc &type, const field_row &row) {
    for (uint32_t i = 0; i < type.member_count; ++i)
        if (strcmp(type.members[i].name, row.member.name) == 0) return &type.members[i];
    return nullptr;
}

const isp::struct_desc *struct_of(const isp::block_map &map, const char *group) {
    for (size_t i = 0; i < map.struct_count; ++i)
        if (strcmp(map.structs[i].group, group) == 0) return &map.structs[i];
    return nullptr;
}

/* The member's element a row's element lies in: a table whose entries are narrower than the
 * member's elements packs several entries into one. */
uint32_t member_element(const member_desc &m, const field_row &row, uint32_t element) {
    if (m.pointer || m.stride == 0) return element;
    const uint32_t at = row.member.offset - m.offset + element * row.member.stride;
    return at / m.stride;
}

/* Elements of one partition's row of a per-partition member (1 for a record's sub-member). */
uint32_t partition_row(const member_desc &m) {
    if (!m.per_partition || strchr(m.name, '.')) return 1;
    return std::max<uint32_t>(1, m.count / ISP_MAX_PARTITIONS);
}

/* "stat_roi.top" with its partition index after the record's name: "stat_roi[p].top". */
std::string indexed_name(const char *name, const std::string &index) {
    const char *dot = strchr(name, '.');
    if (!dot) return name + index;
    return std::string(name, dot) + index + dot;
}

std::string element_text(const regmap_field &f, const std::string &partition) {
    const member_desc *m = f.member;
    if (!m) return f.row->member.name;
    if (m->pointer) return indexed_name(m->name, "[" + partition + "]");
    if (m->per_partition) {
        const uint32_t row = partition_row(*m);
        return indexed_name(
            m->name, "[" + partition + "]" + (row > 1 ? fmt::format("[{}]", f.element % row) : ""));
    }
    std::string text = m->name;
    const uint32_t e = f.member_element;
    if (m->inner)
        text += fmt::format("[{}][{}]", e / m->inner, e % m->inner);
    else if (m->count > 1)
        text += fmt::format("[{}]", e);
    if (f.row->member.elem_size < m->elem_size) {
        const uint32_t low =
            (f.row->member.offset - m->offset + f.element * f.row->member.stride) % m->stride * 8;
        text += fmt::format(" bits {}-{}", low, low + f.row->member.elem_size * 8u - 1);
    }
    return text;
}

std::string concrete_path(const isp::block_map &map, const field_row &row, uint32_t index) {
    const isp::register_keys &k = row.keys;
    const std::string at        = fmt::format("[{}]", index);
    std::string path            = std::string(map.top_key) + ".";
    if (row.kind == row_kind::table) {
        if (!k.reg.empty()) path += std::string(k.reg) + ".";
        return path + std::string(k.field) + at;
    }
    if (k.array.empty()) return path + std::string(k.reg) + "." + std::string(k.field);
    path += std::string(k.array) + at + ".";
    if (!k.reg.empty()) path += std::string(k.reg) + ".";
    return path + std::string(k.field);
}

std::vector<regmap_user> users_of(const isp::struct_desc &type) {
    std::vector<regmap_user> users;
    for (const isp::module_desc &m : isp::modules())
        for (const isp::group_desc &g : m.groups)
            if (strcmp(g.c_type, type.type) == 0) users.push_back({m.name, g.name, g.cmd});
    return users;
}

/* Where the group's exporter writes the row's element: the member's key, with the element's
 * index in the array it writes; none for a group without an exporter, or a member it writes by
 * hand. */
std::string cmodel_key_of(const regmap_field &f) {
    bool exported = false;
    for (const isp::module_desc &m : isp::modules())
        for (const isp::group_desc &g : m.groups)
            exported = exported || (f.type && g.exporter && strcmp(g.c_type, f.type->type) == 0);
    for (size_t i = 0; exported && i < f.map->export_count; ++i) {
        const isp::export_row &e = f.map->exports[i];
        if (strcmp(e.group, f.row->group) != 0 || strcmp(e.member.name, f.row->member.name) != 0)
            continue;
        if (e.count == 0) return e.key;
        return fmt::format("{}[{}]", e.key, e.per_partition ? f.element % e.count : f.element);
    }
    return "";
}

void add_field(std::vector<regmap_field> &out, const isp::block_map &map, const field_row &row,
               uint32_t index, const char *hand) {
    regmap_field f;
    f.map            = &map;
    f.row            = &row;
    f.type           = struct_of(map, row.group);
    f.member         = f.type ? member_of(*f.type, row) : nullptr;
    f.index          = index;
    f.path           = concrete_path(map, row, index);
    f.field          = std::string(row.keys.field);
    f.element        = isp::element_of(row, index, 0);
    f.member_element = f.member ? member_element(*f.member, row, f.element) : f.element;
    f.element_text   = element_text(f, "p");
    f.hand           = hand;
    f.cmodel_key     = cmodel_key_of(f);
    if (f.type) f.users = users_of(*f.type);
    out.push_back(std::move(f));
}

void add_range(std::vector<regmap_field> &out, const isp::block_map &map, const field_row &row,
               const char *hand) {
    for (uint32_t i = row.keys.first; i < row.keys.first + row.keys.count; ++i)
        add_field(out, map, row, i, hand);
}

/* Digits, or -1. */
long number_at(const std::string &text, size_t &at) {
    const size_t start = at;
    long value         = 0;
    while (at < text.size() && isdigit(static_cast<unsigned char>(text[at])) && at - start < 9)
        value = value * 10 + (text[at++] - '0');
    return at == start ? -1 : value;
}

/* "matrix_list[0][7]" into "matrix_list" and 0, 7; "stat_roi[1].top" into "stat_roi.top", 1. */
bool split_element(const std::string &text, std::string &name, std::vector<uint32_t> &indices) {
    for (size_t at = 0; at < text.size();) {
        if (text[at] != '[') {
            name += text[at++];
            continue;
        }
        const long n = number_at(text, ++at);
        if (n < 0 || at >= text.size() || text[at] != ']') return false;
        indices.push_back(uint32_t(n));
        ++at;
    }
    return !name.empty();
}

const isp::struct_desc *struct_of_group(const std::string &owner, const std::string &group,
                                        const isp::block_map *&map, std::string &problem) {
    if (const isp::module_desc *m = isp::find_module(owner)) {
        map = isp::find_block_map(m->block);
        for (const isp::group_desc &g : m->groups)
            if (group == g.name) return isp::find_struct(g.c_type);
        problem = fmt::format("module {} has no group \"{}\"", owner, group);
        return nullptr;
    }
    map = isp::find_block_map(owner.c_str());
    if (!map) {
        problem = fmt::format("no module or block \"{}\"", owner);
        return nullptr;
    }
    if (const isp::struct_desc *type = struct_of(*map, group.c_str())) return type;
    problem = fmt::format("block {} has no group \"{}\"", owner, group);
    return nullptr;
}

std::vector<where_answer> where_element(const std::vector<regmap_field> &all,
                                        const std::string &query, std::string &problem) {
    const size_t first = query.find('.'), second = query.find('.', first + 1);
    if (first == std::string::npos || second == std::string::npos) {
        problem =
            "expected a register path (isp_<block>.register.field) or an element "
            "(module.group.member[index])";
        return {};
    }
    const isp::block_map *map    = nullptr;
    const isp::struct_desc *type = struct_of_group(
        query.substr(0, first), query.substr(first + 1, second - first - 1), map, problem);
    std::string name;
    std::vector<uint32_t> idx;
    if (!type) return {};
    if (!split_element(query.substr(second + 1), name, idx)) {
        problem = "an element's indices are numbers in brackets: member[3], member[0][7]";
        return {};
    }
    const member_desc *m = nullptr;
    for (uint32_t i = 0; i < type->member_count; ++i)
        if (name == type->members[i].name) m = &type->members[i];
    if (!m) {
        problem = fmt::format("{} has no member \"{}\"", type->type, name);
        return {};
    }
    uint32_t element   = idx.empty() ? 0 : idx[0];
    int partition      = -1;
    const uint32_t row = partition_row(*m);
    if (m->per_partition || m->pointer) {
        /* without indices, the element of the file's partition */
        partition = idx.empty() ? -1 : int(idx[0]);
        element   = idx.size() > 1 ? idx[1] : 0;
        if (partition >= ISP_MAX_PARTITIONS || element >= row) element = UINT32_MAX;
    } else if (idx.size() == 2 && m->inner) {
        element = idx[1] < m->inner ? idx[0] * m->inner + idx[1] : UINT32_MAX;
    }
    std::vector<where_answer> answers;
    for (const regmap_field &f : all) {
        if (f.member != m) continue;
        const uint32_t at = m->per_partition ? f.element % row : f.member_element;
        if (m->pointer || at == element) answers.push_back({&f, partition});
    }
    if (answers.empty()) problem = fmt::format("no register row fills {}", query);
    return answers;
}

std::vector<regmap_field> fields_of(const isp::block_map &map) {
    std::vector<regmap_field> out;
    const field_row *row = map.rows, *end = map.rows + map.row_count;
    for (; row != end; ++row) {
        switch (row->kind) {
            case row_kind::read:
            case row_kind::table:
                add_range(out, map, *row, nullptr);
                break;
            case row_kind::interleave: {
                const field_row *close = row + 1;
                while (close->kind != row_kind::end) ++close;
                const isp::register_keys &range = row[1].keys;
                for (uint32_t i = range.first; i < range.first + range.count; ++i)
                    for (const field_row *r = row + 1; r != close; ++r)
                        add_field(out, map, *r, i, nullptr);
                row = close;
                break;
            }
            case row_kind::hand: {
                const char *note = row->note;
                for (++row; row->kind != row_kind::end; ++row) add_range(out, map, *row, note);
                break;
            }
            case row_kind::end:
                break;
        }
    }
    return out;
}

/* The fields of a block, walked once per run of the tool: the decoder asks for them push by
 * push. */
const std::vector<regmap_field> &cached_fields(const isp::block_map &map) {
    static std::mutex lock;
    static std::map<const isp::block_map *, std::vector<regmap_field>> cache;
    const std::lock_guard<std::mutex> hold(lock);
    auto it = cache.find(&map);
    if (it == cache.end()) it = cache.emplace(&map, fields_of(map)).first;
    return it->second;
}

picojson::value &object_key(picojson::value &parent, const std::string &key) {
    if (!parent.is<picojson::object>()) parent = picojson::value(picojson::object());
    return parent.get<picojson::object>()[key];
}

picojson::value &array_item(picojson::value &parent, uint32_t index, const picojson::value &fill) {
    if (!parent.is<picojson::array>()) parent = picojson::value(picojson::array());
    picojson::array &items = parent.get<picojson::array>();
    if (items.size() <= index) items.resize(index + 1, fill);
    return items[index];
}

}  // namespace

field_range range_of(const regmap_field &f) {
    const isp::fixed_format &format = f.row->fixed;
    const int bits   = (format.is_signed ? 1 : 0) + format.integer_bits + format.fraction_bits;
    const int member = f.row->member.elem_size ? f.row->member.elem_size * 8 : 32;
    field_range r;
    r.bits              = std::min({bits, member, 32});
    r.step              = 1.0 / double(int64_t(1) << std::min(format.fraction_bits, 62));
    const int magnitude = format.is_signed ? r.bits - 1 : r.bits;
    r.max               = (int64_t(1) << magnitude) - 1;
    r.min               = format.is_signed ? -r.max : 0;
    /* a field's number is saturated to a signed 32-bit integer before it is encoded */
    if (!f.raw_number()) r.max = std::min<int64_t>(r.max, INT32_MAX);
    return r;
}

std::vector<regmap_field> block_fields(const isp::block_map &map) {
    return cached_fields(map);
}

std::vector<std::string> block_names() {
    size_t count                      = 0;
    const isp::block_map *const *maps = isp::block_maps(&count);
    std::vector<std::string> names;
    for (size_t i = 0; i < count; ++i) names.push_back(maps[i]->block);
    return names;
}

bool has_register_map(const isp::block_map &map) {
    return map.row_count > 0;
}

std::vector<regmap_field> all_fields() {
    std::vector<regmap_field> all;
    size_t count                      = 0;
    const isp::block_map *const *maps = isp::block_maps(&count);
    for (size_t i = 0; i < count; ++i) {
        const std::vector<regmap_field> &fields = cached_fields(*maps[i]);
        all.insert(all.end(), fields.begin(), fields.end());
    }
    return all;
}

std::string element_for_partition(const regmap_field &f, int partition) {
    return element_text(f, partition < 0 ? "p" : std::to_string(partition));
}

std::vector<std::string> element_paths(const isp::block_map &map, const isp::struct_desc &type,
                                       const isp::member_desc &member) {
    std::vector<std::string> paths(member.count);
    if (member.pointer) return paths;
    for (const regmap_field &f : cached_fields(map)) {
        if (f.type != &type || f.member != &member) continue;
        const uint32_t parts = f.per_partition() ? ISP_MAX_PARTITIONS : 1;
        for (uint32_t p = 0; p < parts; ++p) {
            const uint32_t e =
                member_element(member, *f.row, isp::element_of(*f.row, f.index, uint8_t(p)));
            if (e < paths.size() && paths[e].empty()) paths[e] = f.path;
        }
    }
    return paths;
}

std::vector<where_answer> where(const std::vector<regmap_field> &all, const std::string &query,
                                std::string &problem) {
    problem.clear();
    const size_t dot = query.find('.');
    if (query.rfind("isp_", 0) == 0 && dot != std::string::npos) {
        std::vector<where_answer> answers;
        for (const regmap_field &f : all)
            if (f.path == query) answers.push_back({&f, -1});
        if (answers.empty()) problem = fmt::format("no register row reads {}", query);
        return answers;
    }
    return where_element(all, query, problem);
}

picojson::value register_template(const isp::block_map &map, template_value value) {
    picojson::value top(picojson::object{});
    for (const regmap_field &f : cached_fields(map)) {
        const field_range r = range_of(f);
        const picojson::value v(double(value == template_value::zero  ? 0
                                       : value == template_value::min ? r.min
                                                                      : r.max));
        const isp::register_keys &k = f.row->keys;
        if (f.raw_number()) {
            picojson::value &holder = k.reg.empty() ? top : object_key(top, std::string(k.reg));
            array_item(object_key(holder, std::string(k.field)), f.index, v) = v;
            continue;
        }
        picojson::value *at = &top;
        if (!k.array.empty())
            at = &array_item(object_key(top, std::string(k.array)), f.index,
                             picojson::value(picojson::object{}));
        if (!k.reg.empty()) at = &object_key(*at, std::string(k.reg));
        object_key(*at, std::string(k.field)) = v;
    }
    picojson::object file;
    file[map.top_key] = top;
    return picojson::value(file);
}

}  // namespace isp_case
