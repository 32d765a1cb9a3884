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

// Coil c's energy is summed on thread c mod threads.
Index reference_coil(const Complex* volume, Index voxels, Index coils, Index volume_index, Index volumes, int threads)
{
    std::vector<double> energies(static_cast<std::size_t>(coils));
    run_on_threads(threads, [&](int thread) {
        for (Index c = thread; c < coils; c += threads) {
            double energy = 0.0;
            for (Index s = 0; s < voxels; ++s) {
                energy += std::norm(volume[c * voxels + s]);
            }
            energies[static_cast<std::size_t>(c)] = energy;
        }
    });
    Index reference = 0;
    double largest = -1.0;
    for (Index c = 0; c < coils; ++c) {
        const double energy = energies[static_cast<std::size_t>(c)];
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
// vectors l at x - h .. x + h (periodic), j outer, i inner. Here and below,
// real and imaginary parts lie in planes of their own with the grid points of
// a row fastest: the loops run over those points and vectorise (complex
// products written out, as std::complex's check for NaN keeps them from
// it), and every value is summed in the same order as one point at a time.
class RowCovariance {
public:
    RowCovariance(Index coils, Index nx)
        : coils_(coils), pairs_(coils * (coils + 1) / 2), nx_(nx), h_(std::min(half_width, (nx - 1) / 2)),
          points_((nx + grid_step - 1) / grid_step), padded_(nx + 2 * h_),
          re_(static_cast<std::size_t>(pairs_ * points_)), im_(static_cast<std::size_t>(pairs_ * points_))
    {
    }

    Index points() const { return points_; }
    const float* re(Index pair) const { return re_.data() + pair * points_; }
    const float* im(Index pair) const { return im_.data() + pair * points_; }

    // `row` points at x = 0 of the row in coil 0; coils are `voxels` apart.
    // `scratch`: at least (2 * coils + 2) * (nx + 4) floats.
    void compute(const Complex* row, Index voxels, float* scratch)
    {
        // The row of every coil over x - h .. nx - 1 + h, wrapped around.
        float* row_re = scratch;
        float* row_im = row_re + coils_ * padded_;
        float* product_re = row_im + coils_ * padded_;
        float* product_im = product_re + padded_;
        for (Index c = 0; c < coils_; ++c) {
            const Complex* coil = row + c * voxels;
            float* re = row_re + c * padded_ + h_;
            float* im = row_im + c * padded_ + h_;
            for (Index x = 0; x < nx_; ++x) {
                re[x] = coil[x].real();
                im[x] = coil[x].imag();
            }
            for (Index x = 1; x <= h_; ++x) {
                re[-x] = re[nx_ - x];
                im[-x] = im[nx_ - x];
                re[nx_ - 1 + x] = re[x - 1];
                im[nx_ - 1 + x] = im[x - 1];
            }
        }
        Index q = 0;
        for (Index j = 0; j < coils_; ++j) {
            const float* jr = row_re + j * padded_;
            const float* ji = row_im + j * padded_;
            for (Index i = 0; i <= j; ++i, ++q) {
                const float* ir = row_re + i * padded_;
                const float* ii = row_im + i * padded_;
                for (Index x = 0; x < padded_; ++x) {
                    product_re[x] = ir[x] * jr[x] + ii[x] * ji[x];
                    product_im[x] = ii[x] * jr[x] - ir[x] * ji[x];
                }
                float* sum_re = re_.data() + q * points_;
                float* sum_im = im_.data() + q * points_;
                std::fill(sum_re, sum_re + points_, 0.0f);
                std::fill(sum_im, sum_im + points_, 0.0f);
                for (Index d = 0; d <= 2 * h_; ++d) {  // x + d - h, d ascending
                    for (Index g = 0; g < points_; ++g) {
                        sum_re[g] += product_re[grid_step * g + d];
                        sum_im[g] += product_im[grid_step * g + d];
                    }
                }
            }
        }
    }

private:
    Index coils_;
    Index pairs_;
    Index nx_;
    Index h_;
    Index points_;
    Index padded_;
    std::vector<float> re_;
    std::vector<float> im_;
};

// The sensitivity vectors of the grid points of one grid row: the
// neighbourhood covariance R of each, its dominant eigenvector by power
// iteration from the point's own coil vector, scaled to unit length and
// rotated so that the reference coil is real and non-negative; 0 where
// R * vector = 0.
class GridRowEigenvectors {
public:
    GridRowEigenvectors(Index coils, Index points)
        : coils_(coils), points_(points), r_re_(plane(coils * coils)), r_im_(plane(coils * coils)),
          v_re_(plane(coils)), v_im_(plane(coils)), next_re_(plane(coils)), next_im_(plane(coils)),
          length_(plane(1)), found_(static_cast<std::size_t>(points))
    {
    }

    // `rows`: the row covariances of y - h .. y + h in order; `start`: the
    // row's x = 0 in coil 0 of the images and of `out` (coils `voxels` apart).
    void compute(const std::vector<const RowCovariance*>& rows, const Complex* start, Index voxels, Index reference,
                 Complex* out)
    {
        // The upper triangle summed over the rows, then mirrored.
        Index q = 0;
        for (Index j = 0; j < coils_; ++j) {
            for (Index i = 0; i <= j; ++i, ++q) {
                float* rr = r_re_.data() + (i + j * coils_) * points_;
                float* ri = r_im_.data() + (i + j * coils_) * points_;
                std::fill(rr, rr + points_, 0.0f);
                std::fill(ri, ri + points_, 0.0f);
                for (const RowCovariance* row : rows) {
                    const float* sr = row->re(q);
                    const float* si = row->im(q);
                    for (Index g = 0; g < points_; ++g) {
                        rr[g] += sr[g];
                        ri[g] += si[g];
                    }
                }
            }
        }
        for (Index j = 0; j < coils_; ++j) {
            for (Index i = j + 1; i < coils_; ++i) {
                const float* ur = r_re_.data() + (j + i * coils_) * points_;
                const float* ui = r_im_.data() + (j + i * coils_) * points_;
                float* lr = r_re_.data() + (i + j * coils_) * points_;
                float* li = r_im_.data() + (i + j * coils_) * points_;
                for (Index g = 0; g < points_; ++g) {
                    lr[g] = ur[g];
                    li[g] = -ui[g];
                }
            }
        }
        for (Index c = 0; c < coils_; ++c) {
            for (Index g = 0; g < points_; ++g) {
                const Complex value = start[c * voxels + grid_step * g];
                v_re_[c * points_ + g] = value.real();
                v_im_[c * points_ + g] = value.imag();
            }
        }
        std::fill(found_.begin(), found_.end(), 1);
        for (int iteration = 0; iteration < power_iterations; ++iteration) {
            iterate();
        }
        for (Index g = 0; g < points_; ++g) {
            const Complex ref(v_re_[reference * points_ + g], v_im_[reference * points_ + g]);
            const float magnitude = std::abs(ref);
            const Complex rotation = magnitude > 0.0f ? Complex(ref.real() / magnitude, -ref.imag() / magnitude)
                                                      : Complex(1.0f, 0.0f);
            for (Index c = 0; c < coils_; ++c) {
                out[c * voxels + grid_step * g] =
                    found_[g] ? Complex(v_re_[c * points_ + g], v_im_[c * points_ + g]) * rotation : Complex(0.0f, 0.0f);
            }
        }
    }

private:
    std::vector<float> plane(Index count) const { return std::vector<float>(static_cast<std::size_t>(count * points_)); }

    // vector <- R * vector / |R * vector|; a point whose product is 0 is not found.
    void iterate()
    {
        std::fill(next_re_.begin(), next_re_.end(), 0.0f);
        std::fill(next_im_.begin(), next_im_.end(), 0.0f);
        for (Index j = 0; j < coils_; ++j) {
            const float* br = v_re_.data() + j * points_;
            const float* bi = v_im_.data() + j * points_;
            for (Index i = 0; i < coils_; ++i) {
                const float* ar = r_re_.data() + (i + j * coils_) * points_;
                const float* ai = r_im_.data() + (i + j * coils_) * points_;
                float* nr = next_re_.data() + i * points_;
                float* ni = next_im_.data() + i * points_;
                for (Index g = 0; g < points_; ++g) {
                    nr[g] += ar[g] * br[g] - ai[g] * bi[g];
                    ni[g] += ar[g] * bi[g] + ai[g] * br[g];
                }
            }
        }
        std::fill(length_.begin(), length_.end(), 0.0f);
        for (Index c = 0; c < coils_; ++c) {
            const float* nr = next_re_.data() + c * points_;
            const float* ni = next_im_.data() + c * points_;
            for (Index g = 0; g < points_; ++g) {
                length_[g] += nr[g] * nr[g] + ni[g] * ni[g];
            }
        }
        for (Index g = 0; g < points_; ++g) {
            length_[g] = std::sqrt(length_[g]);
            found_[g] = found_[g] && length_[g] > 0.0f;
        }
        for (Index c = 0; c < coils_; ++c) {
            for (Index g = 0; g < points_; ++g) {
                v_re_[c * points_ + g] = next_re_[c * points_ + g] / length_[g];
                v_im_[c * points_ + g] = next_im_[c * points_ + g] / length_[g];
            }
        }
    }

    Index coils_;
    Index points_;
    std::vector<float> r_re_, r_im_;  // coils x coils, column-major, per point
    std::vector<float> v_re_, v_im_, next_re_, next_im_;
    std::vector<float> length_;
    std::vector<unsigned char> found_;
};

// Fills the voxels between the grid points of one plane (coils `voxels`
// apart) by bilinear interpolation of the grid's sensitivity vectors, which
// share the reference coil's phase, scaled back to unit length. A row at a
// time, each coil's run in turn (the coils lie whole images apart), the
// even x (on grid columns) apart from the odd: each then takes its corners
// from the grid columns k and k + 1 (the last wraps to 0), so the loops
// vectorise.
class GridInterpolation {
public:
    GridInterpolation(Index nx, Index coils)
        : nx_(nx), coils_(coils), even_((nx + 1) / 2), odd_(nx / 2), corners_(4 * (even_ + 1)),
          value_re_(static_cast<std::size_t>(nx * coils)), value_im_(static_cast<std::size_t>(nx * coils)),
          length_(static_cast<std::size_t>(nx))
    {
        // The weight of the upper corner of x = 2k (0) and 2k + 1 (1/2).
        for (Index x = 0; x < nx; ++x) {
            upper_weight_.push_back(grid_span(x, nx).weight);
        }
    }

    void fill(Complex* plane, Index ny, Index voxels)
    {
        for (Index y = 0; y < ny; ++y) {
            const GridSpan gy = grid_span(y, ny);
            const bool grid_row = y % grid_step == 0;
            std::fill(length_.begin(), length_.end(), 0.0f);
            for (Index c = 0; c < coils_; ++c) {
                load_corners(plane + c * voxels + gy.lower * nx_, plane + c * voxels + gy.upper * nx_);
                if (!grid_row) {
                    interpolate(0, even_, gy.weight, c);
                }
                interpolate(1, odd_, gy.weight, c);
            }
            for (float& length : length_) {
                length = std::sqrt(length);
            }
            for (Index c = 0; c < coils_; ++c) {
                float* value_re = value_re_.data() + c * nx_;
                float* value_im = value_im_.data() + c * nx_;
                for (Index i = 0; i < nx_; ++i) {
                    // Divided by 1 where dropped, so the division vectorises.
                    const float length = length_[static_cast<std::size_t>(i)];
                    const bool kept = length > 0.0f;
                    const float divisor = kept ? length : 1.0f;
                    value_re[i] = kept ? value_re[i] / divisor : 0.0f;
                    value_im[i] = kept ? value_im[i] / divisor : 0.0f;
                }
                Complex* target = plane + c * voxels + y * nx_;
                for (Index k = grid_row ? even_ : 0; k < nx_; ++k) {
                    const Index x = k < even_ ? grid_step * k : grid_step * (k - even_) + 1;
                    target[x] = Complex(value_re[k], value_im[k]);
                }
            }
        }
    }

private:
    // The grid columns of the lower and upper row, real and imaginary parts
    // apart, column `even_` repeating column 0.
    void load_corners(const Complex* lower, const Complex* upper)
    {
        float* lower_re = corners_.data();
        float* lower_im = lower_re + (even_ + 1);
        float* upper_re = lower_im + (even_ + 1);
        float* upper_im = upper_re + (even_ + 1);
        for (Index k = 0; k <= even_; ++k) {
            const Index x = k < even_ ? grid_step * k : 0;
            lower_re[k] = lower[x].real();
            lower_im[k] = lower[x].imag();
            upper_re[k] = upper[x].real();
            upper_im[k] = upper[x].imag();
        }
    }

    // x = 2k + parity for k < count, into slots parity * even_ + k.
    void interpolate(Index parity, Index count, float above, Index c)
    {
        const float* lower_re = corners_.data();
        const float* lower_im = lower_re + (even_ + 1);
        const float* upper_re = lower_im + (even_ + 1);
        const float* upper_im = upper_re + (even_ + 1);
        const float below = 1.0f - above;
        const Index slot = parity * even_;
        float* value_re = value_re_.data() + c * nx_ + slot;
        float* value_im = value_im_.data() + c * nx_ + slot;
        float* length = length_.data() + slot;
        for (Index k = 0; k < count; ++k) {
            const float wb = upper_weight_[static_cast<std::size_t>(grid_step * k + parity)], wa = 1.0f - wb;
            const float w0 = wa * below, w1 = wb * below, w2 = wa * above, w3 = wb * above;
            float re = 0.0f, im = 0.0f;
            re += w0 * lower_re[k];
            im += w0 * lower_im[k];
            re += w1 * lower_re[k + 1];
            im += w1 * lower_im[k + 1];
            re += w2 * upper_re[k];
            im += w2 * upper_im[k];
            re += w3 * upper_re[k + 1];
            im += w3 * upper_im[k + 1];
            value_re[k] = re;
            value_im[k] = im;
            length[k] += re * re + im * im;
        }
    }

    Index nx_;
    Index coils_;
    Index even_;  // x = 0, 2, 4, ...
    Index odd_;   // x = 1, 3, 5, ...
    std::vector<float> upper_weight_;
    std::vector<float> corners_;
    std::vector<float> value_re_, value_im_;  // per coil: the even x, then the odd
    std::vector<float> length_;
};

}  // namespace

void estimate_coil_sensitivities(const Complex* lowres, const ReconShape& shape, Complex* sensitivities, int threads)
{
    const Index coils = shape.coils;
    const Index voxels = shape.voxels();
    const Index nx = shape.n[0];
    const Index ny = shape.n[1];
    const Index hy = std::min(half_width, (ny - 1) / 2);

    for (Index v = 0; v < shape.volumes; ++v) {
        const Complex* volume = lowres + v * shape.volume_stride();
        Complex* out = sensitivities + v * shape.volume_stride();
        const Index reference = reference_coil(volume, voxels, coils, v, shape.volumes, threads);
        // Planes z are independent; plane z goes to thread z mod threads.
        run_on_threads(threads, [&](int thread) {
            // One row covariance per row of the y neighbourhood, reused as y advances.
            std::vector<RowCovariance> rows(static_cast<std::size_t>(2 * hy + 1), RowCovariance(coils, nx));
            std::vector<float> scratch(static_cast<std::size_t>((2 * coils + 2) * (nx + 2 * half_width)));
            GridRowEigenvectors eigenvectors(coils, rows[0].points());
            GridInterpolation interpolation(nx, coils);
            std::vector<const RowCovariance*> neighbourhood(rows.size());
            const auto slot = [&](Index y) -> RowCovariance& { return rows[static_cast<std::size_t>(y % (2 * hy + 1))]; };
            for (Index z = thread; z < shape.n[2]; z += threads) {
                const Complex* plane = volume + z * nx * ny;
                const auto row_start = [&](Index y) { return plane + ((y + ny) % ny) * nx; };
                for (Index y = -hy; y < hy; ++y) {
                    slot(y + ny).compute(row_start(y), voxels, scratch.data());
                }
                for (Index y = 0; y < ny; ++y) {
                    slot(y + hy + ny).compute(row_start(y + hy), voxels, scratch.data());
                    if (y % grid_step != 0) {
                        continue;
                    }
                    for (Index dy = -hy; dy <= hy; ++dy) {
                        neighbourhood[static_cast<std::size_t>(dy + hy)] = &slot(y + dy + ny);
                    }
                    eigenvectors.compute(neighbourhood, row_start(y), voxels, reference, out + z * nx * ny + y * nx);
                }
                interpolation.fill(out + z * nx * ny, ny, voxels);
            }
        });
    }
}
