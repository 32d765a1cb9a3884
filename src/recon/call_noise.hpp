#pragma once
// The noise reference of a call: a covariance matrix or a noise-only scan as
// the caller named it ('NoiseCovariance'), else the noise readouts of the
// acquisition, unless the call names coils or a covariance itself.

#include <vector>

#include "recon/array_layout.hpp"
#include "recon/option_table.hpp"

struct CallNoise {
    std::vector<Complex> covariance;  // rows x columns, column-major, at the caller's scale
    Index rows = 0, columns = 0;
    std::vector<Complex> scan;        // samples (x), 1, 1, coils, at the caller's scale
    ReconShape scan_shape;
    std::string name = "NoiseCovariance";  // for messages
};

// `acquisition_noise`: whether the acquisition's readouts may serve (the call
// names neither 'Coils' nor 'NoiseCovariance').
CallNoise call_noise(const ReconSettings& settings, const ArrayLayout& layout, bool acquisition_noise);

// The noise of `noise` in `options` (the scan by reference), for data
// divided by 2^exponent.
void use_noise(const CallNoise& noise, int exponent, ReconOptions& options);
