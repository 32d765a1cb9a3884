// Prewhitening: the scan covariance on a worked case, the refusals, and the
// whitening itself against the Cholesky factor it must invert.

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <string>
#include <vector>

#include "recon/noise_whitening.hpp"
#include "recon/recon_error.hpp"

namespace {

using C = std::complex<float>;

std::string error_id(const std::function<void()>& call)
{
    try {
        call();
    } catch (const ReconError& e) {
        return e.id;
    }
    return "no error";
}

}  // namespace

TEST(NoiseWhitening, ScanCovarianceAndRefusedMatrices)
{
    // Two coils, two samples: coil 1 = (1, 1), coil 2 = (i, 1).
    ReconShape shape;
    shape.n = {2, 1, 1};
    shape.coils = 2;
    const std::vector<C> scan{{1, 0}, {1, 0}, {0, 1}, {1, 0}};
    const CoilMatrix psi = noise_covariance_from_scan(scan.data(), shape, 2).matrix;
    EXPECT_EQ(psi, (CoilMatrix{{1, 0}, {0.5f, 0.5f}, {0.5f, -0.5f}, {1, 0}}));
    EXPECT_EQ(coil_noise_powers(psi, 2), (std::vector<float>{1.0f, 1.0f}));

    const CoilMatrix not_hermitian{{1, 0}, {0.5f, 0}, {0.2f, 0}, {1, 0}};
    const CoilMatrix indefinite{{1, 0}, {2, 0}, {2, 0}, {1, 0}};
    const CoilMatrix not_finite{{1, 0}, {0, 0}, {0, 0}, {NAN, 0}};
    for (const auto& call : std::vector<std::function<void()>>{
             [&] { noise_covariance_from_scan(scan.data(), shape, 3); },
             [&] { noise_whitening_matrix(psi.data(), 2, 2, 3); },
             [&] { noise_whitening_matrix(psi.data(), 1, 4, 2); },
             [&] { noise_whitening_matrix(not_hermitian.data(), 2, 2, 2); },
             [&] { noise_whitening_matrix(indefinite.data(), 2, 2, 2); },
             [&] { noise_whitening_matrix(not_finite.data(), 2, 2, 2); }}) {
        EXPECT_EQ(error_id(call), "homodyne:badInput");
    }
}

TEST(NoiseWhitening, IdentityChangesNothingAndCorrelatedNoiseIsUndone)
{
    ReconShape shape;
    shape.n = {3, 2, 1};
    shape.coils = 3;
    shape.volumes = 2;
    std::vector<C> data(static_cast<std::size_t>(shape.samples()));
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = C(std::sin(1.7f * i), std::cos(0.3f * i * i));
    }
    const CoilMatrix identity{{1, 0}, {0, 0}, {0, 0}, {0, 0}, {1, 0}, {0, 0}, {0, 0}, {0, 0}, {1, 0}};
    std::vector<C> same = data;
    whiten_coils(same.data(), shape, noise_whitening_matrix(identity.data(), 3, 3, 3));
    EXPECT_EQ(same, data);

    // psi = L L^H for a chosen lower factor L; the whitened y must satisfy L y = x.
    const C l[3][3] = {{{2, 0}, {0, 0}, {0, 0}}, {{0.5f, 0.5f}, {1, 0}, {0, 0}}, {{0, -0.3f}, {0.2f, 0}, {1.5f, 0}}};
    CoilMatrix psi(9);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            for (int k = 0; k < 3; ++k) {
                psi[i + 3 * j] += l[i][k] * std::conj(l[j][k]);
            }
        }
    }
    std::vector<C> white = data;
    whiten_coils(white.data(), shape, noise_whitening_matrix(psi.data(), 3, 3, 3));
    const Index voxels = shape.voxels();
    for (Index s = 0; s < voxels * shape.volumes; ++s) {
        const Index base = (s / voxels) * shape.volume_stride() + s % voxels;
        for (int i = 0; i < 3; ++i) {
            C x(0, 0);
            for (int k = 0; k < 3; ++k) {
                x += l[i][k] * white[base + k * voxels];
            }
            EXPECT_NEAR(std::abs(x - data[base + i * voxels]), 0.0f, 1e-5f);
        }
    }
}
