// The plain-buffer "filter" core: axis planning and worked cases of the
// in-place weighting (the crop and the weighting against plain reference
// loops live with the other fast-path tests).

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "homodyne/filter_weights.hpp"
#include "homodyne/homodyne_filter.hpp"

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

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
