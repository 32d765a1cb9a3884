// The phantom of the front ends without Octave: the object at points whose
// value follows from the ellipsoid table by hand, and its k-space against a
// direct centred DFT.

#include <gtest/gtest.h>

#include <cmath>
#include <complex>

#include "recon/phantom.hpp"
#include "recon/recon_error.hpp"

TEST(Phantom, ObjectAndCentredKspace)
{
    const std::array<Index, 3> n{8, 6, 4};
    const Phantom p = make_phantom(n);
    ASSERT_EQ(p.image.size(), 8u * 6u * 4u);

    // Centre (index n/2): skull 1 and brain -0.75 only; phase 1.5 exp(-0.13/0.3).
    const Complex centre = p.image[(2 * 6 + 3) * 8 + 4];
    EXPECT_NEAR(std::abs(centre), 0.25, 1e-6);
    EXPECT_NEAR(std::arg(centre), 1.5 * std::exp(-0.13 / 0.3), 1e-5);
    EXPECT_EQ(p.image[0], Complex(0, 0));  // the corner (-1, -1, -1) is outside

    // k = (1, -2, 1), at index n/2 + k: a DFT over centred positions.
    std::complex<double> sum = 0.0;
    for (Index z = 0; z < n[2]; ++z) {
        for (Index y = 0; y < n[1]; ++y) {
            for (Index x = 0; x < n[0]; ++x) {
                const double turns = 1.0 * (x - 4) / 8 - 2.0 * (y - 3) / 6 + 1.0 * (z - 2) / 4;
                sum += std::complex<double>(p.image[(z * 6 + y) * 8 + x]) * std::polar(1.0, -2.0 * M_PI * turns);
            }
        }
    }
    const Complex k = p.kspace[(3 * 6 + 1) * 8 + 5];
    EXPECT_NEAR(k.real(), sum.real(), 1e-4);
    EXPECT_NEAR(k.imag(), sum.imag(), 1e-4);
}

TEST(Phantom, RefusesEmptySizes)
{
    EXPECT_THROW(make_phantom({8, 0, 1}), ReconError);
    EXPECT_THROW(make_phantom({-1, 8, 1}), ReconError);
}
