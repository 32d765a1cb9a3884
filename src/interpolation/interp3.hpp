// Interpolation of one or several 3-D volumes sampled on a regular grid, at
// arbitrary query points: the public driver of the library.
//
// Axis convention: a volume's first dimension (d0, rows, fastest in memory)
// runs along y, its second (d1, columns) along x and its third (d2, slices)
// along z; sample (row r, column c, slice s) is element (s*d1 + c)*d0 + r.
// Several volumes follow one another in `data`; the results of volume k
// start at out[k * points per volume].
//
// The driver allocates nothing and checks no sizes: the caller owns every
// buffer and guarantees that `data` and `out` are large enough, that
// data_dims has at least three entries, that every volume dimension is at
// least 1 (and, with explicit grids, that the first and last coordinates
// differ on every axis), that on the multi-volume path the volume count is
// not zero, and that all volumes together hold fewer than 2^31 samples
// (index arithmetic is signed 32-bit). The only failure it reports is an
// unknown method.
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include "interpolation/interp3_cubic.hpp"
#include "interpolation/interp3_linear.hpp"
#include "interpolation/interp3_nearest.hpp"

namespace Interp3 {

// The values are part of the interface (callers pass them as plain ints).
// The fixed underlying type makes any int a valid value, so an unknown one
// can reach the driver and be refused there.
enum InterpolationMethod : int {
    NEAREST = 0,
    LINEAR = 1,
    BICUBIC = 2,  // tricubic
};

namespace detail {

inline constexpr const char* unknown_method_message =
    "Error in Interp3: Unimplemented interpolation method.";

// Per-axis map u = q * scale + offset from a coordinate q to its 1-based
// fractional sample index.
template <typename T>
struct CoordinateMap {
    T x_scale, x_offset, y_scale, y_offset, z_scale, z_offset;
};

template <typename T>
struct AxisMap {
    T scale, offset;
};

// Maps the axis's first grid coordinate to index 1 and its last to `size`.
template <typename T>
AxisMap<T> axis_map(T first, T last, int size) {
    const T scale = static_cast<T>(1 - size) / (first - last);
    return {scale, static_cast<T>(1) - first * scale};
}

// Null grids mean queries in 0-based index space (all six values 1).
// Otherwise only the first grid element and the one at grid_count - 1 are
// read, the grid being taken as regular. On the multi-volume path
// grid_count covers every volume, so a caller passing grids for several
// volumes passes arrays that long with the far corner at their end (e.g.
// the first volume's grid repeated).
template <typename T>
CoordinateMap<T> coordinate_map(const T* x, const T* y, const T* z,
                                long long grid_count, int d0, int d1, int d2) {
    if (x == nullptr) {
        const T one = static_cast<T>(1);
        return {one, one, one, one, one, one};
    }
    const long long last = grid_count - 1;
    const AxisMap<T> mx = axis_map(x[0], x[last], d1);
    const AxisMap<T> my = axis_map(y[0], y[last], d0);
    const AxisMap<T> mz = axis_map(z[0], z[last], d2);
    return {mx.scale, mx.offset, my.scale, my.offset, mz.scale, mz.offset};
}

// Calls kernel(std::integral_constant<int, N>) for the N in [First, Last]
// equal to n; returns false when there is none.
template <int First, int Last, typename Kernel>
bool with_fixed_count(int n, Kernel&& kernel) {
    if (n == First) {
        kernel(std::integral_constant<int, First>{});
        return true;
    }
    if constexpr (First < Last) {
        return with_fixed_count<First + 1, Last>(n, kernel);
    } else {
        return false;
    }
}

// Product of dims[begin, end) in 64 bits.
inline unsigned long long dims_product(const std::vector<unsigned int>& dims,
                                       std::size_t begin, std::size_t end) {
    unsigned long long product = 1;
    for (std::size_t i = begin; i < end; ++i) {
        product *= dims[i];
    }
    return product;
}

// Product of dims from the fourth entry on, in wrapping 32-bit arithmetic.
inline int volume_count_of(const std::vector<unsigned int>& dims) {
    std::uint32_t product = 1;
    for (std::size_t i = 3; i < dims.size(); ++i) {
        product *= dims[i];
    }
    return static_cast<int>(product);
}

// Nearest neighbour for one volume, done by the driver itself: there is no
// one-volume nearest kernel.
template <typename T, typename U>
void nearest_one_volume(U* out, const U* data, const T* xi, const T* yi,
                        const T* zi, long long count, int d0, int d1, int d2,
                        const CoordinateMap<T>& map) {
    nearest_points(out, data, xi, yi, zi, count, d0, d1, d2,
                   FixedVolumeCount<1>{}, map.x_scale, map.x_offset,
                   map.y_scale, map.y_offset, map.z_scale, map.z_offset);
}

}  // namespace detail

// One volume of d0 x d1 x d2 samples at query_count points. Throws the
// const char* "Error in Interp3: Unimplemented interpolation method." for
// an unknown method, before anything is written.
template <typename T, typename U>
void interp3_single_vol(T* x, T* y, T* z, U* data, int d0, int d1, int d2,
                        long long grid_count, T* xi, T* yi, T* zi,
                        long long query_count, InterpolationMethod method,
                        U* out) {
    const detail::CoordinateMap<T> m =
        detail::coordinate_map<T>(x, y, z, grid_count, d0, d1, d2);
    switch (method) {
        case BICUBIC:
            interpolate_bicubic_unrolled<T, U, 1>(
                out, data, xi, yi, zi, query_count, d0, d1, d2, m.x_scale,
                m.x_offset, m.y_scale, m.y_offset, m.z_scale, m.z_offset);
            return;
        case LINEAR:
            interpolate_linear_unrolled<T, U, 1>(
                out, data, xi, yi, zi, query_count, d0, d1, d2, m.x_scale,
                m.x_offset, m.y_scale, m.y_offset, m.z_scale, m.z_offset);
            return;
        case NEAREST:
            detail::nearest_one_volume<T, U>(out, data, xi, yi, zi,
                                             query_count, d0, d1, d2, m);
            return;
    }
    throw detail::unknown_method_message;
}

// volume_count volumes sharing one grid; query_count counts the points of
// all volumes, so each volume gets query_count / volume_count points.
// Counts 1 to 9 run kernels unrolled for that count (nearest with one
// volume runs the driver's own loop); every other count, 0 and negative
// ones included, runs the general kernel. Unknown methods throw as in
// interp3_single_vol.
template <typename T, typename U>
void interp3_multi_vol(T* x, T* y, T* z, U* data, int d0, int d1, int d2,
                       long long grid_count, int volume_count, T* xi, T* yi,
                       T* zi, long long query_count, InterpolationMethod method,
                       U* out) {
    const detail::CoordinateMap<T> m =
        detail::coordinate_map<T>(x, y, z, grid_count, d0, d1, d2);
    const long long count = query_count / volume_count;
    switch (method) {
        case BICUBIC:
            if (!detail::with_fixed_count<1, 9>(volume_count, [&](auto n) {
                    interpolate_bicubic_unrolled<T, U, decltype(n)::value>(
                        out, data, xi, yi, zi, count, d0, d1, d2, m.x_scale,
                        m.x_offset, m.y_scale, m.y_offset, m.z_scale,
                        m.z_offset);
                })) {
                interpolate_bicubic<T, U>(out, data, xi, yi, zi, count, d0, d1,
                                          d2, volume_count, m.x_scale,
                                          m.x_offset, m.y_scale, m.y_offset,
                                          m.z_scale, m.z_offset);
            }
            return;
        case LINEAR:
            if (!detail::with_fixed_count<1, 9>(volume_count, [&](auto n) {
                    interpolate_linear_unrolled<T, U, decltype(n)::value>(
                        out, data, xi, yi, zi, count, d0, d1, d2, m.x_scale,
                        m.x_offset, m.y_scale, m.y_offset, m.z_scale,
                        m.z_offset);
                })) {
                interpolate_linear<T, U>(out, data, xi, yi, zi, count, d0, d1,
                                         d2, volume_count, m.x_scale,
                                         m.x_offset, m.y_scale, m.y_offset,
                                         m.z_scale, m.z_offset);
            }
            return;
        case NEAREST:
            if (volume_count == 1) {
                detail::nearest_one_volume<T, U>(out, data, xi, yi, zi, count,
                                                 d0, d1, d2, m);
            } else if (!detail::with_fixed_count<2, 9>(volume_count, [&](auto n) {
                           interpolate_nearest_unrolled<T, U, decltype(n)::value>(
                               out, data, xi, yi, zi, count, d0, d1, d2,
                               m.x_scale, m.x_offset, m.y_scale, m.y_offset,
                               m.z_scale, m.z_offset);
                       })) {
                interpolate_nearest<T, U>(out, data, xi, yi, zi, count, d0, d1,
                                          d2, volume_count, m.x_scale,
                                          m.x_offset, m.y_scale, m.y_offset,
                                          m.z_scale, m.z_offset);
            }
            return;
    }
    throw detail::unknown_method_message;
}

// Public entry. `x`, `y`, `z` are the sample grid in the data's layout (only
// their first and last elements are read; when `x` is null, `y` and `z` are
// ignored and queries are 0-based sample indices; when it is not, they must
// not be null). A data_dims of three entries selects the one-volume path,
// which uses only the first three query dimensions; four or more select the
// multi-volume path, whose volume count is the product of query_dims from
// its fourth entry on (data_dims beyond the third entry only enter the grid
// element count).
template <typename T, typename U>
void interp3(T* x, T* y, T* z, U* data, std::vector<unsigned int> data_dims,
             T* xi, T* yi, T* zi, std::vector<unsigned int> query_dims,
             InterpolationMethod method, U* out) {
    const int d0 = static_cast<int>(data_dims[0]);
    const int d1 = static_cast<int>(data_dims[1]);
    const int d2 = static_cast<int>(data_dims[2]);
    if (data_dims.size() < 4) {
        const auto first_three = [](const std::vector<unsigned int>& dims) {
            return static_cast<long long>(detail::dims_product(
                dims, 0, std::min<std::size_t>(3, dims.size())));
        };
        interp3_single_vol<T, U>(x, y, z, data, d0, d1, d2,
                                 first_three(data_dims), xi, yi, zi,
                                 first_three(query_dims), method, out);
        return;
    }
    const auto all = [](const std::vector<unsigned int>& dims) {
        return static_cast<long long>(
            detail::dims_product(dims, 0, dims.size()));
    };
    interp3_multi_vol<T, U>(x, y, z, data, d0, d1, d2, all(data_dims),
                            detail::volume_count_of(query_dims), xi, yi, zi,
                            all(query_dims), method, out);
}

}  // namespace Interp3
