/* Fixed-point encodings against hand-computed tables: limits, sign handling, the format
 * parser's quirks and the deliberate asymmetries. */
#include <stdint.h>

#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "isp_json_utils.h"

namespace {

struct encode_row {
    int32_t value;
    const char *format;
    uint32_t code;
};

struct decode_row {
    int32_t code;
    const char *format;
    double value;
};

TEST(sign_to_regval, encodes_the_table) {
    // clang-format off
    const encode_row rows[] = {
        /* signed formats wrap into the field and set the sign bit */
        {0, "s3.8", 0x000},      {1, "s3.8", 0x001},      {-1, "s3.8", 0xFFF},
        {-256, "s3.8", 0xF00},   {300, "s3.8", 0x12C},    {2047, "s3.8", 0x7FF},
        {2048, "s3.8", 0x000},   {3000, "s3.8", 0x3B8},   {-2048, "s3.8", 0x800},
        {-2049, "s3.8", 0xFFF},  {-3000, "s3.8", 0xC48},  {-1, "s12", 0x1FFF},
        {4095, "s12", 0xFFF},    {4096, "s12", 0x000},    {-2, "s0.0", 0x1},
        {5, "s0.0", 0x0},        {-1, "s0.8", 0x1FF},     {-1, "s15.15", 0x7FFFFFFF},
        {INT32_MAX, "s30.0", 0x3FFFFFFF},
        {INT32_MIN, "s3.8", 0x800},
        /* unsigned formats pass the magnitude through unmasked */
        {0, "u8", 0}, {255, "u8", 255}, {300, "u8", 300}, {-5, "u8", 5}, {-1, "u1.0", 1},
        {INT32_MAX, "u1.7", 0x7FFFFFFF}, {INT32_MIN, "u12", 0x80000000},
        {INT32_MIN, "u0.0", 0x80000000},
        /* fields of 32 bits or more keep the whole pattern */
        {-1, "s31.1", 0xFFFFFFFF}, {-1, "s32.0", 0xFFFFFFFF}, {-1, "s16.16", 0xFFFFFFFF},
        {-3000, "s100.100", 0xFFFFF448}, {INT32_MIN, "s40", 0x80000000},
        {INT32_MAX, "s32", 0x7FFFFFFF},
        /* the bit count is taken modulo 256: 256 bits is a field of 0 bits, 259 one of 3 */
        {-2, "s256.0", 0x1}, {-1, "s200.59", 0xF}, {9, "s255.4", 0x1},
    };
    // clang-format on
    for (const encode_row &row : rows)
        EXPECT_EQ(sign_to_regval(row.value, row.format), row.code)
            << row.value << " as " << row.format;
}

TEST(regval_to_float, decodes_the_table) {
    // clang-format off
    const decode_row rows[] = {
        {4095, "s3.8", -0.00390625}, {3840, "s3.8", -1.0},       {2049, "s3.8", -7.99609375},
        {2048, "s3.8", 0.0},         {300, "s3.8", 1.171875},    {128, "u1.7", 1.0},
        {4095, "u12", 4095.0},       {8191, "s12", -1.0},        {4096, "s12", 0.0},
        {0, "s3.8", 0.0},            {2047, "s3.8", 7.99609375}, {256, "u4.8", 1.0},
        {65472, "u14.6", 1023.0},    {3, "u2", 3.0},
        /* bits above a signed field with the sign bit clear: the whole code counts */
        {0x1001, "s3.8", 4097.0 / 256.0},
        /* unsigned: the code is read as a signed 32-bit integer */
        {-256, "u4.8", -1.0}, {0x10000, "u8", 65536.0},
        /* 32 or more integer and fraction bits leave no sign bit: the code's own sign decides */
        {-512, "s24.8", -2.0},
        /* 31 fraction bits: the divisor is the most negative integer, so the sign flips */
        {0x40000000, "u0.31", -0.5},
        /* 32 or more fraction bits: the divisor is 0 */
        {1, "u0.32", INFINITY}, {-1, "u0.40", -INFINITY},
    };
    // clang-format on
    for (const decode_row &row : rows)
        EXPECT_EQ(regval_to_float(row.code, row.format), row.value)
            << row.code << " as " << row.format;
    EXPECT_TRUE(std::isnan(regval_to_float(0, "u0.32")));
}

TEST(regval_to_float, the_sign_bit_alone_decodes_to_positive_zero_for_every_signed_format) {
    const decode_row rows[] = {
        {0x1, "s0.0", 0.0},      {0x100, "s0.8", 0.0},  {0x800, "s3.8", 0.0},
        {0x1000, "s12", 0.0},    {0x8000, "s7.8", 0.0}, {0x40000000, "s30.0", 0.0},
        {INT32_MIN, "s31", 0.0},
    };
    for (const decode_row &row : rows) {
        const double value = regval_to_float(row.code, row.format);
        EXPECT_EQ(value, 0.0) << row.code << " as " << row.format;
        EXPECT_FALSE(std::signbit(value)) << row.code << " as " << row.format;
    }
}

TEST(format_parser, sign_letter_case_and_shape_variants) {
    /* Upper-case S counts as signed. */
    EXPECT_EQ(sign_to_regval(-1, "S3.8"), 0xFFFu);
    EXPECT_EQ(regval_to_float(4095, "S3.8"), -0.00390625);
    /* Any other first letter is unsigned, including upper-case U and a digit. */
    EXPECT_EQ(sign_to_regval(-1, "U3.8"), 1u);
    EXPECT_EQ(sign_to_regval(-1, "x3.8"), 1u);
    /* "u12" and "u12.0" agree. */
    EXPECT_EQ(regval_to_float(4095, "u12"), regval_to_float(4095, "u12.0"));
    EXPECT_EQ(sign_to_regval(-7, "s12.0"), 0x1FF9u);
    EXPECT_EQ(sign_to_regval(-7, "s12"), 0x1FF9u);
    /* Without a sign letter the first digit is skipped: "3.8" is 8 integer bits and no
     * fraction, so 256 decodes unscaled. */
    EXPECT_EQ(regval_to_float(256, "3.8"), 256.0);
    /* "s.8" has 8 integer bits too (leading full stops are skipped), "s3..8" keeps the 8 as
     * fraction bits (repeated full stops are skipped), further tokens are ignored. */
    EXPECT_EQ(sign_to_regval(-1, "s.8"), 0x1FFu);
    EXPECT_EQ(regval_to_float(256, "u.8"), 256.0);
    EXPECT_EQ(regval_to_float(256, "u3..8"), 1.0);
    EXPECT_EQ(regval_to_float(256, "u3.8.4"), 1.0);
    /* No digits at all: 0 integer and 0 fraction bits. */
    EXPECT_EQ(sign_to_regval(-2, "s"), 1u);
    EXPECT_EQ(sign_to_regval(-2, "sab.cd"), 1u);
    EXPECT_EQ(regval_to_float(7, "u"), 7.0);
    EXPECT_EQ(regval_to_float(7, ""), 7.0);
    /* Digits are read up to the first non-digit. */
    EXPECT_EQ(regval_to_float(1024, "u2.10bits"), 1.0);
}

TEST(format_parser, only_fifteen_characters_count) {
    /* "u0." and then a fraction of 12 characters ending in 8 is 15 long: 8 fraction bits. One
     * more leading zero pushes the 8 past the cut and leaves 0 fraction bits. */
    const std::string fraction_fits = "u0." + std::string(11, '0') + "8";
    const std::string fraction_cut  = "u0." + std::string(12, '0') + "8";
    ASSERT_EQ(fraction_fits.size(), 15u);
    EXPECT_EQ(regval_to_float(256, fraction_fits.c_str()), 1.0);
    EXPECT_EQ(regval_to_float(256, fraction_cut.c_str()), 256.0);
    /* The same for the integer bits of a signed field: 3 bits, then none. */
    const std::string integer_fits = "s" + std::string(13, '0') + "3";
    const std::string integer_cut  = "s" + std::string(14, '0') + "3";
    EXPECT_EQ(sign_to_regval(-1, integer_fits.c_str()), 0xFu);
    EXPECT_EQ(sign_to_regval(-1, integer_cut.c_str()), 0x1u);
}

}  // namespace
