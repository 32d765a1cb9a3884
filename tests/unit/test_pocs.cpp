// The reconstruction core against plain reference loops: a naive centred DFT
// for one POCS iteration on a tiny grid, worked values for the projection and
// the data step, and the option checks (a result independent of the thread
// count is tested through the host, batch against single calls).

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <optional>
#include <random>
#include <vector>

#include "recon/phase_calibration.hpp"
#include "recon/pocs.hpp"
#include "recon/recon_error.hpp"
#include "recon/reconstruct.hpp"

namespace {

using Cd = std::complex<double>;
const double pi = 3.14159265358979323846;

// Centred DFT in double, k and x counted from index floor(n/2); sign +1 is
// the inverse (with 1/N), -1 the forward transform.
std::vector<Cd> centred_dft(const std::vector<Cd>& in, const std::array<Index, 3>& n, int sign)
{
    const Index total = n[0] * n[1] * n[2];
    std::vector<Cd> out(static_cast<std::size_t>(total));
    for (Index o = 0; o < total; ++o) {
        const Index ox[3] = {o % n[0] - n[0] / 2, o / n[0] % n[1] - n[1] / 2, o / (n[0] * n[1]) - n[2] / 2};
        Cd sum = 0;
        for (Index i = 0; i < total; ++i) {
            const Index ix[3] = {i % n[0] - n[0] / 2, i / n[0] % n[1] - n[1] / 2, i / (n[0] * n[1]) - n[2] / 2};
            double angle = 0;
            for (int a = 0; a < 3; ++a) {
                angle += 2 * pi * double(ox[a] * ix[a]) / double(n[a]);
            }
            sum += in[i] * std::polar(1.0, sign * angle);
        }
        out[o] = sign > 0 ? sum / double(total) : sum;
    }
    return out;
}

std::vector<Complex> random_kspace(const ReconShape& shape, unsigned seed)
{
    std::mt19937 generator(seed);
    std::normal_distribution<float> normal;
    std::vector<Complex> k(static_cast<std::size_t>(shape.samples()));
    for (Complex& value : k) {
        value = Complex(normal(generator), normal(generator));
    }
    return k;
}

}  // namespace

// Centred DFT along one axis in double, as centred_dft but separable: sign
// +1 the inverse (with 1/n), -1 the forward transform.
void centred_dft_axis(std::vector<Cd>& v, const std::array<Index, 3>& n, int axis, int sign)
{
    const Index stride = axis == 0 ? 1 : axis == 1 ? n[0] : n[0] * n[1];
    const Index m = n[axis];
    std::vector<Cd> line(static_cast<std::size_t>(m));
    for (Index start = 0; start < n[0] * n[1] * n[2]; ++start) {
        if (start / stride % m != 0) {
            continue;  // not the first sample of a line along the axis
        }
        for (Index o = 0; o < m; ++o) {
            Cd sum = 0;
            for (Index i = 0; i < m; ++i) {
                sum += v[start + i * stride] * std::polar(1.0, sign * 2 * pi * double((o - m / 2) * (i - m / 2)) / double(m));
            }
            line[o] = sign > 0 ? sum / double(m) : sum;
        }
        for (Index o = 0; o < m; ++o) {
            v[start + o * stride] = line[o];
        }
    }
}

void centred_dft_all(std::vector<Cd>& v, const std::array<Index, 3>& n, int sign)
{
    for (int axis = 0; axis < 3; ++axis) {
        centred_dft_axis(v, n, axis, sign);
    }
}

