#include "recon/noise_estimate.hpp"

#include "recon/power_of_two.hpp"
#include "recon/worker_threads.hpp"

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr Index pooled_samples = Index{1} << 18;
// A lattice of fewer samples (axes of prime lengths) leaves the image unfolded.
constexpr Index least_folded_samples = Index{1} << 16;

double sin_squared(double angle)
{
    const double s = std::sin(angle);
    return s * s;
}

std::vector<double> axis_weights(Index n, const std::optional<KRange>& range, KSpaceOrder order)
{
    std::vector<double> weights(static_cast<std::size_t>(n), 1.0);
    if (n == 1) {
        return weights;
    }
    for (Index i = 0; i < n; ++i) {
        const Index k = k_of_index(i, n, order);
        double w = sin_squared(pi * static_cast<double>(k) / static_cast<double>(n));
        if (range) {
            const double length = static_cast<double>(range->last - range->first + 1);
            w = k_is_sampled(k, range)
                    ? w * sin_squared(pi * (static_cast<double>(k - range->first) + 0.5) / length)
                    : 0.0;
        }
        weights[static_cast<std::size_t>(i)] = w;
    }
    return weights;
}

// The weighted k-space of one coil (sizes n) summed into m[a] bins along
// every axis a, index i into bin i mod m[a]: the unnormalised inverse DFT of
// the bins is the image of the whole k-space at every (n[a] / m[a])-th
// sample, in either k-space order.
void fold_weighted(const Complex* coil, int exponent, const HighpassWeights& weights,
                   const std::array<Index, 3>& n, const std::array<Index, 3>& m, Complex* folded)
{
    std::fill(folded, folded + m[0] * m[1] * m[2], Complex(0.0f, 0.0f));
    std::vector<Complex> unit_row(static_cast<std::size_t>(n[0]));
    std::vector<float> weight_row(static_cast<std::size_t>(n[0]));
    std::size_t s = 0;
    for (Index z = 0; z < n[2]; ++z) {
        for (Index y = 0; y < n[1]; ++y, s += n[0]) {
            Complex* row = folded + ((z % m[2]) * m[1] + y % m[1]) * m[0];
            copy_times_power_of_two(coil + s, n[0], -exponent, unit_row.data());
            weights.row(y, z, weight_row.data());
            const Complex* k = unit_row.data();
            const float* w = weight_row.data();
            for (Index x0 = 0; x0 < n[0]; x0 += m[0]) {
                for (Index x = 0; x < m[0]; ++x, ++w, ++k) {
                    row[x] += *w * *k;
                }
            }
        }
    }
}

}  // namespace

HighpassWeights noise_highpass_weights(const std::array<Index, 3>& n, const SampledRanges& ranges, KSpaceOrder order)
{
    HighpassWeights weights;
    for (int axis = 0; axis < 3; ++axis) {
        weights.axis[axis] = axis_weights(n[axis], ranges[axis], order);
    }
    return weights;
}

void HighpassWeights::row(Index y, Index z, float* out) const
{
    const double wy = axis[1][static_cast<std::size_t>(y)], wz = axis[2][static_cast<std::size_t>(z)];
    for (std::size_t x = 0; x < axis[0].size(); ++x) {
        out[x] = static_cast<float>(axis[0][x] * wy * wz);
    }
}

double HighpassWeights::energy() const
{
    std::vector<float> w(axis[0].size());
    double sum = 0.0;
    for (std::size_t z = 0; z < axis[2].size(); ++z) {
        for (std::size_t y = 0; y < axis[1].size(); ++y) {
            row(static_cast<Index>(y), static_cast<Index>(z), w.data());
            for (float v : w) {
                sum += static_cast<double>(v) * static_cast<double>(v);
            }
        }
    }
    return sum;
}

