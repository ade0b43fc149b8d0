/* Fixed-point register encodings: signed integers to field codes and codes back to reals. */
#include <stdlib.h>
#include <string.h>

#include "convert/common/fixed_format.h"
#include "isp_json_utils.h"

namespace {

/* Leading decimal digits of a token, the way atoi reads them (glibc's atoi is a strtol cut to
 * int); going through strtol keeps an absurdly long digit run defined. */
int32_t token_value(const char *token) {
    return token ? static_cast<int32_t>(strtol(token, nullptr, 10)) : 0;
}

/* 1 << count with the count taken modulo 256 and counts of 32 or more giving 0, as the
 * target's register shift does; C++ leaves such shifts undefined. */
uint32_t bit(uint32_t count) {
    count &= 0xFFu;
    return count >= 32 ? 0u : 1u << count;
}

/* The sign bit of a signed field sits above its integer and fraction bits. */
uint32_t sign_bit(const isp::fixed_format &format) {
    return bit(static_cast<uint32_t>(format.integer_bits) +
               static_cast<uint32_t>(format.fraction_bits));
}

}  // namespace

namespace isp {

/* The first character is the sign letter and is never part of a number, whatever it is, so
 * "3.8" reads as 8 integer bits. Only 15 characters of the format count. */
fixed_format parse_format(const char *format) {
    fixed_format parsed{};
    if (parse_plain_format(format, &parsed)) return parsed;
    parsed.is_signed = (format[0] & ~0x20) == 'S';
    char copy[16]    = {};
    strncpy(copy, format, sizeof copy - 1);
    char *rest           = nullptr;
    const char *integer  = strtok_r(copy + 1, ".", &rest);
    const char *fraction = integer ? strtok_r(nullptr, ".", &rest) : nullptr;
    parsed.integer_bits  = token_value(integer);
    parsed.fraction_bits = token_value(fraction);
    return parsed;
}

uint32_t encode(int32_t value, const fixed_format &parsed) {
    const uint32_t pattern = static_cast<uint32_t>(value);
    /* Unsigned fields take the magnitude unmasked: an oversized or negative value is not
     * clipped here, the caller's register width decides what survives. */
    if (!parsed.is_signed) return value < 0 ? 0u - pattern : pattern;
    const uint32_t sign = sign_bit(parsed);
    const uint32_t mask = sign - 1u;
    return value < 0 ? (pattern & mask) | sign : pattern & mask;
}

double decode(int32_t code, const fixed_format &parsed) {
    /* A fraction of 31 bits makes the divisor negative and 32 or more makes it 0; both are
     * what the register arithmetic gives and are passed on. */
    const double divisor   = static_cast<int32_t>(bit(static_cast<uint32_t>(parsed.fraction_bits)));
    const uint32_t pattern = static_cast<uint32_t>(code);
    const uint32_t sign    = sign_bit(parsed);
    if (parsed.is_signed && (pattern & sign)) {
        /* Negate, mask, negate back: the code with only the sign bit set comes out as 0.0
         * rather than the field's most negative value, and decoders rely on that. */
        const uint32_t magnitude = (0u - pattern) & (sign - 1u);
        return static_cast<int32_t>(0u - magnitude) / divisor;
    }
    return code / divisor;
}

}  // namespace isp

extern "C" ISP_JSON_API uint32_t sign_to_regval(int32_t value, const char *format) {
    return isp::encode(value, isp::parse_format(format));
}

extern "C" ISP_JSON_API double regval_to_float(int32_t code, const char *format) {
    return isp::decode(code, isp::parse_format(format));
}
