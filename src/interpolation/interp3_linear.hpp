// Trilinear kernels. Argument order and layout as in interp3_nearest.hpp
// (the kernel call contract); the same preconditions hold.
//
// Corner j of a query's cell advances the lower corner's column when bit 0
// of j is set, its row for bit 1 and its slice for bit 2. Corners outside
// the volume are clamped onto its border per axis, so a point outside the
// grid takes the border value along that axis and nothing outside the
// volume is ever read.
//
// Non-finite coordinates, and positions whose index does not fit in 32 bits,
// convert to the index -2^31 and are clamped like any other index: the
// point then takes the first sample along that axis (NaN weights still make
// the result NaN).
#pragma once

#include <cmath>

#include "interpolation/interp3_support.hpp"

namespace Interp3 {

// Element positions p0..p7 of the eight corners of the cell whose lower
// corner is column c, row r, slice s, in a volume of d0 rows, d1 columns and
// d2 slices. Cells well inside the volume skip the clamping, which could not
// change them there; all others clamp each of the six indices to its axis.
inline void indices_linear(int& p0, int& p1, int& p2, int& p3, int& p4,
                           int& p5, int& p6, int& p7, int c, int r, int s,
                           const int& d0, const int& d1, const int& d2) {
    const bool interior =
        c > 1 && r > 1 && s > 1 && c < d1 - 2 && r < d0 - 2 && s < d2 - 2;
    const auto axis_index = [interior](int index, int size) {
        return interior ? index : detail::clamp_index(index, size);
    };
    const int c0 = axis_index(c, d1);
    const int c1 = axis_index(detail::wrapping_add(c, 1), d1);
    const int r0 = axis_index(r, d0);
    const int r1 = axis_index(detail::wrapping_add(r, 1), d0);
    const int s0 = axis_index(s, d2);
    const int s1 = axis_index(detail::wrapping_add(s, 1), d2);
    p0 = (s0 * d1 + c0) * d0 + r0;
    p1 = (s0 * d1 + c1) * d0 + r0;
    p2 = (s0 * d1 + c0) * d0 + r1;
    p3 = (s0 * d1 + c1) * d0 + r1;
    p4 = (s1 * d1 + c0) * d0 + r0;
    p5 = (s1 * d1 + c1) * d0 + r0;
    p6 = (s1 * d1 + c0) * d0 + r1;
    p7 = (s1 * d1 + c1) * d0 + r1;
}

namespace detail {

// The one trilinear body; `volumes` decides how the volumes of a point are
// walked. Corner positions and weights are found once per point. Each
// volume reduces along x, then y, then z, every step one rounded product
// pair and one rounded sum, which fixes the result bit for bit.
template <typename T, typename U, typename VolumeCount>
void linear_points(U* out, const U* data, const T* xi, const T* yi,
                   const T* zi, long long count, int d0, int d1, int d2,
                   VolumeCount volumes, T x_scale, T x_offset, T y_scale,
                   T y_offset, T z_scale, T z_offset) {
    const int volume_stride = d1 * d0 * d2;
    const T one = static_cast<T>(1);
    for (long long i = 0; i < count; ++i) {
        const T ux = xi[i] * x_scale + x_offset;
        const T uy = yi[i] * y_scale + y_offset;
        const T uz = zi[i] * z_scale + z_offset;
        const T floor_x = std::floor(ux);
        const T floor_y = std::floor(uy);
        const T floor_z = std::floor(uz);
        const T fx = ux - floor_x;
        const T fy = uy - floor_y;
        const T fz = uz - floor_z;
        const T gx = one - fx;
        const T gy = one - fy;
        const T gz = one - fz;
        int p0, p1, p2, p3, p4, p5, p6, p7;
        indices_linear(p0, p1, p2, p3, p4, p5, p6, p7,
                       truncate_to_int32(floor_x - one),
                       truncate_to_int32(floor_y - one),
                       truncate_to_int32(floor_z - one), d0, d1, d2);
        volumes.for_each([&](int k) {
            const U* volume = data + k * volume_stride;
            const auto x01 = volume[p1] * fx + volume[p0] * gx;
            const auto x23 = volume[p3] * fx + volume[p2] * gx;
            const auto x45 = volume[p5] * fx + volume[p4] * gx;
            const auto x67 = volume[p7] * fx + volume[p6] * gx;
            const auto y0 = x23 * fy + x01 * gy;
            const auto y1 = x67 * fy + x45 * gy;
            out[k * count + i] = y1 * fz + y0 * gz;
        });
    }
}

}  // namespace detail

// N volumes (1 to 9) with the volume loop unrolled.
template <typename T, typename U, int N>
void interpolate_linear_unrolled(U* out, const U* data, const T* xi,
                                 const T* yi, const T* zi, long long count,
                                 int d0, int d1, int d2, T x_scale, T x_offset,
                                 T y_scale, T y_offset, T z_scale,
                                 T z_offset) {
    static_assert(N >= 1 && N <= 9, "trilinear kernels exist for 1 to 9 volumes");
    detail::linear_points(out, data, xi, yi, zi, count, d0, d1, d2,
                          detail::FixedVolumeCount<N>{}, x_scale, x_offset,
                          y_scale, y_offset, z_scale, z_offset);
}

// Any number of volumes; a volume_count of 0 or less writes nothing.
template <typename T, typename U>
void interpolate_linear(U* out, const U* data, const T* xi, const T* yi,
                        const T* zi, long long count, int d0, int d1, int d2,
                        int volume_count, T x_scale, T x_offset, T y_scale,
                        T y_offset, T z_scale, T z_offset) {
    detail::linear_points(out, data, xi, yi, zi, count, d0, d1, d2,
                          detail::RuntimeVolumeCount{volume_count}, x_scale,
                          x_offset, y_scale, y_offset, z_scale, z_offset);
}

}  // namespace Interp3
