#pragma once
// The "multiply" computation on plain buffers: bring a low-resolution complex
// image onto the data's sample grid by trilinear interpolation and remove its
// phase from the data, in place.

#include <cstdint>
#include <vector>

#include "common/complex_planes.hpp"

// Array dimensions, first fastest; at least three entries (padded with 1).
using DimensionList = std::vector<std::uint32_t>;

// Replaces every data sample d by Re(d * conj(L) / |L|), L being the
// low-resolution image interpolated at the sample's position, and zeroes the
// data's imaginary part (if it has one). In single precision, in this order:
//   c = a / m, s = -b / m with m = sqrt(a*a + b*b) (s = 0 and m = sqrt(a*a)
//   for a real low-resolution image), then re = c * re, re = re - s * im.
// A zero interpolated value gives NaN: no phase is invented for it.
//
// Grid: along each of the first three axes the first and last data samples
// fall on the first and last low-resolution samples; data sample i sits at
// low-resolution index i * (L - 1) / (D - 1) as linspace accumulates it, and an
// axis of one data sample reads low-resolution index 0. Volume v (dimensions
// beyond the third) of the data is corrected with volume v of the image.
// When both dimension lists are equal the image already lies on the data's
// grid and is used as it is, without interpolation.
//
// The caller guarantees: equal list lengths (>= 3); when the data have
// samples, no zero size in the image and at least as many image volumes as
// data volumes (data without samples read nothing); element counts below
// 2^31 in both. `low_im` may be null (real image).
void AddLowResPhase(const ComplexPlanes& data, const DimensionList& data_dims, const float* low_re,
                    const float* low_im, const DimensionList& low_dims);
