// The plain-buffer phase transfer: the combine order, NaN for a zero image,
// the interpolation grid and the per-volume pairing, in both complex layouts.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "phase/phase_transfer.hpp"

namespace {

DimensionList dims(std::initializer_list<std::uint32_t> sizes)
{
    DimensionList list(13, 1);
    std::copy(sizes.begin(), sizes.end(), list.begin());
    return list;
}

std::vector<float> random_values(size_t n, unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> uniform(-2.0f, 2.0f);
    std::vector<float> v(n);
    for (float& x : v) {
        x = uniform(rng);
    }
    return v;
}

}  // namespace

TEST(AddLowResPhase, CombineOrderAndZeroedImaginaryPart)
{
    std::vector<float> re{1.0f}, im{2.0f};
    const std::vector<float> low_re{3.0f}, low_im{4.0f};
    AddLowResPhase(ComplexPlanes{re.data(), im.data(), 1}, dims({1, 1}), low_re.data(), low_im.data(), dims({1, 1}));
    EXPECT_EQ(re[0], 2.2f);
    EXPECT_EQ(im[0], 0.0f);

    std::vector<float> pairs{1.0f, 2.0f};
    AddLowResPhase(ComplexPlanes{pairs.data(), pairs.data() + 1, 2}, dims({1, 1}), low_re.data(), low_im.data(),
                   dims({1, 1}));
    EXPECT_EQ(pairs[0], 2.2f);
    EXPECT_EQ(pairs[1], 0.0f);
}

TEST(AddLowResPhase, ZeroImageGivesNaNInsteadOfAPhase)
{
    std::vector<float> re{1.0f, 1.0f}, im{1.0f, 1.0f};
    const std::vector<float> low_re{0.0f, 1.0f}, low_im{0.0f, 0.0f};
    AddLowResPhase(ComplexPlanes{re.data(), im.data(), 1}, dims({2, 1}), low_re.data(), low_im.data(), dims({2, 1}));
    EXPECT_TRUE(std::isnan(re[0]));
    EXPECT_EQ(re[1], 1.0f);
}

TEST(AddLowResPhase, RealImageKeepsOrFlipsTheRealPart)
{
    std::vector<float> re{1.5f, 1.5f, -0.5f}, im{7.0f, 7.0f, 7.0f};
    const std::vector<float> low{2.0f, -3.0f, -1.0f};
    AddLowResPhase(ComplexPlanes{re.data(), im.data(), 1}, dims({3, 1}), low.data(), nullptr, dims({3, 1}));
    EXPECT_EQ(re, (std::vector<float>{1.5f, -1.5f, 0.5f}));
    EXPECT_EQ(im, (std::vector<float>{0, 0, 0}));
}

TEST(AddLowResPhase, RealDataChangeOnlyTheirRealPlane)
{
    std::vector<float> re{2.0f};
    const std::vector<float> low_re{0.0f}, low_im{-5.0f};  // phase -90 degrees: c = 0
    AddLowResPhase(ComplexPlanes{re.data(), nullptr, 1}, dims({1, 1}), low_re.data(), low_im.data(), dims({1, 1}));
    EXPECT_EQ(re[0], 0.0f);
}

// Data of 5 x 5 x 3 samples over an image of 3 x 2 x 2: sample i of an axis
// sits at image index i * (L - 1) / (D - 1), exactly 0, 0.5, 1, 1.5, 2 along the
// first axis, 0, 0.25, .., 1 along the second and 0, 0.5, 1 along the third.
// Reference: trilinear interpolation reduced along the second axis, then the
// first, then the third, each step a sum of two products.
TEST(AddLowResPhase, InterpolatesOnTheAlignedGridPerVolume)
{
    const int D[3] = {5, 5, 3}, L[3] = {3, 2, 2};
    const int volumes = 2;
    const int nd = D[0] * D[1] * D[2], nl = L[0] * L[1] * L[2];
    const std::vector<float> low_re = random_values(nl * volumes, 1), low_im = random_values(nl * volumes, 2);
    const std::vector<float> data_re = random_values(nd * volumes, 3), data_im = random_values(nd * volumes, 4);

    std::vector<float> expected(nd * volumes);
    for (int v = 0; v < volumes; ++v) {
        const auto sample = [&](const std::vector<float>& plane, int r, int c, int s) {
            r = std::min(r, L[0] - 1), c = std::min(c, L[1] - 1), s = std::min(s, L[2] - 1);
            return plane[v * nl + (s * L[1] + c) * L[0] + r];
        };
        const auto trilinear = [&](const std::vector<float>& plane, float py, float px, float pz) {
            const int r = int(std::floor(py)), c = int(std::floor(px)), s = int(std::floor(pz));
            const float fy = py - r, fx = px - c, fz = pz - s, gy = 1 - fy, gx = 1 - fx, gz = 1 - fz;
            float lower[2], upper[2];
            for (int k = 0; k < 2; ++k) {
                const float x0 = sample(plane, r, c + 1, s + k) * fx + sample(plane, r, c, s + k) * gx;
                const float x1 = sample(plane, r + 1, c + 1, s + k) * fx + sample(plane, r + 1, c, s + k) * gx;
                lower[k] = x0, upper[k] = x1;
            }
            const float y0 = upper[0] * fy + lower[0] * gy;
            const float y1 = upper[1] * fy + lower[1] * gy;
            return y1 * fz + y0 * gz;
        };
        for (int k = 0; k < D[2]; ++k)
            for (int j = 0; j < D[1]; ++j)
                for (int i = 0; i < D[0]; ++i) {
                    const float py = i * 0.5f, px = j * 0.25f, pz = k * 0.5f;
                    const float a = trilinear(low_re, py, px, pz), b = trilinear(low_im, py, px, pz);
                    const float m = std::sqrt(a * a + b * b);
                    const float c = a / m, s = (-b) / m;
                    const int n = v * nd + (k * D[1] + j) * D[0] + i;
                    const float t = c * data_re[n];
                    expected[n] = t - s * data_im[n];
                }
    }

    std::vector<float> re = data_re, im = data_im;
    AddLowResPhase(ComplexPlanes{re.data(), im.data(), 1}, dims({5, 5, 3, 2}), low_re.data(), low_im.data(),
                   dims({3, 2, 2, 2}));
    EXPECT_EQ(0, std::memcmp(re.data(), expected.data(), sizeof(float) * expected.size()));
    EXPECT_EQ(im, std::vector<float>(im.size(), 0.0f));
}
