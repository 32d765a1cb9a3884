// Nearest-neighbour kernels: every query point copies the sample nearest to
// it, with indices clamped to the border per axis.
//
// Argument order (the kernel call contract shared by all families): out,
// data, xi, yi, zi, count, d0 (rows, y), d1 (columns, x), d2 (slices, z),
// [volume_count in the general member], then x_scale, x_offset, y_scale,
// y_offset, z_scale, z_offset. The position of coordinate q along an axis
// is the 1-based u = q * scale + offset. Volume k starts at data[k*d0*d1*d2]
// and its results at out[k*count].
//
// Preconditions (not checked): d0, d1, d2 >= 1 and all volumes together
// hold fewer than 2^31 samples, since index arithmetic is signed 32-bit.
#pragma once

#include <cmath>

#include "interpolation/interp3_support.hpp"

namespace Interp3 {
namespace detail {

// 0-based index of the sample nearest to the 1-based position u, clamped to
// an axis of `size` samples. Halves round up (2.5 -> 3, -0.5 -> 0). A NaN or
// a rounded position of magnitude 2^31 or more converts to -2^31, and the
// subtraction of 1 wraps that to 2^31 - 1: such points take the last sample.
template <typename T>
inline int nearest_index(T u, int size) {
    const int rounded = truncate_to_int32(std::floor(u + static_cast<T>(0.5)));
    return clamp_index(wrapping_add(rounded, -1), size);
}

// The one nearest-neighbour body; `volumes` decides how the volumes of a
// point are walked. Positions are found once per point and every volume's
// sample is copied unchanged.
template <typename T, typename U, typename VolumeCount>
void nearest_points(U* out, const U* data, const T* xi, const T* yi,
                    const T* zi, long long count, int d0, int d1, int d2,
                    VolumeCount volumes, T x_scale, T x_offset, T y_scale,
                    T y_offset, T z_scale, T z_offset) {
    const int volume_stride = d0 * d1 * d2;
    for (long long i = 0; i < count; ++i) {
        const int c = nearest_index(xi[i] * x_scale + x_offset, d1);
        const int r = nearest_index(yi[i] * y_scale + y_offset, d0);
        const int s = nearest_index(zi[i] * z_scale + z_offset, d2);
        const int sample = (s * d1 + c) * d0 + r;
        volumes.for_each([&](int k) {
            out[k * count + i] = data[sample + k * volume_stride];
        });
    }
}

}  // namespace detail

// N volumes (2 to 9) with the volume loop unrolled. One volume has no
// kernel: the driver does it with its own loop.
template <typename T, typename U, int N>
void interpolate_nearest_unrolled(U* out, const U* data, const T* xi,
                                  const T* yi, const T* zi, long long count,
                                  int d0, int d1, int d2, T x_scale,
                                  T x_offset, T y_scale, T y_offset, T z_scale,
                                  T z_offset) {
    static_assert(N >= 2 && N <= 9, "nearest kernels exist for 2 to 9 volumes");
    detail::nearest_points(out, data, xi, yi, zi, count, d0, d1, d2,
                           detail::FixedVolumeCount<N>{}, x_scale, x_offset,
                           y_scale, y_offset, z_scale, z_offset);
}

// Any number of volumes; a volume_count of 0 or less writes nothing.
template <typename T, typename U>
void interpolate_nearest(U* out, const U* data, const T* xi, const T* yi,
                         const T* zi, long long count, int d0, int d1, int d2,
                         int volume_count, T x_scale, T x_offset, T y_scale,
                         T y_offset, T z_scale, T z_offset) {
    detail::nearest_points(out, data, xi, yi, zi, count, d0, d1, d2,
                           detail::RuntimeVolumeCount{volume_count}, x_scale,
                           x_offset, y_scale, y_offset, z_scale, z_offset);
}

}  // namespace Interp3
