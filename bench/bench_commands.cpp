// The plain-buffer cores of both commands on 256 x 256 x 128 complex single
// data in the interleaved layout (second argument 0) and in separate planes
// (1), next to their memory baselines measured in the same run:
//   filter:   an in-place pass multiplying the data by a weight array, plus a
//             copy of the block's bytes into a freshly allocated array;
//   multiply: an in-place pass over the data (sign flip), the least any
//             in-place command must do.
// Each iteration starts from the same data (restored outside the timing).
// A command case runs its baseline in turns with itself, iteration by
// iteration, so that a slow spell of the shared machine hits both alike.
// Counters: x_baseline, the case's time over its baseline's, taken in those
// turns; scratch_MB, the most heap memory a command held at once beyond its
// output (the data themselves are 64 MiB).
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "homodyne/homodyne_filter.hpp"
#include "phase/phase_transfer.hpp"

// Heap accounting: every allocation carries its size in a header, so that
// the bytes held and their peak can be followed.
namespace heap {
std::size_t held = 0, peak = 0;
}  // namespace heap

void* operator new(std::size_t n)
{
    auto* block = static_cast<std::size_t*>(std::malloc(n + 16));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    block[0] = n;
    heap::held += n;
    heap::peak = heap::held > heap::peak ? heap::held : heap::peak;
    return reinterpret_cast<char*>(block) + 16;
}

void operator delete(void* p) noexcept
{
    if (p != nullptr) {
        auto* block = reinterpret_cast<std::size_t*>(static_cast<char*>(p) - 16);
        heap::held -= block[0];
        std::free(block);
    }
}

void operator delete(void* p, std::size_t) noexcept { operator delete(p); }

