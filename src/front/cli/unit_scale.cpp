#include "front/cli/unit_scale.hpp"

#include <algorithm>
#include <cmath>

float unit_scale(const std::vector<std::complex<float>>& values)
{
    float largest = 0.0f;
    for (const std::complex<float>& v : values) {
        largest = std::max(largest, std::max(std::fabs(v.real()), std::fabs(v.imag())));
    }
    return largest > 0.0f ? std::ldexp(1.0f, std::ilogb(largest)) : 1.0f;
}

void scale_values(std::vector<std::complex<float>>& values, float factor)
{
    for (std::complex<float>& v : values) {
        v *= factor;
    }
}

void scale_values(std::vector<float>& values, float factor)
{
    for (float& v : values) {
        v *= factor;
    }
}
