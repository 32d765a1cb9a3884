// pow_third against the library pow, bit for bit. The full check over all
// 2^32 floats takes minutes and was run once when the method was written; this
// test walks every 509th float and the special values.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "homodyne/pow_third.hpp"

namespace {

float expected(float p) { return static_cast<float>(std::pow(static_cast<double>(p), double(1.0f / 3.0f))); }

bool same_float(float a, float b)
{
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

}  // namespace

TEST(PowThird, MatchesPowOverTheFloats)
{
    std::vector<float> p;
    for (std::uint64_t bits = 0; bits <= 0xffffffffu; bits += 509) {
        const std::uint32_t b = static_cast<std::uint32_t>(bits);
        float value;
        std::memcpy(&value, &b, sizeof value);
        p.push_back(value);
    }
    std::vector<float> out(p.size());
    pow_third(p.data(), out.data(), static_cast<long>(p.size()));
    int mismatches = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        if (!same_float(out[i], expected(p[i])) && ++mismatches <= 5) {
            ADD_FAILURE() << "p = " << p[i] << ": " << out[i] << " instead of " << expected(p[i]);
        }
    }
    EXPECT_EQ(mismatches, 0);
}

TEST(PowThird, SpecialValuesAndWeightProducts)
{
    const float inf = std::numeric_limits<float>::infinity();
    std::vector<float> p{0.0f, -0.0f, 1e-45f, 1e-39f, 1.17549435e-38f, 5.421e-20f, 1.8e19f, 1.0f, 8.0f,
                         0.125f, 0.500000715f, 2.0f, inf, -inf, -1.0f, std::nanf("")};
    // Products of homodyne ramp weights, where the filter needs them.
    for (int i = 1; i < 200; ++i) {
        const float t = static_cast<float>(i) / 200.0f;
        const float w = static_cast<float>(static_cast<double>(t) * t + 1.0);
        p.push_back(w * (2.0f - w) * 2.0f);
    }
    std::vector<float> out(p.size());
    pow_third(p.data(), out.data(), static_cast<long>(p.size()));
    for (std::size_t i = 0; i < p.size(); ++i) {
        EXPECT_TRUE(same_float(out[i], expected(p[i]))) << "p = " << p[i];
    }
    EXPECT_EQ(out[0], 0.0f);
    EXPECT_EQ(out[8], 2.0f);
}
