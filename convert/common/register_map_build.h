/* Turns a block's .def file into its block map. A block's converter source defines
 *   ISP_DEF_FILE   the .def file, as an include path string
 *   ISP_DEF_BLOCK  the block name, a bare identifier (wbc): the map is isp::wbc_map and its
 *                  top key in the register files "isp_wbc"
 * declares the hand-written readers its rows name, and includes this file once. A .def file has
 * nine kinds of row:
 *   ISP_STRUCT(group, type)                 a driver structure; its members follow in memory order
 *   ISP_MEMBER(group, member)               a scalar, array or pointer member
 *   ISP_PART_MEMBER(group, member)          an array with one element (or row) per partition
 *   ISP_PART_MEMBER(group, member, sub)     a sub-member of a per-partition array of records
 *   ISP_READ(group, member, element, path, format)
 *       fixed-point fields at `path`, written as the register table writes it below the top key:
 *       "wb_gain0.val1", "grp0[3].gbl_val.value", "grp0[0..6].lin_lut_x.high" (every index of a
 *       range, in turn), "lower_lut[5].sat_mit_lower_lut" (an array whose elements hold the
 *       field). `member` is a member or record.sub; `element` an expression in k (the index the
 *       path reads) and per_part (the partition): 14, per_part, per_part + 1, 4 * k + 28.
 *   ISP_TABLE(group, member, path, format)  raw numbers, "rr_mesh[0..284]"; entries narrower than
 *       the member's elements (format "u16" into uint32_t words) are packed into them, a word's
 *       low half first
 *   ISP_INTERLEAVE(group) ... ISP_END(group)
 *       the read rows between run index by index: every row's index 0, then every row's index
 *       1, ...; their paths' ranges are the same
 *   ISP_HAND(group, reader, note) ... ISP_END(group)
 *       a hand-written reader reads what the rows between describe
 *   ISP_EXPORT(group, member, key)
 *       the C-model exporter writes every member its group's rows read, under the member's name,
 *       in the format of its first row: as a value, an array of every element, the partition's
 *       element or the partition's row. This row gives a member another key, or no_key when the
 *       exporter writes it by hand or not at all.
 * Paths, elements and formats are checked when the table is compiled. */
#include <stddef.h>

#include <array>
#include <iterator>

#include "convert/common/register_map.h"

#define ISP_DEF_CAT2(a, b) a##b
#define ISP_DEF_CAT(a, b) ISP_DEF_CAT2(a, b)
#define ISP_DEF_NS ISP_DEF_CAT(ISP_DEF_BLOCK, _def)
/* ISP_PART_MEMBER with two arguments is ISP_DEF_PART_WHOLE, with three ISP_DEF_PART_SUB. */
#define ISP_DEF_PICK(a, b, c, name, ...) name
#define ISP_DEF_PART_MEMBER(...) \
    ISP_DEF_PICK(__VA_ARGS__, ISP_DEF_PART_SUB, ISP_DEF_PART_WHOLE, none)(__VA_ARGS__)

