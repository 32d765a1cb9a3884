// The coil steps of an adaptive combination on one thread: Walsh-type
// sensitivities from 8 coils' calibration images, and the combination with
// them, on 256 x 256 x 8 (an eighth of the demo's volume; both work plane by
// plane). Calibration images are smooth: random coil vectors under a
// Gaussian profile per coil.

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "recon/coil_combine.hpp"
#include "recon/coil_sensitivities.hpp"

namespace {

using Complex = std::complex<float>;

struct CoilBenchData {
    ReconShape shape;
    std::vector<Complex> images, sensitivities, combined;

    CoilBenchData() : shape(make_shape()), images(static_cast<std::size_t>(shape.samples()))
    {
        std::mt19937 generator(2);
        std::normal_distribution<float> normal;
        const Index nx = shape.n[0], ny = shape.n[1], voxels = shape.voxels();
        for (Index c = 0; c < shape.coils; ++c) {
            const float cx = 0.5f * std::cos(0.785f * c), cy = 0.5f * std::sin(0.785f * c);
            for (Index s = 0; s < voxels; ++s) {
                const float x = float(s % nx) / nx - 0.5f - cx, y = float(s / nx % ny) / ny - 0.5f - cy;
                images[c * voxels + s] = std::exp(-4.0f * (x * x + y * y)) * Complex(1.0f + 0.1f * normal(generator),
                                                                                  0.1f * normal(generator));
            }
        }
        sensitivities.resize(images.size());
        estimate_coil_sensitivities(images.data(), shape, sensitivities.data());
        combined.resize(static_cast<std::size_t>(voxels));
    }
    static ReconShape make_shape()
    {
        ReconShape s;
        s.n = {256, 256, 8};
        s.coils = 8;
        return s;
    }
};

CoilBenchData& data()
{
    static CoilBenchData shared;
    return shared;
}

void BM_CoilSensitivities(benchmark::State& state)
{
    CoilBenchData& d = data();
    for (auto _ : state) {
        estimate_coil_sensitivities(d.images.data(), d.shape, d.sensitivities.data());
        benchmark::ClobberMemory();
    }
}

void BM_CoilCombination(benchmark::State& state)
{
    CoilBenchData& d = data();
    for (auto _ : state) {
        combine_coils_adaptive(d.images.data(), d.sensitivities.data(), d.shape, d.combined.data());
        benchmark::ClobberMemory();
    }
}

}  // namespace

BENCHMARK(BM_CoilSensitivities)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();
BENCHMARK(BM_CoilCombination)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();
