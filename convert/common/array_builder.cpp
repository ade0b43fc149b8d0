/* JSON arrays of numbers from vectors, for the tables of the C-model objects. */
#include <utility>

#include "isp_json_utils.h"

namespace json {

/* picojson's number constructor rejects NaN and infinities with std::overflow_error; it is
 * left to reach the caller with the partly built array discarded. */
template <typename T>
picojson::value createArray1D(const std::vector<T> &values) {
    picojson::array items;
    for (const T &value : values) items.push_back(picojson::value(value));
    return picojson::value(std::move(items));
}

template <typename T>
picojson::value createArray2D(const std::vector<std::vector<T>> &rows) {
    picojson::array items;
    for (const std::vector<T> &row : rows) items.push_back(createArray1D<T>(row));
    return picojson::value(std::move(items));
}

template ISP_JSON_API picojson::value createArray1D<double>(const std::vector<double> &);
template ISP_JSON_API picojson::value createArray2D<double>(
    const std::vector<std::vector<double>> &);

}  // namespace json
