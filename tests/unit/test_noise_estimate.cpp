// Noise level from the data: a sharp-edged object (a rectangle, whose k-space
// is a product of Dirichlet kernels) under known complex Gaussian noise,
// half-Fourier along y, two coils of different noise, two volumes.

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "recon/noise_estimate.hpp"

namespace {

constexpr double pi = 3.14159265358979323846;

// DFT along one axis of n samples of a centred run of `width` ones.
double dirichlet(Index k, Index n, Index width)
{
    return k == 0 ? static_cast<double>(width) : std::sin(pi * k * width / n) / std::sin(pi * k / n);
}

std::vector<std::complex<float>> noisy_rectangle(const ReconShape& shape, const SampledRanges& ranges,
                                                 const std::vector<float>& noise_powers)
{
    std::mt19937 random(7);
    std::normal_distribution<float> normal(0.0f, 1.0f);
    std::vector<std::complex<float>> k(static_cast<std::size_t>(shape.samples()));
    std::size_t s = 0;
    for (Index v = 0; v < shape.volumes; ++v) {
        for (Index c = 0; c < shape.coils; ++c) {
            const float sd = std::sqrt(noise_powers[static_cast<std::size_t>(c)] / 2.0f);
            for (Index y = 0; y < shape.n[1]; ++y) {
                for (Index x = 0; x < shape.n[0]; ++x, ++s) {
                    const Index ky = y - shape.n[1] / 2;
                    const Index kx = x - shape.n[0] / 2;
                    const float object = static_cast<float>((c + 1) * dirichlet(kx, shape.n[0], 31) *
                                                            dirichlet(ky, shape.n[1], 17));
                    const std::complex<float> noise(sd * normal(random), sd * normal(random));
                    k[s] = ranges[1]->first <= ky && ky <= ranges[1]->last ? object + noise : 0.0f;
                }
            }
        }
    }
    return k;
}

}  // namespace

TEST(NoiseEstimate, KnownNoiseLevelsPerCoilAndNoiselessData)
{
    ReconShape shape;
    shape.n = {64, 64, 1};
    shape.coils = 2;
    shape.volumes = 2;
    const SampledRanges ranges{std::nullopt, KRange{-8, 31}, std::nullopt};
    // SNR 20 for an object of intensity 1: image noise 1/20, per k-space sample 4096 / 400.
    const std::vector<float> truth{10.24f, 40.96f};

    const auto noisy = noisy_rectangle(shape, ranges, truth);
    const auto estimated = estimate_noise_powers(noisy.data(), shape, ranges, KSpaceOrder::centred);
    for (std::size_t c = 0; c < truth.size(); ++c) {
        EXPECT_NEAR(std::sqrt(estimated[c] / truth[c]), 1.0, 0.1) << "coil " << c;
    }

    const auto clean = noisy_rectangle(shape, ranges, {0.0f, 0.0f});
    for (float power : estimate_noise_powers(clean.data(), shape, ranges, KSpaceOrder::centred)) {
        EXPECT_LT(power, 1e-3f * truth[0]);
    }
}
