#include "homodyne/homodyne_filter.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "homodyne/filter_weights.hpp"
#include "homodyne/pow_third.hpp"

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

namespace {

// Copies n samples from position `from` of `src` to position `to` of `dst`.
void copy_samples(const ComplexPlanes& src, std::ptrdiff_t from, const ComplexPlanes& dst, std::ptrdiff_t to,
                  std::ptrdiff_t n)
{
    const bool both_interleaved = src.stride == 2 && dst.stride == 2 && src.im == src.re + 1 && dst.im == dst.re + 1;
    if (both_interleaved) {
        std::memcpy(&dst.real(to), &src.real(from), static_cast<std::size_t>(2 * n) * sizeof(float));
        return;
    }
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        dst.real(to + i) = src.real(from + i);
    }
    if (src.is_complex()) {
        for (std::ptrdiff_t i = 0; i < n; ++i) {
            dst.imag(to + i) = src.imag(from + i);
        }
    }
}

}  // namespace

void crop_block(const ComplexPlanes& data, const VolumeShape& shape, const AxisFilter& x, const AxisFilter& y,
                const AxisFilter& z, const ComplexPlanes& block)
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
            for (std::ptrdiff_t j = 0; j < my; ++j, out += mx) {
                const std::ptrdiff_t row = v * data_volume + ((z.first + k) * ny + y.first + j) * nx + x.first;
                copy_samples(data, row, block, out, mx);
            }
        }
    }
}

namespace {

// The positions of an axis grouped by weight (compared bit for bit), so that
// a combined weight is computed once for all positions with equal weights.
struct WeightClasses {
    std::vector<float> values;   // one weight per class
    std::vector<int> class_of;   // the class of each position
};

std::uint32_t bits_of(float value)
{
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

WeightClasses classify(const std::vector<float>& weights)
{
    std::vector<std::uint32_t> distinct(weights.size());
    std::transform(weights.begin(), weights.end(), distinct.begin(), bits_of);
    std::sort(distinct.begin(), distinct.end());
    distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());

    WeightClasses classes;
    classes.values.resize(distinct.size());
    for (std::size_t c = 0; c < distinct.size(); ++c) {
        std::memcpy(&classes.values[c], &distinct[c], sizeof(float));
    }
    classes.class_of.resize(weights.size());
    for (std::size_t i = 0; i < weights.size(); ++i) {
        classes.class_of[i] =
            static_cast<int>(std::lower_bound(distinct.begin(), distinct.end(), bits_of(weights[i])) - distinct.begin());
    }
    return classes;
}

// The combined weight of every x class for one pair of y and z weights: the
// geometric mean of the weighted axes' weights, pow(wx * wy * wz, 1/c) with
// the single-precision exponent 1.0f / c, rounded to single. For c = 1 the
// power returns its argument exactly; for c = 2 the square root gives the
// same float as pow(p, 0.5) for every non-negative float p (checked over all
// of them); for c = 3 pow_third gives pow's float at a fraction of its cost.
void combine_classes(const std::vector<float>& wx, float wy, float wz, int weighted_axes,
                     std::vector<float>& products, std::vector<float>& weights)
{
    const std::size_t n = wx.size();
    for (std::size_t c = 0; c < n; ++c) {
        products[c] = wx[c] * wy * wz;
    }
    if (weighted_axes == 1) {
        weights = products;
    } else if (weighted_axes == 2) {
        for (std::size_t c = 0; c < n; ++c) {
            weights[c] = static_cast<float>(std::sqrt(static_cast<double>(products[c])));
        }
    } else {
        pow_third(products.data(), weights.data(), static_cast<long>(n));
    }
}

// Multiplies the n samples of a row from position `start` by the factors f.
// Interleaved pairs go through one pointer, so that the compiler sees that
// the real and imaginary parts do not overlap and vectorises the loop.
void scale_row(const ComplexPlanes& data, std::ptrdiff_t start, const float* f, std::ptrdiff_t n)
{
    float* re = &data.real(start);
    if (data.stride == 2) {
        for (std::ptrdiff_t i = 0; i < n; ++i) {
            re[2 * i] *= f[i];
            re[2 * i + 1] *= f[i];
        }
        return;
    }
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        re[i] *= f[i];
    }
    if (data.is_complex()) {
        float* im = &data.imag(start);
        for (std::ptrdiff_t i = 0; i < n; ++i) {
            im[i] *= f[i];
        }
    }
}

}  // namespace

void weight_in_place(const ComplexPlanes& data, const VolumeShape& shape, const AxisFilter& x, const AxisFilter& y,
                     const AxisFilter& z)
{
    const int weighted_axes = int(x.weighted) + int(y.weighted) + int(z.weighted);
    if (weighted_axes == 0) {
        return;  // every weight is 1 and pow(1, +inf) = 1: nothing changes
    }
    const std::ptrdiff_t nx = shape.nx, ny = shape.ny, nz = shape.nz;
    const std::ptrdiff_t volume = nx * ny * nz;
    if (volume == 0) {
        return;
    }

    // A row of combined weights depends only on the classes of its y and z
    // weights. Rows are kept for every y class of the current z class and made
    // again only when the z class changes (equal weights lie in runs), and
    // every volume uses the rows of the first.
    const WeightClasses cx = classify(x.weights), cy = classify(y.weights), cz = classify(z.weights);
    std::vector<float> products(cx.values.size()), class_weights(cx.values.size());
    std::vector<float> rows(cy.values.size() * static_cast<std::size_t>(nx));
    std::vector<char> row_ready(cy.values.size());
    int current_z_class = -1;
    for (std::ptrdiff_t k = 0; k < nz; ++k) {
        if (cz.class_of[k] != current_z_class) {
            current_z_class = cz.class_of[k];
            std::fill(row_ready.begin(), row_ready.end(), 0);
        }
        for (std::ptrdiff_t j = 0; j < ny; ++j) {
            const int y_class = cy.class_of[j];
            float* row = &rows[static_cast<std::size_t>(y_class) * nx];
            if (!row_ready[y_class]) {
                combine_classes(cx.values, y.weights[j], z.weights[k], weighted_axes, products, class_weights);
                for (std::ptrdiff_t i = 0; i < nx; ++i) {
                    row[i] = class_weights[cx.class_of[i]];
                }
                row_ready[y_class] = 1;
            }
            for (std::ptrdiff_t v = 0; v < shape.nvol; ++v) {
                scale_row(data, v * volume + (k * ny + j) * nx, row, nx);
            }
        }
    }
}
