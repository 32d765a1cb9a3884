#pragma once
// The phase estimate of POCS: the symmetrically sampled centre of the measured
// block, under a smooth window, zero-padded to the full grid and transformed,
// so that every sample sits at its true k position.
//
// An echo away from the nominal centre (a shifted echo or motion puts a
// linear phase ramp on the image) is followed: along each partial axis the
// window is centred on the k-space peak, the largest |k| of the block, and
// spans the symmetric part around it. The ramp then sits in the estimated
// phase instead of being cut in half by a window around k = 0.

#include <array>
#include <vector>

#include "recon/recon_options.hpp"
#include "recon/sampled_box.hpp"
#include "recon/volume_transform.hpp"

// The k coordinate of the peak along each partial axis (0 on full axes): the
// first largest |k|^2 in block order.
std::array<Index, 3> echo_peak(const SampledBox& box, const Complex* box_samples);

// Value of the window at t in (-1, 1), t = 0 at the centre.
float window_value(CalibrationWindow window, double t);

// The window along each axis over the block's positions: centred on the
// peak and as wide as the block allows on both sides of it; 1 on full axes.
std::array<std::vector<float>, 3> calibration_windows(const SampledBox& box, const std::array<Index, 3>& peak,
                                                      CalibrationWindow window);

// Writes the windowed centre's image, the low-resolution image from which the
// phase and the coil sensitivities are estimated, into `image` (FFT order,
// the image's size, the unnormalised inverse transform).
void calibration_image(const VolumeTransform& transform, const SampledBox& box, const Complex* box_samples,
                       const std::array<Index, 3>& peak, CalibrationWindow window, Complex* image);

// Replaces every value of a calibration image by its phase, e^{i phi}; values
// below 1e-5 of the largest magnitude (transform rounding, whose phase
// depends on the FFT plan) and zeros take phase 0.
void keep_phase(Complex* image, Index count);

// The same on part of a calibration image whose largest magnitude is
// `largest`.
void keep_phase(Complex* image, Index count, float largest);
float largest_magnitude(const Complex* image, Index count);
