#pragma once
// Scaling by a power of two, the one rescaling the core does to data: it
// changes no digit, so results at unit scale carry over bit for bit.

#include <cmath>

#include "recon/recon_shape.hpp"

// to[i] = from[i] * 2^exponent for `count` values (float or Complex); `to`
// may be `from`. The product is exact, or rounded once as ldexp rounds it
// where it is subnormal; a factor that is itself a normal float is
// multiplied, which vectorises, and only a larger shift goes through ldexp.
inline float times_power_of_two(float value, int exponent) { return std::ldexp(value, exponent); }
inline Complex times_power_of_two(Complex value, int exponent)
{
    return Complex(std::ldexp(value.real(), exponent), std::ldexp(value.imag(), exponent));
}

template <typename Value>
void copy_times_power_of_two(const Value* from, Index count, int exponent, Value* to)
{
    if (exponent > -127 && exponent < 127) {
        const float factor = std::ldexp(1.0f, exponent);
        for (Index i = 0; i < count; ++i) {
            to[i] = from[i] * factor;
        }
    } else {
        for (Index i = 0; i < count; ++i) {
            to[i] = times_power_of_two(from[i], exponent);
        }
    }
}
