/* Runs register rows and export rows, and finds the maps of the blocks. */
#include "convert/common/register_map.h"

#include <string.h>

#include "convert/common/block_list.h"
#include "convert/common/cmodel_writer.h"

namespace isp {

#define ISP_DECLARE_MAP(blk) extern const block_map blk##_map;
ISP_BLOCK_LIST(ISP_DECLARE_MAP)
#undef ISP_DECLARE_MAP

namespace {

#define ISP_MAP_ADDRESS(blk) &blk##_map,
const block_map *const all_maps[] = {ISP_BLOCK_LIST(ISP_MAP_ADDRESS)};
#undef ISP_MAP_ADDRESS

unsigned char *element_at(void *base, const member_ref &m, uint32_t element) {
    return static_cast<unsigned char *>(base) + m.offset + static_cast<size_t>(element) * m.stride;
}

uint32_t element_of(uint32_t element, uint8_t partition) {
    return element == part_element ? partition : element;
}

/* The rows of one group are contiguous; returns the first, or the end. */
const field_row *first_row(const block_map &map, const char *group) {
    const field_row *row = map.rows, *end = map.rows + map.row_count;
    while (row != end && strcmp(row->group, group) != 0) ++row;
    return row;
}

}  // namespace

const block_map *const *block_maps(size_t *count) {
    *count = sizeof all_maps / sizeof all_maps[0];
    return all_maps;
}

const block_map *find_block_map(const char *block) {
    for (const block_map *map : all_maps)
        if (strcmp(map->block, block) == 0) return map;
    return nullptr;
}

const struct_desc *find_struct(const char *type) {
    for (const block_map *map : all_maps)
        for (size_t i = 0; i < map->struct_count; ++i)
            if (strcmp(map->structs[i].type, type) == 0) return &map->structs[i];
    return nullptr;
}

uint32_t load_code(const void *base, const member_ref &m, uint32_t element) {
    const unsigned char *at = static_cast<const unsigned char *>(base) + m.offset +
                              static_cast<size_t>(element) * m.stride;
    switch (m.elem_size) {
        case 1: {
            uint8_t v;
            memcpy(&v, at, 1);
            return m.is_signed ? static_cast<uint32_t>(static_cast<int8_t>(v)) : v;
        }
        case 2: {
            uint16_t v;
            memcpy(&v, at, 2);
            return m.is_signed ? static_cast<uint32_t>(static_cast<int16_t>(v)) : v;
        }
        default: {
            uint32_t v;
            memcpy(&v, at, 4);
            return v;
        }
    }
}

void store_code(void *base, const member_ref &m, uint32_t element, uint32_t code) {
    unsigned char *at = element_at(base, m, element);
    switch (m.elem_size) {
        case 1: {
            const uint8_t v = static_cast<uint8_t>(code);
            memcpy(at, &v, 1);
            break;
        }
        case 2: {
            const uint16_t v = static_cast<uint16_t>(code);
            memcpy(at, &v, 2);
            break;
        }
        case 4:
            memcpy(at, &code, 4);
            break;
        default: {
            const uint64_t v = code;
            memcpy(at, &v, 8);
            break;
        }
    }
}

void read_rows(const block_map &map, const char *group, picojson::object &root, void *out,
               uint8_t partition) {
    const field_reader f(root, map.top_key);
    const field_row *end = map.rows + map.row_count;
    for (const field_row *row = first_row(map, group); row != end && strcmp(row->group, group) == 0;
         ++row) {
        const member_ref &m    = row->member;
        const uint32_t element = element_of(row->element, partition);
        switch (row->kind) {
            case read_kind::field:
                store_code(out, m, element, f.read(row->reg, row->field, row->format));
                break;
            case read_kind::group_field:
                store_code(out, m, element,
                           f.read(row->array, row->index, row->reg, row->field, row->format));
                break;
            case read_kind::group_each:
                for (uint32_t k = 0; k < row->index; ++k)
                    store_code(out, m, element + k * row->step,
                               f.read(row->array, k, row->reg, row->field, row->format));
                break;
            case read_kind::element:
                store_code(out, m, element,
                           f.read_element(row->array, row->index, row->field, row->format));
                break;
            case read_kind::element_each:
                for (uint32_t k = 0; k < row->index; ++k)
                    store_code(out, m, element + k * row->step,
                               f.read_element(row->array, k, row->field, row->format));
                break;
            case read_kind::table:
                for (uint32_t k = 0; k < row->index; ++k)
                    store_code(out, m, element + k * row->step,
                               row->reg ? f.raw_number(row->reg, row->field, k)
                                        : f.raw_number(row->field, k));
                break;
            case read_kind::hand_begin:
                row->by(f, out, partition);
                while (row + 1 != end && row[1].kind != read_kind::hand_end) ++row;
                break;
            case read_kind::hand_end:
                break;
        }
    }
}

void export_rows(const block_map &map, const char *group, const void *in, picojson::object &out,
                 uint8_t partition) {
    const cmodel_writer w(out);
    for (size_t i = 0; i < map.export_count; ++i) {
        const export_row &row = map.exports[i];
        if (strcmp(row.group, group) != 0) continue;
        if (row.count == 0) {
            w.value(row.key, load_code(in, row.member, row.per_partition ? partition : 0),
                    row.format);
            continue;
        }
        /* a per-partition array of rows exports the partition's row */
        const uint32_t first = row.per_partition ? partition * row.count : 0;
        std::vector<uint32_t> codes(row.count);
        for (uint32_t k = 0; k < row.count; ++k) codes[k] = load_code(in, row.member, first + k);
        w.array(row.key, codes.data(), codes.size(), row.format);
    }
}

const field_row *member_row(const block_map &map, const struct_desc &type, const member_desc &m) {
    if (m.count == 0 || m.stride == 0) return nullptr;
    const uint32_t end = m.offset + (m.count - 1) * m.stride + m.elem_size;
    for (size_t i = 0; i < map.row_count; ++i) {
        const field_row &row = map.rows[i];
        if (row.kind == read_kind::hand_begin || row.kind == read_kind::hand_end) continue;
        if (strcmp(row.group, type.group) != 0) continue;
        const uint32_t at = row.member.offset;
        /* a record's other sub-members lie between the elements of this one */
        if (at >= m.offset && at < end && (at - m.offset) % m.stride < m.elem_size) return &row;
    }
    return nullptr;
}

const char *member_format(const block_map &map, const struct_desc &type, const member_desc &m) {
    const field_row *row = member_row(map, type, m);
    return row ? row->format : nullptr;
}

std::string register_path(const block_map &map, const field_row &row) {
    const std::string all = row.index ? "[0.." + std::to_string(row.index - 1) + "]" : "[]";
    std::string path      = map.top_key;
    switch (row.kind) {
        case read_kind::group_field:
        case read_kind::element:
            path += std::string(".") + row.array + "[" + std::to_string(row.index) + "]";
            break;
        case read_kind::group_each:
        case read_kind::element_each:
            path += std::string(".") + row.array + all;
            break;
        default:
            break;
    }
    if (row.reg) path += std::string(".") + row.reg;
    if (row.field) path += std::string(".") + row.field;
    if (row.kind == read_kind::table) path += all;
    return path;
}

}  // namespace isp
