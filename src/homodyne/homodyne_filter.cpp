#include "homodyne/homodyne_filter.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

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

// The positions of an axis grouped by weight (compared bit for bit), so that
// a row of combined weights is made once for all positions with equal weights.
struct WeightClasses {
    std::vector<int> class_of;  // the class of each position
    std::size_t count = 0;
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
    classes.count = distinct.size();
    classes.class_of.resize(weights.size());
    for (std::size_t i = 0; i < weights.size(); ++i) {
        classes.class_of[i] =
            static_cast<int>(std::lower_bound(distinct.begin(), distinct.end(), bits_of(weights[i])) - distinct.begin());
    }
    return classes;
}

// Rows of combined weights: for y position j and z position k, the geometric
// mean of the weighted axes' weights at every x position, pow(wx * wy * wz, e)
// with the single-precision exponent e = 1.0f / c, rounded to single. For
// c = 1 the power returns its argument exactly; for c = 2 the square root
// gives the same float as pow(p, 0.5) for every non-negative float p (checked
// over all of them); for c = 3 PowThirdOfProducts gives pow's float.
// Homodyne ramps begin with a run of 0 and end with a run of 2: a row is
// computed from the last position of the leading run of equal x weights to
// the first of the trailing run, and those two values are copied over the runs.
class CombinedWeightRows {
public:
    CombinedWeightRows(const AxisFilter& x, const AxisFilter& y, const AxisFilter& z, int weighted_axes)
        : wx_(x.weights), wy_(y.weights), wz_(z.weights), weighted_axes_(weighted_axes)
    {
        const std::size_t n = wx_.size();
        if (n == 0) {
            return;
        }
        while (first_ + 1 < n && bits_of(wx_[first_ + 1]) == bits_of(wx_[0])) {
            ++first_;
        }
        last_ = n - 1;
        while (last_ > first_ && bits_of(wx_[last_ - 1]) == bits_of(wx_[n - 1])) {
            --last_;
        }
        if (weighted_axes == 3) {
            cube_roots_.emplace(std::vector<float>(wx_.begin() + first_, wx_.begin() + last_ + 1), wy_, wz_);
        }
    }

    void make(int j, int k, float* row) const
    {
        const std::size_t n = wx_.size();
        if (n == 0) {
            return;
        }
        const float wy = wy_[j], wz = wz_[k];
        if (cube_roots_) {
            cube_roots_->row(j, k, row + first_);
        } else if (weighted_axes_ == 1) {
            for (std::size_t i = first_; i <= last_; ++i) {
                row[i] = wx_[i] * wy * wz;
            }
        } else {
            for (std::size_t i = first_; i <= last_; ++i) {
                row[i] = static_cast<float>(std::sqrt(static_cast<double>(wx_[i] * wy * wz)));
            }
        }
        std::fill(row, row + first_, row[first_]);
        std::fill(row + last_ + 1, row + n, row[last_]);
    }

private:
    const std::vector<float>& wx_;
    const std::vector<float>& wy_;
    const std::vector<float>& wz_;
    int weighted_axes_;
    std::size_t first_ = 0, last_ = 0;  // the span of x positions computed
    std::optional<PowThirdOfProducts> cube_roots_;
};

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

// One pass over the rows of the data (x fastest): a row inside the block is
// copied into `block` (when given) before it is weighted (when `weight` and
// an axis is weighted), so that the data are read once for both.
void filter_rows(const ComplexPlanes& data, const VolumeShape& shape, const AxisFilter& x, const AxisFilter& y,
                 const AxisFilter& z, const ComplexPlanes* block, bool weight)
{
    const int weighted_axes = int(x.weighted) + int(y.weighted) + int(z.weighted);
    // With no weighted axis every weight is 1 and pow(1, +inf) = 1: nothing changes.
    const bool weighting = weight && weighted_axes > 0;
    const std::ptrdiff_t mx = x.extent(), my = y.extent(), mz = z.extent();
    const bool cropping = block != nullptr && mx > 0 && my > 0 && mz > 0;
    const std::ptrdiff_t nx = shape.nx, ny = shape.ny, nz = shape.nz;
    const std::ptrdiff_t volume = nx * ny * nz;
    if ((!weighting && !cropping) || volume == 0) {
        return;
    }

    // A row of combined weights depends only on the classes of its y and z
    // weights. Rows are kept for every y class of the current z class and made
    // again only when the z class changes (equal weights lie in runs), and
    // every volume uses the rows of the first.
    // (Crop-only calls need no weights: their axes may carry none.)
    WeightClasses cy, cz;
    std::optional<CombinedWeightRows> combined;
    if (weighting) {
        cy = classify(y.weights), cz = classify(z.weights);
        combined.emplace(x, y, z, weighted_axes);
    }
    std::vector<float> rows(cy.count * static_cast<std::size_t>(nx));
    std::vector<char> row_ready(cy.count);
    int current_z_class = -1;
    for (std::ptrdiff_t k = 0; k < nz; ++k) {
        const bool plane_in_block = cropping && k >= z.first && k <= z.last;
        if (!weighting && !plane_in_block) {
            continue;  // only the block's planes are read for a crop
        }
        if (weighting && cz.class_of[k] != current_z_class) {
            current_z_class = cz.class_of[k];
            std::fill(row_ready.begin(), row_ready.end(), 0);
        }
        for (std::ptrdiff_t j = 0; j < ny; ++j) {
            const bool row_in_block = plane_in_block && j >= y.first && j <= y.last;
            float* row = nullptr;
            if (weighting) {
                const int y_class = cy.class_of[j];
                row = &rows[static_cast<std::size_t>(y_class) * nx];
                if (!row_ready[y_class]) {
                    combined->make(static_cast<int>(j), static_cast<int>(k), row);
                    row_ready[y_class] = 1;
                }
            }
            for (std::ptrdiff_t v = 0; v < shape.nvol; ++v) {
                const std::ptrdiff_t start = v * volume + (k * ny + j) * nx;
                if (row_in_block) {
                    copy_samples(data, start + x.first, *block, ((v * mz + k - z.first) * my + j - y.first) * mx, mx);
                }
                if (weighting) {
                    scale_row(data, start, row, nx);
                }
            }
        }
    }
}

}  // namespace

void crop_block(const ComplexPlanes& data, const VolumeShape& shape, const AxisFilter& x, const AxisFilter& y,
                const AxisFilter& z, const ComplexPlanes& block)
{
    filter_rows(data, shape, x, y, z, &block, false);
}

void weight_in_place(const ComplexPlanes& data, const VolumeShape& shape, const AxisFilter& x, const AxisFilter& y,
                     const AxisFilter& z)
{
    filter_rows(data, shape, x, y, z, nullptr, true);
}

void crop_and_weight(const ComplexPlanes& data, const VolumeShape& shape, const AxisFilter& x, const AxisFilter& y,
                     const AxisFilter& z, const ComplexPlanes& block)
{
    filter_rows(data, shape, x, y, z, &block, true);
}
