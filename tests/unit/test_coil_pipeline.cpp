// The coil and noise steps of reconstruct(): prewhitening against whitening
// by hand, the noise level reported, noiseless data left alone by the
// noise-adaptive step, and the refusals of a covariance or scan.

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "recon/recon_error.hpp"
#include "recon/reconstruct.hpp"

namespace {

// Centred k-space of smooth objects seen by `coils` coils (coil c weights
// the object by 1 + 0.3 c x and a phase ramp), y acquired from -5, plus
// complex Gaussian noise of standard deviation `sigma` per sample.
std::vector<Complex> coil_kspace(const ReconShape& shape, float sigma, unsigned seed)
{
    std::vector<Complex> image(static_cast<std::size_t>(shape.samples()));
    const Index nx = shape.n[0], ny = shape.n[1], voxels = shape.voxels();
    for (Index c = 0; c < shape.coils; ++c) {
        for (Index s = 0; s < voxels; ++s) {
            const float x = float(s % nx - nx / 2) / nx, y = float(s / nx % ny - ny / 2) / ny;
            const float object = x * x + y * y < 0.12f ? 1.0f + x : 0.0f;
            image[c * voxels + s] = std::polar(object * (1.0f + 0.3f * c * x), 0.5f * c * y + 1.5f * x);
        }
    }
    // Centred DFT by a plain loop (2-D, one plane).
    std::vector<Complex> k(image.size());
    std::mt19937 random(seed);
    std::normal_distribution<float> normal(0.0f, sigma / std::sqrt(2.0f));
    for (Index c = 0; c < shape.coils; ++c) {
        for (Index ky = 0; ky < ny; ++ky) {
            for (Index kx = 0; kx < nx; ++kx) {
                std::complex<double> sum = 0.0;
                for (Index s = 0; s < voxels; ++s) {
                    const double angle = -2.0 * M_PI * (double((kx - nx / 2) * (s % nx - nx / 2)) / nx +
                                                        double((ky - ny / 2) * (s / nx - ny / 2)) / ny);
                    sum += std::complex<double>(image[c * voxels + s]) * std::polar(1.0, angle);
                }
                const Complex noise = sigma > 0.0f ? Complex(normal(random), normal(random)) : Complex(0, 0);
                k[c * voxels + ky * nx + kx] = ky - ny / 2 >= -5 ? Complex(sum) + noise : Complex(0, 0);
            }
        }
    }
    return k;
}

ReconOptions partial_y(bool adaptive, Index ny = 24)
{
    ReconOptions options;
    options.ranges[AXIS_Y] = KRange{-5, ny / 2 - 1};
    options.noise_adaptive = adaptive;
    options.output = ReconOutput::magnitude;
    return options;
}

std::vector<float> run(const ReconShape& shape, const std::vector<Complex>& k, const ReconOptions& options,
                       ReconReport* report = nullptr)
{
    std::vector<float> image(static_cast<std::size_t>(2 * shape.voxels() * result_images(shape, options)));
    const ReconReport r = reconstruct(shape, k.data(), options, image.data());
    if (report != nullptr) {
        *report = r;
    }
    return image;
}

double relative_difference(const std::vector<float>& a, const std::vector<float>& b)
{
    double difference = 0.0, norm = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        difference += (a[i] - b[i]) * (a[i] - b[i]);
        norm += b[i] * b[i];
    }
    return std::sqrt(difference / norm);
}

}  // namespace

TEST(CoilPipeline, PrewhiteningIdentityChangesNothingAndCorrelatedEqualsWhiteningByHand)
{
    ReconShape shape;
    shape.n = {16, 24, 1};
    shape.coils = 3;
    const std::vector<Complex> k = coil_kspace(shape, 0.0f, 1);
    ReconOptions options = partial_y(false);
    const std::vector<float> plain = run(shape, k, options);
    options.noise_covariance = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    options.covariance_rows = options.covariance_columns = 3;
    EXPECT_EQ(run(shape, k, options), plain);

    // psi = L L^H for a chosen lower-triangular L; by hand: g * inverse(L) by
    // forward substitution on every coil vector, g^2 = mean(diag(psi)) = 3.
    const Complex l[3][3] = {{2, 0, 0}, {{0.5f, 0.5f}, 1, 0}, {{-0.3f, 0.2f}, {0.4f, -0.1f}, 1.5f}};
    double trace = 0.0;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            Complex sum = 0;
            for (int m = 0; m < 3; ++m) {
                sum += l[i][m] * std::conj(l[j][m]);
            }
            options.noise_covariance[i + 3 * j] = sum;
        }
        trace += options.noise_covariance[4 * i].real();
    }
    const float g = static_cast<float>(std::sqrt(trace / 3.0));
    std::vector<Complex> by_hand(k.size());
    for (Index s = 0; s < shape.voxels(); ++s) {
        Complex y[3];
        for (int i = 0; i < 3; ++i) {
            Complex rest = k[i * shape.voxels() + s];
            for (int m = 0; m < i; ++m) {
                rest -= l[i][m] * y[m];
            }
            y[i] = rest / l[i][i];
            by_hand[i * shape.voxels() + s] = g * y[i];
        }
    }
    const std::vector<float> whitened = run(shape, k, options);
    options.noise_covariance.clear();
    options.covariance_rows = options.covariance_columns = 0;
    EXPECT_LT(relative_difference(whitened, run(shape, by_hand, options)), 1e-5);
}

