/* The shared converter and exporter helpers: field look-up with its failure policy, the
 * double-to-integer saturation, and the C-model writer. */
#include <stdint.h>

#include <cmath>
#include <limits>
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

TEST(field_reader, a_missing_top_key_reports_every_field_in_order_and_inserts_null) {
    picojson::object root = parse_object(R"({"isp_blc": {"a": {"val": 1}}})");
    const field_reader f(root, "isp_wbc");
    const std::string err = stderr_of([&] {
        EXPECT_EQ(f.read("bayer_pattern", "val", "u2"), 0u);
        EXPECT_EQ(f.read("wb_gain0", "val0", "u4.8"), 0u);
        EXPECT_EQ(f.read("wb_gain0", "val1", "s3.8"), 0u);
    });
    EXPECT_EQ(err,
              "read json_obj failed: bayer_pattern.val\n"
              "read json_obj failed: wb_gain0.val0\n"
              "read json_obj failed: wb_gain0.val1\n");
    ASSERT_EQ(root.size(), 2u);
    EXPECT_TRUE(root["isp_wbc"].is<picojson::null>());
    /* The null entry stays and fails the next reader the same way. */
    EXPECT_EQ(stderr_of([&] { f.read("bayer_pattern", "val", "u2"); }),
              "read json_obj failed: bayer_pattern.val\n");
}

TEST(field_reader, a_missing_register_or_field_is_inserted_as_null_under_its_parent) {
    picojson::object root = parse_object(R"({"isp_wbc": {"d_gain": {"val": 3}}})");
    const field_reader f(root, "isp_wbc");
    const std::string err = stderr_of([&] {
        EXPECT_EQ(f.read("clip_level", "val", "u14.6"), 0u);
        EXPECT_EQ(f.read("d_gain", "high", "u4"), 0u);
    });
    EXPECT_EQ(err,
              "read json_obj failed: clip_level.val\n"
              "read json_obj failed: d_gain.high\n");
    EXPECT_EQ(serialized(root),
              R"({"isp_wbc":{"clip_level":null,"d_gain":{"high":null,"val":3}}})");
}

TEST(field_reader, values_of_the_wrong_type_at_any_level_are_reported_and_kept) {
    picojson::object root = parse_object(R"({
        "isp_a": {"r": {"t": true, "s": "12", "a": [1], "n": null, "o": {"v": 1}}, "num": 5},
        "isp_b": [1, 2]})");
    const field_reader a(root, "isp_a");
    const field_reader b(root, "isp_b");
    const std::string err = stderr_of([&] {
        for (const char *field : {"t", "s", "a", "n", "o"})
            EXPECT_EQ(a.read("r", field, "s3.8"), 0u) << field;
        EXPECT_EQ(a.read("num", "val", "u8"), 0u);
        EXPECT_EQ(b.read("r", "t", "u8"), 0u);
    });
    EXPECT_EQ(err,
              "read json_obj failed: r.t\n"
              "read json_obj failed: r.s\n"
              "read json_obj failed: r.a\n"
              "read json_obj failed: r.n\n"
              "read json_obj failed: r.o\n"
              "read json_obj failed: num.val\n"
              "read json_obj failed: r.t\n");
    EXPECT_TRUE(root["isp_a"].get("r").get("t").is<bool>());
    EXPECT_EQ(root["isp_a"].get("num").get<double>(), 5.0);
    EXPECT_EQ(root["isp_b"].serialize(), "[1,2]");
}

TEST(field_reader, numbers_truncate_toward_zero_and_saturate) {
    picojson::object root = parse_object(R"({"isp_x": {"r": {
        "a": 3.99, "b": -0.5, "c": -2.9, "d": 1e12, "e": -1e12, "f": 2.5e9}}})");
    const field_reader f(root, "isp_x");
    EXPECT_EQ(f.read("r", "a", "u8"), 3u);
    EXPECT_EQ(f.read("r", "b", "s3.8"), 0u);
    EXPECT_EQ(f.read("r", "c", "s3.8"), 0xFFEu);
    EXPECT_EQ(f.read("r", "d", "u32"), 0x7FFFFFFFu);
    EXPECT_EQ(f.read("r", "d", "s3.8"), 0x7FFu);
    EXPECT_EQ(f.read("r", "e", "u32"), 0x80000000u);
    EXPECT_EQ(f.read("r", "f", "u32"), 0x7FFFFFFFu);
}

