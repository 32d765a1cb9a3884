// Noise-adaptive synthesis on a 1-D k-space whose partner powers are known:
// acquired ky = -4 .. 15 of 32, holding 2 for ky >= 10 and 0 below; the
// synthesised samples (ky = -16 .. -5) hold 1. With sigma^2 = 1, ky = -12 (its
// partner's neighbourhood 10 .. 14 has power 4) is scaled by 1 - 2/4 and
// ky = -6 (partner neighbourhood 4 .. 8, power 0) dropped; acquired samples stay.

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
        std::vector<C> k = line_kspace(order);
        weight_synthesised_samples(k.data(), n, ranges, 1.0f, order);
        EXPECT_EQ(k[index_of_k(-12, 32, order)], C(0.5f, 0.0f));
        EXPECT_EQ(k[index_of_k(-6, 32, order)], C(0.0f, 0.0f));
        const std::vector<C> before = line_kspace(order);
        for (Index ky = -4; ky < 16; ++ky) {
            EXPECT_EQ(k[index_of_k(ky, 32, order)], before[index_of_k(ky, 32, order)]);
        }

        std::vector<C> noiseless = line_kspace(order);
        weight_synthesised_samples(noiseless.data(), n, ranges, 0.0f, order);
        EXPECT_EQ(noiseless, line_kspace(order));
    }
}
