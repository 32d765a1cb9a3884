// Tricubic kernels (named "bicubic" in the interface): separable Catmull-Rom
// cubic convolution (a = -0.5) along x, y and z over a 4 x 4 x 4
// neighbourhood. Argument order and layout as in interp3_nearest.hpp (the
// kernel call contract); the same preconditions hold.
//
// Neighbours outside the volume repeat its border sample per axis. NaN or
// infinite coordinates give NaN. A finite position of magnitude 2^31 or
// more converts to the base index -2^31 and the neighbour offsets wrap in
// 32 bits before clamping; the result is whatever those indices give.
#pragma once

#include <cmath>

#include "interpolation/interp3_support.hpp"

namespace Interp3 {

// Fills table[16*c + 4*b + a] (a, b, c in 0..3) with the element position of
// the sample at column offset a-1, row offset b-1 and slice offset c-1 from
// the base sample (column, row, slice). Bases well inside the volume skip
// the clamping, which could not change them there.
inline void indices_cubic(int* table, int column, int row, int slice,
                          const int& rows, const int& columns,
                          const int& slices) {
    const bool interior = column >= 3 && row >= 3 && slice >= 3 &&
                          column < columns - 3 && row < rows - 3 &&
                          slice < slices - 3;
    // Neighbour indices per axis, at offsets -1 .. +2 from the base.
    int column_at[4], row_at[4], slice_at[4];
    for (int offset = 0; offset < 4; ++offset) {
        const auto neighbour = [&](int base, int size) {
            const int index = detail::wrapping_add(base, offset - 1);
            return interior ? index : detail::clamp_index(index, size);
        };
        column_at[offset] = neighbour(column, columns);
        row_at[offset] = neighbour(row, rows);
        slice_at[offset] = neighbour(slice, slices);
    }
    for (int c = 0; c < 4; ++c) {
        for (int b = 0; b < 4; ++b) {
            for (int a = 0; a < 4; ++a) {
                table[16 * c + 4 * b + a] =
                    (slice_at[c] * columns + column_at[a]) * rows + row_at[b];
            }
        }
    }
}

namespace detail {

// Weights of the samples at offsets -1, 0, +1, +2 for the fractional part t.
template <typename T>
struct CubicWeights {
    T w0, w1, w2, w3;
};

// Each operation rounds in T, in exactly this order, so that every member
// of the family gets the same bits. At t = 0 the weights are 0, 1, 0, 0.
template <typename T>
inline CubicWeights<T> cubic_weights(T t) {
    const T half = static_cast<T>(0.5);
    const T t2 = t * t;
    const T t3 = t * t2;
    return {(((t2 + t2) - t) - t3) * half,
            ((static_cast<T>(2) - t2 * static_cast<T>(5)) +
             t3 * static_cast<T>(3)) * half,
            ((t2 * static_cast<T>(4) + t) - t3 * static_cast<T>(3)) * half,
            (t3 - t2) * half};
}

// Weighted sum of four samples, accumulated from offset -1 to +2.
template <typename V, typename T>
inline auto weighted_sum(V v0, V v1, V v2, V v3, const CubicWeights<T>& w) {
    return ((v0 * w.w0 + v1 * w.w1) + v2 * w.w2) + v3 * w.w3;
}

// The one tricubic body; `volumes` decides how the volumes of a point are
// walked. The 64 positions and 12 weights are found once per point; each
// volume then reduces rows along x, planes along y and finally along z.
template <typename T, typename U, typename VolumeCount>
void cubic_points(U* out, const U* data, const T* xi, const T* yi,
                  const T* zi, long long count, int d0, int d1, int d2,
                  VolumeCount volumes, T x_scale, T x_offset, T y_scale,
                  T y_offset, T z_scale, T z_offset) {
    const int volume_stride = d0 * d1 * d2;
    const T one = static_cast<T>(1);
    int table[64];
    for (long long i = 0; i < count; ++i) {
        const T ux = xi[i] * x_scale + x_offset;
        const T uy = yi[i] * y_scale + y_offset;
        const T uz = zi[i] * z_scale + z_offset;
        const T floor_x = std::floor(ux);
        const T floor_y = std::floor(uy);
        const T floor_z = std::floor(uz);
        indices_cubic(table, truncate_to_int32(floor_x - one),
                      truncate_to_int32(floor_y - one),
                      truncate_to_int32(floor_z - one), d0, d1, d2);
        const CubicWeights<T> wx = cubic_weights(ux - floor_x);
        const CubicWeights<T> wy = cubic_weights(uy - floor_y);
        const CubicWeights<T> wz = cubic_weights(uz - floor_z);
        volumes.for_each([&](int k) {
            const U* volume = data + k * volume_stride;
            const auto row_sum = [&](int b, int c) {
                const int* e = table + 16 * c + 4 * b;
                return weighted_sum(volume[e[0]], volume[e[1]], volume[e[2]],
                                    volume[e[3]], wx);
            };
            const auto plane_sum = [&](int c) {
                return weighted_sum(row_sum(0, c), row_sum(1, c),
                                    row_sum(2, c), row_sum(3, c), wy);
            };
            out[k * count + i] = weighted_sum(plane_sum(0), plane_sum(1),
                                              plane_sum(2), plane_sum(3), wz);
        });
    }
}

}  // namespace detail

// N volumes (1 to 9) with the volume loop unrolled.
template <typename T, typename U, int N>
void interpolate_bicubic_unrolled(U* out, const U* data, const T* xi,
                                  const T* yi, const T* zi, long long count,
                                  int d0, int d1, int d2, T x_scale,
                                  T x_offset, T y_scale, T y_offset, T z_scale,
                                  T z_offset) {
    static_assert(N >= 1 && N <= 9, "tricubic kernels exist for 1 to 9 volumes");
    detail::cubic_points(out, data, xi, yi, zi, count, d0, d1, d2,
                         detail::FixedVolumeCount<N>{}, x_scale, x_offset,
                         y_scale, y_offset, z_scale, z_offset);
}

// Any number of volumes; a volume_count of 0 or less writes nothing (the
// neighbourhood is still computed for every point).
template <typename T, typename U>
void interpolate_bicubic(U* out, const U* data, const T* xi, const T* yi,
                         const T* zi, long long count, int d0, int d1, int d2,
                         int volume_count, T x_scale, T x_offset, T y_scale,
                         T y_offset, T z_scale, T z_offset) {
    detail::cubic_points(out, data, xi, yi, zi, count, d0, d1, d2,
                         detail::RuntimeVolumeCount{volume_count}, x_scale,
                         x_offset, y_scale, y_offset, z_scale, z_offset);
}

}  // namespace Interp3
