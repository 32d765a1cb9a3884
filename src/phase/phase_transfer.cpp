#include "phase/phase_transfer.hpp"

#include <cmath>
#include <cstddef>
#include <memory>

#include "interpolation/interp3.hpp"
#include "interpolation/vector_manipulation.hpp"

namespace {

// Removes the phase of (a, b) from the n data samples starting at `offset`.
void combine(const ComplexPlanes& data, std::ptrdiff_t offset, std::ptrdiff_t n, const float* a_plane,
             const float* b_plane)
{
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        const float a = a_plane[i];
        const float b = b_plane != nullptr ? b_plane[i] : 0.0f;
        const float m = b_plane != nullptr ? std::sqrt(a * a + b * b) : std::sqrt(a * a);
        const float c = a / m;
        const float s = b_plane != nullptr ? (-b) / m : 0.0f;
        float& re = data.real(offset + i);
        re = c * re;
        if (data.is_complex()) {
            float& im = data.imag(offset + i);
            re = re - s * im;
            im = 0.0f;
        }
    }
}

}  // namespace

void AddLowResPhase(const ComplexPlanes& data, const DimensionList& data_dims, const float* low_re,
                    const float* low_im, const DimensionList& low_dims)
{
    const bool same_size = low_dims == data_dims;
    const std::uint32_t Dx = data_dims[0], Dy = data_dims[1], Dz = data_dims[2];
    const std::uint32_t Lx = low_dims[0], Ly = low_dims[1], Lz = low_dims[2];
    std::uint32_t volumes = 1;
    for (std::size_t d = 3; d < data_dims.size(); ++d) {
        volumes *= data_dims[d];
    }
    const std::ptrdiff_t data_volume = std::ptrdiff_t{Dx} * Dy * Dz;
    const std::ptrdiff_t low_volume = std::ptrdiff_t{Lx} * Ly * Lz;

    // Query grid in low-resolution index space, built once for all volumes.
    std::vector<float> X, Y, Z;
    std::unique_ptr<float[]> interpolated_re, interpolated_im;
    if (!same_size) {
        std::vector<float> y = VectorManipulation::linspace<float>(0.0f, static_cast<float>(static_cast<int>(Ly) - 1),
                                                                   static_cast<int>(Dy));
        std::vector<float> x = VectorManipulation::linspace<float>(0.0f, static_cast<float>(static_cast<int>(Lx) - 1),
                                                                   static_cast<int>(Dx));
        std::vector<float> z = VectorManipulation::linspace<float>(0.0f, static_cast<float>(static_cast<int>(Lz) - 1),
                                                                   static_cast<int>(Dz));
        VectorManipulation::ndgrid<float, float>(x, y, z, X, Y, Z);
        interpolated_re.reset(new float[static_cast<std::size_t>(data_volume)]);
        if (low_im != nullptr) {
            interpolated_im.reset(new float[static_cast<std::size_t>(data_volume)]);
        }
    }

    for (std::ptrdiff_t v = 0; v < static_cast<std::int32_t>(volumes); ++v) {
        const float* volume_re = low_re + v * low_volume;
        const float* volume_im = low_im != nullptr ? low_im + v * low_volume : nullptr;
        if (same_size) {
            combine(data, v * data_volume, data_volume, volume_re, volume_im);
            continue;
        }
        // The library's x runs along the second dimension and its y along the
        // first, hence the second-axis grid goes to xi and the first to yi.
        // The driver only reads `data`.
        const std::vector<unsigned int> grid_dims{Lx, Ly, Lz};
        const std::vector<unsigned int> query_dims{Dx, Dy, Dz};
        Interp3::interp3<float, float>(nullptr, nullptr, nullptr, const_cast<float*>(volume_re), grid_dims, Y.data(),
                                       X.data(), Z.data(), query_dims, Interp3::LINEAR, interpolated_re.get());
        if (volume_im != nullptr) {
            Interp3::interp3<float, float>(nullptr, nullptr, nullptr, const_cast<float*>(volume_im), grid_dims,
                                           Y.data(), X.data(), Z.data(), query_dims, Interp3::LINEAR,
                                           interpolated_im.get());
        }
        combine(data, v * data_volume, data_volume, interpolated_re.get(), interpolated_im.get());
    }
}
