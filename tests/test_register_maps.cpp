/* Every row of every block map is what tools know of the field it reads: run through the
 * converter of its group (the rows themselves, an interleave, or a hand-written reader), every
 * described field must be read into the member and element the row names, and nothing else.
 * Each group gets a register file holding a distinct value at every described field; it must
 * print nothing and fill exactly what the rows say. Field values are negative: an unsigned
 * format encodes the magnitude and a signed one the two's complement, so a row of the wrong sign
 * shows. */
#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "convert/common/register_map.h"
#include "isp_json_utils.h"
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

/* Where a register file holds index `index` of a row's path. */
picojson::value &slot_of(picojson::object &top, const isp::field_row &row, uint32_t index) {
    const std::string array(row.keys.array), reg(row.keys.reg), field(row.keys.field);
    if (row.kind == isp::row_kind::table)
        return item_in(reg.empty() ? top[field] : object_in(top[reg])[field], index);
    picojson::object &holder = array.empty() ? top : object_in(item_in(top[array], index));
    return reg.empty() ? holder[field] : object_in(holder[reg])[field];
}

void check_group(const isp::block_map &map, const isp::struct_desc &layout, uint8_t partition) {
    SCOPED_TRACE(std::string(map.block) + " " + layout.group + " partition " +
                 std::to_string(partition));
    picojson::object root;
    picojson::object &top = object_in(root[map.top_key]);
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
    for (size_t r = 0; r < map.row_count; ++r) {
        const isp::field_row &row = map.rows[r];
        if (strcmp(row.group, layout.group) != 0) continue;
        if (row.kind != isp::row_kind::read && row.kind != isp::row_kind::table) continue;
        const bool table = row.kind == isp::row_kind::table;
        for (uint32_t i = row.keys.first; i < row.keys.first + row.keys.count; ++i) {
            /* a table holds raw numbers, which saturate below zero */
            ++value;
            slot_of(top, row, i)  = picojson::value(static_cast<double>(table ? value : -value));
            uint8_t *target       = expected.data();
            isp::member_ref where = row.member;
            for (size_t p = 0; p < pointer_offsets.size(); ++p)
                if (pointer_offsets[p] == where.offset) target = expected_arrays[p].data();
            if (target != expected.data()) where.offset = 0;
            isp::store_code(target, where, isp::element_of(row, i, partition),
                            table ? value : sign_to_regval(-value, row.format));
        }
    }
    if (value == 0) return;
    EXPECT_EQ(isp_test::stderr_of(
                  [&] { isp::read_rows(map, layout.group, root, filled.data(), partition); }),
              "");
    EXPECT_EQ(filled, expected);
    EXPECT_EQ(filled_arrays, expected_arrays);
}

TEST(RegisterMaps, EveryRowReadsItsPathIntoItsElement) {
    size_t count;
    const isp::block_map *const *maps = isp::block_maps(&count);
    for (size_t m = 0; m < count; ++m)
        for (size_t s = 0; s < maps[m]->struct_count; ++s)
            for (uint8_t partition : {0, 3}) check_group(*maps[m], maps[m]->structs[s], partition);
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