TEST(field_reader, register_groups_are_read_by_position) {
    picojson::object root = parse_object(R"({"isp_blc": {
        "grp": [{"r": {"val": 1}}, {"r": {"val": -2}}, 7],
        "flat": {"r": {"val": 4}}}})");
    const field_reader f(root, "isp_blc");
    std::string err = stderr_of([&] {
        EXPECT_EQ(f.read("grp", 0, "r", "val", "u8"), 1u);
        EXPECT_EQ(f.read("grp", 1, "r", "val", "s3.8"), 0xFFEu);
    });
    EXPECT_EQ(err, "");
    err = stderr_of([&] {
        EXPECT_EQ(f.read("grp", 2, "r", "val", "u8"), 0u);   // element is not an object
        EXPECT_EQ(f.read("grp", 3, "r", "val", "u8"), 0u);   // past the end
        EXPECT_EQ(f.read("flat", 0, "r", "val", "u8"), 0u);  // group is not an array
        EXPECT_EQ(f.read("none", 0, "q", "low", "u8"), 0u);  // group missing
    });
    EXPECT_EQ(err,
              "read json_obj failed: r.val\n"
              "read json_obj failed: r.val\n"
              "read json_obj failed: r.val\n"
              "read json_obj failed: q.low\n");
    /* Nothing is appended to a short group; a missing group is inserted as null. */
    EXPECT_EQ(root["isp_blc"].get("grp").get<picojson::array>().size(), 3u);
    EXPECT_TRUE(root["isp_blc"].get("none").is<picojson::null>());
}

TEST(field_reader, array_elements_holding_fields_directly) {
    picojson::object root = parse_object(R"({"isp_dem": {"lut": [{"val": 9}, {"x": 1}]}})");
    const field_reader f(root, "isp_dem");
    const std::string err = stderr_of([&] {
        EXPECT_EQ(f.read_element("lut", 0, "val", "u8"), 9u);
        EXPECT_EQ(f.read_element("lut", 1, "val", "u8"), 0u);
        EXPECT_EQ(f.read_element("lut", 2, "val", "u8"), 0u);
    });
    EXPECT_EQ(err,
              "read json_obj failed: lut.val\n"
              "read json_obj failed: lut.val\n");
}

TEST(field_reader, raw_numbers_saturate_unsigned) {
    picojson::object root = parse_object(R"({"isp_lsc": {
        "rr_mesh": [1, 2.7, -3, 5e9, 4294967295],
        "mesh": {"tbl": [7.9]}}})");
    const field_reader f(root, "isp_lsc");
    const std::string err = stderr_of([&] {
        EXPECT_EQ(f.raw_number("rr_mesh", 0), 1u);
        EXPECT_EQ(f.raw_number("rr_mesh", 1), 2u);
        EXPECT_EQ(f.raw_number("rr_mesh", 2), 0u);
        EXPECT_EQ(f.raw_number("rr_mesh", 3), 0xFFFFFFFFu);
        EXPECT_EQ(f.raw_number("rr_mesh", 4), 0xFFFFFFFFu);
        EXPECT_EQ(f.raw_number("mesh", "tbl", 0), 7u);
    });
    EXPECT_EQ(err, "");
}

TEST(field_reader, raw_number_failures_raise_the_type_error_without_a_message) {
    picojson::object root =
        parse_object(R"({"isp_lsc": {"rr_mesh": [1, "2"], "flat": 3, "mesh": {"tbl": [1]}}})");
    const field_reader f(root, "isp_lsc");
    const field_reader missing_top(root, "isp_none");
    const std::string err = stderr_of([&] {
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("rr_mesh", 1); }), type_error("double"));
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("rr_mesh", 2); }), type_error("double"));
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("flat", 0); }), type_error("array"));
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("gone", 0); }), type_error("array"));
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("nomesh", "tbl", 0); }),
                  type_error("object"));
        EXPECT_EQ(runtime_error_of([&] { f.raw_number("mesh", "tbl", 1); }), type_error("double"));
        EXPECT_EQ(runtime_error_of([&] { missing_top.raw_number("rr_mesh", 0); }),
                  type_error("object"));
    });
    EXPECT_EQ(err, "");
    EXPECT_TRUE(root["isp_lsc"].get("gone").is<picojson::null>());
    EXPECT_TRUE(root["isp_none"].is<picojson::null>());
}

