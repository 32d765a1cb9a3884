#pragma once
// The size guard of the commands' 32-bit index arithmetic, kept free of host
// types so that the arithmetic itself can be tested without such arrays.

#include <cstdint>
#include <vector>

// True when 32-bit signed index arithmetic over an array of these sizes cannot
// overflow: every size and the product of the nonzero sizes stay below 2^31.
// Zero sizes are left out of the product because element counts are not the
// only products formed: a volume count over the later dimensions of an array
// that is empty along its first ones would overflow all the same.
inline bool fits_32bit_indexing(const std::vector<std::int64_t>& dims)
{
    constexpr std::int64_t limit = std::int64_t{1} << 31;
    std::int64_t product = 1;
    for (const std::int64_t size : dims) {
        if (size < 0 || size >= limit) {
            return false;
        }
        if (size != 0) {
            product *= size;  // stays below 2^62: both factors are below 2^31
            if (product >= limit) {
                return false;
            }
        }
    }
    return true;
}
