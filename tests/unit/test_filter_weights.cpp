// calculate_filter: the worked table with accepted and rejected ranges, and
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

TEST(CalculateFilter, WorkedAndEdgeCases)
{
    struct Case {
        int n;
        double first, last;
        int lower, upper;             // -5 (left alone) where the range is rejected
        std::vector<double> weights;  // not checked when empty; untouched (-7) where rejected
    };
    const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
    const Case cases[] = {
        // The worked table.
        {8, -2, 3, 2, 6, {0, 0, 0, 0.75, 1, 1.25, 2, 2}},
        {7, -2, 3, 1, 5, {0, 0, 0.75, 1, 1.25, 2, 2}},
        {10, -3, 4, 2, 8, {0, 0, 0, 0.5555556, 0.8888889, 1, 1.1111111, 1.4444444, 2, 2}},
        {16, -4, 7, 4, 12, {0, 0, 0, 0, 0, 0.4375, 0.75, 0.9375, 1, 1.0625, 1.25, 1.5625, 2, 2, 2, 2}},
        {128, -40, 63, 24, 104, {}},
        {128, -40.9, 63.7, 24, 104, {}},  // fractional ends truncate toward zero
        // Just above 55 % (16/29, 5/9) and just below 1 (62/63).
        {64, -1, 14, 31, 33, {}},
        {64, 0, 4, 32, 32, {}},
        {64, -30, 31, 2, 62, {}},
        // a = 0: P = Q = Z = floor(n/2); 0 below the centre, 2 from it on.
        {9, 0, 1, 4, 4, {0, 0, 0, 0, 2, 2, 2, 2, 2}},
        {9, 0, 4, 4, 4, {0, 0, 0, 0, 2, 2, 2, 2, 2}},
        // One sample: no position is searched, P = Q = Z = 0, weight 2. Two
        // samples (k = -1, 0): only position 0 is searched. No samples: the
        // bounds are written, no weight is.
        {1, -1, 3, 0, 0, {2}},
        {2, -1, 3, 0, 0, {2, 2}},
        {0, -1, 3, 0, 0, {}},
        // The mirror of a = -7 sits on the last position of 16, which is never
        // searched: Q stays 0 and the block is empty.
        {16, -7, 8, 1, 0, {}},
        // a and -a outside a 4-sample axis: P = Q = 0, Z = 2; rule 2 writes 2
        // everywhere, rule 3 overwrites position 1 with 2 - (0.5^2 + 1).
        {4, -10, 12, 0, 0, {2, 0.75, 2, 2}},
        // Rejected: nothing written.
        {8, -3, 3, -5, -5, {}},     // symmetric: fraction exactly 1
        {8, -64, 40, -5, -5, {}},   // missing part at the positive end
        {8, -1, 20, -5, -5, {}},    // below 55 %
        {8, -1, 15, -5, -5, {}},    // 17/31, just below 55 %
        {8, 0, 5, -5, -5, {}},      // 6/11: a = 0 accepts b = 1 .. 4 only
        {8, -2, -1, -5, -5, {}},    // negative second element: negative fraction
        {8, 3, 9, -5, -5, {}},      // both ends positive
        {8, 0, 0, -5, -5, {}},
        {8, nan, 4, -5, -5, {}},
        {8, -inf, 4, -5, -5, {}},
        {8, -1e300, 1e300, -5, -5, {}},
    };
    for (const Case& c : cases) {
        const Result r = run(c.n, c.first, c.last);
        const bool accepted = c.lower != -5;
        ASSERT_EQ(r.accepted, accepted ? 1 : 0) << c.n << " [" << c.first << ", " << c.last << "]";
        EXPECT_EQ(r.bounds[0], c.lower) << c.n << " [" << c.first << ", " << c.last << "]";
        EXPECT_EQ(r.bounds[1], c.upper) << c.n << " [" << c.first << ", " << c.last << "]";
        if (!accepted) {
            EXPECT_EQ(r.weights, std::vector<float>(c.n, -7.0f));
        } else if (!c.weights.empty()) {
            expect_weights_near(r.weights, c.weights);
        }
    }
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
