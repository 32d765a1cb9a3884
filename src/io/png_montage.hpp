#pragma once
// A quick-look picture of reconstructed images: every z plane of every coil
// and volume as one tile (x across, y down), tiles in a near-square grid,
// 8-bit grey scaled so that the largest magnitude is white.

#include <string>

#include "recon/recon_shape.hpp"

// `images` holds shape.samples() real values in the canonical order; their
// magnitudes are shown. Failures are ReconError homodyne:badFile.
void write_png_montage(const std::string& path, const float* images, const ReconShape& shape);
