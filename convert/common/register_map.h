/* Register maps and member layouts as data. Every block declares, once, in its own
 * convert/<blk>/<blk>.def:
 *   - the layout of each driver structure: every member in memory order;
 *   - its register map: one row per field the converters read, in read order, naming the member
 *     and element the field lands in, the register (with its array group and index where there
 *     is one), the field and the fixed-point format;
 *   - the plain keys of its C-model exporters.
 * The converters run their rows through read_rows(); reads the rows cannot express (packing,
 * loops of another shape) are hand-written functions that the rows name in their `by` column, so
 * the table still lists every field such a function reads. The tool, the simulated platform, the
 * fuzzers and the benchmarks read the same rows through find_block_map() and find_struct(). */
#ifndef ISP_CONVERT_REGISTER_MAP_H
#define ISP_CONVERT_REGISTER_MAP_H

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <type_traits>

#include <picojson.h>

#include "convert/common/field_reader.h"

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
};

struct struct_desc {
    const char *type;  /* "_isp_wbc_user_ctrl_t" */
    const char *group; /* "ctrl": the converter group it belongs to */
    uint32_t size;
    const member_desc *members;
    uint32_t member_count;
};

/* Where in a register file a row reads, relative to the block's top key. */
enum class read_kind : uint8_t {
    field,        /* top / reg / field */
    group_field,  /* top / array [index] / reg / field */
    group_each,   /* the same for every index below count, into element first + k * step */
    element,      /* top / array [index] / field */
    element_each, /* the same for every index below count, into element first + k * step */
    table,        /* top / [reg /] field [k] for k below count: raw numbers, saturated */
    hand_begin,   /* a hand-written reader reads the rows up to hand_end */
    hand_end,
};

/* Reads a quirk the rows cannot express; called once, at the first row that names it. */
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

/* Element index of a per-partition member: the partition being converted. */
constexpr uint32_t part_element = UINT32_MAX;

struct field_row {
    read_kind kind;
    const char *group; /* converter group */
    member_ref member;
    uint32_t element;  /* (first) element written; part_element for the partition's */
    uint32_t step;     /* each and table rows: from one element written to the next */
    const char *array; /* register group array or element array; nullptr when none */
    uint32_t index;    /* in that array; for each and table rows the number of entries */
    const char *reg;   /* nullptr for elements and top-level tables */
    const char *field; /* field, or the key of a table */
    const char *format;
    hand_reader by;   /* hand_begin: the reader */
    const char *note; /* hand_begin: what the reader does that rows cannot */
};

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
/* Where a row reads, as text: "isp_wbc.wb_gain0.val1", "isp_dem.win[3].size.h",
 * "isp_gamma.lut[0..128]" (an each or table row reads every index of the range). */
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
}  // namespace detail

}  // namespace isp

#endif
