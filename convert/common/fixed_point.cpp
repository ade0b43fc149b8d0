/* Fixed-point register encodings: signed integers to field codes and codes back to reals. */
#include <stdlib.h>
#include <string.h>

#include "isp_json_utils.h"

namespace {

struct fixed_format {
    int32_t is_signed;
    int32_t integer_bits;
    int32_t fraction_bits;
};

/* Leading decimal digits of a token, the way atoi reads them (glibc's atoi is a strtol cut to
 * int); going through strtol keeps an absurdly long digit run defined. */
int32_t token_value(const char *token) {
    return token ? static_cast<int32_t>(strtol(token, nullptr, 10)) : 0;
}

/* The digits of [first, last) as a number, when there are one to nine of them and nothing
 * else; -1 otherwise. */
int32_t plain_digits(const char *first, const char *last) {
    if (first == last || last - first > 9) return -1;
    int32_t value = 0;
    for (; first != last; ++first) {
        if (*first < '0' || *first > '9') return -1;
        value = value * 10 + (*first - '0');
    }
    return value;
}

/* The formats the converters use ("u10.8", "s3", "u14.6"): sign letter, digits, optionally a
 * full stop and digits. Parsed directly, they give what the tokenising below gives, without
 * its cost on every field of every register file. False for anything else. */
bool parse_plain(const char *format, int32_t *integer_bits, int32_t *fraction_bits) {
    if (format[0] == '\0') return false;
    const char *end        = format + 1 + strnlen(format + 1, 14);
    const char *stop       = static_cast<const char *>(memchr(format + 1, '.', end - (format + 1)));
    const int32_t integer  = plain_digits(format + 1, stop ? stop : end);
    const int32_t fraction = stop ? plain_digits(stop + 1, end) : 0;
    if (integer < 0 || fraction < 0) return false;
    *integer_bits  = integer;
    *fraction_bits = fraction;
    return true;
}

/* The first character is the sign letter and is never part of a number, whatever it is, so
 * "3.8" reads as 8 integer bits. Only 15 characters of the format count. */
int parse_format(const char *format, int32_t *is_signed, int32_t *integer_bits,
                 int32_t *fraction_bits) {
    /* Clearing the case bit lets "S3.8" count as signed too. */
    *is_signed = (format[0] & ~0x20) == 'S' ? 1 : 0;
    if (parse_plain(format, integer_bits, fraction_bits)) return 0;
    char copy[16] = {};
    strncpy(copy, format, sizeof copy - 1);
    char *rest           = nullptr;
    const char *integer  = strtok_r(copy + 1, ".", &rest);
    const char *fraction = integer ? strtok_r(nullptr, ".", &rest) : nullptr;
    *integer_bits        = token_value(integer);
    *fraction_bits       = token_value(fraction);
    return 0;
}

fixed_format parse(const char *format) {
    fixed_format parsed;
    parse_format(format, &parsed.is_signed, &parsed.integer_bits, &parsed.fraction_bits);
    return parsed;
}

/* 1 << count with the count taken modulo 256 and counts of 32 or more giving 0, as the
 * target's register shift does; C++ leaves such shifts undefined. */
uint32_t bit(uint32_t count) {
    count &= 0xFFu;
    return count >= 32 ? 0u : 1u << count;
}

/* The sign bit of a signed field sits above its integer and fraction bits. */
uint32_t sign_bit(const fixed_format &format) {
    return bit(static_cast<uint32_t>(format.integer_bits) +
               static_cast<uint32_t>(format.fraction_bits));
}

}  // namespace

extern "C" ISP_JSON_API uint32_t sign_to_regval(int32_t value, const char *format) {
    const fixed_format parsed = parse(format);
    const uint32_t pattern    = static_cast<uint32_t>(value);
    /* Unsigned fields take the magnitude unmasked: an oversized or negative value is not
     * clipped here, the caller's register width decides what survives. */
    if (!parsed.is_signed) return value < 0 ? 0u - pattern : pattern;
    const uint32_t sign = sign_bit(parsed);
    const uint32_t mask = sign - 1u;
    return value < 0 ? (pattern & mask) | sign : pattern & mask;
}

extern "C" ISP_JSON_API double regval_to_float(int32_t code, const char *format) {
    const fixed_format parsed = parse(format);
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
