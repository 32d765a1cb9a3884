// Noise level from the data: a sharp-edged object (a rectangle, whose k-space
// is a product of Dirichlet kernels) under known complex Gaussian noise,
// acquired ky = -8 .. 31 of 64; two coils of different noise, two volumes.

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "recon/noise_estimate.hpp"

namespace {

// Per coil noise power per sample; object intensity 1, so 10.24 is SNR 20.
std::vector<float> estimate(const ReconShape& shape, const SampledRanges& ranges, const std::vector<float>& truth)
{
    const auto dirichlet = [](Index k, double width) {
        return k == 0 ? width : std::sin(M_PI * k * width / 64) / std::sin(M_PI * k / 64);
    };
    std::mt19937 random(7);
    std::normal_distribution<float> normal(0.0f, 1.0f);
    std::vector<std::complex<float>> k(static_cast<std::size_t>(shape.samples()));
    for (std::size_t s = 0; s < k.size(); ++s) {
        const Index c = (s / 4096) % 2;
        const Index kx = static_cast<Index>(s % 64) - 32;
        const Index ky = static_cast<Index>(s / 64 % 64) - 32;
        const float sd = std::sqrt(truth[c] / 2.0f);
        const std::complex<float> noise(sd * normal(random), sd * normal(random));
        const float object = static_cast<float>((c + 1) * dirichlet(kx, 31) * dirichlet(ky, 17));
        k[s] = ky >= ranges[1]->first ? object + noise : 0.0f;
    }
    const VolumeTransform transform(shape.n);
    return estimate_noise_powers(k.data(), shape, ranges, KSpaceOrder::centred, transform);
}

}  // namespace

TEST(NoiseEstimate, KnownNoiseLevelsPerCoilAndNoiselessData)
{
    ReconShape shape;
    shape.n = {64, 64, 1};
    shape.coils = 2;
    shape.volumes = 2;
    const SampledRanges ranges{std::nullopt, KRange{-8, 31}, std::nullopt};
    const std::vector<float> truth{10.24f, 40.96f};
    const auto estimated = estimate(shape, ranges, truth);
    for (std::size_t j = 0; j < estimated.size(); ++j) {  // coils fastest, then volumes
        EXPECT_NEAR(std::sqrt(estimated[j] / truth[j % 2]), 1.0, 0.1) << "coil image " << j;
    }
    for (float power : estimate(shape, ranges, {0.0f, 0.0f})) {
        EXPECT_LT(power, 1e-3f * truth[0]);
    }
}
