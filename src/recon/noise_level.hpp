#pragma once
// The noise level of a reconstruction: where it comes from, the prewhitening
// that goes with it, and the noise power per k-space sample of every coil
// after that prewhitening.

#include <vector>

#include "recon/noise_whitening.hpp"
#include "recon/recon_options.hpp"
#include "recon/volume_transform.hpp"

enum class NoiseSource { none, covariance, noise_scan, estimated };
const char* name_of(NoiseSource source);  // "none", "covariance", "noise scan", "estimated"

struct NoiseLevel {
    NoiseSource source = NoiseSource::none;
    // Per coil image (coils fastest, then volumes): sigma in the data's units
    // before prewhitening, and sigma^2 per k-space sample after it.
    std::vector<float> coil_sigma;
    std::vector<float> coil_power;
    CoilMatrix whitening;           // coils x coils; empty: the coils are left as they are
};

// With a covariance or a noise scan in `options`: the coils are prewhitened by
// g * inverse(L) (psi = L L^H, g^2 the mean of psi's diagonal), so that every
// coil carries independent noise of power g^2 per sample and the data keep
// their units (one coil: nothing to whiten). Otherwise, when the
// noise-adaptive step is on and a coil image has at least 1024 samples, the
// noise power of every coil image is estimated from its own data (see noise_estimate.hpp; so a batch of volumes
// gives what separate calls give), and the coils are left as they are: a
// prewhitening by estimates would reweight the coils of noiseless data by
// the estimates' scatter. Else no noise level. `kspace` is read as k-space
// times 2^-`exponent` (the unit scale); `transform`: all three axes of the
// image's size.
NoiseLevel noise_level(const ReconOptions& options, const ReconShape& shape, const Complex* kspace, int exponent,
                       const VolumeTransform& transform);