namespace {

constexpr int kX = 256, kY = 256, kZ = 128;
constexpr std::size_t kSamples = std::size_t{kX} * kY * kZ;

const std::vector<float>& original_data()
{
    static const std::vector<float> data = [] {
        std::mt19937 rng(7);
        std::normal_distribution<float> normal;
        std::vector<float> v(2 * kSamples);
        for (float& x : v) {
            x = normal(rng);
        }
        return v;
    }();
    return data;
}

// Runs `body` on a fresh copy of the data each iteration, and `baseline`
// (when given) on another fresh copy just before it; returns the mean seconds
// of both and reports the peak heap that body held beyond `output_bytes`.
struct Seconds {
    double body = 0, baseline = 0;
};

template <typename Body, typename Baseline>
Seconds time_in_turns(benchmark::State& state, Body body, Baseline baseline, std::size_t output_bytes = 0)
{
    std::vector<float> work(original_data());
    Seconds total;
    std::size_t scratch = 0;
    const auto timed = [&](auto run) {
        state.PauseTiming();
        std::memcpy(work.data(), original_data().data(), work.size() * sizeof(float));
        state.ResumeTiming();
        const auto start = std::chrono::steady_clock::now();
        run(work.data());
        benchmark::ClobberMemory();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    for (auto _ : state) {
        total.baseline += timed(baseline);
        const std::size_t held_before = heap::held;
        heap::peak = held_before;
        total.body += timed(body);
        scratch = std::max(scratch, heap::peak - held_before - output_bytes);
    }
    state.counters["scratch_MB"] = static_cast<double>(scratch) / (1 << 20);
    const double n = static_cast<double>(state.iterations());
    return {total.body / n, total.baseline / n};
}

// The time of a case, and its ratio to its baseline when it has one.
void report(benchmark::State& state, const Seconds& seconds, bool has_baseline)
{
    state.counters["ms"] = seconds.body * 1e3;
    if (has_baseline) {
        state.counters["x_baseline"] = seconds.body / seconds.baseline;
    }
}

void no_baseline(float*) {}

struct FilterCase {
    AxisFilter x, y, z;
};

FilterCase filter_case(int weighted_axes)
{
    const double rx[2] = {-80, 127}, ry[2] = {-80, 127}, rz[2] = {-40, 63};
    FilterCase c;
    c.x = plan_axis_filter(kX, rx);
    c.y = plan_axis_filter(kY, weighted_axes >= 2 ? ry : nullptr);
    c.z = plan_axis_filter(kZ, weighted_axes >= 3 ? rz : nullptr);
    return c;
}

std::size_t block_samples(const FilterCase& c)
{
    return std::size_t(c.x.extent()) * c.y.extent() * c.z.extent();
}

// A plain in-place pass multiplying the data by a weight array, and a copy of
// a block's bytes into a fresh array.
struct FilterBaseline {
    std::size_t block;
    const std::vector<float>* weights;
    void operator()(float* d) const
    {
        for (std::size_t i = 0; i < kSamples; ++i) {
            d[2 * i] *= (*weights)[i];
            d[2 * i + 1] *= (*weights)[i];
        }
        std::unique_ptr<float[]> copy(new float[2 * block]);
        std::memcpy(copy.get(), d, 2 * block * sizeof(float));
        benchmark::DoNotOptimize(copy.get());
    }
};

const std::vector<float>& baseline_weights()
{
    static const std::vector<float> weights(kSamples, 0.999f);
    return weights;
}

void BM_FilterBaseline(benchmark::State& state)
{
    const FilterBaseline baseline{block_samples(filter_case(static_cast<int>(state.range(0)))), &baseline_weights()};
    report(state, time_in_turns(state, baseline, no_baseline), false);
}

// The samples of a buffer of 2 n floats in the layout the benchmark asks for.
ComplexPlanes planes_of(float* d, std::size_t n, bool separate)
{
    return separate ? ComplexPlanes{d, d + n, 1} : ComplexPlanes{d, d + 1, 2};
}

void BM_Filter(benchmark::State& state)
{
    const int axes = static_cast<int>(state.range(0));
    const bool separate = state.range(1) != 0;
    const FilterCase c = filter_case(axes);
    const std::size_t block = block_samples(c);
    const VolumeShape shape{kX, kY, kZ, 1};
    const auto filter = [&](float* d) {
        std::unique_ptr<float[]> out(new float[2 * block]);
        const ComplexPlanes data = planes_of(d, kSamples, separate);
        crop_and_weight(data, shape, c.x, c.y, c.z, planes_of(out.get(), block, separate));
        benchmark::DoNotOptimize(out.get());
    };
    const FilterBaseline baseline{block, &baseline_weights()};
    report(state, time_in_turns(state, filter, baseline, 2 * block * sizeof(float)), true);
}

// A plain in-place pass over the data (sign flip), the least any in-place
// command must do.
void stream_baseline(float* d)
{
    for (std::size_t i = 0; i < 2 * kSamples; ++i) {
        d[i] = -d[i];
    }
}

void BM_MultiplyBaseline(benchmark::State& state)
{
    report(state, time_in_turns(state, stream_baseline, no_baseline), false);
}

void BM_Multiply(benchmark::State& state)
{
    const int low = static_cast<int>(state.range(0));  // 1: 64x64x32 image, 0: image of the data's size
    const bool separate = state.range(1) != 0;
    const DimensionList data_dims{kX, kY, kZ, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    DimensionList low_dims = data_dims;
    if (low) {
        low_dims[0] = 64, low_dims[1] = 64, low_dims[2] = 32;
    }
    const std::size_t n = std::size_t(low_dims[0]) * low_dims[1] * low_dims[2];
    std::vector<float> low_re(original_data().begin(), original_data().begin() + n);
    std::vector<float> low_im(original_data().begin() + n, original_data().begin() + 2 * n);
    const auto multiply = [&](float* d) {
        AddLowResPhase(planes_of(d, kSamples, separate), data_dims, low_re.data(), low_im.data(), low_dims);
    };
    report(state, time_in_turns(state, multiply, stream_baseline), true);
}

}  // namespace

BENCHMARK(BM_FilterBaseline)->Arg(1)->Arg(2)->Arg(3)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_Filter)->ArgsProduct({{1, 2, 3}, {0, 1}})->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_MultiplyBaseline)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_Multiply)->ArgsProduct({{1, 0}, {0, 1}})->Unit(benchmark::kMillisecond)->MinTime(1.0);
