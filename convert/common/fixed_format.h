/* A fixed-point format ("u10.8", "s3", "u14.6") as the value the encoder and the decoder take, so
 * that a register table parses each of its formats once, when the table is built. */
#ifndef ISP_CONVERT_FIXED_FORMAT_H
#define ISP_CONVERT_FIXED_FORMAT_H

#include <stdint.h>

namespace isp {

struct fixed_format {
    bool is_signed;
    int32_t integer_bits;
    int32_t fraction_bits;
};

namespace detail {
/* The digits of [first, last) as a number, when there are one to nine of them and nothing
 * else; -1 otherwise. */
constexpr int32_t plain_digits(const char *first, const char *last) {
    if (first == last || last - first > 9) return -1;
    int32_t value = 0;
    for (; first != last; ++first) {
        if (*first < '0' || *first > '9') return -1;
        value = value * 10 + (*first - '0');
    }
    return value;
}
}  // namespace detail

/* A format of the plain shape the register tables use: a sign letter, one to nine digits, and
 * optionally a full stop and one to nine digits; only 15 characters count. Clearing the case bit
 * lets "S3.8" count as signed. False for anything else, which parse_format() reads as the
 * exported functions do. */
constexpr bool parse_plain_format(const char *format, fixed_format *out) {
    if (format[0] == '\0') return false;
    const char *end = format + 1;
    while (*end && end - (format + 1) < 14) ++end;
    const char *stop = format + 1;
    while (stop != end && *stop != '.') ++stop;
    const int32_t integer  = detail::plain_digits(format + 1, stop);
    const int32_t fraction = stop == end ? 0 : detail::plain_digits(stop + 1, end);
    if (integer < 0 || fraction < 0) return false;
    *out = {(format[0] & ~0x20) == 'S', integer, fraction};
    return true;
}

/* Any format, parsed the way sign_to_regval and regval_to_float parse theirs. */
fixed_format parse_format(const char *format);

/* The register code of a signed integer, and a code back to its real value: what
 * sign_to_regval and regval_to_float do once the format is parsed. */
uint32_t encode(int32_t value, const fixed_format &format);
double decode(int32_t code, const fixed_format &format);

}  // namespace isp

#endif
