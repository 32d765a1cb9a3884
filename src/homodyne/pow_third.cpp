#include "homodyne/pow_third.hpp"

#include <cmath>
#include <cstdint>
#include <vector>

#include "common/vector_clones.hpp"

namespace {

// |approximation / pow(p, e) - 1| stays below 1e-14 (cube root 5e-16, the
// logarithm's 5e-7 error times e - 1/3 = 1e-8, roundings) and pow itself is
// within 2e-16; the margin leaves a factor of 100 on top.
constexpr double kMargin = 1e-12;
constexpr double kDelta = 1.0 / 100663296.0;  // e - 1/3 = 1 / (3 * 2^25), exactly

// Bit casts the vectoriser sees through (a memcpy through char does not).
std::uint32_t bits_of(float value) { return __builtin_bit_cast(std::uint32_t, value); }
float float_of(std::uint32_t bits) { return __builtin_bit_cast(float, bits); }

// One Halley step towards the cube root of x, cubing the relative error.
template <typename T>
inline __attribute__((always_inline)) T halley(T y, T x)
{
    const T y3 = y * y * y;
    return y * (y3 + T(2) * x) / (T(2) * y3 + x);
}

// p^e for a float p in [2^-64, 2^64), to within 1e-14. Inlined into the
// vectorised loop below, whose clones it must follow.
inline __attribute__((always_inline)) double approximate(std::uint32_t bits)
{
    // Cube root: a first guess from the float's bits (within 4 %), two Halley
    // steps in single precision (to its rounding noise) and one in double.
    const float xf = float_of(bits);
    const float guess = float_of(bits / 3 + 0x2a5137a0u);
    const double y = halley(static_cast<double>(halley(halley(guess, xf), xf)), static_cast<double>(xf));
    // p^(e - 1/3) = exp(t), t = kDelta * ln p, |t| < 1e-6: 1 + t + t^2/2.
    // ln p = exponent * ln 2 + ln m with m in [1, 2); ln m from the series
    // 2 atanh(s), s = (m - 1) / (m + 1) < 1/3, in single precision (5e-7).
    const double exponent = static_cast<double>(static_cast<int>(bits >> 23) - 127);
    const float m = float_of((bits & 0x007fffffu) | 0x3f800000u);
    const float s = (m - 1.0f) / (m + 1.0f);
    const float s2 = s * s;
    const float ln_m = 2.0f * s * (1.0f + s2 * (1.0f / 3 + s2 * (1.0f / 5 + s2 * (1.0f / 7 + s2 * (1.0f / 9)))));
    const double t = kDelta * (exponent * 0.6931471805599453 + static_cast<double>(ln_m));
    return y * (1.0 + t + 0.5 * t * t);
}

// Rounds the approximation; false where the rounding is not certain.
HOMODYNE_VECTOR_CLONES
void round_approximations(const float* p, float* out, std::uint32_t* certain, long n)
{
    for (long i = 0; i < n; ++i) {
        const std::uint32_t bits = bits_of(p[i]);
        // 2^-64 <= p < 2^64 keeps the single-precision steps far from under-
        // and overflow; other p (weights never reach them) go to pow.
        const bool in_range = bits - 0x1f800000u < 0x40000000u;
        const double y = approximate(bits);
        const float f = static_cast<float>(y);
        // f is a positive normal float: its neighbours are one unit of its bits
        // away (for p in range; other results are discarded).
        const std::uint32_t f_bits = bits_of(f);
        const double below = 0.5 * (static_cast<double>(f) + float_of(f_bits - 1));
        const double above = 0.5 * (static_cast<double>(f) + float_of(f_bits + 1));
        const double margin = kMargin * y;
        out[i] = f;
        certain[i] = in_range & (y - below > margin) & (above - y > margin);
    }
}

}  // namespace

void pow_third(const float* p, float* out, long n)
{
    const double exponent = 1.0f / 3.0f;
    std::vector<std::uint32_t> certain(static_cast<std::size_t>(n > 0 ? n : 0));
    round_approximations(p, out, certain.data(), n);
    for (long i = 0; i < n; ++i) {
        if (!certain[i]) {
            out[i] = static_cast<float>(std::pow(static_cast<double>(p[i]), exponent));
        }
    }
}
