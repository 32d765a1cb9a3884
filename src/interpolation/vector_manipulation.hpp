// Coordinate vectors and full 3-D coordinate grids, built the way the host
// environment's own linspace and ndgrid build them, so that query points land
// on exactly the same single-precision values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace VectorManipulation {

// `count` values running from `start` towards `end`.
//
// The difference end - start is formed in T and only then widened, and the
// values are a running double-precision sum of the step, each narrowed to T.
// The last value is therefore whatever the accumulation reaches, not `end`
// itself (it equals `end` whenever the step is exact, e.g. 0 to L-1 in L).
// A single value holds `start`. A negative count throws std::length_error
// before anything is allocated.
template <typename T>
std::vector<T> linspace(T start, T end, int count) {
    if (count == 0) {
        return {};
    }
    if (count < 0) {
        throw std::length_error("VectorManipulation::linspace: negative count");
    }
    std::vector<T> values(static_cast<std::size_t>(count));
    const double difference = static_cast<double>(static_cast<T>(end - start));
    // For count == 1 this divides by zero; the step is then never used.
    const double step = difference / (static_cast<double>(count) + -1.0);
    double running = static_cast<double>(start);
    for (int i = 0; i < count; ++i) {
        values[i] = static_cast<T>(running);
        running += step;
    }
    return values;
}

namespace detail {

// Number of points of an nx x ny x nz grid. Grid indices are 32-bit signed,
// so a grid of 2^31 points or more is refused with std::length_error instead
// of letting the index arithmetic overflow.
inline int grid_point_count(std::size_t nx, std::size_t ny, std::size_t nz) {
    if (nx == 0 || ny == 0 || nz == 0) {
        return 0;
    }
    const std::size_t limit = INT32_MAX;
    if (nx > limit || ny > limit / nx || nz > limit / (nx * ny)) {
        throw std::length_error(
            "VectorManipulation::ndgrid: grid of 2^31 points or more");
    }
    return static_cast<int>(nx * ny * nz);
}

}  // namespace detail

// Expands the coordinate vectors x, y, z into the full grids X, Y, Z in
// column-major order: point (i, j, k) is element i + j*nx + k*nx*ny, so X
// repeats x, Y holds each y value nx times in a row and Z each z value nx*ny
// times. The outputs are resized to the point count and overwritten whole
// (all empty when any input is empty). Too large a grid throws before any
// output is touched.
template <typename T, typename U>
void ndgrid(std::vector<T>& x, std::vector<T>& y, std::vector<U>& z,
            std::vector<U>& X, std::vector<U>& Y, std::vector<U>& Z) {
    const int total = detail::grid_point_count(x.size(), y.size(), z.size());
    X.resize(static_cast<std::size_t>(total));
    Y.resize(static_cast<std::size_t>(total));
    Z.resize(static_cast<std::size_t>(total));
    if (total == 0) {
        return;
    }
    const int nx = static_cast<int>(x.size());
    const int ny = static_cast<int>(y.size());
    const int nz = static_cast<int>(z.size());
    for (int k = 0; k < nz; ++k) {
        for (int j = 0; j < ny; ++j) {
            const int row_start = j * nx + k * (nx * ny);
            for (int i = 0; i < nx; ++i) {
                X[row_start + i] = x[i];
                Y[row_start + i] = y[j];
                Z[row_start + i] = z[k];
            }
        }
    }
}

}  // namespace VectorManipulation
