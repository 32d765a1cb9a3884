#pragma once
// Scaling by a power of two, the one rescaling the core does to data: it
// changes no digit, so results at unit scale carry over bit for bit.

#include <cmath>

#include "recon/recon_shape.hpp"

// to[i] = from[i] * 2^exponent for `count` samples; `to` may be `from`. The
// product is exact, or rounded once as ldexp rounds it where it is
// subnormal; a factor that is itself a normal float is multiplied, which
// vectorises, and only a larger shift goes through ldexp.
inline void copy_times_power_of_two(const Complex* from, Index count, int exponent, Complex* to)
{
    if (exponent > -127 && exponent < 127) {
        const float factor = std::ldexp(1.0f, exponent);
        for (Index i = 0; i < count; ++i) {
            to[i] = Complex(from[i].real() * factor, from[i].imag() * factor);
        }
    } else {
        for (Index i = 0; i < count; ++i) {
            to[i] = Complex(std::ldexp(from[i].real(), exponent), std::ldexp(from[i].imag(), exponent));
        }
    }
}
