#pragma once
// The noise-adaptive step: Wiener-type weights that do nothing on noiseless
// data (sigma^2 = 0) and, on noisy data, drop what holds more noise than
// signal. They treat measured samples alike whether or not others are
// missing, so that an image never comes out cleaner because less of it was
// measured.
//
// 1. K-space samples. After the partial-Fourier iterations every sample is
//    scaled by
//      w = max(0, 1 - f sigma^2 / P),
//    P a power averaged over a 5 x 5 x 5 neighbourhood (fewer samples on
//    shorter axes; periodic, so the same in either order). A measured
//    sample takes its own neighbourhood and f = 1, the plain Wiener weight.
//    A synthesised (not acquired) sample takes the neighbourhood of its
//    partner at -k, where the synthesis took it from. With the real form the
//    synthesised sample carries the conjugate of its partner's noise, which
//    adds coherently in the real, phase-corrected image: with s the signal
//    and P = |s|^2 + sigma^2 the error (1 - w)^2 |s|^2 + (1 + w)^2 sigma^2
//    of the pair's real part is least at f = 2. The magnitude form's
//    synthesis is only partly coherent with its partner; there f = 1
//    measured 0.6-3 % lower error than f = 2 on phantom slices at SNR 20 and
//    50 (and f = 2 with the real form 0.3-1.4 % lower than f = 1). Samples
//    whose partner was not acquired either (with two partial axes, the
//    corners where both k and -k are missing) are left as they are: the
//    iterations recover them from the phase constraint, not from one
//    partner, and weighting them by their partner's power raised the error
//    of a 3-D phantom (ky 5/8, kz 3/4, SNR 20) by 3 %.
//    Why measured samples too: weighting only the synthesised ones dropped
//    the noise copies of high-k samples below the noise from partial data
//    while the same samples, measured, kept their noise in fully sampled
//    data; on smooth anatomy-like slices at SNR 20 and 50 the 5/8 data then
//    came out 11-12 % cleaner than the fully sampled data through the same
//    call. With measured samples weighted as well the partial data lie 5-9 %
//    above the fully sampled data there (15-18 % on sharp phantom slices,
//    where the measured weight gains 0.8-1.3 %).
//    Why a 5 x 5 x 5 neighbourhood: P pooled over whole readout lines or
//    planes instead (one weight per line of k-space) measured 0.1-1 %
//    more error on phantom slices and 3-D phantoms and about 1.5x (0.58
//    against 0.38 of the fully sampled noisy image) on anatomy-like slices,
//    single coil, SNR 20 and 50, with the quadrature weight and without it.
//
// 2. The quadrature component. The part of the image at right angles to the
//    estimated phase is signal only where that phase is wrong (sharp phase
//    changes, flow); elsewhere it is noise, half the noise of a complex
//    image. It is scaled by max(0, 1 - q / B), B its power averaged over the
//    5 x 5 x 5 neighbourhood, q the noise power of one component of the
//    image had every sample been acquired (an upper bound of what is left
//    there). So the magnitude keeps a wrong phase's signal and loses the
//    noise: on phantom slices at SNR 20 the magnitude error fell 5-7 %, with
//    a phase step of pi/2 or pi in the object 3-5 %, where dropping the
//    component outright lost up to 2 % at SNR 50.
//
// Complex output gets neither weight: it keeps the phase and the noise as
// measured. A line 2 samples across y with +0.5 rad of phase (5/8 of ky,
// SNR 20) kept 74-82 % of the contrast it has without the step with both
// weights, 96-98 % with the k-space weights alone.
//
// With several coils, run it once on the combined image (the coils'
// partial-Fourier results combined with unit-length sensitivities; with
// whitened coils its noise power per sample is the coils' own), not per
// coil: a coil's own SNR understates what survives the combination, and
// per-coil weights lost 12-30 % on an 8-coil phantom at SNR 20 and 50, where
// the combined-image weights are never worse than none (within 0.2 %) and
// 21-31 % better on anatomy.

#include <array>
#include <complex>

#include "recon/kspace_order.hpp"
#include "recon/recon_options.hpp"
#include "recon/recon_shape.hpp"

// What the step did to one image.
struct SynthesisReport {
    Index synthesised = 0;           // weighted samples: not acquired, their partner acquired
    double mean_weight = 1.0;        // their mean weight
    Index removed = 0;               // of them, weighted 0
    double measured_weight = 1.0;    // mean weight of the acquired samples
    bool quadrature_weighted = false;
    double quadrature_weight = 1.0;  // mean weight of the quadrature component
};

// `kspace`: one image's k-space of sizes n (x fastest), in the given order,
// with the acquired samples holding the data. `ranges`: the acquired block
// per axis in k coordinates (nullopt: fully sampled); a sample is acquired
// when its k lies in the block on every axis. `noise_power`: sigma^2 per
// k-space sample in the units of `kspace` (an unnormalised forward DFT of
// the image keeps the data's units). `form`: the constraint that
// synthesised the samples (the real form for one-pass homodyne). Fills the
// report's fields but the quadrature's.
void weight_samples_by_snr(std::complex<float>* kspace, const std::array<Index, 3>& n, const SampledRanges& ranges,
                           float noise_power, PhaseConstraint form, KSpaceOrder order, SynthesisReport& report);

// An image's estimated phase: unit values, or angles in radians made into
// unit values (std::polar) where they are read, which needs half the memory.
struct UnitPhase {
    const std::complex<float>* unit = nullptr;
    const float* radians = nullptr;
    UnitPhase(const std::complex<float>* unit_values) : unit(unit_values) {}
    explicit UnitPhase(const float* angles) : radians(angles) {}
    std::complex<float> operator[](Index i) const
    {
        return unit != nullptr ? unit[i] : std::polar(1.0f, radians[i]);
    }
};

// `image` of sizes n, `phase` its estimated phase (same order),
// `component_power` the noise power of one real component of a voxel.
// Fills report.quadrature_weighted and report.quadrature_weight.
void weight_quadrature(std::complex<float>* image, UnitPhase phase, const std::array<Index, 3>& n,
                       float component_power, SynthesisReport& report);
