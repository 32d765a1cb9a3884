// The plain-buffer phase transfer: the combine order, NaN for a zero image and
// real images or data (the interpolation is compared with the library's
// per-point path among the fast-path tests).

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "phase/phase_transfer.hpp"

namespace {

DimensionList dims(std::initializer_list<std::uint32_t> sizes)
{
    DimensionList list(13, 1);
    std::copy(sizes.begin(), sizes.end(), list.begin());
    return list;
}

}  // namespace

TEST(AddLowResPhase, CombineOrderAndZeroedImaginaryPart)
{
    std::vector<float> re{1.0f}, im{2.0f};
    const std::vector<float> low_re{3.0f}, low_im{4.0f};
    AddLowResPhase(ComplexPlanes{re.data(), im.data(), 1}, dims({1, 1}), low_re.data(), low_im.data(), dims({1, 1}));
    EXPECT_EQ(re[0], 2.2f);
    EXPECT_EQ(im[0], 0.0f);

    std::vector<float> pairs{1.0f, 2.0f};
    AddLowResPhase(ComplexPlanes{pairs.data(), pairs.data() + 1, 2}, dims({1, 1}), low_re.data(), low_im.data(),
                   dims({1, 1}));
    EXPECT_EQ(pairs[0], 2.2f);
    EXPECT_EQ(pairs[1], 0.0f);
}

TEST(AddLowResPhase, ZeroImageGivesNaNInsteadOfAPhase)
{
    std::vector<float> re{1.0f, 1.0f}, im{1.0f, 1.0f};
    const std::vector<float> low_re{0.0f, 1.0f}, low_im{0.0f, 0.0f};
    AddLowResPhase(ComplexPlanes{re.data(), im.data(), 1}, dims({2, 1}), low_re.data(), low_im.data(), dims({2, 1}));
    EXPECT_TRUE(std::isnan(re[0]));
    EXPECT_EQ(re[1], 1.0f);
}

TEST(AddLowResPhase, RealImageKeepsOrFlipsTheRealPart)
{
    std::vector<float> re{1.5f, 1.5f, -0.5f}, im{7.0f, 7.0f, 7.0f};
    const std::vector<float> low{2.0f, -3.0f, -1.0f};
    AddLowResPhase(ComplexPlanes{re.data(), im.data(), 1}, dims({3, 1}), low.data(), nullptr, dims({3, 1}));
    EXPECT_EQ(re, (std::vector<float>{1.5f, -1.5f, 0.5f}));
    EXPECT_EQ(im, (std::vector<float>{0, 0, 0}));
}

TEST(AddLowResPhase, RealDataChangeOnlyTheirRealPlane)
{
    std::vector<float> re{2.0f};
    const std::vector<float> low_re{0.0f}, low_im{-5.0f};  // phase -90 degrees: c = 0
    AddLowResPhase(ComplexPlanes{re.data(), nullptr, 1}, dims({1, 1}), low_re.data(), low_im.data(), dims({1, 1}));
    EXPECT_EQ(re[0], 0.0f);
}
