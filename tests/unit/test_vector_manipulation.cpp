// Coordinate vectors (linspace) and 3-D coordinate grids (ndgrid).
#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <vector>

#include "interpolation/vector_manipulation.hpp"

namespace {

using VectorManipulation::linspace;
using VectorManipulation::ndgrid;
using Floats = std::vector<float>;

TEST(Linspace, WorkedValues) {
    EXPECT_EQ(linspace(0.0f, 2.0f, 4), (Floats{0.0f, 0.6666667f, 1.3333334f, 2.0f}));
    // The difference is narrowed to 0.59999996 before the step is taken.
    EXPECT_EQ(linspace(0.1f, 0.7f, 7),
              (Floats{0.1f, 0.19999999f, 0.29999998f, 0.39999998f, 0.49999997f,
                      0.59999996f, 0.7f}));
    const Floats to_63 = linspace(0.0f, 63.0f, 256);
    ASSERT_EQ(to_63.size(), 256u);
    EXPECT_EQ(to_63.back(), 63.0f);
}

TEST(Linspace, LastValueIsTheAccumulationNotTheEnd) {
    EXPECT_EQ(linspace(1.0f, 0.0f, 10).back(),
              static_cast<float>(-1.6653345369377348e-16));
    EXPECT_EQ(linspace(0.3f, 1.9f, 9).back(), static_cast<float>(1.8999998569488525));
}

TEST(Linspace, CountsZeroOneAndNegative) {
    EXPECT_TRUE(linspace(1.0f, 5.0f, 0).empty());
    EXPECT_EQ(linspace(5.0f, 9.0f, 1), Floats{5.0f});
    EXPECT_THROW(linspace(0.0f, 1.0f, -1), std::length_error);
    EXPECT_THROW(linspace(0.0f, 1.0f, INT_MIN), std::length_error);
}

TEST(Linspace, EqualEndsRepeatTheStart) {
    EXPECT_EQ(linspace(-2.5f, -2.5f, 5), Floats(5, -2.5f));
}

TEST(Linspace, ZeroToLastIndexHitsEveryInteger) {
    for (int length : {2, 3, 64, 255, 1000, 1 << 24}) {
        const Floats values = linspace(0.0f, static_cast<float>(length - 1), length);
        ASSERT_EQ(values.size(), static_cast<size_t>(length));
        for (int i = 0; i < length; ++i) {
            ASSERT_EQ(values[i], static_cast<float>(i)) << "length " << length;
        }
    }
}

TEST(Ndgrid, WorkedExample) {
    Floats x{0, 1}, y{10, 20, 30}, z{5}, X, Y, Z;
    ndgrid(x, y, z, X, Y, Z);
    EXPECT_EQ(X, (Floats{0, 1, 0, 1, 0, 1}));
    EXPECT_EQ(Y, (Floats{10, 10, 20, 20, 30, 30}));
    EXPECT_EQ(Z, (Floats{5, 5, 5, 5, 5, 5}));
}

TEST(Ndgrid, FirstVectorVariesFastestAndOutputsAreResized) {
    Floats x{1, 2, 3}, y{-1, -2, -3, -4}, z{7, 8};
    Floats X(100, 9.0f), Y(1, 9.0f), Z;  // too long, too short, empty
    ndgrid(x, y, z, X, Y, Z);
    ASSERT_EQ(X.size(), 24u);
    ASSERT_EQ(Y.size(), 24u);
    ASSERT_EQ(Z.size(), 24u);
    for (int k = 0; k < 2; ++k)
        for (int j = 0; j < 4; ++j)
            for (int i = 0; i < 3; ++i) {
                const int n = i + 3 * j + 12 * k;
                EXPECT_EQ(X[n], x[i]);
                EXPECT_EQ(Y[n], y[j]);
                EXPECT_EQ(Z[n], z[k]);
            }
}

TEST(Ndgrid, AnyEmptyInputEmptiesAllOutputs) {
    for (int empty_axis = 0; empty_axis < 3; ++empty_axis) {
        Floats in[3] = {{1, 2}, {3, 4}, {5, 6}};
        in[empty_axis].clear();
        Floats X(4, 1.0f), Y(4, 1.0f), Z(4, 1.0f);
        ndgrid(in[0], in[1], in[2], X, Y, Z);
        EXPECT_TRUE(X.empty() && Y.empty() && Z.empty()) << "axis " << empty_axis;
    }
}

TEST(Ndgrid, GridOf2To31PointsIsRefusedBeforeTouchingOutputs) {
    Floats x(2048, 0.0f), yz(1024, 0.0f);  // exactly 2^31 points
    Floats X{1}, Y{2}, Z{3};
    EXPECT_THROW(ndgrid(x, yz, yz, X, Y, Z), std::length_error);
    EXPECT_EQ(X, Floats{1});
    EXPECT_EQ(Y, Floats{2});
    EXPECT_EQ(Z, Floats{3});
}

}  // namespace
