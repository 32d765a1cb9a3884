#pragma once
// The reconstruction pipeline that every front end calls: options checked,
// k-space checked, transforms planned once for the call, then
//   prewhitening (with a noise covariance or noise scan)
//   -> noise level (from them, else estimated from the data)
//   -> every coil image of every volume reconstructed on its own by the
//      chosen method, on `threads` worker threads
//   -> coil sensitivities from the coils' calibration images
//   -> combination (one image per volume)
//   -> noise-adaptive weighting of the synthesised samples and of the
//      quadrature component, once on every result image (for the adaptive
//      combination, on the combined image)
//   -> output form.
// Partial Fourier runs per coil, before the combination: the combined
// image's phase mixes the coils' phases where their sensitivities overlap
// and is no smoother, and measured on 8-coil phantoms per-coil POCS then
// combination gave 1.4-5x lower noiseless error than combination first.
// Coil image j goes to thread j mod threads, volume v to thread v mod
// threads, and nothing is shared between them, so the result does not
// depend on the number of threads. With one image per coil and the
// noise-adaptive step off, every image is written straight from its
// reconstruction.

#include <vector>

#include "recon/adaptive_synthesis.hpp"
#include "recon/method_plans.hpp"
#include "recon/noise_level.hpp"
#include "recon/pocs.hpp"
#include "recon/recon_options.hpp"
#include "recon/recon_shape.hpp"
#include "recon/volume_transform.hpp"

struct ReconReport {
    std::vector<VolumeReport> images;  // one per coil image, coils fastest
    int threads = 1;
    CoilCombination combination = CoilCombination::none;  // what was done
    NoiseSource noise_source = NoiseSource::none;
    std::vector<float> coil_sigma;   // noise sigma per k-space sample of every coil, the data's units
    // Per result image: the noise sigma per k-space sample with which its
    // synthesised samples were weighted (after prewhitening; for the adaptive
    // combination that of the combined image), and what the weighting did.
    // Empty when the step is off.
    std::vector<float> image_sigma;
    std::vector<SynthesisReport> synthesis;
    // With options.keep_sensitivities and the adaptive combination: the
    // sensitivities used, centred, shape (x, y, z, coils, volumes).
    std::vector<Complex> sensitivities;
};

// Images in the result: one per volume when the coils are combined, else
// one per coil image.
Index result_images(const ReconShape& shape, const ReconOptions& options);

// Values per image sample of the output form: 2 for complex, else 1.
inline Index values_per_sample(ReconOutput output) { return output == ReconOutput::complex ? 2 : 1; }

// `kspace`: shape.samples() centred samples. `image`: shape.voxels() *
// result_images(shape, options) * values_per_sample(options.output) floats,
// centred, in the same order. `phase`, unless null: a float per result
// sample, the phase estimate that the method used, in radians (0 where none
// exists; for the adaptive combination the phase of the combined
// calibration images, for the root sum of squares 0).
// Data of any scale give the same image up to that scale: k-space (and a
// noise covariance or scan with it) times 2^p gives the image and the noise
// levels reported times 2^p, bit for bit, as long as the scaled values stay
// normal single-precision numbers. The core runs every call at unit scale.
// `plans`, unless null, are the method plans made for this shape and these
// options (a caller that reconstructs many k-spaces plans once); else they
// are made here.
// Throws ReconError (nothing written to `image` when the options or the data
// are refused).
ReconReport reconstruct(const ReconShape& shape, const Complex* kspace, const ReconOptions& options, float* image,
                         float* phase = nullptr, const MethodPlans* plans = nullptr);

// As reconstruct(), for a caller that has validated `options` against `shape`
// (validate_options) and knows the k-space's scale: `kspace` times
// 2^-exponent has its largest part in [1, 2), and the options' noise
// reference is related to that unit-scale k-space. The images are those of
// the unit-scale k-space; the plain path scales the samples as it copies
// them in, the coil and noise steps get a unit-scale copy.
ReconReport reconstruct_validated(const ReconShape& shape, const Complex* kspace, int exponent,
                                  const ReconOptions& options, const MethodPlans& plans, float* image,
                                  float* phase = nullptr);

// Refuses k-space holding NaN or Inf (homodyne:badInput) or values so large
// that a transform of the image size could overflow single precision
// (homodyne:scale). Returns the largest magnitude of a real or imaginary part.
float check_kspace_values(const ReconShape& shape, const Complex* kspace);
