#include "homodyne/pow_third.hpp"

#include <cmath>
#include <cstdint>

#include "common/vector_clones.hpp"

namespace {

const double kExponent = 1.0f / 3.0f;

// A double keeps 29 bits more than a float: (float)y rounds on those bits,
// whose midpoint pattern is 2^28. Near it, the approximation (off by under
// 30 units of the double: three pows of under one unit each, four roundings,
// the dropped term e (e - 1) d^2 / 2 < 1.6e-15) and pow's own result could
// round differently. The check looks at those bits without their lowest 10:
// a doubt where they read 2^18 - 1 or 2^18, so at least 1023 units either
// side of the midpoint.
constexpr int kDroppedBits = 10;
constexpr std::uint32_t kTailMask = (1u << (29 - kDroppedBits)) - 1;
constexpr std::uint32_t kBelowMidpoint = (1u << (28 - kDroppedBits)) - 1;

std::uint32_t bits_of(float value) { return __builtin_bit_cast(std::uint32_t, value); }
std::uint64_t bits_of(double value) { return __builtin_bit_cast(std::uint64_t, value); }

// A normal float: a product of that size carries a relative rounding error
// below 2^-24.
inline unsigned normal(std::uint32_t bits) { return (bits & 0x7fffffffu) - 0x00800000u < 0x7f000000u; }
// A positive normal float: p^e is then a normal float too.
inline unsigned positive_normal(std::uint32_t bits) { return bits - 0x00800000u < 0x7f000000u; }

// The values of one row at y and z weights wy and wz: yz = wy wz exactly,
// root_yz = wy^e wz^e and e_inverse_yz = e / (wy wz), in double.
struct RowFactors {
    float wy, wz;
    double yz, root_yz, e_inverse_yz;
};

// pow(wx wy wz, e) rounded to single for one x weight, with its root and
// reciprocal; doubt is set where pow must decide instead. p = +0 gives +0
// like pow. Roots are taken of magnitudes, so that a positive product of two
// negative weights and a positive one gets its root too.
inline __attribute__((always_inline)) float approximate(float wx, double root_x, double inverse_x,
                                                        const RowFactors& row, unsigned& doubt)
{
    const float q = wx * row.wy;
    const float p = q * row.wz;
    // e d = e (p - xyz) / xyz; the subtraction is exact, xyz rounded once.
    const double e_d = (static_cast<double>(p) - static_cast<double>(wx) * row.yz) * inverse_x * row.e_inverse_yz;
    const double root = root_x * row.root_yz;
    const double y = root + root * e_d;
    const std::uint32_t tail = static_cast<std::uint32_t>(bits_of(y) >> kDroppedBits) & kTailMask;
    const std::uint32_t p_bits = bits_of(p);
    const unsigned zero = p_bits == 0;
    const unsigned sure = normal(bits_of(q)) & positive_normal(p_bits) & (tail - kBelowMidpoint > 1u);
    doubt = (zero | sure) ^ 1u;
    return __builtin_bit_cast(float, bits_of(static_cast<float>(y)) & (zero - 1u));
}

// The row of roots; returns the number of samples in doubt.
HOMODYNE_WIDE_VECTOR_CLONES
unsigned approximate_row(const float* wx, const double* root_x, const double* inverse_x, long n, RowFactors row,
                         float* out)
{
    unsigned doubtful = 0;
    for (long i = 0; i < n; ++i) {
        unsigned doubt;
        out[i] = approximate(wx[i], root_x[i], inverse_x[i], row, doubt);
        doubtful += doubt;
    }
    return doubtful;
}

}  // namespace

PowThirdOfProducts::AxisRoots::AxisRoots(const std::vector<float>& w)
    : weight(w), root(w.size()), inverse(w.size())
{
    for (std::size_t i = 0; i < w.size(); ++i) {
        root[i] = std::pow(std::fabs(static_cast<double>(w[i])), kExponent);
        inverse[i] = 1.0 / static_cast<double>(w[i]);
    }
}

PowThirdOfProducts::PowThirdOfProducts(const std::vector<float>& wx, const std::vector<float>& wy,
                                       const std::vector<float>& wz)
    : x_(wx), y_(wy), z_(wz)
{
}

void PowThirdOfProducts::row(int j, int k, float* out) const
{
    const float wy = y_.weight[j], wz = z_.weight[k];
    const RowFactors row{wy, wz, static_cast<double>(wy) * static_cast<double>(wz), y_.root[j] * z_.root[k],
                         kExponent * (y_.inverse[j] * z_.inverse[k])};
    const long n = static_cast<long>(x_.weight.size());
    if (approximate_row(x_.weight.data(), x_.root.data(), x_.inverse.data(), n, row, out) == 0) {
        return;
    }
    for (long i = 0; i < n; ++i) {
        unsigned doubt;
        approximate(x_.weight[i], x_.root[i], x_.inverse[i], row, doubt);
        if (doubt) {
            const float p = x_.weight[i] * wy * wz;
            out[i] = static_cast<float>(std::pow(static_cast<double>(p), kExponent));
        }
    }
}