// Plain whole-volume POCS in double: the Hann-windowed centre's phase (the
// echo at k = 0), `iterations` projections of the given form, the measured
// samples put back blended by sin^2 over `band` samples at a cut edge.
// Returns the image, centred.
std::vector<Cd> reference_pocs(const ReconShape& shape, const std::vector<Complex>& k, const SampledRanges& ranges,
                               PhaseConstraint form, int band, int iterations)
{
    const std::array<Index, 3>& n = shape.n;
    const Index voxels = shape.voxels();
    std::vector<double> weight(static_cast<std::size_t>(voxels), 1.0), window(weight.size(), 1.0);
    for (Index i = 0; i < voxels; ++i) {
        const Index at[3] = {i % n[0], i / n[0] % n[1], i / (n[0] * n[1])};
        for (int a = 0; a < 3; ++a) {
            const Index kk = at[a] - n[a] / 2, first = ranges[a] ? ranges[a]->first : -(n[a] / 2),
                        last = ranges[a] ? ranges[a]->last : (n[a] + 1) / 2 - 1;
            if (kk < first || kk > last) {
                weight[i] = 0;
                continue;
            }
            if (!ranges[a]) {
                continue;
            }
            for (const auto& [cut, from_edge] : {std::pair{first > -(n[a] / 2), kk - first},
                                                 std::pair{last < (n[a] + 1) / 2 - 1, last - kk}}) {
                if (cut && from_edge < band) {
                    const double s = std::sin(pi / 2 * double(from_edge + 1) / double(band + 1));
                    weight[i] *= s * s;
                }
            }
            const Index half = std::min(-first, last);
            window[i] *= std::abs(kk) > half ? 0.0 : 0.5 * (1.0 + std::cos(pi * double(kk) / double(half + 1)));
        }
    }
    std::vector<Cd> measured(k.begin(), k.end()), x(measured.size()), low(measured.size());
    for (Index i = 0; i < voxels; ++i) {
        measured[i] *= weight[i] > 0 ? 1.0 : 0.0;
        low[i] = measured[i] * window[i];
        x[i] = measured[i] * std::min(weight[i], 1.0);
    }
    centred_dft_all(low, n, +1);
    for (int it = 0; it < iterations; ++it) {
        centred_dft_all(x, n, +1);
        for (Index i = 0; i < voxels; ++i) {
            const Cd e = low[i] / std::abs(low[i]);
            x[i] = (form == PhaseConstraint::magnitude ? std::abs(x[i]) : std::real(x[i] * std::conj(e))) * e;
        }
        centred_dft_all(x, n, -1);
        for (Index i = 0; i < voxels; ++i) {
            x[i] = weight[i] * measured[i] + (1.0 - weight[i]) * x[i];
        }
    }
    centred_dft_all(x, n, +1);
    return x;
}

// One iteration, real-part constraint, Hann window, on a 4 x 6 x 3 grid whose
// y axis lacks k = -3 and -2; a strong k = 0 keeps the echo at the centre.
TEST(Pocs, OneIterationMatchesNaiveDftReference)
{
    ReconShape shape;
    shape.n = {4, 6, 3};
    std::vector<Complex> k = random_kspace(shape, 7);
    const Index centre = (1 * 6 + 3) * 4 + 2;
    k[centre] = Complex(40.0f, 10.0f);
    for (Index i = 0; i < shape.voxels(); ++i) {
        if (i / 4 % 6 < 2) {
            k[i] = 0;
        }
    }
    ReconOptions options;
    options.iterations = 1;
    options.tolerance = 0;
    options.constraint = PhaseConstraint::real_part;
    options.output = ReconOutput::complex;
    options.noise_adaptive = false;
    options.ranges[AXIS_Y] = KRange{-1, 2};
    std::vector<float> image(2 * static_cast<std::size_t>(shape.voxels()));
    const ReconReport report = reconstruct(shape, k.data(), options, image.data());
    EXPECT_EQ(report.images[0].iterations, (std::array<double, 3>{1, 1, 1}));

    // Reference: Hann over ky = -1 .. 1 (0.5, 1, 0.5; ky = 2 is outside the
    // symmetric part), the phase of its image, one projection, the data put back.
    std::vector<Cd> measured(k.begin(), k.end()), windowed(measured.size());
    for (std::size_t i = 0; i < measured.size(); ++i) {
        const Index ky = Index(i) / 4 % 6 - 3;
        windowed[i] = measured[i] * (ky == 0 ? 1.0 : std::abs(ky) == 1 ? 0.5 : 0.0);
    }
    const std::vector<Cd> low = centred_dft(windowed, shape.n, +1);
    std::vector<Cd> x = centred_dft(measured, shape.n, +1);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const Cd e = low[i] / std::abs(low[i]);
        x[i] = std::real(x[i] * std::conj(e)) * e;
    }
    std::vector<Cd> estimate = centred_dft(x, shape.n, -1);
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (Index(i) / 4 % 6 >= 2) {
            estimate[i] = measured[i];
        }
    }
    const std::vector<Cd> expected = centred_dft(estimate, shape.n, +1);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(image[2 * i], expected[i].real(), 2e-5) << i;
        EXPECT_NEAR(image[2 * i + 1], expected[i].imag(), 2e-5) << i;
    }
}

