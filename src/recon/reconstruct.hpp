#pragma once
// The reconstruction pipeline that every front end calls: options checked,
// k-space checked, transforms planned once for the call, then every coil
// image of every volume reconstructed on its own by the chosen method, on
// `threads` worker threads. Coil image j goes to thread j mod threads, and
// nothing is shared between images, so the result does not depend on the
// number of threads.

#include <vector>

#include "recon/pocs.hpp"
#include "recon/recon_options.hpp"
#include "recon/recon_shape.hpp"
#include "recon/volume_transform.hpp"

struct ReconReport {
    std::vector<VolumeReport> images;  // one per coil image, coils fastest
    int threads = 1;
};

// Values per image sample of the output form: 2 for complex, else 1.
inline Index values_per_sample(ReconOutput output) { return output == ReconOutput::complex ? 2 : 1; }

// `kspace`: shape.samples() centred samples. `image`: shape.samples() *
// values_per_sample(options.output) floats, centred, in the same order.
// `phase`, unless null: shape.samples() floats, the phase estimate that the
// method used, in radians (0 where none exists).
// Throws ReconError (nothing written to `image` when the options or the data
// are refused).
ReconReport reconstruct(const ReconShape& shape, const Complex* kspace, const ReconOptions& options, float* image,
                         float* phase = nullptr);

// Refuses k-space holding NaN or Inf (homodyne:badInput) or values so large
// that a transform of the image size could overflow single precision
// (homodyne:scale).
void check_kspace_values(const ReconShape& shape, const Complex* kspace);
