#pragma once
// Combination of coil images into one image per volume. Inputs have the shape
// (x, y, z, coils, volumes); outputs one image per volume (x, y, z, volumes).
// Both work voxel by voxel, so any image order serves as long as the inputs
// share it.

#include <complex>

#include "recon/recon_shape.hpp"

// Sensitivity-weighted complex combination, the least-squares estimate of
// the object given the sensitivities S (same shape as the images):
//   x = sum_c conj(S_c) * x_c / sum_c |S_c|^2,   0 where sum_c |S_c|^2 = 0,
// summed over the coils in order, in single precision; the voxels split
// into `threads` runs, each on a thread of its own.
void combine_coils_adaptive(const std::complex<float>* images, const std::complex<float>* sensitivities,
                            const ReconShape& shape, std::complex<float>* combined, int threads = 1);

// Root sum of squares: x = sqrt(sum_c |x_c|^2), summed over the coils in order.
void combine_coils_rss(const std::complex<float>* images, const ReconShape& shape, float* combined);
