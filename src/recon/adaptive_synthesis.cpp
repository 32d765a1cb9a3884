#include "recon/adaptive_synthesis.hpp"

#include <algorithm>
#include <vector>

namespace {

constexpr Index half_width = 2;  // 5 samples per axis
constexpr Index max_strip_width = 1024;  // floats of a row smoothed along y or z at a time

// Periodic mean over 2 h + 1 neighbours along one axis, h = min(2, (n-1)/2),
// each sum taken from the lowest neighbour up. Along x a line is padded
// periodically; along y and z whole rows of the faster axes are added, so
// the inner loops run over contiguous memory.
void smooth_axis(std::vector<float>& values, const std::array<Index, 3>& n, int axis, std::vector<float>& scratch)
{
    const Index length = n[axis];
    const Index h = std::min(half_width, (length - 1) / 2);
    if (h == 0) {
        return;
    }
    const float scale = 1.0f / static_cast<float>(2 * h + 1);
    const Index row = axis == 0 ? 1 : axis == 1 ? n[0] : n[0] * n[1];  // stride of the axis
    const Index groups = n[0] * n[1] * n[2] / (length * row);
    float* v = values.data();
    if (axis == 0) {
        scratch.resize(static_cast<std::size_t>(length + 2 * h));
        float* padded = scratch.data();
        for (Index g = 0; g < groups; ++g, v += length) {
            std::copy(v + length - h, v + length, padded);
            std::copy(v, v + length, padded + h);
            std::copy(v, v + h, padded + h + length);
            for (Index i = 0; i < length; ++i) {
                float sum = 0.0f;
                for (Index d = 0; d <= 2 * h; ++d) {
                    sum += padded[i + d];
                }
                v[i] = sum * scale;
            }
        }
        return;
    }
    // A strip of `width` columns at a time, its rows copied out: the copy
    // stays small however large the rows are.
    const Index width = std::min(row, max_strip_width);
    scratch.resize(static_cast<std::size_t>(length * width));
    for (Index g = 0; g < groups; ++g, v += length * row) {
        for (Index x0 = 0; x0 < row; x0 += width) {
            const Index columns = std::min(width, row - x0);
            for (Index i = 0; i < length; ++i) {
                std::copy(v + i * row + x0, v + i * row + x0 + columns, scratch.begin() + i * columns);
            }
            for (Index i = 0; i < length; ++i) {
                float* out = v + i * row + x0;
                std::fill(out, out + columns, 0.0f);
                for (Index d = -h; d <= h; ++d) {
                    const float* in = scratch.data() + ((i + d + length) % length) * columns;
                    for (Index x = 0; x < columns; ++x) {
                        out[x] += in[x];
                    }
                }
                for (Index x = 0; x < columns; ++x) {
                    out[x] *= scale;
                }
            }
        }
    }
}

void smooth(std::vector<float>& values, const std::array<Index, 3>& n)
{
    std::vector<float> scratch;
    for (int axis = 0; axis < 3; ++axis) {
        smooth_axis(values, n, axis, scratch);
    }
}

// The Wiener-type weight max(0, 1 - noise / power).
inline float weight_of(float power, float noise)
{
    return power > noise ? 1.0f - noise / power : 0.0f;
}

}  // namespace

