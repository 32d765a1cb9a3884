// calculate_filter: the worked table, acceptance and rejection of ranges, and
// the weight curve against a reference built from the homodyne rule.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "homodyne/filter_weights.hpp"

namespace {

struct Result {
    int accepted;
    std::vector<float> weights;
    int bounds[2];
};

Result run(int n, double first, double last)
{
    double range[2] = {first, last};
    Result r{0, std::vector<float>(static_cast<size_t>(n > 0 ? n : 0), -7.0f), {-5, -5}};
    r.accepted = calculate_filter(n, range, r.weights.data(), r.bounds);
    return r;
}

void expect_weights_near(const std::vector<float>& actual, const std::vector<double>& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t j = 0; j < expected.size(); ++j) {
        EXPECT_NEAR(actual[j], expected[j], 5e-7) << "position " << j;
    }
}

// The homodyne curve from its definition: coordinates k = lo + j; weight 0 up
// to the first sampled coordinate a, 2 from its mirror -a on, and in between
// 1 -/+ t^2 with t = |k| / |a| formed in single precision and t^2 + 1 in double.
std::vector<float> reference_curve(int n, int a)
{
    const int lo = -(n / 2);
    std::vector<float> w(static_cast<size_t>(n));
    for (int j = 0; j < n; ++j) {
        const int k = lo + j;
        if (k <= a) {
            w[j] = 0.0f;
        } else if (k >= -a) {
            w[j] = 2.0f;
        } else {
            const float t = static_cast<float>(k < 0 ? -k : k) / static_cast<float>(-a);
            const float square_plus_one = static_cast<float>(static_cast<double>(t) * t + 1.0);
            w[j] = k < 0 ? 2.0f - square_plus_one : square_plus_one;
        }
    }
    return w;
}

}  // namespace

TEST(CalculateFilter, WorkedTable)
{
    const Result even = run(8, -2, 3);
    ASSERT_EQ(even.accepted, 1);
    EXPECT_EQ(even.bounds[0], 2);
    EXPECT_EQ(even.bounds[1], 6);
    expect_weights_near(even.weights, {0, 0, 0, 0.75, 1, 1.25, 2, 2});

    const Result odd = run(7, -2, 3);
    ASSERT_EQ(odd.accepted, 1);
    EXPECT_EQ(odd.bounds[0], 1);
    EXPECT_EQ(odd.bounds[1], 5);
    expect_weights_near(odd.weights, {0, 0, 0.75, 1, 1.25, 2, 2});

    const Result ten = run(10, -3, 4);
    ASSERT_EQ(ten.accepted, 1);
    EXPECT_EQ(ten.bounds[0], 2);
    EXPECT_EQ(ten.bounds[1], 8);
    expect_weights_near(ten.weights, {0, 0, 0, 0.5555556, 0.8888889, 1, 1.1111111, 1.4444444, 2, 2});

    const Result sixteen = run(16, -4, 7);
    ASSERT_EQ(sixteen.accepted, 1);
    EXPECT_EQ(sixteen.bounds[0], 4);
    EXPECT_EQ(sixteen.bounds[1], 12);
    expect_weights_near(sixteen.weights,
                        {0, 0, 0, 0, 0, 0.4375, 0.75, 0.9375, 1, 1.0625, 1.25, 1.5625, 2, 2, 2, 2});

    const Result long_axis = run(128, -40, 63);
    ASSERT_EQ(long_axis.accepted, 1);
    EXPECT_EQ(long_axis.bounds[0], 24);
    EXPECT_EQ(long_axis.bounds[1], 104);
    EXPECT_EQ(long_axis.weights[24], 0.0f);
    EXPECT_EQ(long_axis.weights[64], 1.0f);
    EXPECT_EQ(long_axis.weights[104], 2.0f);
}

TEST(CalculateFilter, CurveMatchesDefinitionBitForBit)
{
    // Long axes produce many ramp samples in which t^2 rounded in single
    // precision would differ from t^2 + 1 formed in double.
    for (int n : {16, 17, 64, 127, 128, 255, 256}) {
        const int hi = (n + 1) / 2;
        // The mirror -a must lie before the axis' last position (see below).
        for (int a = -(hi - 2); a <= -1; ++a) {
            for (int b : {-a + 1, n / 2 - 1}) {
                if (b <= -a) {
                    continue;
                }
                const float fraction = static_cast<float>(b - a + 1) / static_cast<float>(2 * b + 1);
                const Result r = run(n, a, b);
                ASSERT_EQ(r.accepted, double(fraction) >= 0.55 ? 1 : 0) << n << " " << a << " " << b;
                if (r.accepted) {
                    const std::vector<float> expected = reference_curve(n, a);
                    ASSERT_EQ(0, std::memcmp(r.weights.data(), expected.data(), expected.size() * sizeof(float)))
                        << "n " << n << " range [" << a << ", " << b << "]";
                }
            }
        }
    }
}

