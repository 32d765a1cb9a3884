// A plain memory stream (read one float, write one float) over a given
// number of floats: the floor against which the kernels' per-element times
// are read as ratios. Measured in the same binary and run as the kernels.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <vector>

namespace stream_baseline {

// Nanoseconds per float of the last stream run over each float count.
inline std::map<std::size_t, double>& measured_ns_per_float() {
    static std::map<std::size_t, double> measured;
    return measured;
}

// Copies n floats from src to dst, one element at a time.
inline void stream_copy(const float* src, float* dst, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        dst[i] = src[i];
    }
}

// Times stream_copy over float_count floats; reports ns_per_float and
// remembers it for ratio_to_stream. Register the benchmark that calls this
// with UseManualTime(): only the copy itself is timed.
inline void run(benchmark::State& state, std::size_t float_count) {
    std::vector<float> src(float_count, 1.0f), dst(float_count, 0.0f);
    double seconds = 0.0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        stream_copy(src.data(), dst.data(), float_count);
        benchmark::ClobberMemory();
        const std::chrono::duration<double> elapsed =
            std::chrono::steady_clock::now() - start;
        state.SetIterationTime(elapsed.count());
        seconds += elapsed.count();
    }
    const double ns_per_float =
        seconds * 1e9 / (static_cast<double>(state.iterations()) * float_count);
    measured_ns_per_float()[float_count] = ns_per_float;
    state.counters["ns_per_float"] = ns_per_float;
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(float_count * 2 * sizeof(float)));
}

// Ratio of a time per element to the stream's time per float over the same
// float count, or 0 when no stream over that count has run yet.
inline double ratio_to_stream(double ns_per_element, std::size_t float_count) {
    const auto& measured = measured_ns_per_float();
    const auto it = measured.find(float_count);
    return it == measured.end() ? 0.0 : ns_per_element / it->second;
}

}  // namespace stream_baseline
