/* The rows that describe a hand-written reader are what tools know of the fields it reads: every
 * described field must be read, into the member and element the row names, and nothing else.
 * Each reader gets a register file holding a distinct value at every described field; it must
 * print nothing and fill exactly what the rows say. Field values are negative: an unsigned
 * format encodes the magnitude and a signed one the two's complement, so a row of the wrong sign
 * shows. */
#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "convert/common/register_map.h"
#include "modules/tables.h"
#include "tests/support/block_case.h"
#include "tests/support/test_support.h"

namespace {

picojson::object &object_in(picojson::value &slot) {
    if (!slot.is<picojson::object>()) slot = picojson::value(picojson::object());
    return slot.get<picojson::object>();
}

/* Element index of a register group, grown as needed. */
picojson::value &item_in(picojson::value &slot, size_t index) {
    if (!slot.is<picojson::array>()) slot = picojson::value(picojson::array());
    picojson::array &items = slot.get<picojson::array>();
    while (items.size() <= index) items.emplace_back(picojson::object());
    return items[index];
}

const isp::struct_desc &struct_of(const isp::block_map &map, const char *group) {
    for (size_t i = 0; i < map.struct_count; ++i)
        if (strcmp(map.structs[i].group, group) == 0) return map.structs[i];
    ADD_FAILURE() << map.block << ": no structure for group " << group;
    return map.structs[0];
}

void check_hand_reader(const isp::block_map &map, const isp::field_row *hand, uint8_t partition) {
    SCOPED_TRACE(std::string(map.block) + " " + hand->group + " " + hand->note);
    picojson::object root;
    picojson::object &top          = object_in(root[map.top_key]);
    const isp::struct_desc &layout = struct_of(map, hand->group);
    std::vector<uint8_t> expected(layout.size), filled(layout.size);
    /* A member that holds a pointer leads to an array the caller provides: rows on it describe
     * that array's elements. */
    std::vector<std::vector<uint8_t>> expected_arrays, filled_arrays;
    std::vector<uint32_t> pointer_offsets;
    for (uint32_t i = 0; i < layout.member_count; ++i) {
        if (!layout.members[i].pointer) continue;
        pointer_offsets.push_back(layout.members[i].offset);
        expected_arrays.emplace_back(ISP_MAX_PARTITIONS * sizeof(uint64_t));
        filled_arrays.emplace_back(ISP_MAX_PARTITIONS * sizeof(uint64_t));
        void *array = filled_arrays.back().data();
        memcpy(filled.data() + layout.members[i].offset, &array, sizeof array);
        memcpy(expected.data() + layout.members[i].offset, &array, sizeof array);
    }
    int value = 0;
    for (const isp::field_row *row = hand + 1; row->kind != isp::read_kind::hand_end; ++row) {
        const uint32_t first = row->element == isp::part_element ? partition : row->element;
        const bool table     = row->kind == isp::read_kind::table;
        const bool each      = table || row->kind == isp::read_kind::group_each ||
                          row->kind == isp::read_kind::element_each;
        for (uint32_t k = 0; k < (each ? row->index : 1); ++k) {
            const uint32_t index = each ? k : row->index;
            picojson::value *slot;
            switch (row->kind) {
                case isp::read_kind::field:
                    slot = &object_in(top[row->reg])[row->field];
                    break;
                case isp::read_kind::group_field:
                case isp::read_kind::group_each:
                    slot = &object_in(
                        object_in(item_in(top[row->array], index))[row->reg])[row->field];
                    break;
                case isp::read_kind::element:
                case isp::read_kind::element_each:
                    slot = &object_in(item_in(top[row->array], index))[row->field];
                    break;
                case isp::read_kind::table:
                    slot = &item_in(
                        row->reg ? object_in(top[row->reg])[row->field] : top[row->field], index);
                    break;
                default:
                    FAIL() << "a row kind a hand-written reader is not described with";
            }
            /* a table holds raw numbers, which saturate below zero */
            ++value;
            *slot                 = picojson::value(static_cast<double>(table ? value : -value));
            uint8_t *target       = expected.data();
            isp::member_ref where = row->member;
            for (size_t p = 0; p < pointer_offsets.size(); ++p)
                if (pointer_offsets[p] == where.offset) target = expected_arrays[p].data();
            if (target != expected.data()) where.offset = 0;
            isp::store_code(target, where, first + k * row->step,
                            table ? value : sign_to_regval(-value, row->format));
        }
    }
    ASSERT_GT(value, 0) << "no rows describe the reader";
    const isp::field_reader f(root, map.top_key);
    EXPECT_EQ(isp_test::stderr_of([&] { hand->by(f, filled.data(), partition); }), "");
    EXPECT_EQ(filled, expected);
    EXPECT_EQ(filled_arrays, expected_arrays);
}

TEST(RegisterMaps, HandWrittenReadersReadExactlyTheirDescribedRows) {
    size_t count;
    const isp::block_map *const *maps = isp::block_maps(&count);
    for (size_t m = 0; m < count; ++m)
        for (size_t r = 0; r < maps[m]->row_count; ++r)
            if (maps[m]->rows[r].kind == isp::read_kind::hand_begin)
                for (uint8_t partition : {0, 3})
                    check_hand_reader(*maps[m], &maps[m]->rows[r], partition);
}

/* A file without the top key: every converter that reads fields reports each and stores the
 * encoding of zero; one reading raw-number tables prints nothing and raises the type error. */
TEST(RegisterMaps, EveryConverterOfAFileWithoutItsBlockZeroesOrRaises) {
    for (const char *block : isp::blocks())
        for (const isp::converter_desc *conv : isp::block_converters(block)) {
            SCOPED_TRACE(conv->name);
            const isp_test::conversion c = isp_test::convert_named(conv->name, {});
            if (conv->raises_type_error) {
                EXPECT_EQ(c.error, isp_test::type_error("object"));
                EXPECT_TRUE(c.lines.empty());
                continue;
            }
            EXPECT_EQ(c.error, "no exception");
            if (!c.lines.empty()) {
                EXPECT_EQ(c.bytes, std::vector<uint8_t>(c.bytes.size()));
            }
            for (const std::string &line : c.lines)
                EXPECT_EQ(line.rfind("read json_obj failed: ", 0), 0u) << line;
        }
}

}  // namespace
