// The in-place reordering between centred and FFT order against a plain
// loop over coordinates: sample k of an axis of n sits at index k + n/2
// (rounded down) in centred order and at k mod n in FFT order, on odd and
// even sizes and a single plane.

#include <gtest/gtest.h>

#include <complex>
#include <vector>

#include "recon/fft_order.hpp"

namespace {

using C = std::complex<float>;

TEST(ReorderInPlace, MovesEverySampleToItsIndexInTheOtherOrderAndBack)
{
    for (const std::array<Index, 3>& n : {std::array<Index, 3>{4, 6, 8}, {5, 3, 7}, {6, 5, 1}, {3, 4, 9}}) {
        std::vector<C> centred(static_cast<std::size_t>(n[0] * n[1] * n[2])), fft(centred.size());
        for (Index z = 0; z < n[2]; ++z) {
            for (Index y = 0; y < n[1]; ++y) {
                for (Index x = 0; x < n[0]; ++x) {
                    const Index k[3] = {x - n[0] / 2, y - n[1] / 2, z - n[2] / 2};
                    const C value(static_cast<float>(k[0]), static_cast<float>(100 * k[1] + 10000 * k[2]));
                    centred[(z * n[1] + y) * n[0] + x] = value;
                    fft[(((k[2] + n[2]) % n[2]) * n[1] + (k[1] + n[1]) % n[1]) * n[0] + (k[0] + n[0]) % n[0]] =
                        value;
                }
            }
        }
        std::vector<C> image = centred;
        reorder_in_place(image.data(), n, false);
        EXPECT_EQ(image, fft);
        reorder_in_place(image.data(), n, true, [](C v) { return v * 2.0f; });
        for (C& v : centred) {
            v *= 2.0f;
        }
        EXPECT_EQ(image, centred);
    }
}

}  // namespace
