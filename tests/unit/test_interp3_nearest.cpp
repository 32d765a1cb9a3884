// Nearest-neighbour rounding, clamping and copying, checked on the driver's
// one-volume loop and on the multi-volume kernels alike.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "interp3_reference.hpp"
#include "interpolation/interp3.hpp"

namespace {

using interp3_reference::same_bits;

enum Axis { X, Y, Z };

// Nearest values of one volume (d0 x d1 x d2) at the given queries, through
// the driver's one-volume loop; the two-volume kernel, given the volume
// twice, must return the same values in both halves.
std::vector<float> nearest_values(std::vector<float> volume, int d0, int d1,
                                  int d2, std::vector<float> xi,
                                  std::vector<float> yi, std::vector<float> zi) {
    const unsigned n = static_cast<unsigned>(xi.size());
    const std::vector<unsigned> dims{unsigned(d0), unsigned(d1), unsigned(d2)};
    std::vector<float> single(n);
    Interp3::interp3<float, float>(nullptr, nullptr, nullptr, volume.data(), dims,
                                   xi.data(), yi.data(), zi.data(), {n, 1, 1},
                                   Interp3::NEAREST, single.data());

    std::vector<float> twice = volume;
    twice.insert(twice.end(), volume.begin(), volume.end());
    std::vector<float> pair(2 * n);
    Interp3::interp3<float, float>(nullptr, nullptr, nullptr, twice.data(),
                                   {dims[0], dims[1], dims[2], 2}, xi.data(),
                                   yi.data(), zi.data(), {n, 1, 1, 2},
                                   Interp3::NEAREST, pair.data());
    EXPECT_TRUE(same_bits({pair.begin(), pair.begin() + n}, single));
    EXPECT_TRUE(same_bits({pair.begin() + n, pair.end()}, single));
    return single;
}

// Sample index picked along one axis of a 6-sample line whose samples hold
// their own index, for each coordinate along that axis.
std::vector<float> picked_along(Axis axis, const std::vector<float>& coords) {
    std::vector<float> line{0, 1, 2, 3, 4, 5};
    const std::vector<float> zeros(coords.size(), 0.0f);
    switch (axis) {
        case X: return nearest_values(line, 1, 6, 1, coords, zeros, zeros);
        case Y: return nearest_values(line, 6, 1, 1, zeros, coords, zeros);
        case Z: return nearest_values(line, 1, 1, 6, zeros, zeros, coords);
    }
    return {};
}

TEST(Interp3Nearest, RoundsHalfwayUpAndClampsPerAxis) {
    const std::vector<float> coords{-0.5f, -0.51f, 0.49f, 0.5f,  1.49f,
                                    1.5f,  2.49f,  2.5f,  3.5f,  4.5f,
                                    5.0f,  5.5f,   -0.75f, -100.0f, 100.0f,
                                    -1e9f, 1e9f};
    const std::vector<float> expected{0, 0, 0, 1, 1, 2, 2, 3, 4, 5,
                                      5, 5, 0, 0, 5, 0, 5};
    for (Axis axis : {X, Y, Z}) {
        EXPECT_EQ(picked_along(axis, coords), expected) << "axis " << axis;
    }
}

TEST(Interp3Nearest, NanInfiniteAndHugeCoordinatesTakeLastSample) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    // Each rounds to a position that does not fit in 32 bits (or is NaN):
    // the conversion gives -2^31, and the wrap of the -1 makes it the last.
    const std::vector<float> coords{nan, inf, -inf, 3e9f, -3e9f, -2147483648.0f,
                                    2147483648.0f, -1e30f};
    for (Axis axis : {X, Y, Z}) {
        EXPECT_EQ(picked_along(axis, coords), std::vector<float>(coords.size(), 5.0f))
            << "axis " << axis;
    }
}

TEST(Interp3Nearest, CopiesSampleBitsUnchanged) {
    const std::uint32_t patterns[] = {0x7fc12345u, 0xffa00001u, 0x80000000u,
                                      0x7f800000u, 0xff800000u, 0x00000001u,
                                      0x3f800000u, 0x80000007u};
    std::vector<float> volume(8);  // 2 x 2 x 2
    std::memcpy(volume.data(), patterns, sizeof patterns);
    std::vector<float> xi, yi, zi;  // each sample, in storage order
    for (int s = 0; s < 2; ++s)
        for (int c = 0; c < 2; ++c)
            for (int r = 0; r < 2; ++r) {
                xi.push_back(c + 0.2f);
                yi.push_back(r - 0.3f);
                zi.push_back(s + 0.4f);
            }
    EXPECT_TRUE(same_bits(nearest_values(volume, 2, 2, 2, xi, yi, zi), volume));
}

}  // namespace
