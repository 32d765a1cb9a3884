#pragma once
// The k-space reaches the core at unit scale, as it does from homodyne_recon
// in Octave: divided by the power of two at or below its largest real or
// imaginary part. Dividing and multiplying by a power of two changes no
// digit, so both front ends hand the core the same numbers and get the same
// image, whatever the scale of the scanner's data.

#include <complex>
#include <vector>

// 1 for all-zero data.
float unit_scale(const std::vector<std::complex<float>>& values);

// values *= factor, in place.
void scale_values(std::vector<std::complex<float>>& values, float factor);
void scale_values(std::vector<float>& values, float factor);
