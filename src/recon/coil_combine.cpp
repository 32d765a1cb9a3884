#include "recon/coil_combine.hpp"

#include <algorithm>
#include <cmath>

#include "recon/worker_threads.hpp"

void combine_coils_adaptive(const std::complex<float>* images, const std::complex<float>* sensitivities,
                            const ReconShape& shape, std::complex<float>* combined, int threads)
{
    const Index voxels = shape.voxels();
    const Index chunk = (voxels + threads - 1) / threads;
    for (Index v = 0; v < shape.volumes; ++v) {
        const std::complex<float>* x = images + v * shape.volume_stride();
        const std::complex<float>* s = sensitivities + v * shape.volume_stride();
        std::complex<float>* out = combined + v * voxels;
        run_on_threads(threads, [&](int thread) {
            for (Index i = thread * chunk; i < std::min(voxels, (thread + 1) * chunk); ++i) {
                std::complex<float> sum(0.0f, 0.0f);
                float weight = 0.0f;
                for (Index c = 0; c < shape.coils; ++c) {
                    const std::complex<float> sc = s[c * voxels + i];
                    const std::complex<float> xc = x[c * voxels + i];
                    // conj(sc) * xc written out: std::complex's operator* checks for NaN and does not vectorise.
                    sum += std::complex<float>(sc.real() * xc.real() + sc.imag() * xc.imag(),
                                               sc.real() * xc.imag() - sc.imag() * xc.real());
                    weight += std::norm(sc);
                }
                out[i] = weight > 0.0f ? sum / weight : std::complex<float>(0.0f, 0.0f);
            }
        });
    }
}

void combine_coils_rss(const std::complex<float>* images, const ReconShape& shape, float* combined)
{
    const Index voxels = shape.voxels();
    for (Index v = 0; v < shape.volumes; ++v) {
        const std::complex<float>* x = images + v * shape.volume_stride();
        float* out = combined + v * voxels;
        for (Index i = 0; i < voxels; ++i) {
            float sum = 0.0f;
            for (Index c = 0; c < shape.coils; ++c) {
                sum += std::norm(x[c * voxels + i]);
            }
            out[i] = std::sqrt(sum);
        }
    }
}
