#pragma once
// The last pass of a reconstruction: the image leaves FFT order for centred
// order, scaled, in the output form the caller asked for, a run of samples
// contiguous in both orders at a time.

#include "recon/recon_options.hpp"
#include "recon/volume_transform.hpp"

// `count` samples of `image` (x = image * scale) into `out`, the first
// sample's place in the output:
//   complex    interleaved pairs x
//   real       Re(x e^{-i phi}), phi the phase estimate `phase`
//   magnitude  |x|
void write_samples(const Complex* image, const Complex* phase, Index count, float scale, ReconOutput output,
                   float* out);
