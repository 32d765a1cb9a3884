// Tricubic neighbourhoods, weights and non-finite behaviour.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include "interp3_reference.hpp"
#include "interpolation/interp3.hpp"

namespace {

using namespace interp3_reference;

// Tricubic values of all volumes of v at the given index-space queries.
std::vector<float> cubic_values(Volumes v, Queries q) {
    const unsigned n = static_cast<unsigned>(q.size());
    const unsigned count = static_cast<unsigned>(v.count);
    std::vector<float> out(n * count);
    Interp3::interp3<float, float>(
        nullptr, nullptr, nullptr, v.samples.data(),
        {unsigned(v.d0), unsigned(v.d1), unsigned(v.d2), count}, q.x.data(),
        q.y.data(), q.z.data(), {n, 1, 1, count}, Interp3::BICUBIC, out.data());
    return out;
}

TEST(Interp3Cubic, IndicesMatchClampedNeighbourhood) {
    // Sizes from 1 to 8 per axis; the interior shortcut needs 7 or more.
    const std::vector<std::array<int, 3>> sizes = {
        {8, 8, 8}, {7, 8, 7}, {1, 2, 3}, {4, 5, 6}, {8, 1, 7}, {6, 7, 8}};
    for (const auto& [rows, columns, slices] : sizes) {
        for (int slice = -4; slice <= slices + 3; ++slice)
            for (int column = -4; column <= columns + 3; ++column)
                for (int row = -4; row <= rows + 3; ++row) {
                    int table[64];
                    Interp3::indices_cubic(table, column, row, slice, rows,
                                           columns, slices);
                    for (int c = 0; c < 4; ++c)
                        for (int b = 0; b < 4; ++b)
                            for (int a = 0; a < 4; ++a) {
                                const int col = std::clamp(column + a - 1, 0, columns - 1);
                                const int r = std::clamp(row + b - 1, 0, rows - 1);
                                const int s = std::clamp(slice + c - 1, 0, slices - 1);
                                ASSERT_EQ(table[16 * c + 4 * b + a],
                                          (s * columns + col) * rows + r)
                                    << "size " << rows << "x" << columns << "x"
                                    << slices << ", base (" << column << ", "
                                    << row << ", " << slice << "), offset ("
                                    << a << ", " << b << ", " << c << ")";
                            }
                }
    }
}

TEST(Interp3Cubic, IndicesWrapBelowTheMostNegativeBase) {
    const int rows = 3, columns = 4, slices = 5;
    int table[64];
    // -2^31 - 1 wraps to 2^31 - 1 and clamps to the last column; the other
    // three neighbours clamp to column 0.
    Interp3::indices_cubic(table, INT_MIN, 1, 2, rows, columns, slices);
    const int row = 1, slice = 2;  // the offset-0 neighbour on those axes
    EXPECT_EQ(table[16 + 4 + 0], (slice * columns + columns - 1) * rows + row);
    for (int a = 1; a < 4; ++a) {
        EXPECT_EQ(table[16 + 4 + a], (slice * columns + 0) * rows + row) << a;
    }
}

TEST(Interp3Cubic, ReproducesLinearDataAwayFromTheBorder) {
    // Catmull-Rom reproduces linear functions; with quarter fractions every
    // product and sum here is exact in single precision.
    Volumes v{8, 8, 8, 1, {}};
    const auto f = [](float c, float r, float s) { return 2 * c + 3 * r - s + 10; };
    for (int s = 0; s < 8; ++s)
        for (int c = 0; c < 8; ++c)
            for (int r = 0; r < 8; ++r) v.samples.push_back(f(c, r, s));
    Queries q;
    std::vector<float> expected;
    for (float base : {1.0f, 3.0f, 5.0f})
        for (float t : {0.25f, 0.5f, 0.75f}) {
            q.x.push_back(base + t), q.y.push_back(base + 1.0f - t),
                q.z.push_back(6.0f - base + t / 2);
            expected.push_back(f(q.x.back(), q.y.back(), q.z.back()));
        }
    EXPECT_EQ(cubic_values(v, q), expected);
}

TEST(Interp3Cubic, NonFiniteNeighbourWithZeroWeightGivesNan) {
    Volumes v = random_volumes(6, 6, 6, 1, 91);
    v.samples[(2 * 6 + 3) * 6 + 2] = std::numeric_limits<float>::infinity();
    // (x, y, z) = (2, 2, 2) sits on a sample whose x neighbour at column 3
    // is infinite; (0, 4, 4) has none in its neighbourhood.
    const std::vector<float> out =
        cubic_values(v, Queries{{2.0f, 0.0f}, {2.0f, 4.0f}, {2.0f, 4.0f}});
    EXPECT_TRUE(std::isnan(out[0]));
    EXPECT_EQ(out[1], v.samples[(4 * 6 + 0) * 6 + 4]);
}

TEST(Interp3Cubic, NanOrInfiniteCoordinateGivesNanInEveryVolume) {
    const Volumes v = random_volumes(4, 5, 6, 3, 101);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    Queries q;
    for (float odd : {nan, inf, -inf}) {
        q.x.push_back(odd), q.y.push_back(1.5f), q.z.push_back(2.0f);
        q.x.push_back(0.5f), q.y.push_back(odd), q.z.push_back(2.0f);
        q.x.push_back(0.5f), q.y.push_back(1.5f), q.z.push_back(odd);
    }
    for (float value : cubic_values(v, q)) EXPECT_TRUE(std::isnan(value));
}

TEST(Interp3Cubic, HugeFinitePositionWrapsOntoTheLastSample) {
    Volumes v = random_volumes(4, 5, 3, 1, 111);
    const Queries huge{{3e9f, -3e9f}, {1.0f, 1.0f}, {2.0f, 2.0f}};
    const Queries first_column{{0.0f, 0.0f}, {1.0f, 1.0f}, {2.0f, 2.0f}};
    // The base index becomes -2^31: offsets 0 to +2 clamp to column 0 and
    // offset -1 wraps to the last column, with weight 0.
    EXPECT_TRUE(same_bits(cubic_values(v, huge), cubic_values(v, first_column)));
    v.samples[(2 * 5 + 4) * 4 + 1] = std::numeric_limits<float>::infinity();
    for (float value : cubic_values(v, huge)) EXPECT_TRUE(std::isnan(value));
    for (float value : cubic_values(v, first_column)) EXPECT_FALSE(std::isnan(value));
}

}  // namespace
