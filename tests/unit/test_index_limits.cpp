// The 32-bit size guard of the commands, on sizes far beyond what could be
// allocated here: only the arithmetic is exercised.

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "common/index_limits.hpp"

namespace {

using Sizes = std::vector<std::int64_t>;
constexpr std::int64_t k2to31 = std::int64_t{1} << 31;

}  // namespace

TEST(Fits32BitIndexing, AcceptsEverythingJustBelowTheLimit)
{
    EXPECT_TRUE(fits_32bit_indexing(Sizes{}));
    EXPECT_TRUE(fits_32bit_indexing(Sizes{1, 1}));
    EXPECT_TRUE(fits_32bit_indexing(Sizes{k2to31 - 1, 1}));
    EXPECT_TRUE(fits_32bit_indexing(Sizes{1, 1, 1, 1, k2to31 - 1}));
    // 2^31 - 2 spread over many dimensions.
    EXPECT_TRUE(fits_32bit_indexing(Sizes{2, 3, 3, 7, 11, 31, 151, 331}));
    EXPECT_TRUE(fits_32bit_indexing(Sizes{1 << 15, (1 << 16) - 1}));
}

TEST(Fits32BitIndexing, RefusesASizeOrProductOfTwoToThe31)
{
    EXPECT_FALSE(fits_32bit_indexing(Sizes{k2to31, 1}));
    EXPECT_FALSE(fits_32bit_indexing(Sizes{1, 0, k2to31}));
    EXPECT_FALSE(fits_32bit_indexing(Sizes{1 << 16, 1 << 15}));
    EXPECT_FALSE(fits_32bit_indexing(Sizes{2, 3, 3, 7, 11, 31, 151, 331, 2}));
    EXPECT_FALSE(fits_32bit_indexing(Sizes{-1, 1}));
    // Products that would wrap a 64-bit count as well.
    EXPECT_FALSE(fits_32bit_indexing(Sizes{k2to31 - 1, k2to31 - 1, k2to31 - 1}));
    EXPECT_FALSE(fits_32bit_indexing(Sizes(14, 1 << 16)));
}

TEST(Fits32BitIndexing, AZeroSizeDoesNotHideTheOtherSizes)
{
    // No elements, yet a volume count over the later dimensions would overflow.
    EXPECT_FALSE(fits_32bit_indexing(Sizes{1, 0, 1, 1 << 16, 1 << 16, 1 << 16}));
    EXPECT_FALSE(fits_32bit_indexing(Sizes{0, 1 << 16, 1 << 15}));
    EXPECT_TRUE(fits_32bit_indexing(Sizes{0, 1 << 16, (1 << 15) - 1}));
    EXPECT_TRUE(fits_32bit_indexing(Sizes{4, 0}));
}
