// Trilinear corner positions and worked values.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "interp3_reference.hpp"
#include "interpolation/interp3.hpp"

namespace {

using namespace interp3_reference;

// Trilinear values of one volume at the given index-space queries.
std::vector<float> linear_values(Volumes v, Queries q) {
    const unsigned n = static_cast<unsigned>(q.size());
    std::vector<float> out(n);
    Interp3::interp3<float, float>(
        nullptr, nullptr, nullptr, v.samples.data(),
        {unsigned(v.d0), unsigned(v.d1), unsigned(v.d2)}, q.x.data(), q.y.data(),
        q.z.data(), {n, 1, 1}, Interp3::LINEAR, out.data());
    return out;
}

TEST(Interp3Linear, IndicesMatchClampedCorners) {
    // Sizes from 1 to 7 per axis; the larger ones reach the unclamped
    // interior, every one its margins and the space beyond both borders.
    const std::vector<std::array<int, 3>> sizes = {
        {7, 7, 7}, {5, 6, 7}, {1, 2, 3}, {4, 5, 6}, {6, 1, 7}, {7, 5, 5}};
    for (const auto& [d0, d1, d2] : sizes) {
        const auto position = [&, d0 = d0, d1 = d1, d2 = d2](int c, int r, int s) {
            c = std::clamp(c, 0, d1 - 1);
            r = std::clamp(r, 0, d0 - 1);
            s = std::clamp(s, 0, d2 - 1);
            return (s * d1 + c) * d0 + r;
        };
        for (int s = -3; s <= d2 + 2; ++s)
            for (int c = -3; c <= d1 + 2; ++c)
                for (int r = -3; r <= d0 + 2; ++r) {
                    std::array<int, 8> p;
                    Interp3::indices_linear(p[0], p[1], p[2], p[3], p[4], p[5],
                                            p[6], p[7], c, r, s, d0, d1, d2);
                    // Corner j advances the column for bit 0, the row for
                    // bit 1 and the slice for bit 2.
                    for (int j = 0; j < 8; ++j) {
                        ASSERT_EQ(p[j], position(c + (j & 1), r + (j >> 1 & 1),
                                                 s + (j >> 2 & 1)))
                            << "size " << d0 << "x" << d1 << "x" << d2
                            << ", corner " << j << " of (" << c << ", " << r
                            << ", " << s << ")";
                    }
                }
    }
}

TEST(Interp3Linear, HalfwayIsMeanOfTheTwoNeighboursOnEachAxis) {
    Volumes v = random_volumes(3, 4, 5, 1, 61);
    v.samples[0] = 3.0f;
    v.samples[1] = 8.0f;        // row 1
    v.samples[3] = 10.0f;       // column 1
    v.samples[3 * 4] = -6.0f;   // slice 1
    const Queries q{{0.5f, 0.0f, 0.0f}, {0.0f, 0.5f, 0.0f}, {0.0f, 0.0f, 0.5f}};
    EXPECT_EQ(linear_values(v, q), (std::vector<float>{6.5f, 5.5f, -1.5f}));
}

TEST(Interp3Linear, OutsideTakesTheBorderValueAlongThatAxis) {
    const Volumes v = random_volumes(4, 5, 3, 1, 71);
    // Pairs of queries that differ only along one axis, one beyond a border
    // and one on it; the other two coordinates are fractional.
    const Queries outside{{-3.0f, 7.0f, 1.3f, 2.6f, 0.4f, 3.3f},
                          {0.7f, 2.2f, -1.0f, 9.0f, 1.5f, 2.9f},
                          {1.2f, 0.6f, 0.3f, 1.7f, -4.0f, 5.0f}};
    const Queries border{{0.0f, 4.0f, 1.3f, 2.6f, 0.4f, 3.3f},
                         {0.7f, 2.2f, 0.0f, 3.0f, 1.5f, 2.9f},
                         {1.2f, 0.6f, 0.3f, 1.7f, 0.0f, 2.0f}};
    EXPECT_TRUE(same_bits(linear_values(v, outside), linear_values(v, border)));
}

TEST(Interp3Linear, HugeCoordinatesTakeTheFirstSampleAndNanGivesNan) {
    const Volumes v = random_volumes(4, 5, 3, 1, 81);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    // An index beyond 32 bits converts to -2^31 and is clamped to 0.
    const Queries huge{{3e9f, -3e9f, 0.4f, 0.4f}, {1.5f, 1.5f, 3e9f, 1.5f},
                       {0.25f, 0.25f, 1.0f, -3e9f}};
    const Queries first{{0.0f, 0.0f, 0.4f, 0.4f}, {1.5f, 1.5f, 0.0f, 1.5f},
                        {0.25f, 0.25f, 1.0f, 0.0f}};
    EXPECT_TRUE(same_bits(linear_values(v, huge), linear_values(v, first)));
    const Queries with_nan{{nan, 1.0f, 1.0f}, {1.0f, nan, 1.0f}, {1.0f, 1.0f, nan}};
    for (float value : linear_values(v, with_nan)) EXPECT_TRUE(std::isnan(value));
}

}  // namespace
