#include "homodyne/filter_weights.hpp"

#include <climits>
#include <cmath>
#include <cstdint>

namespace {

// Truncation toward zero into 32 bits, with the x86 result for what does not
// fit (NaN, infinities, |v| >= 2^31): INT_MIN. A plain cast would be undefined.
int truncate_to_int(double v)
{
    if (!(v > -2147483649.0 && v < 2147483648.0)) {
        return INT_MIN;
    }
    return static_cast<int>(v);
}

// 32-bit integer arithmetic that wraps instead of overflowing.
int wrapping_add(int a, int b) { return static_cast<int>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b)); }
int wrapping_sub(int a, int b) { return static_cast<int>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b)); }

// Position of coordinate k among positions 0 .. n - 2 (the last position is
// never examined), or 0 when k does not occur there.
int position_of(int k, int lo, int hi)
{
    return (lo <= k && k <= hi - 2) ? k - lo : 0;
}

}  // namespace

int calculate_filter(int n, const double* k_range, float* weights, int* bounds)
{
    const int a = truncate_to_int(k_range[0]);
    const int b = truncate_to_int(k_range[1]);
    const int lo = static_cast<int>(std::ceil(-0.5f * static_cast<float>(n)));
    const int hi = static_cast<int>(std::ceil(0.5f * static_cast<float>(n)));

    const int sampled = wrapping_add(wrapping_sub(1, a), b);
    const int extent = wrapping_add(wrapping_add(a > b ? a : b, a > b ? a : b), 1);
    const float sampled_fraction = static_cast<float>(sampled) / static_cast<float>(extent);

    const int lower_index = position_of(a, lo, hi);
    const int upper_index = position_of(wrapping_sub(0, a), lo, hi);
    const int centre_index = position_of(0, lo, hi);

    if (!(1.0f > sampled_fraction && static_cast<double>(sampled_fraction) >= 0.55)) {
        return 0;
    }

    const int P = lower_index;
    const int Q = upper_index;
    const int Z = centre_index;
    for (int j = 0; j < n; ++j) {
        // The rules apply in this order, each overwriting the one before; every
        // position is reached by at least one of them.
        float w = 0.0f;
        if (j <= P) {
            w = 0.0f;
        }
        if (j >= Q) {
            w = 2.0f;
        }
        if (P < j && j < Z) {
            const float t = (static_cast<float>(Z) - static_cast<float>(j)) / static_cast<float>(Q - Z);
            const double td = t;
            w = 2.0f - static_cast<float>(td * td + 1.0);
        }
        if (Z <= j && j < Q) {
            const float t = (static_cast<float>(j) - static_cast<float>(Z)) / static_cast<float>(Q - Z);
            const double td = t;
            w = static_cast<float>(td * td + 1.0);
        }
        weights[j] = w;
    }
    bounds[0] = P;
    bounds[1] = Q;
    return 1;
}
