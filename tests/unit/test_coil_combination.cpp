// Coil sensitivities and combination: an 8-coil object with known smooth
// sensitivities combines back to the object weighted by the root sum of
// squares of the sensitivities; RSS on a worked value; a coil without
// calibration signal is refused.

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

#include "recon/coil_combine.hpp"
#include "recon/coil_sensitivities.hpp"
#include "recon/recon_error.hpp"

using C = std::complex<float>;

TEST(CoilCombination, EightCoilsWithKnownSensitivitiesGiveTheObject)
{
    ReconShape shape;
    shape.n = {32, 32, 1};
    shape.coils = 8;
    const Index voxels = shape.voxels();
    std::vector<C> images(static_cast<std::size_t>(shape.samples()));
    std::vector<C> expected(static_cast<std::size_t>(voxels));
    for (Index s = 0; s < voxels; ++s) {
        const float u = (s % 32 - 16) / 16.0f;
        const float v = (s / 32 - 16) / 16.0f;
        const C object = u * u + v * v < 0.6f ? std::polar(1.0f + 0.3f * u, 0.8f * v) : C(0, 0);
        float rss = 0.0f;
        for (Index c = 0; c < 8; ++c) {
            // Coil 0 is the strongest and real: its phase is the combination's.
            const float angle = 0.785f * c;
            const float distance = std::hypot(u - 1.5f * std::cos(angle), v - 1.5f * std::sin(angle));
            const float magnitude = (c == 0 ? 3.0f : 1.0f) / (1.0f + distance * distance);
            images[c * voxels + s] = std::polar(magnitude, c == 0 ? 0.0f : angle + 0.3f * u - 0.2f * v) * object;
            rss += magnitude * magnitude;
        }
        expected[s] = std::sqrt(rss) * object;
    }

    std::vector<C> sensitivities(images.size());
    estimate_coil_sensitivities(images.data(), shape, sensitivities.data());
    std::vector<C> combined(static_cast<std::size_t>(voxels));
    combine_coils_adaptive(images.data(), sensitivities.data(), shape, combined.data());
    C dot(0, 0);  // best-fit global complex scale, then the relative error
    float energy = 0.0f, error = 0.0f, norm = 0.0f;
    for (Index s = 0; s < voxels; ++s) {
        dot += std::conj(combined[s]) * expected[s];
        energy += std::norm(combined[s]);
    }
    for (Index s = 0; s < voxels; ++s) {
        error += std::norm(dot / energy * combined[s] - expected[s]);
        norm += std::norm(expected[s]);
    }
    EXPECT_LT(std::sqrt(error / norm), 5e-3f);
    EXPECT_NEAR(std::abs(dot / energy), 1.0f, 5e-3f);
}

TEST(CoilCombination, RootSumOfSquaresAndRefusedCalibration)
{
    ReconShape shape;
    shape.coils = 2;
    shape.volumes = 2;
    const std::vector<C> images{{3, 0}, {0, 4}, {0, 0}, {-1, 0}};
    std::vector<float> rss(2);
    combine_coils_rss(images.data(), shape, rss.data());
    EXPECT_EQ(rss, (std::vector<float>{5.0f, 1.0f}));

    std::string id;
    try {
        std::vector<C> sensitivities(images.size());
        estimate_coil_sensitivities(images.data(), shape, sensitivities.data());  // coil 1 of volume 2 is all zero
    } catch (const ReconError& e) {
        id = e.id;
        EXPECT_STREQ(e.what(), "Coil 1 of volume 2 has no signal in its calibration region (the symmetrically "
                               "sampled k-space centre is all zero).");
    }
    EXPECT_EQ(id, "homodyne:sampling");
}