TEST(saturate_to_int32, truncates_toward_zero_and_clamps_at_both_limits) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // clang-format off
    const struct { double value; int32_t expected; } rows[] = {
        {0.0, 0}, {-0.0, 0}, {1e-300, 0}, {0.999, 0}, {-0.999, 0}, {2.9, 2}, {-2.9, -2},
        {2147483646.9, 2147483646}, {2147483647.0, INT32_MAX}, {2147483647.5, INT32_MAX},
        {2147483648.0, INT32_MAX}, {1e12, INT32_MAX}, {inf, INT32_MAX},
        {-2147483647.9, -2147483647}, {-2147483648.0, INT32_MIN}, {-2147483648.9, INT32_MIN},
        {-1e12, INT32_MIN}, {-inf, INT32_MIN}, {nan, 0}, {-nan, 0},
    };
    // clang-format on
    for (const auto &row : rows)
        EXPECT_EQ(isp::saturate_to_int32(row.value), row.expected) << row.value;
}

TEST(saturate_to_uint32, clamps_negatives_and_nan_to_zero) {
    const double inf     = std::numeric_limits<double>::infinity();
    const double nan     = std::numeric_limits<double>::quiet_NaN();
    const double in[]    = {0.99, -0.5, -1e12, -inf, nan, 4294967294.9, 4294967295.0, 1e12, inf};
    const uint32_t out[] = {0, 0, 0, 0, 0, 4294967294u, UINT32_MAX, UINT32_MAX, UINT32_MAX};
    for (size_t i = 0; i < 9; ++i) EXPECT_EQ(isp::saturate_to_uint32(in[i]), out[i]) << in[i];
}

TEST(cmodel_writer, decodes_into_the_object_replacing_its_own_keys_only) {
    picojson::object out      = parse_object(R"({"d_gain": "old", "wb_gain": [9], "keep": "me"})");
    const uint16_t d_gain     = 256;
    const uint16_t wb_gain[4] = {256, 384, 512, 256};
    const uint32_t clip_level = 65472;
    const isp::cmodel_writer w(out);
    w.value("d_gain", d_gain, "u10.8");
    w.array("wb_gain", wb_gain, "u4.8");
    w.value("clip_level", clip_level, "u14.6");
    EXPECT_EQ(serialized(out),
              R"({"clip_level":1023,"d_gain":1,"keep":"me","wb_gain":[1,1.5,2,1]})");
}

TEST(cmodel_writer, signed_codes_are_read_zero_extended_from_their_member) {
    picojson::object out;
    const isp::cmodel_writer w(out);
    const uint16_t twelve_bits = 0xFFF;
    const uint8_t byte         = 0xFF;
    w.value("a", twelve_bits, "s3.8");
    w.value("b", byte, "s7.0");
    w.value("c", byte, "u8");
    w.value("d", 0x800, "s3.8");
    EXPECT_EQ(serialized(out), R"({"a":-0.00390625,"b":-1,"c":255,"d":0})");
}

TEST(cmodel_writer, arrays_by_count_in_listed_order_and_tables_by_row) {
    picojson::object out;
    const isp::cmodel_writer w(out);
    const uint8_t dither[2]   = {1, 2};
    const uint16_t lut[2][3]  = {{16, 32, 48}, {0, 8, 4080}};
    const uint32_t counted[3] = {1, 2, 3};
    w.array("first_two", counted, 2, "u2");
    w.array("dither", {dither[1], dither[0]}, "u1.1");
    w.table("lut", &lut[0][0], 2, 3, "u4.4");
    w.table("empty", &lut[0][0], 0, 3, "u4.4");
    EXPECT_EQ(serialized(out),
              R"({"dither":[1,0.5],"empty":[],"first_two":[1,2],"lut":[[1,2,3],[0,0.5,255]]})");
}

TEST(cmodel_writer, a_non_finite_value_escapes_after_the_keys_written_before) {
    picojson::object out;
    const isp::cmodel_writer w(out);
    w.value("before", 2, "u1");
    EXPECT_THROW(w.value("inf", 1, "u0.32"), std::overflow_error);
    EXPECT_EQ(serialized(out), R"({"before":2})");
}

}  // namespace
