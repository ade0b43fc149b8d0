/* The fixed-point functions on arbitrary values and format strings of any length and any
 * characters: the first four bytes are the value (and the code), the rest is the format.
 * Neither function may crash, read past the format's terminator or trip the undefined-behaviour
 * checks (shifts by 32 or more, signed overflow on negation, out-of-range conversions), and
 * both must agree with the encoding written out here the long way: the format copied to 16
 * characters, tokenised at full stops after its first character, each token read by strtol. */
#include <math.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <vector>

#include "isp_json_utils.h"

namespace {

struct format_fields {
    bool is_signed;
    uint32_t integer_bits, fraction_bits;
};

format_fields reference_parse(const char *format) {
    char copy[16] = {};
    strncpy(copy, format, sizeof copy - 1);
    char *rest           = nullptr;
    const char *integer  = strtok_r(copy + 1, ".", &rest);
    const char *fraction = integer ? strtok_r(nullptr, ".", &rest) : nullptr;
    format_fields f;
    f.is_signed = format[0] == 's' || format[0] == 'S';
    f.integer_bits =
        integer ? static_cast<uint32_t>(static_cast<int32_t>(strtol(integer, nullptr, 10))) : 0;
    f.fraction_bits =
        fraction ? static_cast<uint32_t>(static_cast<int32_t>(strtol(fraction, nullptr, 10))) : 0;
    return f;
}

uint32_t shifted_bit(uint32_t count) {
    count &= 0xFF;
    return count >= 32 ? 0 : 1u << count;
}

uint32_t reference_encode(int32_t value, const format_fields &f) {
    const uint32_t pattern = static_cast<uint32_t>(value);
    if (!f.is_signed) return value < 0 ? 0u - pattern : pattern;
    const uint32_t sign = shifted_bit(f.integer_bits + f.fraction_bits);
    return value < 0 ? (pattern & (sign - 1)) | sign : pattern & (sign - 1);
}

double reference_decode(int32_t code, const format_fields &f) {
    const double divisor   = static_cast<int32_t>(shifted_bit(f.fraction_bits));
    const uint32_t pattern = static_cast<uint32_t>(code);
    const uint32_t sign    = shifted_bit(f.integer_bits + f.fraction_bits);
    if (f.is_signed && (pattern & sign))
        return static_cast<int32_t>(0u - ((0u - pattern) & (sign - 1))) / divisor;
    return code / divisor;
}

bool same(double a, double b) {
    return (isnan(a) && isnan(b)) || memcmp(&a, &b, sizeof a) == 0;
}

[[noreturn]] void mismatch(const char *function, int32_t value, const char *format) {
    fprintf(stderr, "%s(%d, \"%s\") differs from the reference\n", function, value, format);
    abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < sizeof(int32_t)) return 0;
    int32_t value;
    memcpy(&value, data, sizeof value);
    /* The format alone in a block of its exact length plus terminator; bytes after an embedded
     * NUL are never looked at. */
    std::vector<char> format(data + sizeof value, data + size);
    format.push_back('\0');
    format.shrink_to_fit();
    const format_fields fields = reference_parse(format.data());

    const uint32_t code = sign_to_regval(value, format.data());
    if (code != reference_encode(value, fields)) mismatch("sign_to_regval", value, format.data());
    if (!same(regval_to_float(value, format.data()), reference_decode(value, fields)))
        mismatch("regval_to_float", value, format.data());
    const int32_t as_code = static_cast<int32_t>(code);
    if (!same(regval_to_float(as_code, format.data()), reference_decode(as_code, fields)))
        mismatch("regval_to_float", as_code, format.data());
    return 0;
}
