/* JSON arrays from vectors of doubles: shape, order, serialised form and the rejection of
 * non-finite numbers. */
#include <cmath>
#include <stdexcept>

#include <gtest/gtest.h>

#include "isp_json_utils.h"

namespace {

TEST(CreateArray, KeepsShapeAndOrderOfEveryRow) {
    EXPECT_EQ(json::createArray1D<double>({1.5, -2.0, 0.0, 1e300}).serialize(),
              "[1.5,-2,0,1.0000000000000001e+300]");
    EXPECT_EQ(json::createArray1D<double>({}).serialize(), "[]");
    EXPECT_EQ(json::createArray2D<double>({{1.0, 0.25}, {}, {-7.0}}).serialize(),
              "[[1,0.25],[],[-7]]");
    EXPECT_EQ(json::createArray2D<double>({}).serialize(), "[]");
}

TEST(CreateArray, RejectsNonFiniteNumbersWithAnEmptyOverflowError) {
    for (double bad : {NAN, INFINITY, -INFINITY}) {
        try {
            json::createArray1D<double>({1.0, bad});
            ADD_FAILURE() << "no exception for " << bad;
        } catch (const std::overflow_error &error) {
            EXPECT_STREQ(error.what(), "") << bad;
        }
    }
    EXPECT_THROW(json::createArray2D<double>({{1.0}, {2.0, NAN}}), std::overflow_error);
}

}  // namespace
