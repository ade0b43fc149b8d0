/* The one way an exporter writes decoded register values into a C-model object. */
#ifndef ISP_CONVERT_CMODEL_WRITER_H
#define ISP_CONVERT_CMODEL_WRITER_H

#include <stddef.h>
#include <stdint.h>

#include <initializer_list>
#include <vector>

#include <picojson.h>

#include "convert/common/fixed_format.h"
#include "isp_json_utils.h"

namespace isp {

/* A format as the table holds it, parsed, or as text, parsed here. */
struct format_arg {
    format_arg(const fixed_format &parsed) : value(parsed) {}
    format_arg(const char *text) : value(parse_format(text)) {}
    fixed_format value;
};

/* Decodes register codes as regval_to_float does and stores them under their key, replacing a
 * value already there and leaving every other key alone. Codes are taken zero-extended from
 * their member; the format does the sign interpretation. */
class cmodel_writer {
  public:
    explicit cmodel_writer(picojson::object &out) : out_(out) {}

    void value(const char *key, uint32_t code, format_arg format) const {
        out_[key] = picojson::value(decode(code, format));
    }

    /* Every element of a member array, in index order. */
    template <typename T, size_t N>
    void array(const char *key, const T (&codes)[N], format_arg format) const {
        array(key, codes, N, format);
    }

    template <typename T>
    void array(const char *key, const T *codes, size_t count, format_arg format) const {
        std::vector<double> values;
        for (size_t i = 0; i < count; ++i) values.push_back(decode(codes[i], format));
        out_[key] = json::createArray1D<double>(values);
    }

    /* Codes listed by the caller, for arrays exported in an order other than storage order. */
    void array(const char *key, std::initializer_list<uint32_t> codes, format_arg format) const {
        std::vector<double> values;
        for (uint32_t code : codes) values.push_back(decode(code, format));
        out_[key] = json::createArray1D<double>(values);
    }

    /* rows x cols codes stored row-major, exported as one inner array per row. */
    template <typename T>
    void table(const char *key, const T *codes, size_t rows, size_t cols, format_arg format) const {
        std::vector<std::vector<double>> values(rows);
        for (size_t r = 0; r < rows; ++r)
            for (size_t c = 0; c < cols; ++c)
                values[r].push_back(decode(codes[r * cols + c], format));
        out_[key] = json::createArray2D<double>(values);
    }

  private:
    static double decode(uint32_t code, const format_arg &format) {
        return isp::decode(static_cast<int32_t>(code), format.value);
    }

    picojson::object &out_;
};

}  // namespace isp

#endif
