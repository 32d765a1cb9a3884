#pragma once
// The zero-filled image: the magnitude of the centred inverse DFT of the
// k-space as it is (planes outside the ranges zero), the root sum of squares
// over the coils that a result image combines.

#include "recon/volume_transform.hpp"

// `kspace`: canonical, shape.samples() values. `image`: shape.voxels() values
// per result image (one per volume when `combined`, else one per coil image).
void zero_filled_images(const ReconShape& shape, const Complex* kspace, bool combined, float* image);
