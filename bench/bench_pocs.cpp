// One POCS iteration against the two FFTs it needs, on the same plans and the
// same buffers in the same run: 256 x 256 x 64 complex single (the demo's
// phantom size), 5/8 of the ky lines measured. An iteration is the inverse
// transform along the partial axis, the fused constraint pass (scale,
// projection, change), the forward transform and the fused data pass
// (restore, residual), exactly as the reconstruction runs it. BM_Pocs3dFfts
// is the pair of full 3-D transforms that an iteration without the hybrid
// space would need.

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "recon/pocs.hpp"
#include "recon/volume_transform.hpp"

namespace {

struct PocsBenchData {
    ReconShape shape;
    ReconOptions options;
    PocsPlan plan;
    VolumeTransform transform, all_axes;
    ComplexBuffer work, phase;
    std::vector<float> amplitude;
    std::vector<Complex> measured;

    PocsBenchData()
        : shape(make_shape()), options(make_options()), plan(plan_pocs(shape, options)),
          transform(shape.n, plan.box.partial, true), all_axes(shape.n, {true, true, true}, true),
          work(shape.voxels()), phase(shape.voxels()), amplitude(static_cast<std::size_t>(shape.voxels())),
          measured(static_cast<std::size_t>(plan.box.samples()))
    {
        std::mt19937 generator(1);
        std::normal_distribution<float> normal;
        for (Index i = 0; i < shape.voxels(); ++i) {
            work[i] = Complex(normal(generator), normal(generator));
            const float angle = normal(generator);
            phase[i] = Complex(std::cos(angle), std::sin(angle));
        }
        for (Complex& m : measured) {
            m = Complex(normal(generator), normal(generator));
        }
    }
    static ReconShape make_shape()
    {
        ReconShape s;
        s.n = {256, 256, 64};
        return s;
    }
    static ReconOptions make_options()
    {
        ReconOptions o;
        o.ranges[AXIS_Y] = KRange{-32, 127};
        return o;
    }
};

PocsBenchData& data()
{
    static PocsBenchData shared;
    return shared;
}

void BM_PocsFfts(benchmark::State& state)
{
    PocsBenchData& d = data();
    for (auto _ : state) {
        d.transform.inverse(d.work.data());
        d.transform.forward(d.work.data());
        benchmark::ClobberMemory();
    }
}

void BM_Pocs3dFfts(benchmark::State& state)
{
    PocsBenchData& d = data();
    for (auto _ : state) {
        d.all_axes.inverse(d.work.data());
        d.all_axes.forward(d.work.data());
        benchmark::ClobberMemory();
    }
}

void BM_PocsIteration(benchmark::State& state)
{
    PocsBenchData& d = data();
    const PhaseConstraint form = state.range(0) == 0 ? PhaseConstraint::real_part : PhaseConstraint::magnitude;
    const float scale = 1.0f / static_cast<float>(d.transform.transformed());
    for (auto _ : state) {
        d.transform.inverse(d.work.data());
        benchmark::DoNotOptimize(
            project_onto_phase(d.work.data(), d.phase.data(), d.amplitude.data(), d.shape.voxels(), scale, form));
        d.transform.forward(d.work.data());
        benchmark::DoNotOptimize(restore_measured(d.plan, d.work.data(), d.measured.data()));
    }
}

}  // namespace

// Taking turns, so that both see the same machine load.
BENCHMARK(BM_PocsFfts)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();
BENCHMARK(BM_PocsIteration)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();
BENCHMARK(BM_PocsFfts)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();
BENCHMARK(BM_Pocs3dFfts)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();
