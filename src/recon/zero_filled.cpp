#include "recon/zero_filled.hpp"

#include <cmath>
#include <vector>

#include "recon/fft_order.hpp"

void zero_filled_images(const ReconShape& shape, const Complex* kspace, bool combined, float* image)
{
    const VolumeTransform transform(shape.n);
    ComplexBuffer work(shape.voxels());
    const Index voxels = shape.voxels();
    const float scale = 1.0f / static_cast<float>(voxels);
    std::vector<double> power(combined ? static_cast<std::size_t>(voxels) : 0);
    for (Index v = 0; v < shape.volumes; ++v) {
        std::fill(power.begin(), power.end(), 0.0);
        for (Index c = 0; c < shape.coils; ++c) {
            const Complex* k = kspace + (v * shape.coils + c) * voxels;
            to_fft_order(k, shape.n, work.data());
            transform.inverse(work.data());
            float* out = image + (combined ? v : v * shape.coils + c) * voxels;
            for_each_shift_run(shape.n, [&](Index fft, Index centred, Index count) {
                for (Index i = 0; i < count; ++i) {
                    const float magnitude = std::abs(work[fft + i]) * scale;
                    if (combined) {
                        power[centred + i] += static_cast<double>(magnitude) * magnitude;
                    } else {
                        out[centred + i] = magnitude;
                    }
                }
            });
        }
        if (combined) {
            float* out = image + v * voxels;
            for (Index i = 0; i < voxels; ++i) {
                out[i] = static_cast<float>(std::sqrt(power[i]));
            }
        }
    }
}
