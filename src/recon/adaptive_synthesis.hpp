#pragma once
// Noise-adaptive synthesis: after the partial-Fourier iterations, every
// synthesised (not acquired) k-space sample is scaled by a Wiener-type weight
//   w = max(0, 1 - sigma^2 / P),
// P the power of its partner at -k (where the synthesis took it from),
// averaged over the 5 x 5 x 5 neighbourhood of the partner (fewer samples on
// shorter axes; periodic, so the same in either order). A synthesised sample
// whose partner holds no more than noise is dropped; one whose partner is
// well above the noise is kept. Acquired samples are never changed, and with
// sigma^2 = 0 nothing is. Measured (single coil, SNR 20, 2-D and 3-D): the
// per-sample smoothed power gives 3-9 % lower error on anatomy than the mean
// power of the partner plane, and unsmoothed power is worse than either.

#include <array>
#include <complex>

#include "recon/kspace_order.hpp"
#include "recon/recon_shape.hpp"

// `kspace`: one coil image's k-space of sizes n (x fastest), in the given
// order, with the acquired samples holding the data. `ranges`: the acquired
// block per axis in k coordinates (nullopt: fully sampled); a sample is
// acquired when its k lies in the block on every axis. `noise_power`:
// sigma^2 per k-space sample in the units of `kspace` (an unnormalised
// forward DFT of the image keeps the data's units).
void weight_synthesised_samples(std::complex<float>* kspace, const std::array<Index, 3>& n,
                                const SampledRanges& ranges, float noise_power, KSpaceOrder order);
