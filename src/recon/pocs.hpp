#pragma once
// Iterative partial-Fourier reconstruction by projections onto convex sets.
// The unknown k-space samples outside the measured block are found by
// alternating two projections, in FFT order throughout:
//   image constraint  x <- Re(x e^{-i phi}) e^{i phi}  (the real form), or
//                     x <- |x| e^{i phi}              (the magnitude form);
//   data consistency  measured samples put back, optionally blended with the
//                     estimate over a transition band at the block's edge.
// The constraint pass also applies the transforms' scale and measures the
// change; the data pass measures the data residual of the projected image.
//
// The measured block spans every fully sampled axis, so the data step
// commutes with transforms along those axes: they are transformed once, up
// front, and the iterations run in that hybrid space with transforms along
// the partial axes only (one axis of three: a third of the FFT work).

#include <array>
#include <vector>

#include "recon/recon_options.hpp"
#include "recon/volume_report.hpp"
#include "recon/sampled_box.hpp"
#include "recon/volume_transform.hpp"

// Automatic constraint with one partial axis: both forms run this many trial
// iterations, and the real form is kept when its data residual is below this
// fraction of the magnitude form's (measured after 5 iterations: 0.15-0.2 on
// images that ring; 0.45-0.8 on sharp phantoms without ringing, where the
// magnitude form gives the better image). With two or three partial axes
// some samples miss their mirror too: the real form has nothing to fill
// them from, the magnitude form's positivity recovers part of them (3-D
// phantoms, ky 5/8 and kz 3/4, noiseless: 0.06 error against 0.17, single
// coil and per coil of 8, where the residual test chose the real form for
// 5 of the 8 coils), so the magnitude form is used.
constexpr int trial_iterations = 5;
constexpr double real_form_margin = 0.35;

// What every volume of one call shares: the block, the blend weights of the
// data step per axis (1 inside, rising over the transition band), the options.
struct PocsPlan {
    SampledBox box;
    std::array<std::vector<float>, 3> blend;
    bool blended = false;
    ReconOptions options;
};

PocsPlan plan_pocs(const ReconShape& shape, const ReconOptions& options);

// The image constraint on every sample of `image` (FFT order, unnormalised
// transform output): x = image * scale is projected onto the phase
// `phase` (unit values) and written back; `amplitude` holds the previous
// projected amplitude and receives the new one. Returns the relative change
// ||a_new - a_old|| / ||a_new|| (0 for an all-zero image).
double project_onto_phase(Complex* image, const Complex* phase, float* amplitude, Index count, float scale,
                          PhaseConstraint form);

// Data consistency on the block of `kspace` (FFT order): every measured
// sample m replaces the estimate e as w*m + (1 - w)*e, w from the plan's
// blend weights. Returns ||e - m||^2 over the block.
double restore_measured(const PocsPlan& plan, Complex* kspace, const Complex* box_samples);

// The transforms of one call: all axes (the phase estimate), the fully
// sampled axes (once per image), the partial axes (every iteration, so its
// plans are measured).
struct PocsTransforms {
    VolumeTransform all, full_axes, partial_axes;
    explicit PocsTransforms(const PocsPlan& plan);
};

// One coil image: centred k-space in, the image in the requested output form
// out (interleaved pairs for complex output, else one float per voxel),
// centred; into `phase`, unless null, the estimated phase in radians; and
// into `lowres`, unless null, the calibration image (centred, in the image's
// units), from which coil sensitivities are estimated.
VolumeReport pocs_volume(const PocsPlan& plan, const PocsTransforms& transforms, const Complex* kspace,
                         ReconOutput output, float* image, float* phase, Complex* lowres = nullptr);