// Blocks of lines (one partial axis) or planes (two) iterated on their own
// give the whole-volume iterations, to rounding: even and odd sizes, block
// widths that do not divide the lines, x cut too, and three partial axes
// (one block). The threads share the blocks without changing a bit.
TEST(Pocs, BlocksMatchWholeVolumeIterations)
{
    struct Case {
        std::array<Index, 3> n;
        SampledRanges ranges;
        PhaseConstraint form;
        int band;
        Index width;
    };
    const Case cases[] = {
        {{9, 10, 7}, {std::nullopt, KRange{-3, 4}, std::nullopt}, PhaseConstraint::real_part, 2, 4},
        {{10, 7, 6}, {KRange{-2, 4}, std::nullopt, std::nullopt}, PhaseConstraint::magnitude, 0, 3},
        {{7, 8, 9}, {std::nullopt, KRange{-2, 3}, KRange{-4, 2}}, PhaseConstraint::magnitude, 1, 3},
        {{8, 5, 6}, {KRange{-4, 1}, std::nullopt, KRange{-2, 2}}, PhaseConstraint::real_part, 0, 2},
        {{6, 5, 4}, {KRange{-3, 1}, KRange{-1, 2}, KRange{-2, 0}}, PhaseConstraint::magnitude, 1, 0},
    };
    for (const Case& c : cases) {
        ReconShape shape;
        shape.n = c.n;
        std::vector<Complex> k = random_kspace(shape, 11);
        k[(c.n[2] / 2 * c.n[1] + c.n[1] / 2) * c.n[0] + c.n[0] / 2] = Complex(40.0f, 10.0f);
        ReconOptions options;
        options.ranges = c.ranges;
        options.constraint = c.form;
        options.transition_band = c.band;
        options.iterations = 6;
        options.tolerance = 0;
        const PocsPlan plan = plan_pocs(shape, options, c.width);
        const PocsTransforms transforms(plan);
        std::vector<float> one(2 * static_cast<std::size_t>(shape.voxels())), two(one.size());
        const VolumeReport report =
            pocs_volume(plan, transforms, k.data(), 0, ReconOutput::complex, one.data(), nullptr, nullptr, 1);
        pocs_volume(plan, transforms, k.data(), 0, ReconOutput::complex, two.data(), nullptr, nullptr, 2);
        EXPECT_EQ(one, two) << c.n[0];
        EXPECT_EQ(report.iterations, (std::array<double, 3>{6, 6, 6}));

        const std::vector<Cd> expected = reference_pocs(shape, k, c.ranges, c.form, c.band, options.iterations);
        double largest = 0;
        for (const Cd& v : expected) {
            largest = std::max(largest, std::abs(v));
        }
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_NEAR(one[2 * i], expected[i].real(), 2e-6 * largest) << c.n[0] << " " << i;
            ASSERT_NEAR(one[2 * i + 1], expected[i].imag(), 2e-6 * largest) << c.n[0] << " " << i;
        }
    }
}

// Blocks that hold next to nothing of the image (here columns of x at 1e-5
// of the object's level) stop once they no longer change the image, though
// their own relative change stays large; the object's blocks run on.
TEST(Pocs, BackgroundBlocksStopOnTheImagesChange)
{
    ReconShape shape;
    shape.n = {8, 16, 4};
    const std::vector<Complex> noise = random_kspace(shape, 5);
    std::vector<Cd> image(noise.begin(), noise.end());
    for (Index i = 0; i < shape.voxels(); ++i) {
        image[i] *= i % shape.n[0] < 2 ? 1.0 : 1e-5;
    }
    const std::vector<Cd> k = centred_dft(image, shape.n, -1);
    const std::vector<Complex> kspace(k.begin(), k.end());
    ReconOptions options;
    options.ranges[AXIS_Y] = KRange{-8, 3};
    const PocsPlan plan = plan_pocs(shape, options, 1);
    const PocsTransforms transforms(plan);
    std::vector<float> out(static_cast<std::size_t>(shape.voxels()));
    const VolumeReport report =
        pocs_volume(plan, transforms, kspace.data(), 0, ReconOutput::magnitude, out.data(), nullptr, nullptr, 1);
    EXPECT_EQ(report.iterations[0], 1);
    EXPECT_GT(report.iterations[2], 5);
}

