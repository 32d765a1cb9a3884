// PowThirdOfProducts against the library pow on the single-precision
// product, bit for bit: every triple of three homodyne ramps, special and
// extreme weights, and products whose root lies so close to the midpoint
// between two floats that only pow can settle them; and the worked value of
// the weighting that uses it.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "homodyne/homodyne_filter.hpp"
#include "homodyne/pow_third.hpp"

namespace {

float expected(float wx, float wy, float wz)
{
    return static_cast<float>(std::pow(static_cast<double>(wx * wy * wz), double(1.0f / 3.0f)));
}

bool same_float(float a, float b)
{
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

// Compares every row of the three axes with pow; returns the mismatches.
int mismatches(const std::vector<float>& wx, const std::vector<float>& wy, const std::vector<float>& wz)
{
    const PowThirdOfProducts roots(wx, wy, wz);
    std::vector<float> row(wx.size());
    int count = 0;
    for (std::size_t k = 0; k < wz.size(); ++k) {
        for (std::size_t j = 0; j < wy.size(); ++j) {
            roots.row(static_cast<int>(j), static_cast<int>(k), row.data());
            for (std::size_t i = 0; i < wx.size(); ++i) {
                const float want = expected(wx[i], wy[j], wz[k]);
                if (!same_float(row[i], want) && ++count <= 5) {
                    ADD_FAILURE() << wx[i] << " * " << wy[j] << " * " << wz[k] << ": " << row[i] << " instead of "
                                  << want;
                }
            }
        }
    }
    return count;
}

std::vector<float> ramp(int n, double first, double last)
{
    const double range[2] = {first, last};
    return plan_axis_filter(n, range).weights;
}

}  // namespace

TEST(PowThird, MatchesPowOnRampsAndSpecialWeights)
{
    EXPECT_EQ(mismatches(ramp(96, -30, 47), ramp(71, -20, 35), ramp(40, -12, 19)), 0);

    // Zeros of both signs, negative pairs (a positive product), infinities,
    // NaN, subnormals, and magnitudes whose partial product under- or
    // overflows although the whole product is an ordinary float.
    const float inf = std::numeric_limits<float>::infinity();
    const std::vector<float> special{0.0f, -0.0f, 1.0f, 2.0f, -1.5f, -0.25f, inf, -inf, std::nanf(""),
                                     1e-45f, 1e-39f, 1.17549435e-38f, 3e-30f, 4e25f, 3.4e38f, 0.500000715f};
    EXPECT_EQ(mismatches(special, special, special), 0);
}

TEST(PowThird, RootsNextToAFloatMidpoint)
{
    // Found by search: the approximation lies within a few units of a double
    // of the midpoint and on the other side of it from pow, so that it rounds
    // the wrong way wherever such roots are not handed to pow.
    const float triples[][3] = {
        {1.00468147f, 0.0519391298f, 1.0849086f},  {1.16423821f, 1.71856499f, 0.989587665f},
        {1.01407647f, 1.98222256f, 0.985006213f},  {1.18755043f, 1.66358411f, 1.00222504f},
        {1.81331635f, 1.35092747f, 0.808269978f},
    };
    for (const auto& t : triples) {
        EXPECT_EQ(mismatches({t[0]}, {t[1]}, {t[2]}), 0);
    }
}

TEST(PowThird, WeightingUsesTheSinglePrecisionExponent)
{
    // With three weighted axes the exponent is 1.0f / 3 = 0.3333333432674408.
    // For p = 0.500000715f that gives 0.793700874f; the exact cube root would
    // round to 0.793700933f.
    AxisFilter x, y, z;
    x.weights = {0.500000715f};
    y.weights = z.weights = {1.0f};
    x.weighted = y.weighted = z.weighted = true;
    float sample = 1.0f;
    weight_in_place(ComplexPlanes{&sample, nullptr, 1}, VolumeShape{1, 1, 1, 1}, x, y, z);
    EXPECT_EQ(sample, 0.793700874f);
}
