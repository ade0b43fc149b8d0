/* Runs register rows and export rows, and finds the maps of the blocks. */
#include "convert/common/register_map.h"

#include <string.h>

#include "convert/common/cmodel_writer.h"

namespace isp {

#define ISP_BLOCK(blk) extern const block_map blk##_map;
#include "modules/modules.def"

namespace {

const block_map *const all_maps[] = {
#define ISP_BLOCK(blk) &blk##_map,
#include "modules/modules.def"
};

unsigned char *element_at(void *base, const member_ref &m, uint32_t element) {
    return static_cast<unsigned char *>(base) + m.offset + static_cast<size_t>(element) * m.stride;
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

namespace {

void read_at(const field_reader &f, const field_row &row, uint32_t index, void *out,
             uint8_t partition) {
    const uint32_t code = row.kind == row_kind::table ? f.raw_number(row.keys, index)
                                                      : f.read(row.keys, index, row.fixed);
    store_code(out, row.member, element_of(row, index, partition), code);
}

}  // namespace

void read_rows(const block_map &map, const char *group, picojson::object &root, void *out,
               uint8_t partition) {
    const field_reader f(root, map.top_key);
    const field_row *end = map.rows + map.row_count;
    for (const field_row *row = first_row(map, group); row != end && strcmp(row->group, group) == 0;
         ++row) {
        const field_row *close = row;
        switch (row->kind) {
            case row_kind::read:
            case row_kind::table:
                for (uint32_t i = row->keys.first; i < row->keys.first + row->keys.count; ++i)
                    read_at(f, *row, i, out, partition);
                break;
            case row_kind::interleave: {
                while (close->kind != row_kind::end) ++close;
                const register_keys &range = row[1].keys;
                for (uint32_t i = range.first; i < range.first + range.count; ++i)
                    for (const field_row *r = row + 1; r != close; ++r)
                        read_at(f, *r, i, out, partition);
                row = close;
                break;
            }
            case row_kind::hand:
                row->by(f, out, partition);
                while (close->kind != row_kind::end) ++close;
                row = close;
                break;
            case row_kind::end:
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
                    row.fixed);
            continue;
        }
        /* a per-partition array of rows exports the partition's row */
        const uint32_t first = row.per_partition ? partition * row.count : 0;
        std::vector<uint32_t> codes(row.count);
        for (uint32_t k = 0; k < row.count; ++k) codes[k] = load_code(in, row.member, first + k);
        w.array(row.key, codes.data(), codes.size(), row.fixed);
    }
}

const field_row *member_row(const block_map &map, const struct_desc &type, const member_desc &m) {
    if (m.count == 0 || m.stride == 0) return nullptr;
    const uint32_t end = m.offset + (m.count - 1) * m.stride + m.elem_size;
    for (size_t i = 0; i < map.row_count; ++i) {
        const field_row &row = map.rows[i];
        if (row.kind != row_kind::read && row.kind != row_kind::table) continue;
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
    return std::string(map.top_key) + "." + row.path;
}

}  // namespace isp
