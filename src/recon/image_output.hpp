#pragma once
// The last pass of a reconstruction: the image leaves FFT order for centred
// order, scaled, in the output form the caller asked for.

#include "recon/recon_options.hpp"
#include "recon/volume_transform.hpp"

// From `image` (FFT order, x = image * scale) into `out` (centred):
//   complex    interleaved pairs x
//   real       Re(x e^{-i phi}), phi the phase estimate `phase`
//   magnitude  |x|
void write_image(const Complex* image, const Complex* phase, const std::array<Index, 3>& n, float scale,
                 ReconOutput output, float* out);
