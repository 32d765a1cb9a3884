// Building blocks shared by the interpolation kernels: the well-defined
// float-to-index conversion, wrapping 32-bit index arithmetic, border
// clamping, and the two ways of walking the volumes of one query point.
#pragma once

#include <cstdint>
#include <limits>
#include <utility>

namespace Interp3 {
namespace detail {

// Truncates v to a signed 32-bit integer. NaN and values outside
// [-2^31, 2^31) give -2^31, the result the kernels' index rules are built
// on; a plain cast would be undefined behaviour for those inputs.
template <typename T>
inline int truncate_to_int32(T v) {
    const T lower = static_cast<T>(-2147483648.0);
    const T upper = static_cast<T>(2147483648.0);
    if (v >= lower && v < upper) {
        return static_cast<int>(v);
    }
    return std::numeric_limits<int>::min();
}

// a + b with two's-complement wrap-around instead of signed overflow.
inline int wrapping_add(int a, int b) {
    return static_cast<int>(static_cast<std::uint32_t>(a) +
                            static_cast<std::uint32_t>(b));
}

// Index clamped to 0 .. size - 1, so that neighbours outside the volume
// repeat its border sample.
inline int clamp_index(int index, int size) {
    if (index < 0) {
        return 0;
    }
    return index >= size ? size - 1 : index;
}

// Volume walk with a compile-time count: the per-volume step is expanded N
// times, with no loop left over.
template <int N>
struct FixedVolumeCount {
    template <typename PerVolume>
    void for_each(PerVolume&& per_volume) const {
        expand(per_volume, std::make_integer_sequence<int, N>{});
    }

  private:
    template <typename PerVolume, int... K>
    static void expand(PerVolume& per_volume, std::integer_sequence<int, K...>) {
        (per_volume(K), ...);
    }
};

// Volume walk with a run-time count; a count of 0 or less visits nothing.
struct RuntimeVolumeCount {
    int count;

    template <typename PerVolume>
    void for_each(PerVolume&& per_volume) const {
        for (int k = 0; k < count; ++k) {
            per_volume(k);
        }
    }
};

}  // namespace detail
}  // namespace Interp3
