// The noise level estimated from the data on one thread: 2 coils of
// 256 x 256 x 64 (the demo's volume), ky -32 .. 127 acquired, complex
// Gaussian noise over a smooth object. The image is folded to a lattice of
// 2^18 samples, so the full-size transform handed in goes unused.

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "recon/noise_estimate.hpp"

namespace {

void BM_NoiseEstimate(benchmark::State& state)
{
    ReconShape shape;
    shape.n = {256, 256, 64};
    shape.coils = 2;
    const SampledRanges ranges{std::nullopt, KRange{-32, 127}, std::nullopt};
    std::vector<Complex> kspace(static_cast<std::size_t>(shape.samples()));
    std::mt19937 generator(4);
    std::normal_distribution<float> normal;
    for (std::size_t s = 0; s < kspace.size(); ++s) {
        const Index kx = static_cast<Index>(s % 256) - 128, ky = static_cast<Index>(s / 256 % 256) - 128,
                    kz = static_cast<Index>(s / 65536 % 64) - 32;
        const float object = 1e4f / static_cast<float>(1 + kx * kx + ky * ky + kz * kz);
        kspace[s] = ky >= -32 ? Complex(object + normal(generator), normal(generator)) : Complex(0.0f, 0.0f);
    }
    const VolumeTransform transform(shape.n);
    for (auto _ : state) {
        benchmark::DoNotOptimize(estimate_noise_powers(kspace.data(), 0, shape, ranges, KSpaceOrder::centred, transform));
    }
}

}  // namespace

BENCHMARK(BM_NoiseEstimate)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();
