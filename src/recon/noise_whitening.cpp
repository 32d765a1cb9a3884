#include "recon/noise_whitening.hpp"

#include <algorithm>
#include <cmath>
#include <string>

#include "recon/recon_error.hpp"

namespace {

using ComplexD = std::complex<double>;

[[noreturn]] void refuse(const std::string& message)
{
    throw ReconError("homodyne:badInput", message);
}

}  // namespace

ScaledCovariance noise_covariance_from_scan(const std::complex<float>* scan, const ReconShape& scan_shape, Index coils)
{
    if (scan_shape.coils != coils) {
        refuse("The noise scan has " + std::to_string(scan_shape.coils) + " coils; the k-space has " +
               std::to_string(coils) + ".");
    }
    const Index voxels = scan_shape.voxels();
    const Index samples = voxels * scan_shape.volumes;
    if (samples == 0) {
        refuse("The noise scan holds no samples.");
    }
    std::vector<ComplexD> sum(static_cast<std::size_t>(coils * coils));
    for (Index v = 0; v < scan_shape.volumes; ++v) {
        const std::complex<float>* volume = scan + v * scan_shape.volume_stride();
        for (Index j = 0; j < coils; ++j) {
            for (Index i = j; i < coils; ++i) {
                const std::complex<float>* a = volume + i * voxels;
                const std::complex<float>* b = volume + j * voxels;
                ComplexD acc = 0.0;
                for (Index s = 0; s < voxels; ++s) {
                    acc += ComplexD(a[s]) * std::conj(ComplexD(b[s]));
                }
                sum[static_cast<std::size_t>(i + j * coils)] += acc;
            }
        }
    }
    double largest = 0.0;
    for (Index c = 0; c < coils; ++c) {
        largest = std::max(largest, sum[static_cast<std::size_t>(c + c * coils)].real() / static_cast<double>(samples));
    }
    ScaledCovariance covariance{CoilMatrix(static_cast<std::size_t>(coils * coils)), 0};
    if (largest > 0.0) {
        int e = 0;
        std::frexp(largest, &e);  // largest in [2^(e-1), 2^e)
        covariance.exponent = static_cast<int>(std::floor((e - 1) / 2.0));
    }
    for (Index j = 0; j < coils; ++j) {
        for (Index i = j; i < coils; ++i) {
            const ComplexD value = std::ldexp(1.0, -2 * covariance.exponent) * sum[static_cast<std::size_t>(i + j * coils)] /
                                   static_cast<double>(samples);
            covariance.matrix[static_cast<std::size_t>(i + j * coils)] = std::complex<float>(value);
            covariance.matrix[static_cast<std::size_t>(j + i * coils)] = std::complex<float>(std::conj(value));
        }
    }
    return covariance;
}

CoilMatrix noise_whitening_matrix(const std::complex<float>* covariance, Index rows, Index columns, Index coils,
                                  const std::string& name)
{
    if (rows != coils || columns != coils) {
        refuse(name + " must be " + std::to_string(coils) + "-by-" + std::to_string(coils) +
               " (one row and column per coil); it is " + std::to_string(rows) + "-by-" + std::to_string(columns) +
               ".");
    }
    const auto at = [&](Index i, Index j) { return ComplexD(covariance[i + j * coils]); };
    double largest = 0.0;
    for (Index j = 0; j < coils; ++j) {
        for (Index i = 0; i < coils; ++i) {
            if (!std::isfinite(at(i, j).real()) || !std::isfinite(at(i, j).imag())) {
                refuse(name + " must hold finite values.");
            }
        }
        largest = std::max(largest, std::abs(at(j, j)));
    }
    for (Index j = 0; j < coils; ++j) {
        for (Index i = j; i < coils; ++i) {
            if (std::abs(at(i, j) - std::conj(at(j, i))) > 1e-4 * largest) {
                refuse(name + " must be Hermitian (equal to its conjugate transpose).");
            }
        }
    }

    // Cholesky factor L (lower, column-major) from the lower triangle.
    std::vector<ComplexD> factor(static_cast<std::size_t>(coils * coils));
    const auto l = [&](Index i, Index j) -> ComplexD& { return factor[static_cast<std::size_t>(i + j * coils)]; };
    for (Index j = 0; j < coils; ++j) {
        double pivot = at(j, j).real();
        for (Index k = 0; k < j; ++k) {
            pivot -= std::norm(l(j, k));
        }
        if (!(pivot > 1e-7 * largest)) {
            refuse(name + " must be positive definite.");
        }
        l(j, j) = std::sqrt(pivot);
        for (Index i = j + 1; i < coils; ++i) {
            ComplexD value = at(i, j);
            for (Index k = 0; k < j; ++k) {
                value -= l(i, k) * std::conj(l(j, k));
            }
            l(i, j) = value / l(j, j);
        }
    }

    // W = inverse(L) by forward substitution, column by column of the identity.
    CoilMatrix whitening(static_cast<std::size_t>(coils * coils));
    for (Index c = 0; c < coils; ++c) {
        std::vector<ComplexD> column(static_cast<std::size_t>(coils));
        for (Index i = c; i < coils; ++i) {
            ComplexD value = i == c ? 1.0 : 0.0;
            for (Index k = c; k < i; ++k) {
                value -= l(i, k) * column[static_cast<std::size_t>(k)];
            }
            column[static_cast<std::size_t>(i)] = value / l(i, i);
            whitening[static_cast<std::size_t>(i + c * coils)] = std::complex<float>(column[static_cast<std::size_t>(i)]);
        }
    }
    return whitening;
}

void whiten_coils(std::complex<float>* data, const ReconShape& shape, const CoilMatrix& whitening)
{
    const Index coils = shape.coils;
    const Index voxels = shape.voxels();
    for (Index v = 0; v < shape.volumes; ++v) {
        std::complex<float>* volume = data + v * shape.volume_stride();
        for (Index i = coils - 1; i >= 0; --i) {
            std::complex<float>* target = volume + i * voxels;
            const std::complex<float> diagonal = whitening[static_cast<std::size_t>(i + i * coils)];
            for (Index s = 0; s < voxels; ++s) {
                target[s] = diagonal * target[s];
            }
            for (Index j = 0; j < i; ++j) {
                const std::complex<float> w = whitening[static_cast<std::size_t>(i + j * coils)];
                const std::complex<float>* source = volume + j * voxels;
                for (Index s = 0; s < voxels; ++s) {
                    target[s] += w * source[s];
                }
            }
        }
    }
}

std::vector<float> coil_noise_powers(const CoilMatrix& covariance, Index coils)
{
    std::vector<float> powers(static_cast<std::size_t>(coils));
    for (Index c = 0; c < coils; ++c) {
        powers[static_cast<std::size_t>(c)] = covariance[static_cast<std::size_t>(c + c * coils)].real();
    }
    return powers;
}
