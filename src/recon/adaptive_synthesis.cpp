#include "recon/adaptive_synthesis.hpp"

#include <algorithm>
#include <vector>

namespace {

constexpr Index half_width = 2;  // 5 samples per axis

// Periodic mean over 2 h + 1 neighbours along one axis, h = min(2, (n-1)/2).
void smooth_axis(std::vector<float>& values, const std::array<Index, 3>& n, int axis)
{
    const Index length = n[axis];
    const Index h = std::min(half_width, (length - 1) / 2);
    if (h == 0) {
        return;
    }
    const Index stride = axis == 0 ? 1 : axis == 1 ? n[0] : n[0] * n[1];
    const Index lines = n[0] * n[1] * n[2] / length;
    std::vector<float> line(static_cast<std::size_t>(length));
    const float scale = 1.0f / static_cast<float>(2 * h + 1);
    for (Index l = 0; l < lines; ++l) {
        // Start of line l: lines run over all indices except the smoothed axis.
        const Index start = (l % stride) + (l / stride) * stride * length;
        for (Index i = 0; i < length; ++i) {
            line[static_cast<std::size_t>(i)] = values[static_cast<std::size_t>(start + i * stride)];
        }
        for (Index i = 0; i < length; ++i) {
            float sum = 0.0f;
            for (Index d = -h; d <= h; ++d) {
                sum += line[static_cast<std::size_t>((i + d + length) % length)];
            }
            values[static_cast<std::size_t>(start + i * stride)] = sum * scale;
        }
    }
}

}  // namespace

SynthesisReport weight_synthesised_samples(std::complex<float>* kspace, const std::array<Index, 3>& n,
                                           const SampledRanges& ranges, float noise_power, KSpaceOrder order)
{
    SynthesisReport report;
    if (!(noise_power > 0.0f)) {
        return report;
    }
    const Index count = n[0] * n[1] * n[2];
    std::array<std::vector<Index>, 3> mirrored;
    std::array<std::vector<char>, 3> sampled;
    for (int axis = 0; axis < 3; ++axis) {
        for (Index i = 0; i < n[axis]; ++i) {
            mirrored[axis].push_back(mirrored_index(i, n[axis], order));
            sampled[axis].push_back(k_is_sampled(k_of_index(i, n[axis], order), ranges[axis]));
        }
    }

    std::vector<float> power(static_cast<std::size_t>(count));
    std::size_t s = 0;
    for (Index z = 0; z < n[2]; ++z) {
        for (Index y = 0; y < n[1]; ++y) {
            const Index partner_line = (mirrored[1][y] + mirrored[2][z] * n[1]) * n[0];
            for (Index x = 0; x < n[0]; ++x) {
                power[s++] = std::norm(kspace[partner_line + mirrored[0][x]]);
            }
        }
    }
    for (int axis = 0; axis < 3; ++axis) {
        smooth_axis(power, n, axis);
    }

    const float twice_noise = 2.0f * noise_power;
    double weights = 0.0;
    s = 0;
    for (Index z = 0; z < n[2]; ++z) {
        for (Index y = 0; y < n[1]; ++y) {
            const bool line_sampled = sampled[1][y] && sampled[2][z];
            for (Index x = 0; x < n[0]; ++x, ++s) {
                if (line_sampled && sampled[0][x]) {
                    continue;
                }
                const float p = power[s];
                const float weight = p > twice_noise ? 1.0f - twice_noise / p : 0.0f;
                kspace[s] = weight * kspace[s];
                weights += weight;
                report.removed += weight == 0.0f;
                ++report.synthesised;
            }
        }
    }
    report.mean_weight = report.synthesised > 0 ? weights / static_cast<double>(report.synthesised) : 1.0;
    return report;
}
