// Noise-adaptive synthesis on a 1-D k-space whose partner powers are known:
// acquired ky = -4 .. 15 of 32, holding 2 for ky >= 10 and 0 below; the
// synthesised samples (ky = -16 .. -5) hold 1. With sigma^2 = 1, ky = -12 (its
// partner's neighbourhood 10 .. 14 has power 4) is scaled by 1 - 2/4 after the
// real form and by 1 - 1/4 after the magnitude form, and ky = -6 (partner
// neighbourhood 4 .. 8, power 0) dropped; ky = -16, whose partner (itself)
// was not acquired, stays. Acquired samples take their own neighbourhood and
// the plain Wiener weight: ky = 12 (10 .. 14, power 4) keeps 1 - 1/4.

#include <gtest/gtest.h>

#include <complex>
#include <vector>

#include "recon/adaptive_synthesis.hpp"

namespace {

using C = std::complex<float>;

std::vector<C> line_kspace(KSpaceOrder order)
{
    std::vector<C> k(32);
    for (Index ky = -16; ky < 16; ++ky) {
        k[index_of_k(ky, 32, order)] = ky < -4 ? 1.0f : ky >= 10 ? 2.0f : 0.0f;
    }
    return k;
}

}  // namespace

TEST(AdaptiveSynthesis, WeightsFollowThePartnerPowerInBothOrders)
{
    const std::array<Index, 3> n{1, 32, 1};
    const SampledRanges ranges{std::nullopt, KRange{-4, 15}, std::nullopt};
    for (KSpaceOrder order : {KSpaceOrder::centred, KSpaceOrder::origin_first}) {
        for (auto [form, kept] : {std::pair{PhaseConstraint::real_part, 0.5f}, {PhaseConstraint::magnitude, 0.75f}}) {
            std::vector<C> k = line_kspace(order);
            SynthesisReport report;
            weight_samples_by_snr(k.data(), n, ranges, 1.0f, form, order, report);
            EXPECT_EQ(k[index_of_k(-12, 32, order)], C(kept, 0.0f));
            EXPECT_EQ(k[index_of_k(-6, 32, order)], C(0.0f, 0.0f));
            EXPECT_EQ(k[index_of_k(-16, 32, order)], C(1.0f, 0.0f));
            EXPECT_EQ(k[index_of_k(12, 32, order)], C(1.5f, 0.0f));
            EXPECT_EQ(report.synthesised, 11);
        }
        std::vector<C> noiseless = line_kspace(order);
        SynthesisReport report;
        weight_samples_by_snr(noiseless.data(), n, ranges, 0.0f, PhaseConstraint::real_part, order, report);
        EXPECT_EQ(noiseless, line_kspace(order));
    }
}

// An image at phase pi/2 whose quadrature part is 2 everywhere (power 4):
// x = i (3 + 2i). Noise power 1 per component keeps 1 - 1/4 of it, 4 or more
// none, 0 all; the in-phase part 3 stays. The phase given as unit values
// gives exact results, as angles (pi/2 rounded to a float) nearly those.
TEST(AdaptiveSynthesis, QuadratureKeptByItsPowerAboveTheNoise)
{
    const std::array<Index, 3> n{2, 8, 1};
    const std::vector<C> phase(16, C(0.0f, 1.0f));
    const std::vector<float> angles(16, 1.57079633f);
    for (auto [noise, expected] : {std::pair{1.0f, C(-1.5f, 3.0f)}, {4.0f, C(0.0f, 3.0f)}, {0.0f, C(-2.0f, 3.0f)}}) {
        std::vector<C> image(16, C(-2.0f, 3.0f));
        SynthesisReport report;
        weight_quadrature(image.data(), phase.data(), n, noise, report);
        EXPECT_EQ(image, std::vector<C>(16, expected));
        EXPECT_DOUBLE_EQ(report.quadrature_weight, -expected.real() / 2.0f);
        image.assign(16, C(-2.0f, 3.0f));
        weight_quadrature(image.data(), UnitPhase(angles.data()), n, noise, report);
        for (const C& x : image) {
            EXPECT_LT(std::abs(x - expected), 1e-5f);
        }
    }
}
