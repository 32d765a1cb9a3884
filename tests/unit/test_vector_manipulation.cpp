// Coordinate vectors (linspace) and 3-D coordinate grids (ndgrid).
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "interpolation/vector_manipulation.hpp"

namespace {

using VectorManipulation::linspace;
using Floats = std::vector<float>;

TEST(Linspace, WorkedValuesAndCounts) {
    struct Case { float start, end; int count; Floats expected; };
    const Case cases[] = {
        {0.0f, 2.0f, 4, {0.0f, 0.6666667f, 1.3333334f, 2.0f}},
        // end - start is narrowed to 0.59999996 before the step is taken.
        {0.1f, 0.7f, 7, {0.1f, 0.19999999f, 0.29999998f, 0.39999998f, 0.49999997f, 0.59999996f, 0.7f}},
        {5.0f, 9.0f, 1, {5.0f}},  // one element holds start, whatever end is
        {1.0f, 5.0f, 0, {}},
        {-2.5f, -2.5f, 3, {-2.5f, -2.5f, -2.5f}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(linspace(c.start, c.end, c.count), c.expected)
            << c.start << " to " << c.end << " in " << c.count;
    }
    const Floats to_63 = linspace(0.0f, 63.0f, 256);
    ASSERT_EQ(to_63.size(), 256u);
    EXPECT_EQ(to_63.back(), 63.0f);
    // The last value is the running sum, 1 + 9 * (-1/9) in double, not end.
    EXPECT_EQ(linspace(1.0f, 0.0f, 10).back(), static_cast<float>(-1.6653345369377348e-16));
    EXPECT_THROW(linspace(0.0f, 1.0f, -1), std::length_error);
}

TEST(Ndgrid, WorkedExample) {
    Floats x{1, 2}, y{10, 20, 30}, z{5, 6}, none;
    Floats X(20, 9.0f), Y(1, 9.0f), Z;  // resized: too long, too short, empty
    VectorManipulation::ndgrid(x, y, z, X, Y, Z);
    EXPECT_EQ(X, (Floats{1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2}));
    EXPECT_EQ(Y, (Floats{10, 10, 20, 20, 30, 30, 10, 10, 20, 20, 30, 30}));
    EXPECT_EQ(Z, (Floats{5, 5, 5, 5, 5, 5, 6, 6, 6, 6, 6, 6}));
    VectorManipulation::ndgrid(x, none, z, X, Y, Z);  // an empty axis empties all
    EXPECT_TRUE(X.empty() && Y.empty() && Z.empty());
}

}  // namespace