namespace isp {
namespace ISP_DEF_NS {

using detail::k;
using detail::per_part;
constexpr const char *no_key = nullptr;

/* ---- the structure types, by group ---- */
#define ISP_STRUCT(group, type) using group##_t = type;
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"

/* ---- member layouts ---- */
#define ISP_DEF_ELEM(group, member) ::isp::detail::element_of<decltype(group##_t::member)>
#define ISP_DEF_DESC(group, member, part)                             \
    {#member,                                                         \
     offsetof(group##_t, member),                                     \
     sizeof(group##_t::member) / sizeof(ISP_DEF_ELEM(group, member)), \
     sizeof(ISP_DEF_ELEM(group, member)),                             \
     sizeof(ISP_DEF_ELEM(group, member)),                             \
     ::isp::detail::is_signed_element<decltype(group##_t::member)>(), \
     part,                                                            \
     std::is_pointer<ISP_DEF_ELEM(group, member)>::value,             \
     std::extent<decltype(group##_t::member), 1>::value},
#define ISP_MEMBER(group, member) ISP_DEF_DESC(group, member, false)
#define ISP_DEF_PART_WHOLE(group, member) ISP_DEF_DESC(group, member, true)
#define ISP_DEF_PART_SUB(group, member, sub)                                   \
    {#member "." #sub,                                                         \
     offsetof(group##_t, member) + offsetof(ISP_DEF_ELEM(group, member), sub), \
     sizeof(group##_t::member) / sizeof(ISP_DEF_ELEM(group, member)),          \
     sizeof(ISP_DEF_ELEM(group, member)),                                      \
     sizeof(ISP_DEF_ELEM(group, member)::sub),                                 \
     std::is_signed<decltype(ISP_DEF_ELEM(group, member)::sub)>::value,        \
     true,                                                                     \
     false,                                                                    \
     0},
#define ISP_PART_MEMBER ISP_DEF_PART_MEMBER
constexpr member_desc members[] = {
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"
    {nullptr, 0, 0, 0, 0, false, false, false, 0}};

/* What each member occupies, for the checks below; a per-partition array of structures counts
 * once as a whole. */
#define ISP_DEF_SPAN(group, member)                                                                \
    {#group, offsetof(group##_t, member), offsetof(group##_t, member) + sizeof(group##_t::member), \
     alignof(decltype(group##_t::member))},
#define ISP_MEMBER(group, member) ISP_DEF_SPAN(group, member)
#define ISP_DEF_PART_WHOLE(group, member) ISP_DEF_SPAN(group, member)
#define ISP_DEF_PART_SUB(group, member, sub) ISP_DEF_SPAN(group, member)
#define ISP_PART_MEMBER ISP_DEF_PART_MEMBER
constexpr detail::member_span spans[] = {
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"
    {nullptr, 0, 0, 1}};

/* What a row on each member writes: through a pointer, the element pointed to. */
#define ISP_DEF_STORED(group, member) ::isp::detail::stored_of<decltype(group##_t::member)>
#define ISP_MEMBER(group, member)                                                  \
    {{#member, offsetof(group##_t, member), sizeof(ISP_DEF_STORED(group, member)), \
      sizeof(ISP_DEF_STORED(group, member)),                                       \
      std::is_signed<ISP_DEF_STORED(group, member)>::value},                       \
     std::is_array<decltype(group##_t::member)>::value},
#define ISP_DEF_PART_WHOLE(group, member) ISP_MEMBER(group, member)
#define ISP_DEF_PART_SUB(group, member, sub)                                                      \
    {{#member "." #sub, offsetof(group##_t, member) + offsetof(ISP_DEF_ELEM(group, member), sub), \
      sizeof(ISP_DEF_ELEM(group, member)), sizeof(ISP_DEF_ELEM(group, member)::sub),              \
      std::is_signed<decltype(ISP_DEF_ELEM(group, member)::sub)>::value},                         \
     false},
#define ISP_PART_MEMBER ISP_DEF_PART_MEMBER
constexpr detail::member_target targets[] = {
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"
    {{nullptr, 0, 0, 0, false}, false}};

#define ISP_STRUCT(group, type)                                               \
    static_assert(detail::covers(spans, #group, sizeof(type), alignof(type)), \
                  "the member rows of " #type " must list every member, in memory order");
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"

#define ISP_STRUCT(group, type)                                              \
    {#type, #group, sizeof(type), members + detail::first_of(spans, #group), \
     detail::count_of(spans, #group)},
constexpr struct_desc structs[] = {
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"
    {nullptr, nullptr, 0, nullptr, 0}};

/* ---- register rows ---- */
#define ISP_READ(group, member, element, path, format)                                        \
    detail::make_row(members, spans, targets, row_kind::read, #group, #member, element, path, \
                     format),
#define ISP_TABLE(group, member, path, format) \
    detail::make_row(members, spans, targets, row_kind::table, #group, #member, k, path, format),
#define ISP_INTERLEAVE(group) detail::bracket_row(row_kind::interleave, #group, nullptr, nullptr),
#define ISP_HAND(group, reader, note) detail::bracket_row(row_kind::hand, #group, reader, note),
#define ISP_END(group) detail::bracket_row(row_kind::end, #group, nullptr, nullptr),
constexpr field_row rows[] = {
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"
    detail::bracket_row(row_kind::end, "", nullptr, nullptr)};
static_assert(detail::brackets_hold(rows),
              "an interleave or hand bracket is not closed, or the "
              "rows of an interleave read ranges of different sizes");

/* ---- C-model keys ---- */
#define ISP_EXPORT(group, member, key) {#group, #member, key},
constexpr detail::export_key export_keys[] = {
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"
    {nullptr, nullptr, nullptr}};
static_assert(detail::keys_name_read_members(export_keys, members, spans, rows),
              "an export row names a member its group's rows do not read");
constexpr std::array<export_row, detail::export_count(members, spans, rows, export_keys)> exports =
    detail::make_exports<detail::export_count(members, spans, rows, export_keys)>(
        members, spans, targets, rows, export_keys);

}  // namespace ISP_DEF_NS

#define ISP_DEF_STR2(x) #x
#define ISP_DEF_STR(x) ISP_DEF_STR2(x)
#define ISP_DEF_MAP ISP_DEF_CAT(ISP_DEF_BLOCK, _map)
extern const block_map ISP_DEF_MAP;
const block_map ISP_DEF_MAP = {ISP_DEF_STR(ISP_DEF_BLOCK), "isp_" ISP_DEF_STR(ISP_DEF_BLOCK),
                               ISP_DEF_NS::structs,        std::size(ISP_DEF_NS::structs) - 1,
                               ISP_DEF_NS::rows,           std::size(ISP_DEF_NS::rows) - 1,
                               ISP_DEF_NS::exports.data(), ISP_DEF_NS::exports.size()};
#undef ISP_DEF_MAP
#undef ISP_DEF_STR
#undef ISP_DEF_STR2

}  // namespace isp

#undef ISP_DEF_ELEM
#undef ISP_DEF_DESC
#undef ISP_DEF_SPAN
#undef ISP_DEF_STORED
#undef ISP_DEF_PICK
#undef ISP_DEF_PART_MEMBER
#undef ISP_DEF_NS
#undef ISP_DEF_CAT
#undef ISP_DEF_CAT2
#undef ISP_DEF_FILE
#undef ISP_DEF_BLOCK
