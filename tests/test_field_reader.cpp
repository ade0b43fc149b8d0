/* The shared converter and exporter helpers: field look-up with its failure policy, the
 * double-to-integer saturation, and the C-model writer. */
#include <stdint.h>

#include <cmath>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "convert/common/cmodel_writer.h"
#include "convert/common/field_reader.h"
#include "convert/common/saturate.h"
#include "tests/support/test_support.h"

namespace {

using isp::field_reader;
using isp_test::parse_object;
using isp_test::runtime_error_of;
using isp_test::serialized;
using isp_test::stderr_of;
using isp_test::type_error;

TEST(FieldReader, MissingKeysAreReportedInOrderReadAsZeroAndInsertedAsNull) {
    picojson::object root =
        parse_object(R"({"isp_wbc": {"d_gain": {"val": 3.5}, "big": {"val": 1e12}},
        "isp_blc": {"grp": [{"r": {"val": 1}}, {"r": {"val": -2.9}}, 7, {"r": {"val": 4}}],
                    "lut": [{"val": 9}, {"x": 1}, {"val": 5}], "flat": {"r": {"val": 4}}}})");
    const field_reader wbc(root, "isp_wbc"), blc(root, "isp_blc"), none(root, "isp_none");
    const std::string err = stderr_of([&] {
        EXPECT_EQ(wbc.read("d_gain", "val", "u8"), 3u);
        EXPECT_EQ(wbc.read("big", "val", "s3.8"), 0x7FFu);  // saturated, then masked
        EXPECT_EQ(blc.read("grp", 1, "r", "val", "s3.8"), 0xFFEu);
        EXPECT_EQ(blc.read_element("lut", 0, "val", "u8"), 9u);
        EXPECT_EQ(none.read("wb_gain0", "val1", "s3.8"), 0u);
        EXPECT_EQ(none.read("wb_gain0", "val1", "s3.8"), 0u);  // the inserted null fails again
        EXPECT_EQ(wbc.read("clip_level", "val", "u14.6"), 0u);
        EXPECT_EQ(wbc.read("d_gain", "high", "u4"), 0u);
        EXPECT_EQ(blc.read("grp", 2, "q", "val", "u8"), 0u);   // element is not an object
        EXPECT_EQ(blc.read("grp", 4, "r", "val", "u8"), 0u);   // past the end
        EXPECT_EQ(blc.read("flat", 0, "r", "val", "u8"), 0u);  // group is not an array
        EXPECT_EQ(blc.read("gone", 0, "r", "low", "u8"), 0u);
        EXPECT_EQ(blc.read_element("lut", 1, "val", "u8"), 0u);
        EXPECT_EQ(blc.read_element("lut", 3, "val", "u8"), 0u);
    });
    EXPECT_EQ(err,
              "read json_obj failed: wb_gain0.val1\nread json_obj failed: wb_gain0.val1\n"
              "read json_obj failed: clip_level.val\nread json_obj failed: d_gain.high\n"
              "read json_obj failed: q.val\nread json_obj failed: r.val\n"
              "read json_obj failed: r.val\nread json_obj failed: r.low\n"
              "read json_obj failed: lut.val\nread json_obj failed: lut.val\n");
    EXPECT_TRUE(root["isp_none"].is<picojson::null>());
    EXPECT_EQ(
        serialized(root["isp_wbc"].get<picojson::object>()),
        R"({"big":{"val":1000000000000},"clip_level":null,"d_gain":{"high":null,"val":3.5}})");
    /* nothing is appended to a short group */
    EXPECT_EQ(root["isp_blc"].get("grp").get<picojson::array>().size(), 4u);
    EXPECT_TRUE(root["isp_blc"].get("gone").is<picojson::null>());
}

TEST(FieldReader, ValuesOfTheWrongTypeAtAnyLevelAreReportedAndKept) {
    picojson::object root = parse_object(R"({
        "isp_a": {"r": {"t": true, "s": "12", "a": [1], "n": null, "o": {"v": 1}}, "num": 5},
        "isp_b": [1, 2]})");
    const field_reader a(root, "isp_a"), b(root, "isp_b");
    const std::string err = stderr_of([&] {
        for (const char *field : {"t", "s", "a", "n", "o"})
            EXPECT_EQ(a.read("r", field, "s3.8"), 0u) << field;
        EXPECT_EQ(a.read("num", "val", "u8"), 0u);
        EXPECT_EQ(b.read("r", "t", "u8"), 0u);
    });
    EXPECT_EQ(err,
              "read json_obj failed: r.t\nread json_obj failed: r.s\nread json_obj failed: r.a\n"
              "read json_obj failed: r.n\nread json_obj failed: r.o\n"
              "read json_obj failed: num.val\nread json_obj failed: r.t\n");
    EXPECT_EQ(serialized(root), R"({"isp_a":{"num":5,"r":{"a":[1],"n":null,"o":{"v":1},"s":"12",)"
                                R"("t":true}},"isp_b":[1,2]})");
}