float noise_power_from_highpass(std::vector<float>& squared_magnitudes, double weight_energy)
{
    if (squared_magnitudes.empty() || !(weight_energy > 0.0)) {
        return 0.0f;
    }
    auto middle = squared_magnitudes.begin() + static_cast<std::ptrdiff_t>(squared_magnitudes.size() / 2);
    std::nth_element(squared_magnitudes.begin(), middle, squared_magnitudes.end());
    double v = static_cast<double>(*middle) / std::log(2.0);
    for (int iteration = 0; iteration < 20 && v > 0.0; ++iteration) {
        const double limit = 2.0 * v;
        double sum = 0.0;
        std::size_t count = 0;
        for (float p : squared_magnitudes) {
            if (p < limit) {
                sum += p;
                ++count;
            }
        }
        if (count == 0) {
            break;
        }
        const double tail = std::exp(-limit / v);
        const double refined = sum / static_cast<double>(count) + limit * tail / (1.0 - tail);
        const bool settled = std::abs(refined - v) <= 1e-6 * v;
        v = refined;
        if (settled) {
            break;
        }
    }
    return static_cast<float>(v / weight_energy);
}

std::array<Index, 3> folded_sizes(const std::array<Index, 3>& n)
{
    std::array<std::vector<Index>, 3> divisors;
    for (int axis = 0; axis < 3; ++axis) {
        for (Index d = 1; d <= n[axis]; ++d) {
            if (n[axis] % d == 0) {
                divisors[axis].push_back(d);
            }
        }
    }
    std::array<Index, 3> best = n;
    Index best_samples = 0, best_spacing = 0;
    for (Index dx : divisors[0]) {
        for (Index dy : divisors[1]) {
            for (Index dz : divisors[2]) {
                const Index samples = (n[0] / dx) * (n[1] / dy) * (n[2] / dz);
                const Index spacing = std::max({dx, dy, dz});
                if (samples <= pooled_samples &&
                    (samples > best_samples || (samples == best_samples && spacing < best_spacing))) {
                    best = {n[0] / dx, n[1] / dy, n[2] / dz};
                    best_samples = samples;
                    best_spacing = spacing;
                }
            }
        }
    }
    return best_samples >= least_folded_samples ? best : n;
}

std::vector<float> estimate_noise_powers(const std::complex<float>* kspace, int exponent, const ReconShape& shape,
                                         const SampledRanges& ranges, KSpaceOrder order,
                                         const VolumeTransform& transform, int threads)
{
    const HighpassWeights weights = noise_highpass_weights(shape.n, ranges, order);
    const double weight_energy = weights.energy();
    const std::array<Index, 3> m = folded_sizes(shape.n);
    // Planned here, before the workers start (FFTW's planner is not thread-safe).
    const std::unique_ptr<VolumeTransform> folded_transform(m == shape.n ? nullptr : new VolumeTransform(m));
    const VolumeTransform& image_transform = folded_transform ? *folded_transform : transform;
    const Index image_samples = m[0] * m[1] * m[2];
    // Left unfolded, a large image is thinned to at most 2^18 samples by a
    // stride over its samples.
    const Index stride = (image_samples + pooled_samples - 1) / pooled_samples;
    std::vector<float> powers(static_cast<std::size_t>(shape.coils * shape.volumes));
    run_on_threads(threads, [&](int thread) {
        ComplexBuffer samples(image_samples);
        std::vector<float> squared(static_cast<std::size_t>((image_samples + stride - 1) / stride));
        for (Index j = thread; j < shape.coils * shape.volumes; j += threads) {
            fold_weighted(kspace + j * shape.voxels(), exponent, weights, shape.n, m, samples.data());
            image_transform.inverse(samples.data());
            for (Index s = 0; s < image_samples; s += stride) {
                squared[static_cast<std::size_t>(s / stride)] = std::norm(samples[s]);
            }
            powers[static_cast<std::size_t>(j)] = noise_power_from_highpass(squared, weight_energy);
        }
    });
    return powers;
}
