#include "recon/phantom.hpp"

#include <cmath>

#include "recon/fft_order.hpp"
#include "recon/recon_error.hpp"
#include "recon/volume_transform.hpp"

namespace {

struct Ellipsoid {
    double centre[3];
    double semi_axes[3];
    double degrees;  // rotation about z
    float intensity;
};

// Intensities add up where ellipsoids overlap: skull 1, brain 0.25 inside it.
const Ellipsoid ellipsoids[] = {
    {{0.00, 0.00, 0.00}, {0.69, 0.92, 0.81}, 0, 1.00f},    // skull
    {{0.00, -0.02, 0.00}, {0.66, 0.87, 0.78}, 0, -0.75f},  // brain
    {{-0.22, 0.00, 0.00}, {0.41, 0.16, 0.21}, 108, -0.15f},  // ventricles
    {{0.22, 0.00, 0.00}, {0.31, 0.11, 0.22}, 72, -0.15f},
    {{0.00, 0.35, 0.00}, {0.21, 0.25, 0.41}, 0, 0.10f},
    {{0.00, 0.10, 0.00}, {0.05, 0.05, 0.05}, 0, 0.20f},  // small lesions
    {{-0.08, -0.60, 0.00}, {0.05, 0.03, 0.05}, 0, 0.20f},
    {{0.06, -0.60, 0.00}, {0.05, 0.03, 0.05}, 90, 0.20f},
    {{0.06, -0.11, 0.35}, {0.06, 0.04, 0.10}, 90, 0.10f},
    {{0.00, 0.10, 0.35}, {0.06, 0.06, 0.10}, 0, -0.10f},
};

// Position of index i on an axis of n samples, in [-1, 1) with 0 at floor(n/2).
double coordinate(Index i, Index n) { return static_cast<double>(i - n / 2) * (2.0 / static_cast<double>(n)); }

float magnitude_at(double x, double y, double z)
{
    float sum = 0.0f;
    for (const Ellipsoid& e : ellipsoids) {
        const double c = std::cos(e.degrees * M_PI / 180.0), s = std::sin(e.degrees * M_PI / 180.0);
        const double dx = x - e.centre[0], dy = y - e.centre[1];
        const double u = (dx * c + dy * s) / e.semi_axes[0];
        const double v = (dy * c - dx * s) / e.semi_axes[1];
        const double w = (z - e.centre[2]) / e.semi_axes[2];
        if (u * u + v * v + w * w <= 1.0) {
            sum += e.intensity;
        }
    }
    return sum;
}

// A linear ramp, a gentle quadratic term and a broad bump.
double phase_at(double x, double y, double z)
{
    const double bump = std::exp(-((x - 0.3) * (x - 0.3) + (y + 0.2) * (y + 0.2) + z * z) / 0.3);
    return 1.2 * x + 0.8 * y * y - 0.5 * z + 1.5 * bump;
}

}  // namespace

Phantom make_phantom(const std::array<Index, 3>& n)
{
    double samples = 1.0;
    for (const Index size : n) {
        if (size < 1) {
            throw ReconError("homodyne:badInput", "the phantom's sizes must be positive whole numbers.");
        }
        samples *= static_cast<double>(size);
    }
    if (samples >= 2147483648.0) {
        throw ReconError("homodyne:badInput", "the phantom's sizes give 2^31 or more samples.");
    }
    Phantom phantom;
    phantom.image.resize(static_cast<std::size_t>(samples));
    Index i = 0;
    for (Index z = 0; z < n[2]; ++z) {
        for (Index y = 0; y < n[1]; ++y) {
            for (Index x = 0; x < n[0]; ++x, ++i) {
                const double cx = coordinate(x, n[0]), cy = coordinate(y, n[1]), cz = coordinate(z, n[2]);
                const float angle = static_cast<float>(phase_at(cx, cy, cz));
                phantom.image[i] = magnitude_at(cx, cy, cz) * Complex(std::cos(angle), std::sin(angle));
            }
        }
    }
    // Centred DFT: to FFT order, FFTW's forward transform, back to centred order.
    ComplexBuffer buffer(phantom.image.size());
    to_fft_order(phantom.image.data(), n, buffer.data());
    VolumeTransform(n).forward(buffer.data());
    phantom.kspace.resize(phantom.image.size());
    to_centred(buffer.data(), n, 1.0f, phantom.kspace.data());
    return phantom;
}
