#include "recon/image_synthesis.hpp"

#include <cmath>

#include "recon/fft_order.hpp"

SynthesisReport noise_adaptive_step(const VolumeTransform& transform, Complex* image, UnitPhase phase,
                                    const SampledRanges& ranges, float noise_power, PhaseConstraint form,
                                    bool quadrature)
{
    SynthesisReport report;
    const float voxels = static_cast<float>(transform.voxels());
    reorder_in_place(image, transform.n(), false);
    transform.forward(image);
    weight_samples_by_snr(image, transform.n(), ranges, noise_power, form, KSpaceOrder::origin_first, report);
    transform.inverse(image);
    const float scale = 1.0f / voxels;
    reorder_in_place(image, transform.n(), true, [scale](Complex x) { return x * scale; });
    if (quadrature) {
        weight_quadrature(image, phase, transform.n(), noise_power / (2.0f * voxels), report);
    }
    return report;
}

void write_output(const Complex* image, UnitPhase phase, Index count, ReconOutput output, float* out)
{
    for (Index i = 0; i < count; ++i) {
        const Complex x = image[i];
        switch (output) {
        case ReconOutput::complex:
            out[2 * i] = x.real();
            out[2 * i + 1] = x.imag();
            break;
        case ReconOutput::real: {
            const Complex e = phase[i];
            out[i] = x.real() * e.real() + x.imag() * e.imag();
            break;
        }
        case ReconOutput::magnitude:
            out[i] = std::sqrt(x.real() * x.real() + x.imag() * x.imag());
            break;
        }
    }
}
