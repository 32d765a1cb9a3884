#include "recon/coil_sensitivities.hpp"

#include <algorithm>
#include <cmath>
#include <string>

#include "recon/recon_error.hpp"
#include "recon/worker_threads.hpp"

namespace {

constexpr Index half_width = 2;  // 5 x 5 neighbourhood in x and y
constexpr int power_iterations = 4;
constexpr Index grid_step = 2;  // eigenvectors on every second voxel in x and y

// Periodic linear interpolation between grid points k * grid_step of an axis
// of n samples: the grid indices around p and the weight of the upper one.
struct GridSpan {
    Index lower;
    Index upper;
    float weight;
};

GridSpan grid_span(Index p, Index n)
{
    const Index lower = p / grid_step * grid_step;
    const Index upper = lower + grid_step < n ? lower + grid_step : n;  // n is grid point 0 again
    return {lower, upper % n, static_cast<float>(p - lower) / static_cast<float>(upper - lower)};
}

using Complex = std::complex<float>;

// a * b written out: std::complex's operator* checks every product for NaN,
// which keeps the loops below from vectorising (same values otherwise).
inline Complex times(Complex a, Complex b)
{
    return Complex(a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real());
}

Index reference_coil(const Complex* volume, Index voxels, Index coils, Index volume_index, Index volumes)
{
    Index reference = 0;
    double largest = -1.0;
    for (Index c = 0; c < coils; ++c) {
        double energy = 0.0;
        for (Index s = 0; s < voxels; ++s) {
            energy += std::norm(volume[c * voxels + s]);
        }
        if (energy == 0.0) {
            std::string where = "Coil " + std::to_string(c + 1);
            if (volumes > 1) {
                where += " of volume " + std::to_string(volume_index + 1);
            }
            throw ReconError("homodyne:sampling",
                             where + " has no signal in its calibration region (the symmetrically sampled "
                                     "k-space centre is all zero).");
        }
        if (energy > largest) {
            largest = energy;
            reference = c;
        }
    }
    return reference;
}

// Coil covariances of one image row, summed over the neighbourhood along x:
// for every grid x the `pairs` products l_i * conj(l_j), i <= j, of the coil
// vectors l at x - h .. x + h (periodic), j outer, i inner.
class RowCovariance {
public:
    RowCovariance(Index coils, Index nx)
        : coils_(coils), pairs_(coils * (coils + 1) / 2), nx_(nx),
          products_(static_cast<std::size_t>(pairs_ * nx)), sums_(static_cast<std::size_t>(pairs_ * nx))
    {
    }

    const Complex* at(Index x) const { return sums_.data() + x * pairs_; }

    // `row` points at x = 0 of the row in coil 0; coils are `voxels` apart.
    void compute(const Complex* row, Index voxels)
    {
        for (Index x = 0; x < nx_; ++x) {
            Complex* p = products_.data() + x * pairs_;
            for (Index j = 0; j < coils_; ++j) {
                const Complex lj = std::conj(row[j * voxels + x]);
                for (Index i = 0; i <= j; ++i) {
                    *p++ = times(row[i * voxels + x], lj);
                }
            }
        }
        const Index h = std::min(half_width, (nx_ - 1) / 2);
        for (Index x = 0; x < nx_; x += grid_step) {
            Complex* sum = sums_.data() + x * pairs_;
            std::fill(sum, sum + pairs_, Complex(0.0f, 0.0f));
            for (Index dx = -h; dx <= h; ++dx) {
                const Complex* p = products_.data() + ((x + dx + nx_) % nx_) * pairs_;
                for (Index q = 0; q < pairs_; ++q) {
                    sum[q] += p[q];
                }
            }
        }
    }

private:
    Index coils_;
    Index pairs_;
    Index nx_;
    std::vector<Complex> products_;
    std::vector<Complex> sums_;
};

// Dominant eigenvector of the Hermitian matrix r (full, column-major) by power
// iteration from `vector`, scaled to unit length; false when r * vector = 0.
bool dominant_eigenvector(const std::vector<Complex>& r, Index coils, std::vector<Complex>& vector,
                          std::vector<Complex>& next)
{
    for (int iteration = 0; iteration < power_iterations; ++iteration) {
        std::fill(next.begin(), next.end(), Complex(0.0f, 0.0f));
        for (Index j = 0; j < coils; ++j) {
            const Complex vj = vector[static_cast<std::size_t>(j)];
            const Complex* column = r.data() + j * coils;
            for (Index i = 0; i < coils; ++i) {
                next[static_cast<std::size_t>(i)] += times(column[i], vj);
            }
        }
        float energy = 0.0f;
        for (const Complex& value : next) {
            energy += std::norm(value);
        }
        const float length = std::sqrt(energy);
        if (!(length > 0.0f)) {
            return false;
        }
        for (Index c = 0; c < coils; ++c) {
            vector[static_cast<std::size_t>(c)] = next[static_cast<std::size_t>(c)] / length;
        }
    }
    return true;
}

// Fills the voxels between the grid points of one plane (coils `voxels`
// apart) by bilinear interpolation of the grid's sensitivity vectors, which
// share the reference coil's phase, scaled back to unit length.
void interpolate_between_grid_points(Complex* plane, Index nx, Index ny, Index coils, Index voxels)
{
    for (Index y = 0; y < ny; ++y) {
        const GridSpan gy = grid_span(y, ny);
        for (Index x = 0; x < nx; ++x) {
            if (x % grid_step == 0 && y % grid_step == 0) {
                continue;
            }
            const GridSpan gx = grid_span(x, nx);
            const Index corners[4] = {gx.lower + gy.lower * nx, gx.upper + gy.lower * nx, gx.lower + gy.upper * nx,
                                      gx.upper + gy.upper * nx};
            const float weights[4] = {(1.0f - gx.weight) * (1.0f - gy.weight), gx.weight * (1.0f - gy.weight),
                                      (1.0f - gx.weight) * gy.weight, gx.weight * gy.weight};
            Complex* target = plane + x + y * nx;
            float energy = 0.0f;
            for (Index c = 0; c < coils; ++c) {
                Complex value(0.0f, 0.0f);
                for (int k = 0; k < 4; ++k) {
                    value += weights[k] * plane[c * voxels + corners[k]];
                }
                target[c * voxels] = value;
                energy += std::norm(value);
            }
            const float length = std::sqrt(energy);
            for (Index c = 0; c < coils; ++c) {
                target[c * voxels] = length > 0.0f ? target[c * voxels] / length : Complex(0.0f, 0.0f);
            }
        }
    }
}

}  // namespace

