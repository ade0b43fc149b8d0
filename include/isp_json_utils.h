/* JSON file reading and writing, fixed-point register encoding and JSON array builders. */
#ifndef ISP_JSON_UTILS_H
#define ISP_JSON_UTILS_H

#include <stdint.h>

#include "isp_json_export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Signed integer to the register code of a fixed-point field ("s3.8", "u1.0", "u12", ...).
 * Unsigned formats pass the magnitude through unmasked; signed ones wrap into n bits and
 * set the sign bit for negative values. */
ISP_JSON_API uint32_t sign_to_regval(int32_t value, const char *format);

/* Register code back to its real value: code / 2^fraction bits, sign-interpreted for
 * signed formats (the code with only the sign bit set decodes to 0.0). */
ISP_JSON_API double regval_to_float(int32_t code, const char *format);

#ifdef __cplusplus
}

#include <string>
#include <vector>

#include <picojson.h>

/* Reads and parses a whole JSON file. A file that cannot be opened or parsed is reported on
 * standard error and ends the process through an assertion that stays enabled under NDEBUG. */
ISP_JSON_API picojson::value read_json_file(const std::string &path);

/* Writes value in picojson's pretty form followed by an extra line feed. The text goes to the
 * file through the standard output stream, which is redirected for the time of the call; a
 * file that cannot be opened loses the output silently. */
ISP_JSON_API void write_json_file(const std::string &path, const picojson::value &value);

namespace json {
/* One number element per input element; NaN or infinity raises std::overflow_error. */
template <typename T>
ISP_JSON_API picojson::value createArray1D(const std::vector<T> &values);
/* One inner array per row, each built as by createArray1D; rows keep their own lengths. */
template <typename T>
ISP_JSON_API picojson::value createArray2D(const std::vector<std::vector<T>> &rows);

extern template ISP_JSON_API picojson::value createArray1D<double>(const std::vector<double> &);
extern template ISP_JSON_API picojson::value createArray2D<double>(
    const std::vector<std::vector<double>> &);
}  // namespace json
#endif

#endif
