#include "recon/largest_part.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "common/vector_clones.hpp"

HOMODYNE_VECTOR_CLONES
float largest_part(const Complex* samples, Index count)
{
    // Magnitudes compared as the bits of their IEEE values, which order
    // non-negative floats as their values do and put Inf and NaN above the
    // largest finite one: an integer maximum, which vectorises where a float
    // one that must notice NaN does not.
    const float* values = reinterpret_cast<const float*>(samples);  // real and imaginary parts in turn
    std::uint32_t largest_bits = 0;
    for (Index i = 0; i < 2 * count; ++i) {
        std::uint32_t bits;
        std::memcpy(&bits, values + i, sizeof bits);
        largest_bits = std::max(largest_bits, bits & 0x7fffffffu);
    }
    float largest;
    std::memcpy(&largest, &largest_bits, sizeof largest);
    return largest;
}
