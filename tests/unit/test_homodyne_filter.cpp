// The plain-buffer "filter" core: axis planning, the crop in both complex
// layouts and worked cases of the in-place weighting (the comparison with a
// per-sample reference lives with the other fast-path tests).

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "homodyne/filter_weights.hpp"
#include "homodyne/homodyne_filter.hpp"

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// Complex samples kept as separate planes and as interleaved pairs.
struct Samples {
    std::vector<float> re, im, interleaved;

    Samples(size_t n, unsigned seed)
        : re(n), im(n), interleaved(2 * n)
    {
        std::mt19937 rng(seed);
        std::normal_distribution<float> normal;
        for (size_t i = 0; i < n; ++i) {
            re[i] = normal(rng);
            im[i] = normal(rng);
            interleaved[2 * i] = re[i];
            interleaved[2 * i + 1] = im[i];
        }
    }
    ComplexPlanes separate() { return ComplexPlanes{re.data(), im.data(), 1}; }
    ComplexPlanes paired() { return ComplexPlanes{interleaved.data(), interleaved.data() + 1, 2}; }
};

}  // namespace

TEST(PlanAxisFilter, FullySampledAxesAreKeptWholeAndUnweighted)
{
    const double cancelling[][2] = {{-64, 63}, {-64, 65}, {-3, 3}, {kNaN, 3}, {0.4, 0.4}};
    for (const auto& range : cancelling) {
        const AxisFilter axis = plan_axis_filter(128, range);
        EXPECT_FALSE(axis.weighted);
        EXPECT_EQ(axis.first, 0);
        EXPECT_EQ(axis.last, 127);
        EXPECT_EQ(axis.weights, std::vector<float>(128, 1.0f));
    }
    const AxisFilter empty = plan_axis_filter(5, nullptr);
    EXPECT_FALSE(empty.weighted);
    EXPECT_EQ(empty.extent(), 5);
}

TEST(PlanAxisFilter, AcceptedAndRejectedRanges)
{
    const double accepted[2] = {-40, 63};
    const AxisFilter axis = plan_axis_filter(128, accepted);
    EXPECT_TRUE(axis.weighted);
    EXPECT_EQ(axis.first, 24);
    EXPECT_EQ(axis.last, 104);
    EXPECT_EQ(axis.extent(), 81);

    // Missing part at the positive end: rejected, one sample kept, weights 1.
    const double rejected[2] = {-64, 40};
    const AxisFilter collapsed = plan_axis_filter(128, rejected);
    EXPECT_FALSE(collapsed.weighted);
    EXPECT_EQ(collapsed.first, 0);
    EXPECT_EQ(collapsed.last, 0);
    EXPECT_EQ(collapsed.weights, std::vector<float>(128, 1.0f));
}

TEST(PlanAxisFilter, AxisWithoutSamplesHasEmptyExtent)
{
    const double accepted[2] = {-2, 4};
    const double rejected[2] = {-64, 40};
    EXPECT_EQ(plan_axis_filter(0, accepted).extent(), 0);
    EXPECT_EQ(plan_axis_filter(0, rejected).extent(), 0);
    EXPECT_EQ(plan_axis_filter(0, nullptr).extent(), 0);
}

TEST(CropBlock, CopiesTheBoundedBlockOfEveryVolume)
{
    const VolumeShape shape{7, 6, 5, 3};
    const size_t n = 7 * 6 * 5 * 3;
    Samples data(n, 1);
    AxisFilter x, y, z;
    x.first = 2, x.last = 5;
    y.first = 1, y.last = 1;
    z.first = 0, z.last = 3;
    const size_t m = 4 * 1 * 4 * 3;

    std::vector<float> re(m, 0), im(m, 0), pairs(2 * m, 0);
    crop_block(data.separate(), shape, x, y, z, ComplexPlanes{re.data(), im.data(), 1});
    crop_block(data.paired(), shape, x, y, z, ComplexPlanes{pairs.data(), pairs.data() + 1, 2});

    size_t o = 0;
    for (int v = 0; v < 3; ++v)
        for (int k = 0; k <= 3; ++k)
            for (int i = 2; i <= 5; ++i, ++o) {
                const size_t src = static_cast<size_t>(v) * 210 + (static_cast<size_t>(k) * 6 + 1) * 7 + i;
                EXPECT_EQ(re[o], data.re[src]);
                EXPECT_EQ(im[o], data.im[src]);
                EXPECT_EQ(pairs[2 * o], data.re[src]);
                EXPECT_EQ(pairs[2 * o + 1], data.im[src]);
            }
    EXPECT_EQ(o, m);
}

TEST(CropBlock, RealDataLeaveTheImaginaryPartAlone)
{
    std::vector<float> data{1, 2, 3, 4};
    std::vector<float> re(2, 0), im(2, 0);
    AxisFilter x, y, z;
    x.first = 1, x.last = 2;
    crop_block(ComplexPlanes{data.data(), nullptr, 1}, VolumeShape{4, 1, 1, 1}, x, y, z,
               ComplexPlanes{re.data(), im.data(), 1});
    EXPECT_EQ(re, (std::vector<float>{2, 3}));
    EXPECT_EQ(im, (std::vector<float>{0, 0}));
}

namespace {

AxisFilter planned(int n, double first, double last)
{
    const double range[2] = {first, last};
    return plan_axis_filter(n, range);
}

}  // namespace

TEST(WeightInPlace, CubeRootUsesTheSinglePrecisionExponent)
{
    // With three weighted axes the exponent is 1.0f / 3 = 0.3333333432674408.
    // For p = 0.500000715f that gives 0.793700874f; the exact cube root would
    // round to 0.793700933f.
    AxisFilter x, y, z;
    x.weights = {0.500000715f};
    y.weights = {1.0f};
    z.weights = {1.0f};
    x.weighted = y.weighted = z.weighted = true;
    float sample = 1.0f;
    weight_in_place(ComplexPlanes{&sample, nullptr, 1}, VolumeShape{1, 1, 1, 1}, x, y, z);
    EXPECT_EQ(sample, 0.793700874f);
}

TEST(WeightInPlace, NoWeightedAxisLeavesDataUnchanged)
{
    const AxisFilter whole = planned(4, -2, 1);
    std::vector<float> data{1.5f, -0.0f, std::numeric_limits<float>::infinity(), 3.0f};
    const std::vector<float> before = data;
    weight_in_place(ComplexPlanes{data.data(), nullptr, 1}, VolumeShape{4, 1, 1, 1}, whole, whole, whole);
    EXPECT_EQ(0, std::memcmp(data.data(), before.data(), sizeof(float) * 4));
}

TEST(WeightInPlace, RealDataWithoutImaginaryPlane)
{
    const AxisFilter x = planned(8, -2, 3.5), whole = planned(1, 0, 0);
    std::vector<float> data(16, 1.0f);
    weight_in_place(ComplexPlanes{data.data(), nullptr, 1}, VolumeShape{8, 1, 1, 2}, x, whole, whole);
    const std::vector<float> one{0, 0, 0, 0.75f, 1, 1.25f, 2, 2};
    EXPECT_EQ(std::vector<float>(data.begin(), data.begin() + 8), one);
    EXPECT_EQ(std::vector<float>(data.begin() + 8, data.end()), one);
}
