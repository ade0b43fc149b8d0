/* JSON arrays from vectors of doubles: shape, order, serialised form and the rejection of
 * non-finite numbers. */
#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json_utils.h"

namespace {

TEST(createArray1D, keeps_every_element_in_order_and_an_empty_vector_is_an_empty_array) {
    const picojson::value array = json::createArray1D<double>({1.5, -2.0, 0.0, 3.0, 1e300});
    ASSERT_TRUE(array.is<picojson::array>());
    EXPECT_EQ(array.serialize(), "[1.5,-2,0,3,1.0000000000000001e+300]");
    const picojson::value empty = json::createArray1D<double>({});
    ASSERT_TRUE(empty.is<picojson::array>());
    EXPECT_EQ(empty.serialize(), "[]");
}

TEST(createArray1D, rejects_non_finite_numbers_with_an_empty_overflow_error) {
    const double bad[] = {std::numeric_limits<double>::quiet_NaN(), INFINITY, -INFINITY};
    for (double value : bad) {
        try {
            json::createArray1D<double>({1.0, value, 2.0});
            ADD_FAILURE() << "no exception for " << value;
        } catch (const std::overflow_error &error) {
            EXPECT_STREQ(error.what(), "") << value;
        }
    }
}

TEST(createArray2D, keeps_each_row_with_its_own_length) {
    const picojson::value table = json::createArray2D<double>({{1.0, 0.25}, {}, {-7.0}});
    ASSERT_TRUE(table.is<picojson::array>());
    for (const picojson::value &row : table.get<picojson::array>())
        EXPECT_TRUE(row.is<picojson::array>());
    EXPECT_EQ(table.serialize(), "[[1,0.25],[],[-7]]");
    EXPECT_EQ(json::createArray2D<double>({}).serialize(), "[]");
    EXPECT_THROW(json::createArray2D<double>({{1.0}, {2.0, NAN}}), std::overflow_error);
}

}  // namespace