void weight_samples_by_snr(std::complex<float>* kspace, const std::array<Index, 3>& n, const SampledRanges& ranges,
                           float noise_power, PhaseConstraint form, KSpaceOrder order, SynthesisReport& report)
{
    report.synthesised = 0;
    report.mean_weight = 1.0;
    report.removed = 0;
    report.measured_weight = 1.0;
    if (!(noise_power > 0.0f)) {
        return;
    }
    std::array<std::vector<Index>, 3> mirrored;
    std::array<std::vector<char>, 3> sampled;
    for (int axis = 0; axis < 3; ++axis) {
        for (Index i = 0; i < n[axis]; ++i) {
            mirrored[axis].push_back(mirrored_index(i, n[axis], order));
            sampled[axis].push_back(k_is_sampled(k_of_index(i, n[axis], order), ranges[axis]));
        }
    }

    // power[s]: the smoothed power around the partner of sample s; around s
    // itself it is power[mirror(s)] (the box is symmetric and periodic).
    std::vector<float> power(static_cast<std::size_t>(n[0] * n[1] * n[2]));
    std::size_t s = 0;
    for (Index z = 0; z < n[2]; ++z) {
        for (Index y = 0; y < n[1]; ++y) {
            const Index partner_line = (mirrored[1][y] + mirrored[2][z] * n[1]) * n[0];
            for (Index x = 0; x < n[0]; ++x) {
                power[s++] = std::norm(kspace[partner_line + mirrored[0][x]]);
            }
        }
    }
    smooth(power, n);

    const float synthesis_noise = (form == PhaseConstraint::magnitude ? 1.0f : 2.0f) * noise_power;
    double synthesised_weights = 0.0, measured_weights = 0.0;
    Index measured = 0;
    s = 0;
    for (Index z = 0; z < n[2]; ++z) {
        for (Index y = 0; y < n[1]; ++y) {
            const bool line_sampled = sampled[1][y] && sampled[2][z];
            const bool partner_line_sampled = sampled[1][mirrored[1][y]] && sampled[2][mirrored[2][z]];
            const Index partner_line = (mirrored[1][y] + mirrored[2][z] * n[1]) * n[0];
            for (Index x = 0; x < n[0]; ++x, ++s) {
                float weight = 1.0f;
                if (line_sampled && sampled[0][x]) {
                    weight = weight_of(power[partner_line + mirrored[0][x]], noise_power);
                    measured_weights += weight;
                    ++measured;
                } else if (partner_line_sampled && sampled[0][mirrored[0][x]]) {
                    weight = weight_of(power[s], synthesis_noise);
                    synthesised_weights += weight;
                    report.removed += weight == 0.0f;
                    ++report.synthesised;
                }
                kspace[s] = weight * kspace[s];
            }
        }
    }
    if (report.synthesised > 0) {
        report.mean_weight = synthesised_weights / static_cast<double>(report.synthesised);
    }
    if (measured > 0) {
        report.measured_weight = measured_weights / static_cast<double>(measured);
    }
}

namespace {

// The quadrature weighting with the phase's unit values from phase_at(i).
template <typename PhaseAt>
double weight_quadrature_with(std::complex<float>* image, PhaseAt phase_at, const std::array<Index, 3>& n,
                              float component_power)
{
    const Index count = n[0] * n[1] * n[2];
    // x conj(e) = a + i b: a in phase with the estimate, b in quadrature.
    const auto quadrature = [](std::complex<float> x, std::complex<float> e) {
        return x.imag() * e.real() - x.real() * e.imag();
    };
    std::vector<float> power(static_cast<std::size_t>(count));
    for (Index i = 0; i < count; ++i) {
        const float b = quadrature(image[i], phase_at(i));
        power[i] = b * b;
    }
    smooth(power, n);
    double weights = 0.0;
    for (Index i = 0; i < count; ++i) {
        const std::complex<float> x = image[i], e = phase_at(i);
        const float w = weight_of(power[i], component_power);
        const float a = x.real() * e.real() + x.imag() * e.imag(), b = w * quadrature(x, e);
        image[i] = std::complex<float>(a * e.real() - b * e.imag(), a * e.imag() + b * e.real());
        weights += w;
    }
    return weights / static_cast<double>(count);
}

}  // namespace

void weight_quadrature(std::complex<float>* image, UnitPhase phase, const std::array<Index, 3>& n,
                       float component_power, SynthesisReport& report)
{
    report.quadrature_weight = 1.0;
    report.quadrature_weighted = component_power > 0.0f;
    if (!report.quadrature_weighted) {
        return;
    }
    report.quadrature_weight =
        phase.unit != nullptr
            ? weight_quadrature_with(image, [&](Index i) { return phase.unit[i]; }, n, component_power)
            : weight_quadrature_with(image, [&](Index i) { return std::polar(1.0f, phase.radians[i]); }, n,
                                     component_power);
}