TEST(Pocs, ProjectionWorkedValues)
{
    // x = (3 + 4i) * 2 scaled by 0.5, phase i: the real form keeps Im = 4,
    // the magnitude form puts |x| = 5 along the phase.
    const Complex phase[2] = {Complex(0, 1), Complex(1, 0)};
    for (const auto& [form, expected] : {std::pair{PhaseConstraint::real_part, 4.0f}, {PhaseConstraint::magnitude, 5.0f}}) {
        Complex image[2] = {Complex(6, 8), Complex(0, 0)};
        float amplitude[2] = {expected, 0};
        const Projection same = project_onto_phase(image, phase, amplitude, 2, 0.5f, form);
        EXPECT_EQ(same.change, 0.0);
        EXPECT_EQ(same.norm, expected * expected);
        EXPECT_EQ(image[0], Complex(0, expected));
        EXPECT_EQ(amplitude[0], expected);
        amplitude[0] = 0;
        image[0] = Complex(6, 8);
        EXPECT_EQ(project_onto_phase(image, phase, amplitude, 2, 0.5f, form).change, expected * expected);
    }
}

// Voxels at the level of transform rounding carry no phase: a perturbation of
// that size (as another FFT plan makes) must not turn their phase around.
TEST(Pocs, PhaseOfRoundingLevelVoxelsIsZero)
{
    std::vector<Complex> image = {{3.0f, 4.0f}, {0.0f, 0.0f}, {-2e-6f, 1e-6f}, {0.0f, -5e-4f}};
    keep_phase(image.data(), static_cast<Index>(image.size()));
    EXPECT_EQ(image[0], Complex(0.6f, 0.8f));
    EXPECT_EQ(image[1], Complex(1.0f, 0.0f));
    EXPECT_EQ(image[2], Complex(1.0f, 0.0f));  // 4e-7 of the largest: rounding
    EXPECT_NEAR(image[3].imag(), -1.0f, 1e-6f);  // 1e-4 of the largest: a phase of its own
}

// The block y = -2 .. 0 of a 1 x 4 grid (FFT positions 2, 3, 0; k = 1 not
// measured): measured samples replace the estimate, blended over a
// one-sample band at the cut edge (sin^2(pi/4) = 0.5 at y = 0), and the
// residual is ||e - m||^2 = 50 + 2 + 20.
TEST(Pocs, DataStepRestoresBlock)
{
    ReconShape shape;
    shape.n = {1, 4, 1};
    const Complex measured[3] = {Complex(1, 1), Complex(2, 0), Complex(4, 2)};  // y = -2, -1, 0
    for (const int band : {0, 1}) {
        ReconOptions options;
        options.ranges[AXIS_Y] = KRange{-2, 0};
        options.transition_band = band;
        const PocsPlan plan = plan_pocs(shape, options);
        Complex k[4] = {Complex(0, 0), Complex(5, 5), Complex(6, 6), Complex(3, 1)};
        EXPECT_DOUBLE_EQ(restore_measured(plan, plan.blocks.wide, k, measured), 72.0);
        EXPECT_EQ(k[1], Complex(5, 5));
        EXPECT_EQ(k[2], Complex(1, 1));
        EXPECT_EQ(k[3], Complex(2, 0));
        EXPECT_EQ(k[0], band == 0 ? Complex(4, 2) : Complex(2, 1));
    }
}

