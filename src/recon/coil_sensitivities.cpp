#include "recon/coil_sensitivities.hpp"

#include <cmath>
#include <string>

#include "recon/recon_error.hpp"

namespace {

constexpr Index half_width = 2;  // 5 x 5 neighbourhood in x and y
constexpr int power_iterations = 12;

using Complex = std::complex<float>;

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

// Neighbourhood covariance of the coils at (x, y, z), upper triangle and
// diagonal filled, stored column-major in r.
void neighbourhood_covariance(const Complex* volume, const ReconShape& shape, Index x, Index y, Index z,
                              std::vector<Complex>& r)
{
    const Index coils = shape.coils;
    const Index voxels = shape.voxels();
    std::fill(r.begin(), r.end(), Complex(0.0f, 0.0f));
    const Index nx = shape.n[0];
    const Index ny = shape.n[1];
    const Index hx = std::min(half_width, (nx - 1) / 2);
    const Index hy = std::min(half_width, (ny - 1) / 2);
    for (Index dy = -hy; dy <= hy; ++dy) {
        const Index yy = (y + dy + ny) % ny;
        for (Index dx = -hx; dx <= hx; ++dx) {
            const Index xx = (x + dx + nx) % nx;
            const Complex* l = volume + xx + yy * nx + z * nx * ny;
            for (Index j = 0; j < coils; ++j) {
                const Complex lj = std::conj(l[j * voxels]);
                for (Index i = 0; i <= j; ++i) {
                    r[static_cast<std::size_t>(i + j * coils)] += l[i * voxels] * lj;
                }
            }
        }
    }
}

}  // namespace

std::vector<Complex> estimate_coil_sensitivities(const Complex* lowres, const ReconShape& shape)
{
    const Index coils = shape.coils;
    const Index voxels = shape.voxels();
    std::vector<Complex> sensitivities(static_cast<std::size_t>(shape.samples()));
    std::vector<Complex> r(static_cast<std::size_t>(coils * coils));
    std::vector<Complex> vector(static_cast<std::size_t>(coils));
    std::vector<Complex> next(static_cast<std::size_t>(coils));

    for (Index v = 0; v < shape.volumes; ++v) {
        const Complex* volume = lowres + v * shape.volume_stride();
        Complex* out = sensitivities.data() + v * shape.volume_stride();
        const Index reference = reference_coil(volume, voxels, coils, v, shape.volumes);
        for (Index z = 0; z < shape.n[2]; ++z) {
            for (Index y = 0; y < shape.n[1]; ++y) {
                for (Index x = 0; x < shape.n[0]; ++x) {
                    const Index s = x + y * shape.n[0] + z * shape.n[0] * shape.n[1];
                    neighbourhood_covariance(volume, shape, x, y, z, r);
                    for (Index c = 0; c < coils; ++c) {
                        vector[static_cast<std::size_t>(c)] = volume[c * voxels + s];
                    }
                    float length = 0.0f;
                    for (int iteration = 0; iteration < power_iterations; ++iteration) {
                        // next = R * vector, R Hermitian from its upper triangle.
                        for (Index i = 0; i < coils; ++i) {
                            Complex sum(0.0f, 0.0f);
                            for (Index j = 0; j < coils; ++j) {
                                const Complex rij = i <= j ? r[static_cast<std::size_t>(i + j * coils)]
                                                           : std::conj(r[static_cast<std::size_t>(j + i * coils)]);
                                sum += rij * vector[static_cast<std::size_t>(j)];
                            }
                            next[static_cast<std::size_t>(i)] = sum;
                        }
                        float energy = 0.0f;
                        for (const Complex& value : next) {
                            energy += std::norm(value);
                        }
                        length = std::sqrt(energy);
                        if (!(length > 0.0f)) {
                            break;
                        }
                        for (Index c = 0; c < coils; ++c) {
                            vector[static_cast<std::size_t>(c)] = next[static_cast<std::size_t>(c)] / length;
                        }
                    }
                    const Complex ref = vector[static_cast<std::size_t>(reference)];
                    const float ref_magnitude = std::abs(ref);
                    const Complex rotation =
                        ref_magnitude > 0.0f ? std::conj(ref) / ref_magnitude : Complex(1.0f, 0.0f);
                    for (Index c = 0; c < coils; ++c) {
                        out[c * voxels + s] =
                            length > 0.0f ? vector[static_cast<std::size_t>(c)] * rotation : Complex(0.0f, 0.0f);
                    }
                }
            }
        }
    }
    return sensitivities;
}
