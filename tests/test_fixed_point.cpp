/* Fixed-point encodings against hand-computed tables: limits, sign handling, the format
 * parser's quirks and the deliberate asymmetries. */
#include <stdint.h>

#include <cmath>

#include <gtest/gtest.h>

#include "isp_json_utils.h"

namespace {

TEST(SignToRegval, EncodesTheTable) {
    // clang-format off
    const struct { int32_t value; const char *format; uint32_t code; } rows[] = {
        /* signed formats wrap into the field and set the sign bit */
        {0, "s3.8", 0x000}, {1, "s3.8", 0x001}, {-1, "s3.8", 0xFFF}, {-256, "s3.8", 0xF00},
        {2047, "s3.8", 0x7FF}, {2048, "s3.8", 0x000}, {3000, "s3.8", 0x3B8}, {-2048, "s3.8", 0x800},
        {-2049, "s3.8", 0xFFF}, {-3000, "s3.8", 0xC48}, {INT32_MIN, "s3.8", 0x800},
        {-1, "s12", 0x1FFF}, {4096, "s12", 0x000}, {-2, "s0.0", 0x1}, {5, "s0.0", 0x0},
        {-1, "s15.15", 0x7FFFFFFF}, {INT32_MAX, "s30.0", 0x3FFFFFFF},
        /* unsigned formats pass the magnitude through unmasked */
        {0, "u8", 0}, {300, "u8", 300}, {-5, "u8", 5}, {INT32_MIN, "u12", 0x80000000},
        /* fields of 32 bits or more keep the whole pattern */
        {-1, "s31.1", 0xFFFFFFFF}, {-3000, "s100.100", 0xFFFFF448}, {INT32_MAX, "s32", 0x7FFFFFFF},
        /* the bit count is taken modulo 256: 256 bits is a field of 0 bits, 259 one of 3 */
        {-2, "s256.0", 0x1}, {-1, "s200.59", 0xF},
        /* format parser: S is signed, any other letter unsigned; "s12" equals "s12.0"; leading
         * and repeated full stops are skipped; no digits is 0 bits; only 15 characters count */
        {-1, "S3.8", 0xFFF}, {-1, "U3.8", 1}, {-1, "x3.8", 1}, {-7, "s12.0", 0x1FF9},
        {-1, "s.8", 0x1FF}, {-2, "s", 1}, {-2, "sab.cd", 1}, {-1, "s00000000000003", 0xF},
        {-1, "s000000000000003", 0x1},
    };
    // clang-format on
    for (const auto &row : rows)
        EXPECT_EQ(sign_to_regval(row.value, row.format), row.code)
            << row.value << " as " << row.format;
}

TEST(RegvalToFloat, DecodesTheTable) {
    // clang-format off
    const struct { int32_t code; const char *format; double value; } rows[] = {
        {0, "s3.8", 0.0}, {4095, "s3.8", -0.00390625}, {3840, "s3.8", -1.0},
        {2049, "s3.8", -7.99609375}, {2047, "s3.8", 7.99609375}, {300, "s3.8", 1.171875},
        {128, "u1.7", 1.0}, {4095, "u12", 4095.0}, {8191, "s12", -1.0}, {65472, "u14.6", 1023.0},
        /* the sign bit alone is positive zero in every signed format */
        {0x800, "s3.8", 0.0}, {0x1, "s0.0", 0.0}, {0x1000, "s12", 0.0}, {INT32_MIN, "s31", 0.0},
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
        /* format parser: S is signed; without a sign letter the first digit is skipped; digits
         * stop at the first non-digit; only the first 15 characters count */
        {4095, "S3.8", -0.00390625}, {256, "3.8", 256.0}, {256, "u.8", 256.0}, {256, "u3..8", 1.0},
        {256, "u3.8.4", 1.0}, {7, "u", 7.0}, {7, "", 7.0}, {1024, "u2.10bits", 1.0},
        {256, "u0.000000000008", 1.0}, {256, "u0.0000000000008", 256.0},
    };
    // clang-format on
    for (const auto &row : rows) {
        const double value = regval_to_float(row.code, row.format);
        EXPECT_EQ(value, row.value) << row.code << " as " << row.format;
        EXPECT_EQ(std::signbit(value), std::signbit(row.value)) << row.code << " as " << row.format;
    }
    EXPECT_TRUE(std::isnan(regval_to_float(0, "u0.32")));
}

}  // namespace