// A real image of both signs fits the real form only: the automatic
// constraint keeps it with one partial axis, and with two takes the
// magnitude form all the same.
TEST(Pocs, AutomaticConstraintWithTwoPartialAxesIsTheMagnitudeForm)
{
    ReconShape shape;
    shape.n = {8, 16, 8};
    std::vector<Cd> real_image;
    for (const Complex& value : random_kspace(shape, 3)) {
        real_image.push_back(0.5 + value.real());  // the echo at k = 0
    }
    const std::vector<Cd> spectrum = centred_dft(real_image, shape.n, -1);
    const std::vector<Complex> k(spectrum.begin(), spectrum.end());
    ReconOptions options;
    options.output = ReconOutput::complex;
    options.noise_adaptive = false;
    std::vector<float> image(2 * static_cast<std::size_t>(shape.voxels()));
    options.ranges[AXIS_Y] = KRange{-4, 7};
    EXPECT_EQ(reconstruct(shape, k.data(), options, image.data()).images[0].constraint, PhaseConstraint::real_part);
    options.ranges[AXIS_Z] = KRange{-2, 3};
    EXPECT_EQ(reconstruct(shape, k.data(), options, image.data()).images[0].constraint, PhaseConstraint::magnitude);
}

TEST(Pocs, OptionsRefusedNamingTheOption)
{
    ReconShape shape;
    shape.n = {16, 8, 1};
    const auto message_of = [&](const ReconOptions& options) -> std::string {
        try {
            validate_options(options, shape);
        } catch (const ReconError& error) {
            return error.id + " " + error.what();
        }
        return "";
    };
    ReconOptions o;
    EXPECT_EQ(message_of(o), "");
    o.iterations = 0;
    EXPECT_NE(message_of(o).find("homodyne:badOption 'Iterations'"), std::string::npos);
    o = ReconOptions{};
    o.tolerance = -0.1;
    EXPECT_NE(message_of(o).find("'Tolerance'"), std::string::npos);
    o.tolerance = NAN;
    EXPECT_NE(message_of(o).find("'Tolerance'"), std::string::npos);
    o = ReconOptions{};
    o.threads = -1;
    EXPECT_NE(message_of(o).find("'Threads'"), std::string::npos);
    o = ReconOptions{};
    o.transition_band = 65;
    EXPECT_NE(message_of(o).find("'TransitionBand'"), std::string::npos);
    o = ReconOptions{};
    o.ranges[AXIS_X] = KRange{-9, 3};
    EXPECT_EQ(message_of(o), "homodyne:badRange the x range [-9 3] lies outside the axis of 16 samples, k = -8 .. 7.");
    o.ranges[AXIS_X] = KRange{3, 1};
    EXPECT_NE(message_of(o).find("homodyne:badRange the x range [3 1] must be ordered"), std::string::npos);
    o.ranges[AXIS_X] = KRange{1, 3};
    EXPECT_NE(message_of(o).find("homodyne:sampling the x range [1 3] does not contain k = 0"), std::string::npos);
    o.ranges[AXIS_X] = KRange{-1, 3};
    EXPECT_EQ(message_of(o), "");
    o.method = ReconMethod::homodyne;
    o.ranges[AXIS_X] = KRange{0, 7};
    EXPECT_NE(message_of(o).find("covers 53 % of its symmetric extent"), std::string::npos);
    o.ranges[AXIS_X] = KRange{-8, 0};  // mirrored: [0 7], the unpaired -8 having no mirror
    EXPECT_NE(message_of(o).find("covers 53 %"), std::string::npos);
}

TEST(Pocs, ResultIndependentOfThreadCount)
{
    ReconShape shape;
    shape.n = {12, 10, 4};
    shape.coils = 2;  // combined: one image per volume
    shape.volumes = 5;
    const std::vector<Complex> k = random_kspace(shape, 3);
    ReconOptions options;
    options.ranges[AXIS_Y] = KRange{-3, 4};
    options.transition_band = 2;
    std::vector<float> one(static_cast<std::size_t>(shape.voxels() * shape.volumes)), three(one.size());
    options.threads = 1;
    reconstruct(shape, k.data(), options, one.data());
    options.threads = 3;
    const ReconReport report = reconstruct(shape, k.data(), options, three.data());
    EXPECT_EQ(report.threads, 3);
    EXPECT_EQ(one, three);
}