TEST(FieldReader, RawNumbersSaturateUnsignedAndFailuresRaiseTheBareTypeError) {
    picojson::object root = parse_object(R"({"isp_lsc": {
        "rr_mesh": [1, 2.7, -3, 5e9, 4294967295, "2"], "flat": 3, "mesh": {"tbl": [7.9, 1]}}})");
    const field_reader f(root, "isp_lsc"), missing_top(root, "isp_none");
    const std::string err = stderr_of([&] {
        for (const auto &row : {std::make_pair(0, 1u), std::make_pair(1, 2u), std::make_pair(2, 0u),
                                std::make_pair(3, 0xFFFFFFFFu), std::make_pair(4, 0xFFFFFFFFu)})
            EXPECT_EQ(f.raw_number("rr_mesh", row.first), row.second) << row.first;
        EXPECT_EQ(f.raw_number("mesh", "tbl", 0), 7u);
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("rr_mesh", 5); }), type_error("double"));
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("rr_mesh", 6); }), type_error("double"));
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("flat", 0); }), type_error("array"));
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("gone", 0); }), type_error("array"));
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("no", "tbl", 0); }), type_error("object"));
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("mesh", "tbl", 2); }), type_error("double"));
        EXPECT_EQ(runtime_error_of([&] { missing_top.raw_number("rr_mesh", 0); }),
                  type_error("object"));
    });
    EXPECT_EQ(err, "");
    EXPECT_TRUE(root["isp_lsc"].get("gone").is<picojson::null>());
    EXPECT_TRUE(root["isp_none"].is<picojson::null>());
}

TEST(Saturate, TruncatesTowardZeroAndClampsAtBothLimitsWithNanAsZero) {
    // clang-format off
    const struct { double value; int32_t to_int; uint32_t to_uint; } rows[] = {
        {0.0, 0, 0}, {-0.0, 0, 0}, {1e-300, 0, 0}, {0.999, 0, 0}, {-0.999, 0, 0}, {2.9, 2, 2},
        {-2.9, -2, 0}, {2147483646.9, 2147483646, 2147483646u},
        {2147483647.5, INT32_MAX, 2147483647u}, {-2147483647.9, -2147483647, 0},
        {-2147483648.0, INT32_MIN, 0}, {-2147483648.9, INT32_MIN, 0},
        {4294967294.9, INT32_MAX, 4294967294u}, {4294967295.0, INT32_MAX, UINT32_MAX},
        {1e12, INT32_MAX, UINT32_MAX}, {-1e12, INT32_MIN, 0}, {INFINITY, INT32_MAX, UINT32_MAX},
        {-INFINITY, INT32_MIN, 0}, {NAN, 0, 0}, {-NAN, 0, 0},
    };
    // clang-format on
    for (const auto &row : rows) {
        EXPECT_EQ(isp::saturate_to_int32(row.value), row.to_int) << row.value;
        EXPECT_EQ(isp::saturate_to_uint32(row.value), row.to_uint) << row.value;
    }
}

TEST(CmodelWriter, DecodesMembersZeroExtendedReplacingOnlyItsOwnKeys) {
    picojson::object out = parse_object(R"({"d_gain": "old", "wb_gain": [9], "keep": "me"})");
    const isp::cmodel_writer w(out);
    const uint16_t wb_gain[4] = {256, 384, 512, 256}, twelve_bits = 0xFFF;
    const uint8_t byte = 0xFF, dither[2] = {1, 2};
    const uint16_t lut[2][3]  = {{16, 32, 48}, {0, 8, 4080}};
    const uint32_t counted[3] = {1, 2, 3};
    w.value("d_gain", uint16_t{256}, "u10.8");
    w.array("wb_gain", wb_gain, "u4.8");
    w.value("a", twelve_bits, "s3.8");
    w.value("b", byte, "s7.0");
    w.value("c", byte, "u8");
    w.value("d", 0x800, "s3.8");
    w.array("first_two", counted, 2, "u2");
    w.array("dither", {dither[1], dither[0]}, "u1.1");
    w.table("lut", &lut[0][0], 2, 3, "u4.4");
    w.table("empty", &lut[0][0], 0, 3, "u4.4");
    EXPECT_THROW(w.value("inf", 1, "u0.32"), std::overflow_error);
    EXPECT_EQ(serialized(out),
              R"({"a":-0.00390625,"b":-1,"c":255,"d":0,"d_gain":1,"dither":[1,0.5],)"
              R"("empty":[],"first_two":[1,2],"keep":"me","lut":[[1,2,3],[0,0.5,255]],)"
              R"("wb_gain":[1,1.5,2,1]})");
}

}  // namespace
