/* Register maps and member layouts as data. Every block declares, once, in its own
 * convert/<blk>/<blk>.def:
 *   - the layout of each driver structure: every member in memory order;
 *   - its register map: one row per field the converters read, in read order, naming the member
 *     and element the field lands in, the register path as the register files spell it and the
 *     fixed-point format;
 *   - the C-model keys that differ from the member names.
 * The converters run their rows through read_rows(), interleaved brackets included; the two
 * reads rows cannot express are hand-written functions named by a bracket row, followed by rows
 * listing every field such a function reads. The tool, the simulated platform, the fuzzers and
 * the benchmarks read the same rows through find_block_map() and find_struct(). */
#ifndef ISP_CONVERT_REGISTER_MAP_H
#define ISP_CONVERT_REGISTER_MAP_H

#include <stddef.h>
#include <stdint.h>

#include <array>
#include <string>
#include <string_view>
#include <type_traits>

#include <picojson.h>

#include "convert/common/field_reader.h"
#include "convert/common/fixed_format.h"
#include "isp_framework.h"

namespace isp {

/* One member of a driver structure. Members of a per-partition array of structures are listed
 * per sub-member ("locat.y"), with the array's element size as their stride. */
struct member_desc {
    const char *name;
    uint32_t offset;    /* of element 0 */
    uint32_t count;     /* elements, all dimensions flattened */
    uint32_t stride;    /* bytes from one element to the next */
    uint8_t elem_size;  /* 1, 2, 4 or 8 */
    bool is_signed;     /* of the C element type */
    bool per_partition; /* the first dimension is the partition: count / ISP_MAX_PARTITIONS
                         * elements each, partition p's first at element p * that */
    bool pointer;       /* holds a host address, not a register value */
    uint32_t inner;     /* elements of the last dimension of a two-dimensional array (12 for
                         * [8][12]); 0 for a scalar or a one-dimensional array */
};

struct struct_desc {
    const char *type;  /* "_isp_wbc_user_ctrl_t" */
    const char *group; /* "ctrl": the converter group it belongs to */
    uint32_t size;
    const member_desc *members;
    uint32_t member_count;
};

/* What a row of a register table is. */
enum class row_kind : uint8_t {
    read,       /* fixed-point fields at the row's register path, into the member */
    table,      /* raw numbers of a curve or mesh, saturated; a failure is not caught */
    interleave, /* the read rows up to the next end run index by index: every row's first index,
                 * then every row's second, ... */
    hand,       /* a hand-written reader reads what the rows up to the next end describe */
    end,
};

/* Reads a quirk the rows cannot express; called once, where its bracket opens. */
using hand_reader = void (*)(const field_reader &f, void *out, uint8_t partition);

/* The element a row writes. For a member that holds a pointer, its size and sign are those of
 * the element pointed to: such rows only describe what a hand-written reader stores there. */
struct member_ref {
    const char *name;
    uint32_t offset;
    uint32_t stride;
    uint8_t elem_size;
    bool is_signed;
};

struct field_row {
    row_kind kind;
    const char *group; /* converter group */
    member_ref member;
    uint32_t element;   /* written by index 0 of the path's array (or by the path without one), in
                         * partition 0 */
    uint32_t step;      /* from the element of one index to that of the next */
    uint32_t part_step; /* from one partition's element to the next's; 0: not per partition */
    const char *path;   /* as the table writes it */
    register_keys keys;
    const char *format;
    fixed_format fixed; /* format, parsed */
    hand_reader by;     /* hand: the reader */
    const char *note;   /* hand: what the reader does that rows cannot */
};

/* The element a row writes when it reads `index` of its path's array for a partition. */
constexpr uint32_t element_of(const field_row &row, uint32_t index, uint8_t partition) {
    return row.element + index * row.step + partition * row.part_step;
}

/* A key an exporter writes from one member: a value for a scalar, an array of every element in
 * index order otherwise, the partition's element for a per-partition member (the partition's row,
 * as an array, for a per-partition member of rows). */
struct export_row {
    const char *group;
    const char *key;
    member_ref member;
    uint32_t count; /* elements exported as an array (of a row, if per partition); 0: a value */
    bool per_partition;
    const char *format;
    fixed_format fixed;
};

struct block_map {
    const char *block;   /* "wbc" */
    const char *top_key; /* "isp_wbc" */
    const struct_desc *structs;
    size_t struct_count;
    const field_row *rows;
    size_t row_count;
    const export_row *exports;
    size_t export_count;
};

/* Every block, and the one of a block name or of a structure's type name; nullptr if none. */
const block_map *const *block_maps(size_t *count);
const block_map *find_block_map(const char *block);
const struct_desc *find_struct(const char *type);

/* Runs the rows of one converter group, in order, into `out`. */
void read_rows(const block_map &map, const char *group, picojson::object &root, void *out,
               uint8_t partition);
/* Writes the plain keys of one exporter group. */
void export_rows(const block_map &map, const char *group, const void *in, picojson::object &out,
                 uint8_t partition);

/* An element as a register code, sign-extended from a signed member like a C conversion. */
uint32_t load_code(const void *base, const member_ref &m, uint32_t element);
/* Stores the low bits of a code into an element, as an assignment to the member would. */
void store_code(void *base, const member_ref &m, uint32_t element, uint32_t code);

/* The first row that writes into a member of a structure (any element, or the same sub-member of
 * any partition's record), nullptr when no row reads it: members of blocks without a register
 * map, pointers, addresses the module fills in. The row gives the member's format and where in a
 * register file its first element comes from. */
const field_row *member_row(const block_map &map, const struct_desc &type, const member_desc &m);
/* The fixed-point format of a member, nullptr when no row reads it. */
const char *member_format(const block_map &map, const struct_desc &type, const member_desc &m);
/* Where a row reads, as text: the top key and the row's path, "isp_wbc.wb_gain0.val1",
 * "isp_blc.grp0[0..6].lin_lut_x.high" (a range reads every index). */
std::string register_path(const block_map &map, const field_row &row);

/* ---- building blocks of the .def files ------------------------------------------------------ */
namespace detail {
template <typename T>
using element_of = std::remove_cv_t<std::remove_all_extents_t<T>>;

/* The element a row stores into: through a member that holds a pointer, the element pointed to. */
template <typename T>
using stored_of = std::remove_cv_t<std::remove_pointer_t<element_of<T>>>;

template <typename T>
constexpr bool is_signed_element() {
    return std::is_signed<element_of<T>>::value;
}

/* The members of a structure are listed in memory order, without one left out: between two
 * listed members there is no more room than alignment padding. */
struct member_span {
    const char *group;
    uint32_t offset, end, align;
};

constexpr bool same_name(const char *a, const char *b) {
    while (*a && *a == *b) ++a, ++b;
    return *a == *b;
}

template <size_t N>
constexpr uint32_t first_of(const member_span (&spans)[N], const char *group) {
    for (uint32_t i = 0; i + 1 < N; ++i)
        if (same_name(spans[i].group, group)) return i;
    return N - 1;
}

template <size_t N>
constexpr uint32_t count_of(const member_span (&spans)[N], const char *group) {
    uint32_t count = 0;
    for (uint32_t i = 0; i + 1 < N; ++i) count += same_name(spans[i].group, group) ? 1 : 0;
    return count;
}

/* The sub-members of one per-partition array of structures share its span. */
template <size_t N>
constexpr bool covers(const member_span (&spans)[N], const char *group, uint32_t size,
                      uint32_t align) {
    uint32_t at = 0, last_offset = UINT32_MAX;
    bool any = false;
    for (uint32_t i = 0; i + 1 < N; ++i) {
        if (!same_name(spans[i].group, group)) {
            if (any) break; /* a structure's rows are contiguous */
            continue;
        }
        any = true;
        if (spans[i].offset == last_offset && spans[i].end == at) continue;
        if (spans[i].offset < at || spans[i].offset - at >= spans[i].align) return false;
        last_offset = spans[i].offset;
        at          = spans[i].end;
    }
    return any && at <= size && size - at < align;
}
/* ---- the rows, built and checked at compile time ---- */

/* Where a read row writes: base + k * index + part * partition, in rows of the member. */
struct element_expr {
    uint32_t base, k, part;
};
constexpr element_expr k{0, 1, 0};
constexpr element_expr per_part{0, 0, 1};
constexpr element_expr operator+(element_expr e, uint32_t n) {
    return {e.base + n, e.k, e.part};
}
constexpr element_expr operator+(uint32_t n, element_expr e) {
    return e + n;
}
constexpr element_expr operator*(uint32_t n, element_expr e) {
    return {n * e.base, n * e.k, n * e.part};
}
constexpr element_expr element_expr_of(element_expr e) {
    return e;
}
constexpr element_expr element_expr_of(uint32_t n) {
    return {n, 0, 0};
}

/* What a row on a member writes, and whether the member is an array. */
struct member_target {
    member_ref ref;
    bool is_array;
};

/* A failed check stops the compilation at the row that fails it. */
inline void row_error(const char *) {}
#define ISP_DEF_CHECK(ok, what) (ok ? void() : row_error(what))

constexpr uint32_t digits_at(const char *&at) {
    uint32_t value = 0;
    ISP_DEF_CHECK(*at >= '0' && *at <= '9', "a path index must be a number");
    while (*at >= '0' && *at <= '9') value = value * 10 + uint32_t(*at++ - '0');
    return value;
}

/* A key of a path, with the index or range that follows it; returns past its full stop. */
struct path_piece {
    std::string_view key;
    bool indexed;
    uint32_t first, count;
};

constexpr const char *piece_at(const char *at, path_piece *piece) {
    const char *start = at;
    while (*at && *at != '.' && *at != '[') ++at;
    ISP_DEF_CHECK(at != start, "a path has an empty key");
    *piece = {std::string_view(start, size_t(at - start)), false, 0, 1};
    if (*at == '[') {
        ++at;
        piece->indexed = true;
        piece->first   = digits_at(at);
        uint32_t last  = piece->first;
        if (at[0] == '.' && at[1] == '.') {
            at += 2;
            last = digits_at(at);
        }
        ISP_DEF_CHECK(*at == ']' && last >= piece->first, "a path index must be [n] or [a..b]");
        piece->count = last - piece->first + 1;
        ++at;
    }
    ISP_DEF_CHECK(*at == '\0' || *at == '.', "a path's keys are separated by full stops");
    return *at ? at + 1 : at;
}

/* "reg.field", "array[i].reg.field", "array[i].field"; for tables "key[a..b]", "reg.key[a..b]". */
constexpr register_keys parse_path(const char *path, bool table) {
    path_piece piece[4] = {};
    size_t n            = 0;
    for (const char *at = path; *at;) {
        ISP_DEF_CHECK(n < 3, "a path has at most three keys");
        at = piece_at(at, &piece[n++]);
    }
    if (table) {
        const path_piece &last = piece[n - 1];
        ISP_DEF_CHECK(n <= 2 && last.indexed && !(n == 2 && piece[0].indexed),
                      "a table path is key[a..b] or reg.key[a..b]");
        return {{}, last.first, last.count, n == 2 ? piece[0].key : std::string_view(), last.key};
    }
    ISP_DEF_CHECK(n >= 2 && !piece[1].indexed && !(n == 3 && piece[2].indexed) &&
                      (n == 2 || piece[0].indexed),
                  "a field path is reg.field, array[i].reg.field or array[i].field");
    if (!piece[0].indexed) return {{}, 0, 1, piece[0].key, piece[1].key};
    return {piece[0].key, piece[0].first, piece[0].count,
            n == 3 ? piece[1].key : std::string_view(), piece[n - 1].key};
}

constexpr fixed_format plain_format(const char *format) {
    fixed_format parsed{};
    ISP_DEF_CHECK(parse_plain_format(format, &parsed), "a row's format must be plain (u10.8, s3)");
    return parsed;
}

/* The member of a group, by name ("locat.y" for a record's sub-member). */
template <size_t N>
constexpr uint32_t member_index(const member_desc (&members)[N], const member_span (&spans)[N],
                                const char *group, const char *name) {
    for (uint32_t i = 0; i + 1 < N; ++i)
        if (same_name(spans[i].group, group) && same_name(members[i].name, name)) return i;
    row_error("a row names a member its structure does not have");
    return 0;
}

template <size_t N>
constexpr field_row make_row(const member_desc (&members)[N], const member_span (&spans)[N],
                             const member_target (&targets)[N], row_kind kind, const char *group,
                             const char *name, element_expr where, const char *path,
                             const char *format) {
    const uint32_t i        = member_index(members, spans, group, name);
    const member_desc &m    = members[i];
    const register_keys key = parse_path(path, kind == row_kind::table);
    member_ref ref          = targets[i].ref;
    const fixed_format fmt  = plain_format(format);
    if (kind == row_kind::table) {
        /* entries narrower than the member's elements are packed into them */
        const uint32_t bits = uint32_t(fmt.integer_bits + fmt.fraction_bits);
        if (bits <= 8u * ref.elem_size / 2) ref.elem_size = ref.stride = uint8_t(bits / 8);
    }
    ISP_DEF_CHECK(where.part == 0 || m.per_partition || m.pointer,
                  "per_part on a member not per partition");
    const uint32_t row   = m.per_partition && !m.pointer ? m.count / ISP_MAX_PARTITIONS : 1;
    const uint32_t count = m.pointer ? ISP_MAX_PARTITIONS : m.count * (m.elem_size / ref.elem_size);
    const uint32_t last  = where.base + where.k * (key.first + key.count - 1) +
                          where.part * row * (ISP_MAX_PARTITIONS - 1);
    ISP_DEF_CHECK(last < count, "a row writes past the end of its member");
    return {kind, group, ref,    where.base, where.k, where.part * row,
            path, key,   format, fmt,        nullptr, nullptr};
}

template <typename E, size_t N>
constexpr field_row make_row(const member_desc (&members)[N], const member_span (&spans)[N],
                             const member_target (&targets)[N], row_kind kind, const char *group,
                             const char *name, E where, const char *path, const char *format) {
    return make_row(members, spans, targets, kind, group, name, element_expr_of(where), path,
                    format);
}

constexpr field_row bracket_row(row_kind kind, const char *group, hand_reader by,
                                const char *note) {
    return {kind, group, {nullptr, 0, 0, 0, false}, 0, 0, 0, nullptr, {}, nullptr, {}, by, note};
}

/* Every bracket is closed and holds read rows only; an interleave's rows read ranges of one
 * size. */
template <size_t N>
constexpr bool brackets_hold(const field_row (&rows)[N]) {
    const field_row *open = nullptr;
    for (size_t i = 0; i + 1 < N; ++i) {
        const field_row &row = rows[i];
        if (row.kind == row_kind::interleave || row.kind == row_kind::hand) {
            if (open) return false;
            open = &row;
        } else if (row.kind == row_kind::end) {
            if (!open) return false;
            open = nullptr;
        } else if (open && open->kind == row_kind::interleave) {
            if (row.kind != row_kind::read || row.keys.count != rows[open - rows + 1].keys.count)
                return false;
        }
    }
    return !open;
}

struct export_key {
    const char *group, *member, *key;
};

/* The first row that reads into member i, nullptr when none does. */
template <size_t N, size_t R>
constexpr const field_row *first_read(const member_desc (&members)[N],
                                      const member_span (&spans)[N], const field_row (&rows)[R],
                                      uint32_t i) {
    for (size_t r = 0; r + 1 < R; ++r)
        if ((rows[r].kind == row_kind::read || rows[r].kind == row_kind::table) &&
            same_name(rows[r].group, spans[i].group) &&
            same_name(rows[r].member.name, members[i].name))
            return &rows[r];
    return nullptr;
}

template <size_t N, size_t K>
constexpr const export_key *key_of(const member_desc (&members)[N], const member_span (&spans)[N],
                                   const export_key (&keys)[K], uint32_t i) {
    for (size_t e = 0; e + 1 < K; ++e)
        if (same_name(keys[e].group, spans[i].group) && same_name(keys[e].member, members[i].name))
            return &keys[e];
    return nullptr;
}

template <size_t K, size_t N, size_t R>
constexpr bool keys_name_read_members(const export_key (&keys)[K], const member_desc (&members)[N],
                                      const member_span (&spans)[N], const field_row (&rows)[R]) {
    for (size_t e = 0; e + 1 < K; ++e) {
        const uint32_t i = member_index(members, spans, keys[e].group, keys[e].member);
        if (!first_read(members, spans, rows, i)) return false;
    }
    return true;
}

template <size_t N, size_t R, size_t K>
constexpr size_t export_count(const member_desc (&members)[N], const member_span (&spans)[N],
                              const field_row (&rows)[R], const export_key (&keys)[K]) {
    size_t count = 0;
    for (uint32_t i = 0; i + 1 < N; ++i) {
        const export_key *key = key_of(members, spans, keys, i);
        if (first_read(members, spans, rows, i) && !(key && !key->key)) ++count;
    }
    return count;
}

template <size_t C, size_t N, size_t R, size_t K>
constexpr std::array<export_row, C> make_exports(const member_desc (&members)[N],
                                                 const member_span (&spans)[N],
                                                 const member_target (&targets)[N],
                                                 const field_row (&rows)[R],
                                                 const export_key (&keys)[K]) {
    std::array<export_row, C> out{};
    size_t at = 0;
    for (uint32_t i = 0; i + 1 < N; ++i) {
        const field_row *row  = first_read(members, spans, rows, i);
        const export_key *key = key_of(members, spans, keys, i);
        if (!row || (key && !key->key)) continue;
        const member_desc &m = members[i];
        /* a per-partition member exports the partition's element, or the partition's row */
        const uint32_t count =
            m.per_partition ? (m.count / ISP_MAX_PARTITIONS > 1 ? m.count / ISP_MAX_PARTITIONS : 0)
                            : (targets[i].is_array ? m.count : 0);
        out[at++] = {spans[i].group, key ? key->key : m.name, targets[i].ref,
                     count,          m.per_partition,         row->format,
                     row->fixed};
    }
    return out;
}

#undef ISP_DEF_CHECK
}  // namespace detail

}  // namespace isp

#endif