TEST(CalculateFilter, RejectedRangesWriteNothing)
{
    const double rejected[][2] = {
        {-3, 3},    // symmetric: fraction exactly 1
        {-64, 40},  // missing part at the positive end
        {-1, 20},   // below 55 %
        {-2, -1},   // negative second element: negative fraction
        {3, 9},     // both ends positive
        {0, 5},     // a = 0 accepts b = 1 .. 4 only
        {0, 0},
        {std::numeric_limits<double>::quiet_NaN(), 4},
        {-std::numeric_limits<double>::infinity(), 4},
        {-1e300, 1e300},
    };
    for (const auto& range : rejected) {
        const Result r = run(8, range[0], range[1]);
        EXPECT_EQ(r.accepted, 0) << range[0] << " " << range[1];
        EXPECT_EQ(r.bounds[0], -5);
        EXPECT_EQ(r.bounds[1], -5);
        for (float w : r.weights) {
            EXPECT_EQ(w, -7.0f);
        }
    }
}

TEST(CalculateFilter, AcceptanceThresholdAt55Percent)
{
    EXPECT_EQ(run(64, -1, 14).accepted, 1);  // 16/29 = 0.5517
    EXPECT_EQ(run(64, -1, 15).accepted, 0);  // 17/31 = 0.5484
    EXPECT_EQ(run(64, 0, 4).accepted, 1);    // 5/9 = 0.5556
    EXPECT_EQ(run(64, 0, 5).accepted, 0);    // 6/11 = 0.5455
    EXPECT_EQ(run(64, -30, 31).accepted, 1); // 62/63, just below 1
}

TEST(CalculateFilter, FractionalEndsTruncateTowardZero)
{
    const Result truncated = run(128, -40.9, 63.7);
    const Result whole = run(128, -40, 63);
    ASSERT_EQ(truncated.accepted, 1);
    EXPECT_EQ(truncated.bounds[0], whole.bounds[0]);
    EXPECT_EQ(truncated.bounds[1], whole.bounds[1]);
    EXPECT_EQ(truncated.weights, whole.weights);
}

TEST(CalculateFilter, CentreOnlyRangeSplitsAtTheCentre)
{
    // a = 0: P = Q = Z = floor(n/2); 0 below the centre, 2 from it on.
    for (int b = 1; b <= 4; ++b) {
        const Result r = run(9, 0, b);
        ASSERT_EQ(r.accepted, 1);
        EXPECT_EQ(r.bounds[0], 4);
        EXPECT_EQ(r.bounds[1], 4);
        EXPECT_EQ(r.weights, (std::vector<float>{0, 0, 0, 0, 2, 2, 2, 2, 2}));
    }
}

TEST(CalculateFilter, TinyAxes)
{
    // One sample: no position is searched, so P = Q = Z = 0 and the weight is 2.
    const Result one = run(1, -1, 3);
    ASSERT_EQ(one.accepted, 1);
    EXPECT_EQ(one.bounds[0], 0);
    EXPECT_EQ(one.bounds[1], 0);
    EXPECT_EQ(one.weights, std::vector<float>{2.0f});

    // Two samples (k = -1, 0): only position 0 is searched.
    const Result two = run(2, -1, 3);
    ASSERT_EQ(two.accepted, 1);
    EXPECT_EQ(two.bounds[0], 0);
    EXPECT_EQ(two.bounds[1], 0);
    EXPECT_EQ(two.weights, (std::vector<float>{2, 2}));

    // No samples: the bounds are written, no weight is, and it succeeds.
    double range[2] = {-1, 3};
    int bounds[2] = {-5, -5};
    EXPECT_EQ(calculate_filter(0, range, nullptr, bounds), 1);
    EXPECT_EQ(bounds[0], 0);
    EXPECT_EQ(bounds[1], 0);
}

TEST(CalculateFilter, MirrorOnTheLastPositionIsNotFound)
{
    // n = 16 covers k = -8 .. 7; the mirror of a = -7 sits on the last
    // position, which is never searched, so Q stays 0 and the block is empty.
    const Result r = run(16, -7, 8);
    ASSERT_EQ(r.accepted, 1);
    EXPECT_EQ(r.bounds[0], 1);
    EXPECT_EQ(r.bounds[1], 0);
}

TEST(CalculateFilter, CoordinatesBeyondTheAxisStayInside)
{
    // a and -a lie outside a 4-sample axis: both bounds stay 0, and every
    // weight is still written.
    const Result r = run(4, -10, 12);
    ASSERT_EQ(r.accepted, 1);
    EXPECT_EQ(r.bounds[0], 0);
    EXPECT_EQ(r.bounds[1], 0);
    for (float w : r.weights) {
        EXPECT_NE(w, -7.0f);
    }
}
