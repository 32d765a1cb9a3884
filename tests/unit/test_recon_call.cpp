// The call layer every front end uses: options set by any spelling, the
// caller's array in any element type and memory order, results back in the
// caller's order and scale, an acquisition's rules, and plan reuse.

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "recon/recon_call.hpp"
#include "recon/recon_error.hpp"
#include "recon/reconstruct.hpp"

namespace {

// A smooth object with a phase ramp, per channel a different gain, as
// centred k-space of sizes nx x ny x 1 x channels, column-major, with
// y below -3 not acquired (exact zeros).
std::vector<Complex> partial_kspace(Index nx, Index ny, Index channels)
{
    std::vector<Complex> k(static_cast<std::size_t>(nx * ny * channels));
    for (Index c = 0; c < channels; ++c) {
        for (Index ky = 0; ky < ny; ++ky) {
            for (Index kx = 0; kx < nx; ++kx) {
                std::complex<double> sum = 0.0;
                for (Index y = 0; y < ny; ++y) {
                    for (Index x = 0; x < nx; ++x) {
                        const double u = double(x - nx / 2) / nx, v = double(y - ny / 2) / ny;
                        const double object = u * u + v * v < 0.1 ? (1.0 + u) * (1.0 + 0.2 * c) : 0.0;
                        const double angle = 1.2 * u + 0.4 * c - 2.0 * M_PI * (double((kx - nx / 2) * (x - nx / 2)) / nx +
                                                                             double((ky - ny / 2) * (y - ny / 2)) / ny);
                        sum += std::polar(object, angle);
                    }
                }
                k[(c * ny + ky) * nx + kx] = ky - ny / 2 >= -3 ? Complex(sum) : Complex(0, 0);
            }
        }
    }
    return k;
}

struct Result {
    std::vector<float> image;
    ReconInfo info;
    ReconCall call;
};

Result run(const ReconSettings& settings, const KspaceInput& input)
{
    const ReconPlan plan(prepare_call(settings, input));
    Result result;
    result.call = plan.call();
    Index samples = 1;
    for (const Index n : result.call.result_dims) {
        samples *= n;
    }
    result.image.resize(static_cast<std::size_t>(samples * values_per_sample(plan.call().options.output)));
    ReconBuffers buffers;
    buffers.image = result.image.data();
    result.info = execute(plan, input, buffers);
    return result;
}

KspaceInput input_of(const std::vector<Complex>& k, std::vector<Index> dims)
{
    KspaceInput input;
    input.data = k.data();
    input.dims = std::move(dims);
    return input;
}

ReconSettings settings_with(std::initializer_list<std::pair<const char*, OptionValue>> options)
{
    ReconSettings settings;
    for (const auto& option : options) {
        set_option(settings, option.first, option.second);
    }
    return settings;
}

TEST(OptionTable, EverySpellingFindsOneRowAndMistakesNameTheClosest)
{
    for (const char* spelling : {"PartialFourier", "partial_fourier", "--partial-fourier", "PARTIALFOURIER"}) {
        ASSERT_NE(find_option(spelling), nullptr) << spelling;
        EXPECT_STREQ(find_option(spelling)->name, "PartialFourier");
    }
    EXPECT_EQ(snake_case("NoiseCovariance"), "noise_covariance");
    EXPECT_EQ(flag_of("TransitionBand"), "--transition-band");
    ReconSettings settings;
    try {
        set_option(settings, "itrations", OptionValue::of_number(5));
        FAIL();
    } catch (const ReconError& e) {
        EXPECT_EQ(e.id, "homodyne:badOption");
        EXPECT_NE(std::string(e.what()).find("did you mean 'Iterations'?"), std::string::npos) << e.what();
    }
    EXPECT_THROW(set_option(settings, "Iterations", OptionValue::of_number(2.5)), ReconError);
    EXPECT_THROW(set_option(settings, "Method", OptionValue::of_text("fast")), ReconError);
    OptionValue fractions;
    fractions.kind = OptionValue::Kind::list;
    fractions.list = {std::nullopt, std::vector<double>{0.625}};
    set_option(settings, "PartialFourier", fractions);
    OptionValue ranges;
    ranges.kind = OptionValue::Kind::list;
    EXPECT_THROW(set_option(settings, "Ranges", ranges), ReconError);  // a second source of ranges
}

TEST(ReconCall, AnyElementTypeAndMemoryOrderGivesTheSameImage)
{
    const Index nx = 12, ny = 10, coils = 3;
    const std::vector<Complex> k = partial_kspace(nx, ny, coils);
    const ReconSettings settings = settings_with({{"Coils", OptionValue::of_number(4)},
                                                  {"Dims", OptionValue::of_number(3)},
                                                  {"CoilCombine", OptionValue::of_text("none")},
                                                  {"Method", OptionValue::of_text("homodyne")}});
    const Result plain = run(settings, input_of(k, {nx, ny, 1, coils}));
    EXPECT_EQ(plain.call.result_dims, (std::vector<Index>{nx, ny, 1, coils}));

    // The same samples as double, and in reversed (C) memory order.
    std::vector<std::complex<double>> wide(k.begin(), k.end());
    KspaceInput as_double = input_of(k, {nx, ny, 1, coils});
    as_double.type = KspaceInput::Type::complex_double;
    as_double.data = wide.data();
    EXPECT_EQ(run(settings, as_double).image, plain.image);
    std::vector<Complex> reversed(k.size());
    for (Index c = 0; c < coils; ++c) {
        for (Index y = 0; y < ny; ++y) {
            for (Index x = 0; x < nx; ++x) {
                reversed[(x * ny + y) * coils + c] = k[(c * ny + y) * nx + x];
            }
        }
    }
    KspaceInput c_order = input_of(reversed, {nx, ny, 1, coils});
    c_order.strides = {ny * coils, coils, 1, 1};
    EXPECT_EQ(run(settings, c_order).image, plain.image);

    // Coils along dimension 5 behind 2 volumes: the results come back in
    // that order.
    std::vector<Complex> behind(k.size() * 2);
    for (Index c = 0; c < coils; ++c) {
        for (Index v = 0; v < 2; ++v) {
            std::copy_n(k.begin() + c * nx * ny, nx * ny, behind.begin() + (c * 2 + v) * nx * ny);
        }
    }
    ReconSettings at_five = settings;
    set_option(at_five, "Coils", OptionValue::of_number(5));
    const Result moved = run(at_five, input_of(behind, {nx, ny, 1, 2, coils}));
    for (Index c = 0; c < coils; ++c) {
        for (Index v = 0; v < 2; ++v) {
            EXPECT_TRUE(std::equal(plain.image.begin() + c * nx * ny, plain.image.begin() + (c + 1) * nx * ny,
                                   moved.image.begin() + (c * 2 + v) * nx * ny));
        }
    }
}

TEST(ReconCall, DataOfAnyScaleGiveTheUnitImageAndTheirExponent)
{
    const Index nx = 12, ny = 10;
    const std::vector<Complex> k = partial_kspace(nx, ny, 1);
    const Result unit = run({}, input_of(k, {nx, ny}));
    std::vector<std::complex<double>> huge(k.begin(), k.end());
    for (auto& v : huge) {
        v *= std::ldexp(1.0, 900);  // far beyond single precision
    }
    KspaceInput input = input_of(k, {nx, ny});
    input.type = KspaceInput::Type::complex_double;
    input.data = huge.data();
    const Result scaled = run({}, input);
    EXPECT_EQ(scaled.info.scale_exponent, unit.info.scale_exponent + 900);
    EXPECT_EQ(scaled.image, unit.image);
    std::vector<float> overflowing = unit.image;
    EXPECT_THROW(restore_scale(overflowing.data(), Index(overflowing.size()), 900, "IMG"), ReconError);

    // Single precision off unit scale is read in place by both methods, the
    // samples scaled as the core copies them in: the same image.
    std::vector<Complex> tiny(k);
    for (Complex& v : tiny) {
        v = Complex(std::ldexp(v.real(), -100), std::ldexp(v.imag(), -100));
    }
    for (const char* method : {"pocs", "homodyne"}) {
        const ReconSettings plain = settings_with({{"NoiseAdaptive", OptionValue::of_boolean(false)},
                                                   {"Method", OptionValue::of_text(method)}});
        const Result at_unit = run(plain, input_of(k, {nx, ny}));
        const Result in_place = run(plain, input_of(tiny, {nx, ny}));
        EXPECT_EQ(in_place.info.scale_exponent, at_unit.info.scale_exponent - 100);
        EXPECT_EQ(in_place.image, at_unit.image) << method;
    }
}

TEST(ReconCall, TheKspaceCheckFindsTheLargestPartAndAnyNanOrInf)
{
    // 1000 samples: most of them in the vectorised body, the last few after it.
    const ReconShape shape{{10, 10, 10}};
    std::vector<Complex> k(1000, Complex(0.5f, -0.25f));
    k[517] = Complex(0.0f, -3.0f);
    k[998] = Complex(2.5f, 1.0f);
    EXPECT_EQ(check_kspace_values(shape, k.data()), 3.0f);
    for (const float bad : {std::nanf(""), -std::nanf(""), HUGE_VALF, -HUGE_VALF}) {
        for (const Index at : {Index(0), Index(501), Index(999)}) {
            std::vector<Complex> with_bad(k);
            with_bad[at] = Complex(1.0f, bad);
            EXPECT_THROW(check_kspace_values(shape, with_bad.data()), ReconError) << at;
        }
    }
}

TEST(ReconCall, AnAcquisitionBringsItsCoilsAndNoiseUnlessTheCallNamesThem)
{
    const Index nx = 12, ny = 10, coils = 2;
    const std::vector<Complex> k = partial_kspace(nx, ny, coils);
    auto acquisition = std::make_shared<Acquisition>();
    acquisition->ranges[AXIS_Y] = KRange{-3, ny / 2 - 1};
    std::mt19937 random(3);
    std::normal_distribution<float> normal(0.0f, 0.01f);
    acquisition->noise_samples = 64;
    acquisition->noise_coils = coils;
    for (Index i = 0; i < 64 * coils; ++i) {
        acquisition->noise.emplace_back(normal(random), normal(random));
    }
    OptionValue acq;
    acq.kind = OptionValue::Kind::acquisition;
    acq.acquisition = acquisition;
    const KspaceInput input = input_of(k, {nx, ny, 1, coils});

    const Result with_acquisition = run(settings_with({{"Acquisition", acq}}), input);
    EXPECT_EQ(with_acquisition.call.result_dims, (std::vector<Index>{nx, ny, 1, 1}));  // coils combined
    EXPECT_EQ(with_acquisition.info.report.noise_source, NoiseSource::noise_scan);
    const Result no_noise = run(settings_with({{"Acquisition", acq}, {"NoiseCovariance", OptionValue{}}}), input);
    EXPECT_EQ(no_noise.call.result_dims, (std::vector<Index>{nx, ny, 1, 1}));
    EXPECT_NE(no_noise.info.report.noise_source, NoiseSource::noise_scan);

    // Given ranges win over the acquisition's.
    OptionValue ranges;
    ranges.kind = OptionValue::Kind::list;
    ranges.list = {std::nullopt, std::vector<double>{-3, double(ny / 2 - 1)}};
    acquisition->ranges[AXIS_Y] = KRange{-5, ny / 2 - 1};
    const Result given = run(settings_with({{"Acquisition", acq}, {"Ranges", ranges}}), input);
    EXPECT_EQ(given.info.ranges[AXIS_Y]->first, -3);
}

TEST(ReconCall, APlanReconstructsFurtherKspacesAsAFreshCallDoes)
{
    const Index nx = 12, ny = 10;
    const std::vector<Complex> first = partial_kspace(nx, ny, 1);
    std::vector<Complex> second = first;
    for (Complex& v : second) {
        v *= Complex(0.5f, 0.25f);
    }
    const ReconPlan plan(prepare_call({}, input_of(first, {nx, ny})));
    std::vector<float> image(static_cast<std::size_t>(nx * ny));
    ReconBuffers buffers;
    buffers.image = image.data();
    const ReconInfo info = execute(plan, input_of(second, {nx, ny}), buffers);
    const Result fresh = run({}, input_of(second, {nx, ny}));
    EXPECT_EQ(info.scale_exponent, fresh.info.scale_exponent);
    EXPECT_EQ(image, fresh.image);
    EXPECT_THROW(execute(plan, input_of(second, {ny, nx}), buffers), ReconError);
}

}  // namespace
