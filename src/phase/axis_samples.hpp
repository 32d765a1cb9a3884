#pragma once
// The per-axis half of trilinear interpolation on a tensor grid: for every
// query coordinate along one axis, the two neighbouring sample indices
// (clamped to the axis) and the two weights, computed exactly as the
// library's trilinear kernel computes them for a point with that coordinate
// (null grids: position u = q * 1 + 1, lower index floor(u) - 1).

#include <vector>

#include "interpolation/interp3_support.hpp"

struct AxisSamples {
    std::vector<int> lower;      // index of the lower neighbour, clamped
    std::vector<int> upper;      // index of the upper neighbour, clamped
    std::vector<float> weight_upper;  // the fraction f
    std::vector<float> weight_lower;  // its complement 1 - f
};

// `coordinates` in 0-based sample indices of an axis of `size` >= 1 samples.
inline AxisSamples sample_axis(const std::vector<float>& coordinates, int size)
{
    const float scale = 1.0f, offset = 1.0f, one = 1.0f;
    AxisSamples axis;
    for (const float q : coordinates) {
        const float u = q * scale + offset;
        const float floor_u = std::floor(u);
        const float f = u - floor_u;
        const int index = Interp3::detail::truncate_to_int32(floor_u - one);
        axis.lower.push_back(Interp3::detail::clamp_index(index, size));
        axis.upper.push_back(Interp3::detail::clamp_index(Interp3::detail::wrapping_add(index, 1), size));
        axis.weight_upper.push_back(f);
        axis.weight_lower.push_back(one - f);
    }
    return axis;
}
