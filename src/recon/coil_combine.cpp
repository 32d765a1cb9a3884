#include "recon/coil_combine.hpp"

#include <algorithm>
#include <cmath>

#include "recon/worker_threads.hpp"

namespace {

// Voxels combined at once: the coils are whole images apart, so a voxel at a
// time touches a page per coil; a block at a time streams each coil's run.
constexpr Index block_voxels = 1024;

}  // namespace

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
            float sum_re[block_voxels], sum_im[block_voxels], weight[block_voxels];
            const Index end = std::min(voxels, (thread + 1) * chunk);
            for (Index start = thread * chunk; start < end; start += block_voxels) {
                const Index count = std::min(block_voxels, end - start);
                std::fill(sum_re, sum_re + count, 0.0f);
                std::fill(sum_im, sum_im + count, 0.0f);
                std::fill(weight, weight + count, 0.0f);
                for (Index c = 0; c < shape.coils; ++c) {
                    const float* sc = reinterpret_cast<const float*>(s + c * voxels + start);
                    const float* xc = reinterpret_cast<const float*>(x + c * voxels + start);
                    // conj(s) * x and |s|^2 written out: std::complex's operator* checks for NaN and does not vectorise.
                    for (Index i = 0; i < count; ++i) {
                        const float sr = sc[2 * i], si = sc[2 * i + 1], xr = xc[2 * i], xi = xc[2 * i + 1];
                        sum_re[i] += sr * xr + si * xi;
                        sum_im[i] += sr * xi - si * xr;
                        weight[i] += sr * sr + si * si;
                    }
                }
                for (Index i = 0; i < count; ++i) {
                    out[start + i] = weight[i] > 0.0f ? std::complex<float>(sum_re[i] / weight[i], sum_im[i] / weight[i])
                                                      : std::complex<float>(0.0f, 0.0f);
                }
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