TEST(CoilPipeline, NoiseLevelReportedAndNoiselessDataLeftAlone)
{
    ReconShape shape;
    shape.n = {64, 16, 1};
    ReconReport report;
    run(shape, coil_kspace(shape, 0.5f, 2), partial_y(true, 16), &report);
    EXPECT_EQ(report.noise_source, NoiseSource::estimated);
    EXPECT_NEAR(report.coil_sigma.at(0), 0.5f, 0.05f);
    EXPECT_EQ(report.synthesis.size(), 1u);
    EXPECT_LT(report.synthesis[0].mean_weight, 1.0);
    EXPECT_LT(report.synthesis[0].measured_weight, 1.0);
    EXPECT_TRUE(report.synthesis[0].quadrature_weighted);
    EXPECT_LT(report.synthesis[0].quadrature_weight, 1.0);
    // Complex output keeps the data as measured; the noise level is reported.
    ReconOptions complex = partial_y(true, 16);
    complex.output = ReconOutput::complex;
    const std::vector<Complex> noisy = coil_kspace(shape, 0.5f, 2);
    ReconOptions plain = complex;
    plain.noise_adaptive = false;
    EXPECT_EQ(run(shape, noisy, complex, &report), run(shape, noisy, plain));
    EXPECT_TRUE(report.synthesis.empty());
    EXPECT_NEAR(report.coil_sigma.at(0), 0.5f, 0.05f);

    ReconOptions known = partial_y(true, 16);
    known.noise_covariance = {0.25f};
    known.covariance_rows = known.covariance_columns = 1;
    run(shape, coil_kspace(shape, 0.5f, 2), known, &report);
    EXPECT_EQ(report.noise_source, NoiseSource::covariance);
    EXPECT_EQ(report.coil_sigma.at(0), 0.5f);

    for (const Index coils : {1, 4}) {
        shape.coils = coils;
        const std::vector<Complex> noiseless = coil_kspace(shape, 0.0f, 3);
        EXPECT_LT(relative_difference(run(shape, noiseless, partial_y(true, 16)),
                                      run(shape, noiseless, partial_y(false, 16))),
                  0.01)
            << coils << " coils";
    }
}

TEST(CoilPipeline, CovarianceOrScanThatDoesNotFitIsRefused)
{
    ReconShape shape;
    shape.n = {8, 8, 1};
    shape.coils = 2;
    const auto refusal = [&](ReconOptions options) -> std::string {
        try {
            validate_options(options, shape);
        } catch (const ReconError& e) {
            return e.id + " " + e.what();
        }
        return "accepted";
    };
    ReconOptions o;
    o.covariance_rows = o.covariance_columns = 3;
    o.noise_covariance.assign(9, 1.0f);
    EXPECT_EQ(refusal(o), "homodyne:badInput NoiseCovariance must be 2-by-2 (one row and column per coil); it is "
                          "3-by-3.");
    o.covariance_rows = o.covariance_columns = 2;
    o.noise_covariance = {1, {0, 1}, {0, 1}, 1};
    EXPECT_EQ(refusal(o), "homodyne:badInput NoiseCovariance must be Hermitian (equal to its conjugate transpose).");
    o.noise_covariance = {1, 2, 2, 1};
    EXPECT_EQ(refusal(o), "homodyne:badInput NoiseCovariance must be positive definite.");
    const std::vector<Complex> scan(8 * 3, 1.0f);
    ReconOptions s;
    s.noise_scan = scan.data();
    s.noise_scan_shape.n = {8, 1, 1};
    s.noise_scan_shape.coils = 3;
    EXPECT_EQ(refusal(s), "homodyne:badInput The noise scan of 'NoiseCovariance' has 3 coils; the k-space has 2.");
}

TEST(CoilPipeline, ScalingTheDataByAPowerOfTwoScalesTheImageExactly)
{
    // 4 noisy coils combined with estimated noise; raw files arrive at any scale.
    ReconShape shape;
    shape.n = {32, 32, 1};
    shape.coils = 4;
    const std::vector<Complex> k = coil_kspace(shape, 0.3f, 4);
    ReconReport unit;
    const std::vector<float> image = run(shape, k, partial_y(true, 32), &unit);
    for (const int p : {-60, -30, -12, 12, 30, 60}) {
        std::vector<Complex> scaled(k.size());
        for (std::size_t i = 0; i < k.size(); ++i) {
            scaled[i] = Complex(std::ldexp(k[i].real(), p), std::ldexp(k[i].imag(), p));
        }
        ReconReport report;
        const std::vector<float> result = run(shape, scaled, partial_y(true, 32), &report);
        std::size_t differing = 0;
        for (std::size_t i = 0; i < image.size(); ++i) {
            differing += result[i] != std::ldexp(image[i], p);
        }
        EXPECT_EQ(differing, 0u) << "2^" << p;
        EXPECT_EQ(report.image_sigma.at(0), std::ldexp(unit.image_sigma.at(0), p)) << "2^" << p;
    }
}
