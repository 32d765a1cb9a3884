#pragma once
// The last steps on one reconstructed complex image (centred, in image units:
// the normalised inverse DFT of its k-space): the noise-adaptive weighting of
// its k-space samples, and the output form.

#include "recon/adaptive_synthesis.hpp"
#include "recon/recon_options.hpp"
#include "recon/volume_transform.hpp"

// The noise-adaptive step on `image`, in place: forward transform
// (unnormalised, so the k-space keeps the data's units),
// weight_samples_by_snr with `noise_power` per sample, inverse transform,
// then, when `quadrature`, weight_quadrature against `phase` with the noise
// of one image component, noise_power / (2 voxels). `transform`: all three
// axes of the image's size; `image` from ComplexBuffer (the transform's
// alignment).
SynthesisReport noise_adaptive_step(const VolumeTransform& transform, Complex* image, UnitPhase phase,
                                    const SampledRanges& ranges, float noise_power, PhaseConstraint form,
                                    bool quadrature);

// `count` samples of `image` into `out` in the form `output`: complex as
// interleaved pairs, real as Re(x conj(e)) with e the unit phase from
// `phase`, magnitude as |x| (`phase` is read for real output only). `phase`
// may hold its angles in `out` itself: each is read before its sample is
// written.
void write_output(const Complex* image, UnitPhase phase, Index count, ReconOutput output, float* out);
