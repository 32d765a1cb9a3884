#include "homodyne/homodyne_filter.hpp"

#include <cmath>
#include <cstddef>

#include "homodyne/filter_weights.hpp"

AxisFilter plan_axis_filter(int n, const double* range)
{
    AxisFilter axis;
    axis.weights.assign(static_cast<std::size_t>(n > 0 ? n : 0), 1.0f);
    const bool fully_sampled = range == nullptr || !(std::fabs(range[0] + range[1]) > 1.0);
    if (n == 0 || fully_sampled) {
        axis.first = 0;
        axis.last = n - 1;
        return axis;
    }
    int bounds[2] = {0, 0};
    axis.weighted = calculate_filter(n, range, axis.weights.data(), bounds) != 0;
    axis.first = bounds[0];
    axis.last = bounds[1];
    return axis;
}

void crop_block(const ComplexPlanes& data, const VolumeShape& shape, const AxisFilter& x,
                const AxisFilter& y, const AxisFilter& z, const ComplexPlanes& block)
{
    const std::ptrdiff_t mx = x.extent(), my = y.extent(), mz = z.extent();
    if (mx <= 0 || my <= 0 || mz <= 0) {
        return;
    }
    const std::ptrdiff_t nx = shape.nx, ny = shape.ny;
    const std::ptrdiff_t data_volume = nx * ny * shape.nz;
    std::ptrdiff_t out = 0;
    for (std::ptrdiff_t v = 0; v < shape.nvol; ++v) {
        for (std::ptrdiff_t k = 0; k < mz; ++k) {
            for (std::ptrdiff_t j = 0; j < my; ++j) {
                const std::ptrdiff_t row = v * data_volume + ((z.first + k) * ny + y.first + j) * nx + x.first;
                for (std::ptrdiff_t i = 0; i < mx; ++i, ++out) {
                    block.real(out) = data.real(row + i);
                    if (data.is_complex()) {
                        block.imag(out) = data.imag(row + i);
                    }
                }
            }
        }
    }
}

void weight_in_place(const ComplexPlanes& data, const VolumeShape& shape, const AxisFilter& x,
                     const AxisFilter& y, const AxisFilter& z)
{
    const int weighted_axes = int(x.weighted) + int(y.weighted) + int(z.weighted);
    if (weighted_axes == 0) {
        return;  // every weight is 1 and pow(1, +inf) = 1: nothing changes
    }
    const double exponent = 1.0f / static_cast<float>(weighted_axes);
    const std::ptrdiff_t nx = shape.nx, ny = shape.ny, nz = shape.nz;
    const std::ptrdiff_t volume = nx * ny * nz;

    // The combined weight depends only on (x, y, z): compute one row of it and
    // apply that row to the same row of every volume.
    std::vector<float> row_weights(static_cast<std::size_t>(nx));
    for (std::ptrdiff_t k = 0; k < nz; ++k) {
        for (std::ptrdiff_t j = 0; j < ny; ++j) {
            const float wy = y.weights[j];
            const float wz = z.weights[k];
            for (std::ptrdiff_t i = 0; i < nx; ++i) {
                const float p = x.weights[i] * wy * wz;
                row_weights[i] = static_cast<float>(std::pow(static_cast<double>(p), exponent));
            }
            for (std::ptrdiff_t v = 0; v < shape.nvol; ++v) {
                const std::ptrdiff_t row = v * volume + (k * ny + j) * nx;
                for (std::ptrdiff_t i = 0; i < nx; ++i) {
                    data.real(row + i) *= row_weights[i];
                }
                if (data.is_complex()) {
                    for (std::ptrdiff_t i = 0; i < nx; ++i) {
                        data.imag(row + i) *= row_weights[i];
                    }
                }
            }
        }
    }
}