std::vector<Complex> estimate_coil_sensitivities(const Complex* lowres, const ReconShape& shape, int threads)
{
    const Index coils = shape.coils;
    const Index voxels = shape.voxels();
    const Index nx = shape.n[0];
    const Index ny = shape.n[1];
    const Index hy = std::min(half_width, (ny - 1) / 2);
    std::vector<Complex> sensitivities(static_cast<std::size_t>(shape.samples()));

    for (Index v = 0; v < shape.volumes; ++v) {
        const Complex* volume = lowres + v * shape.volume_stride();
        Complex* out = sensitivities.data() + v * shape.volume_stride();
        const Index reference = reference_coil(volume, voxels, coils, v, shape.volumes);
        // Planes z are independent; plane z goes to thread z mod threads.
        run_on_threads(threads, [&](int thread) {
            // One row covariance per row of the y neighbourhood, reused as y advances.
            std::vector<RowCovariance> rows(static_cast<std::size_t>(2 * hy + 1), RowCovariance(coils, nx));
            std::vector<Complex> r(static_cast<std::size_t>(coils * coils));
            std::vector<Complex> vector(static_cast<std::size_t>(coils));
            std::vector<Complex> next(static_cast<std::size_t>(coils));
            const auto slot = [&](Index y) -> RowCovariance& { return rows[static_cast<std::size_t>(y % (2 * hy + 1))]; };
            for (Index z = thread; z < shape.n[2]; z += threads) {
                const Complex* plane = volume + z * nx * ny;
                const auto row_start = [&](Index y) { return plane + ((y + ny) % ny) * nx; };
                for (Index y = -hy; y < hy; ++y) {
                    slot(y + ny).compute(row_start(y), voxels);
                }
                for (Index y = 0; y < ny; ++y) {
                    slot(y + hy + ny).compute(row_start(y + hy), voxels);
                    if (y % grid_step != 0) {
                        continue;
                    }
                    for (Index x = 0; x < nx; x += grid_step) {
                        // Neighbourhood covariance: the upper triangle summed over the rows, then mirrored.
                        std::fill(r.begin(), r.end(), Complex(0.0f, 0.0f));
                        for (Index dy = -hy; dy <= hy; ++dy) {
                            const Complex* sum = slot(y + dy + ny).at(x);
                            Index q = 0;
                            for (Index j = 0; j < coils; ++j) {
                                for (Index i = 0; i <= j; ++i) {
                                    r[static_cast<std::size_t>(i + j * coils)] += sum[q++];
                                }
                            }
                        }
                        for (Index j = 0; j < coils; ++j) {
                            for (Index i = j + 1; i < coils; ++i) {
                                r[static_cast<std::size_t>(i + j * coils)] = std::conj(r[static_cast<std::size_t>(j + i * coils)]);
                            }
                        }
                        const Index s = x + y * nx + z * nx * ny;
                        for (Index c = 0; c < coils; ++c) {
                            vector[static_cast<std::size_t>(c)] = volume[c * voxels + s];
                        }
                        const bool found = dominant_eigenvector(r, coils, vector, next);
                        const Complex ref = vector[static_cast<std::size_t>(reference)];
                        const float ref_magnitude = std::abs(ref);
                        const Complex rotation =
                            ref_magnitude > 0.0f ? std::conj(ref) / ref_magnitude : Complex(1.0f, 0.0f);
                        for (Index c = 0; c < coils; ++c) {
                            out[c * voxels + s] =
                                found ? vector[static_cast<std::size_t>(c)] * rotation : Complex(0.0f, 0.0f);
                        }
                    }
                }
                interpolate_between_grid_points(out + z * nx * ny, nx, ny, coils, voxels);
            }
        });
    }
    return sensitivities;
}
