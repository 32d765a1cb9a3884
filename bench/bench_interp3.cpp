// Time per query point and volume of each interpolation method, for 1, 2, 4,
// 9 and 12 volumes of 64 x 64 x 32 samples queried at 256 x 256 x 128
// points (null grids, queries spread over the whole index range), next to a
// plain memory stream over as many floats as each case writes.
//
// Counters: ns_per_pt_vol (nanoseconds per query point per volume) and
// x_stream (that time over the stream's nanoseconds per float, same count).
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <random>
#include <vector>

#include "interpolation/interp3.hpp"
#include "interpolation/vector_manipulation.hpp"
#include "stream_baseline.hpp"

namespace {

constexpr unsigned kRows = 64, kColumns = 64, kSlices = 32;
constexpr unsigned kQueryRows = 256, kQueryColumns = 256, kQuerySlices = 128;
constexpr std::size_t kVolumeSamples = std::size_t{kRows} * kColumns * kSlices;
constexpr std::size_t kQueryPoints =
    std::size_t{kQueryRows} * kQueryColumns * kQuerySlices;

// Query coordinates in storage order (rows fastest), each axis running
// evenly from the first to the last sample of the volume.
struct QueryGrid {
    std::vector<float> x, y, z;
};

QueryGrid& query_grid() {
    static QueryGrid grid = [] {
        std::vector<float> rows = VectorManipulation::linspace(
            0.0f, static_cast<float>(kRows - 1), kQueryRows);
        std::vector<float> columns = VectorManipulation::linspace(
            0.0f, static_cast<float>(kColumns - 1), kQueryColumns);
        std::vector<float> slices = VectorManipulation::linspace(
            0.0f, static_cast<float>(kSlices - 1), kQuerySlices);
        QueryGrid g;
        // Rows vary fastest; the library's y runs along rows, x along columns.
        VectorManipulation::ndgrid(rows, columns, slices, g.y, g.x, g.z);
        return g;
    }();
    return grid;
}

std::vector<float> random_samples(std::size_t n) {
    std::mt19937 rng(12345);
    std::uniform_real_distribution<float> value(-1.0f, 1.0f);
    std::vector<float> samples(n);
    for (float& s : samples) s = value(rng);
    return samples;
}

void BM_Stream(benchmark::State& state) {
    stream_baseline::run(state, kQueryPoints * static_cast<std::size_t>(state.range(0)));
}

void BM_Interp3(benchmark::State& state, Interp3::InterpolationMethod method) {
    const unsigned volumes = static_cast<unsigned>(state.range(0));
    QueryGrid& queries = query_grid();
    std::vector<float> data = random_samples(kVolumeSamples * volumes);
    std::vector<float> out(kQueryPoints * volumes);
    // One volume takes the driver's single-volume path, as real callers do.
    const std::vector<unsigned> data_dims =
        volumes == 1 ? std::vector<unsigned>{kRows, kColumns, kSlices}
                     : std::vector<unsigned>{kRows, kColumns, kSlices, volumes};
    const std::vector<unsigned> query_dims =
        volumes == 1
            ? std::vector<unsigned>{kQueryRows, kQueryColumns, kQuerySlices}
            : std::vector<unsigned>{kQueryRows, kQueryColumns, kQuerySlices, volumes};

    double seconds = 0.0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        Interp3::interp3<float, float>(nullptr, nullptr, nullptr, data.data(),
                                       data_dims, queries.x.data(),
                                       queries.y.data(), queries.z.data(),
                                       query_dims, method, out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
        const std::chrono::duration<double> elapsed =
            std::chrono::steady_clock::now() - start;
        state.SetIterationTime(elapsed.count());
        seconds += elapsed.count();
    }
    const std::size_t outputs = kQueryPoints * volumes;
    const double ns_per_pt_vol =
        seconds * 1e9 / (static_cast<double>(state.iterations()) * outputs);
    state.counters["ns_per_pt_vol"] = ns_per_pt_vol;
    state.counters["x_stream"] = stream_baseline::ratio_to_stream(ns_per_pt_vol, outputs);
}

void volume_counts(benchmark::internal::Benchmark* b) {
    for (int volumes : {1, 2, 4, 9, 12}) b->Arg(volumes);
    b->ArgName("volumes")->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(0.2);
}

// The stream runs first so that every interpolation case can be related to
// it; benchmarks run in the order they are registered here.
BENCHMARK(BM_Stream)->Apply(volume_counts);
BENCHMARK_CAPTURE(BM_Interp3, nearest, Interp3::NEAREST)->Apply(volume_counts);
BENCHMARK_CAPTURE(BM_Interp3, linear, Interp3::LINEAR)->Apply(volume_counts);
BENCHMARK_CAPTURE(BM_Interp3, cubic, Interp3::BICUBIC)->Apply(volume_counts);

}  // namespace
