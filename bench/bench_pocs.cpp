// One POCS call against one forward 3-D FFT of the same volume (FFTW, single
// precision, measured plan), in the same run: the phantom's k-space with the
// first 3/8 of the ky lines missing (one partial axis; on 256 x 256 x 64 also
// with the last quarter of kz missing, two axes), the default options with
// the noise-adaptive step off, magnitude output, the call's plans made
// beforehand (as a caller that reconstructs many k-spaces makes them once).
// Arguments: the case, the threads.

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <vector>

#include "recon/method_plans.hpp"
#include "recon/phantom.hpp"
#include "recon/reconstruct.hpp"

namespace {

struct PocsCase {
    ReconShape shape;
    ReconOptions options;
    std::vector<Complex> kspace;
    std::vector<float> image;
    std::unique_ptr<MethodPlans> plans;
    std::unique_ptr<VolumeTransform> fft;
    ComplexBuffer work;

    PocsCase(const std::array<Index, 3>& n, bool two_axes) : work(n[0] * n[1] * n[2])
    {
        shape.n = n;
        kspace = make_phantom(n).kspace;
        image.resize(static_cast<std::size_t>(shape.voxels()));
        options.output = ReconOutput::magnitude;
        options.noise_adaptive = false;
        options.ranges[AXIS_Y] = KRange{n[1] * 3 / 8 - n[1] / 2, (n[1] + 1) / 2 - 1};
        if (two_axes) {
            options.ranges[AXIS_Z] = KRange{-(n[2] / 2), (n[2] + 1) / 2 - 1 - n[2] / 4};
        }
        plans = std::make_unique<MethodPlans>(shape, options);
        fft = std::make_unique<VolumeTransform>(n, std::array<bool, 3>{true, true, true}, true);
        std::copy(kspace.begin(), kspace.end(), work.data());
    }
};

PocsCase& case_of(int index)
{
    static std::map<int, std::unique_ptr<PocsCase>> cases;
    static const std::array<std::pair<std::array<Index, 3>, bool>, 4> sizes{
        {{{128, 128, 128}, false}, {{256, 256, 64}, false}, {{180, 216, 180}, false}, {{256, 256, 64}, true}}};
    std::unique_ptr<PocsCase>& c = cases[index];
    if (!c) {
        c = std::make_unique<PocsCase>(sizes[index].first, sizes[index].second);
    }
    return *c;
}

void BM_PocsCall(benchmark::State& state)
{
    PocsCase& c = case_of(static_cast<int>(state.range(0)));
    ReconOptions options = c.options;
    options.threads = static_cast<int>(state.range(1));
    ReconReport report;
    for (auto _ : state) {
        report = reconstruct(c.shape, c.kspace.data(), options, c.image.data(), nullptr, c.plans.get());
    }
    const VolumeReport& r = report.images[0];
    state.counters["it_min"] = r.iterations[0];
    state.counters["it_median"] = r.iterations[1];
    state.counters["it_max"] = r.iterations[2];
}

void BM_Fft3d(benchmark::State& state)
{
    PocsCase& c = case_of(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        c.fft->forward(c.work.data());
        benchmark::ClobberMemory();
    }
}

void cases(benchmark::internal::Benchmark* b, bool with_threads)
{
    for (int index = 0; index < 4; ++index) {
        for (int threads = 1; threads <= (with_threads ? 2 : 1); ++threads) {
            b->Args({index, threads});
        }
    }
}

}  // namespace

BENCHMARK(BM_Fft3d)->Apply([](auto* b) { cases(b, false); })->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();
BENCHMARK(BM_PocsCall)->Apply([](auto* b) { cases(b, true); })->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseRealTime();
