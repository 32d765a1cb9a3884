// Noise level from the data: a sharp-edged object (a rectangle, whose k-space
// is a product of Dirichlet kernels) under known complex Gaussian noise,
// acquired ky = -n/8 .. n/2-1; two coils of different noise, two volumes;
// images small enough to transform whole, large ones folded, and large ones
// of prime lengths; data far from unit scale read at it.

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "recon/noise_estimate.hpp"

namespace {

// Per coil noise power per sample; object intensity 1.
std::vector<float> estimate(const ReconShape& shape, const SampledRanges& ranges, const std::vector<float>& truth)
{
    const auto dirichlet = [](Index k, double width, Index n) {
        return k == 0 ? width : std::sin(M_PI * k * width / n) / std::sin(M_PI * k / n);
    };
    const Index nx = shape.n[0], ny = shape.n[1];
    std::mt19937 random(7);
    std::normal_distribution<float> normal(0.0f, 1.0f);
    std::vector<std::complex<float>> k(static_cast<std::size_t>(shape.samples()));
    for (std::size_t s = 0; s < k.size(); ++s) {
        const Index c = static_cast<Index>(s) / shape.voxels() % 2;
        const Index kx = static_cast<Index>(s) % nx - nx / 2;
        const Index ky = static_cast<Index>(s) / nx % ny - ny / 2;
        const Index kz = static_cast<Index>(s) / (nx * ny) % shape.n[2] - shape.n[2] / 2;
        const float sd = std::sqrt(truth[c] / 2.0f);
        const std::complex<float> noise(sd * normal(random), sd * normal(random));
        const double object = kz == 0 ? (c + 1) * dirichlet(kx, nx / 2 - 1, nx) * dirichlet(ky, ny / 4 + 1, ny) : 0.0;
        k[s] = ky >= ranges[1]->first ? static_cast<float>(object) + noise : 0.0f;
    }
    const VolumeTransform transform(shape.n);
    const std::vector<float> powers = estimate_noise_powers(k.data(), 0, shape, ranges, KSpaceOrder::centred, transform);
    // The same data 2^40 times larger, read at their unit scale: the same
    // powers, digit for digit.
    for (std::complex<float>& sample : k) {
        sample *= 1099511627776.0f;
    }
    EXPECT_EQ(estimate_noise_powers(k.data(), 40, shape, ranges, KSpaceOrder::centred, transform), powers);
    return powers;
}

}  // namespace

TEST(NoiseEstimate, KnownNoiseLevelsPerCoilAndNoiselessData)
{
    for (const std::array<Index, 3>& n : {std::array<Index, 3>{64, 64, 1}, {128, 64, 64}, {521, 509, 1}}) {
        ReconShape shape;
        shape.n = n;
        shape.coils = 2;
        shape.volumes = 2;
        const SampledRanges ranges{std::nullopt, KRange{-n[1] / 8, n[1] / 2 - 1}, std::nullopt};
        // SNR 20 and 10 in the image.
        const std::vector<float> truth{static_cast<float>(shape.voxels()) / 400, static_cast<float>(shape.voxels()) / 100};
        const auto estimated = estimate(shape, ranges, truth);
        for (std::size_t j = 0; j < estimated.size(); ++j) {  // coils fastest, then volumes
            EXPECT_NEAR(std::sqrt(estimated[j] / truth[j % 2]), 1.0, 0.1) << n[0] << " x " << n[1] << ", coil image " << j;
        }
        for (float power : estimate(shape, ranges, {0.0f, 0.0f})) {
            EXPECT_LT(power, 1e-3f * truth[0]) << n[0] << " x " << n[1];
        }
    }
}

TEST(NoiseEstimate, LatticeOfTheMostSamplesUpTo2To18)
{
    using Sizes = std::array<Index, 3>;
    EXPECT_EQ(folded_sizes({256, 256, 1}), (Sizes{256, 256, 1}));      // small enough whole
    EXPECT_EQ(folded_sizes({256, 256, 64}), (Sizes{256, 64, 16}));     // spacing 1, 4, 4
    EXPECT_EQ(folded_sizes({128, 128, 32}), (Sizes{128, 128, 16}));    // spacing 1, 1, 2
    EXPECT_EQ(folded_sizes({251, 256, 64}), (Sizes{251, 64, 16}));     // x prime: y and z folded
    EXPECT_EQ(folded_sizes({521, 509, 1}), (Sizes{521, 509, 1}));      // no lattice of 2^16 samples
}
