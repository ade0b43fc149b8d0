/* Turns a block's .def file into its block map. A block's converter source defines
 *   ISP_DEF_FILE   the .def file, as an include path string
 *   ISP_DEF_BLOCK  the block name, a bare identifier (wbc): the map is isp::wbc_map and its
 *                  top key in the register files "isp_wbc"
 * declares the hand-written readers its rows name, and includes this file once. The .def rows:
 *   ISP_STRUCT(group, type)                  a driver structure; its members follow in memory order
 *   ISP_MEMBER(group, member)                a scalar or array member
 *   ISP_PART_MEMBER(group, member)           an array with one element per partition
 *   ISP_PART_SUB(group, member, sub)         a sub-member of a per-partition array of structures
 *   ISP_POINTER(group, member)               a member that holds a host address
 *   ISP_FIELD(group, member, element, reg, field, format)
 *   ISP_FIELD_SUB(group, member, sub, reg, field, format)          into the partition's element
 *   ISP_FIELD_PART_ELEM(group, member, index, reg, field, format)  into element index of the
 *                                         partition's row of a [partition][n] array
 *   ISP_GROUP_FIELD(group, member, element, array, index, reg, field, format)
 *   ISP_GROUP_EACH(group, member, first, step, array, count, reg, field, format)
 *   ISP_ELEMENT(group, member, element, array, index, field, format)
 *   ISP_ELEMENT_EACH(group, member, first, step, array, count, field, format)
 *   ISP_TABLE(group, member, reg, key, count, format)                reg may be nullptr
 *   ISP_TABLE_PACKED(group, member, entry, reg, key, count, format)  entries packed into the
 *                                            member's words: entry k is its k-th piece of type
 *                                            `entry` in memory (a word's low half first)
 *   ISP_HAND(group, reader, note) ... ISP_HAND_END(group)            rows the reader reads
 *   ISP_EXPORT(group, key, member, format)      a value, or an array of every element
 *   ISP_EXPORT_PART(group, key, member, format) the partition's element, as a value; of a
 *                                         [partition][n] array, the partition's row, as an array
 * `element` is a number or per_part (the partition being converted). */
#include <stddef.h>

#include <iterator>

#include "convert/common/register_map.h"

#define ISP_DEF_CAT2(a, b) a##b
#define ISP_DEF_CAT(a, b) ISP_DEF_CAT2(a, b)
#define ISP_DEF_NS ISP_DEF_CAT(ISP_DEF_BLOCK, _def)

namespace isp {
namespace ISP_DEF_NS {

constexpr uint32_t per_part = part_element;

/* ---- the structure types, by group ---- */
#define ISP_STRUCT(group, type) using group##_t = type;
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"

/* ---- member layouts ---- */
#define ISP_DEF_ELEM(group, member) ::isp::detail::element_of<decltype(group##_t::member)>
#define ISP_DEF_DESC(group, member, part, pointer)                                           \
    {#member,                                                                                \
     offsetof(group##_t, member),                                                            \
     sizeof(group##_t::member) / sizeof(ISP_DEF_ELEM(group, member)),                        \
     sizeof(ISP_DEF_ELEM(group, member)),                                                    \
     sizeof(ISP_DEF_ELEM(group, member)),                                                    \
     ::isp::detail::is_signed_element<decltype(group##_t::member)>(),                        \
     part,                                                                                   \
     pointer},
#define ISP_MEMBER(group, member) ISP_DEF_DESC(group, member, false, false)
#define ISP_PART_MEMBER(group, member) ISP_DEF_DESC(group, member, true, false)
#define ISP_POINTER(group, member) ISP_DEF_DESC(group, member, false, true)
#define ISP_PART_SUB(group, member, sub)                                                      \
    {#member "." #sub,                                                                        \
     offsetof(group##_t, member) + offsetof(ISP_DEF_ELEM(group, member), sub),                \
     sizeof(group##_t::member) / sizeof(ISP_DEF_ELEM(group, member)),                         \
     sizeof(ISP_DEF_ELEM(group, member)),                                                     \
     sizeof(ISP_DEF_ELEM(group, member)::sub),                                                \
     std::is_signed<decltype(ISP_DEF_ELEM(group, member)::sub)>::value,                       \
     true,                                                                                    \
     false},
constexpr member_desc members[] = {
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"
    {nullptr, 0, 0, 0, 0, false, false, false}};

/* What each member occupies, for the checks below; a per-partition array of structures counts
 * once as a whole. */
#define ISP_DEF_SPAN(group, member) \
    {#group, offsetof(group##_t, member), \
     offsetof(group##_t, member) + sizeof(group##_t::member), alignof(decltype(group##_t::member))},
#define ISP_MEMBER(group, member) ISP_DEF_SPAN(group, member)
#define ISP_PART_MEMBER(group, member) ISP_DEF_SPAN(group, member)
#define ISP_POINTER(group, member) ISP_DEF_SPAN(group, member)
#define ISP_PART_SUB(group, member, sub) ISP_DEF_SPAN(group, member)
constexpr detail::member_span spans[] = {
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"
    {nullptr, 0, 0, 1}};

#define ISP_STRUCT(group, type)                                                               \
    static_assert(detail::covers(spans, #group, sizeof(type), alignof(type)),                 \
                  "the member rows of " #type " must list every member, in memory order");
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"

#define ISP_STRUCT(group, type)                                                               \
    {#type, #group, sizeof(type), members + detail::first_of(spans, #group),                  \
     detail::count_of(spans, #group)},
constexpr struct_desc structs[] = {
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"
    {nullptr, nullptr, 0, nullptr, 0}};

/* ---- register rows ---- */
#define ISP_DEF_STORED(group, member) ::isp::detail::stored_of<decltype(group##_t::member)>
#define ISP_DEF_REF(group, member)                                                            \
    ::isp::member_ref {                                                                       \
        #member, offsetof(group##_t, member), sizeof(ISP_DEF_STORED(group, member)),          \
            sizeof(ISP_DEF_STORED(group, member)),                                            \
            std::is_signed<ISP_DEF_STORED(group, member)>::value                              \
    }
#define ISP_DEF_ROW(kind, group, ref, elem, step, array, index, reg, fld, format, by, note) \
    {::isp::read_kind::kind, #group, ref, elem, step, array, index, reg, fld, format, by, note},
#define ISP_FIELD(group, member, elem, reg, fld, format) \
    ISP_DEF_ROW(field, group, ISP_DEF_REF(group, member), elem, 1, nullptr, 0, reg, fld, format, nullptr, nullptr)
#define ISP_FIELD_SUB(group, member, sub, reg, fld, format)                                      \
    ISP_DEF_ROW(field, group,                                                                      \
                (::isp::member_ref{#member "." #sub,                                               \
                                   offsetof(group##_t, member) +                                   \
                                       offsetof(ISP_DEF_ELEM(group, member), sub),                 \
                                   sizeof(ISP_DEF_ELEM(group, member)),                            \
                                   sizeof(ISP_DEF_ELEM(group, member)::sub),                       \
                                   std::is_signed<decltype(ISP_DEF_ELEM(group, member)::sub)>::value}), \
                per_part, 1, nullptr, 0, reg, fld, format, nullptr, nullptr)
/* A per-partition row of n elements: element `index` of every row, one row (stride) apart. */
#define ISP_FIELD_PART_ELEM(group, member, index, reg, fld, format)                              \
    ISP_DEF_ROW(field, group,                                                                      \
                (::isp::member_ref{#member,                                                        \
                                   offsetof(group##_t, member) +                                   \
                                       (index) * sizeof(ISP_DEF_ELEM(group, member)),              \
                                   sizeof(group##_t::member[0]),                                   \
                                   sizeof(ISP_DEF_ELEM(group, member)),                            \
                                   ::isp::detail::is_signed_element<decltype(group##_t::member)>()}), \
                per_part, 1, nullptr, 0, reg, fld, format, nullptr, nullptr)
#define ISP_GROUP_FIELD(group, member, elem, array, index, reg, fld, format) \
    ISP_DEF_ROW(group_field, group, ISP_DEF_REF(group, member), elem, 1, array, index, reg, fld, format, nullptr, nullptr)
#define ISP_GROUP_EACH(group, member, first, step, array, count, reg, fld, format) \
    ISP_DEF_ROW(group_each, group, ISP_DEF_REF(group, member), first, step, array, count, reg, fld, format, nullptr, nullptr)
#define ISP_ELEMENT(group, member, elem, array, index, fld, format) \
    ISP_DEF_ROW(element, group, ISP_DEF_REF(group, member), elem, 1, array, index, nullptr, fld, format, nullptr, nullptr)
#define ISP_ELEMENT_EACH(group, member, first, step, array, count, fld, format) \
    ISP_DEF_ROW(element_each, group, ISP_DEF_REF(group, member), first, step, array, count, nullptr, fld, format, nullptr, nullptr)
#define ISP_TABLE(group, member, reg, key, count, format) \
    ISP_DEF_ROW(table, group, ISP_DEF_REF(group, member), 0, 1, nullptr, count, reg, key, format, nullptr, nullptr)
#define ISP_TABLE_PACKED(group, member, entry, reg, key, count, format)                                  \
    ISP_DEF_ROW(table, group,                                                                            \
                (::isp::member_ref{#member, offsetof(group##_t, member), sizeof(entry), sizeof(entry),   \
                                   std::is_signed<entry>::value}),                                       \
                0, 1, nullptr, count, reg, key, format, nullptr, nullptr)
#define ISP_HAND(group, reader, note) \
    ISP_DEF_ROW(hand_begin, group, (::isp::member_ref{nullptr, 0, 0, 0, false}), 0, 0, nullptr, 0, nullptr, nullptr, nullptr, reader, note)
#define ISP_HAND_END(group) \
    ISP_DEF_ROW(hand_end, group, (::isp::member_ref{nullptr, 0, 0, 0, false}), 0, 0, nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr)
constexpr field_row rows[] = {
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"
    ISP_DEF_ROW(hand_end, none, (::isp::member_ref{nullptr, 0, 0, 0, false}), 0, 0, nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr)};

#define ISP_EXPORT(group, key, member, format)                                                 \
    {#group, key, ISP_DEF_REF(group, member),                                                  \
     std::is_array<decltype(group##_t::member)>::value                                         \
         ? static_cast<uint32_t>(sizeof(group##_t::member) / sizeof(ISP_DEF_ELEM(group, member))) \
         : 0u,                                                                                 \
     false, format},
#define ISP_EXPORT_PART(group, key, member, format)                                            \
    {#group, key, ISP_DEF_REF(group, member),                                                  \
     static_cast<uint32_t>(std::extent<decltype(group##_t::member), 1>::value), true, format},
constexpr export_row exports[] = {
#include "convert/common/register_map_rows.h"
#include ISP_DEF_FILE
#include "convert/common/register_map_rows.h"
    {nullptr, nullptr, {nullptr, 0, 0, 0, false}, 0, false, nullptr}};

}  // namespace ISP_DEF_NS

#define ISP_DEF_STR2(x) #x
#define ISP_DEF_STR(x) ISP_DEF_STR2(x)
#define ISP_DEF_MAP ISP_DEF_CAT(ISP_DEF_BLOCK, _map)
extern const block_map ISP_DEF_MAP;
const block_map ISP_DEF_MAP = {ISP_DEF_STR(ISP_DEF_BLOCK),
                               "isp_" ISP_DEF_STR(ISP_DEF_BLOCK),
                               ISP_DEF_NS::structs,
                               std::size(ISP_DEF_NS::structs) - 1,
                               ISP_DEF_NS::rows,
                               std::size(ISP_DEF_NS::rows) - 1,
                               ISP_DEF_NS::exports,
                               std::size(ISP_DEF_NS::exports) - 1};
#undef ISP_DEF_MAP
#undef ISP_DEF_STR
#undef ISP_DEF_STR2

}  // namespace isp

#undef ISP_DEF_ELEM
#undef ISP_DEF_DESC
#undef ISP_DEF_SPAN
#undef ISP_DEF_STORED
#undef ISP_DEF_REF
#undef ISP_DEF_ROW
#undef ISP_DEF_NS
#undef ISP_DEF_CAT
#undef ISP_DEF_CAT2
#undef ISP_DEF_FILE
#undef ISP_DEF_BLOCK
