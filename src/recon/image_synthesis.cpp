#include "recon/image_synthesis.hpp"

#include <cmath>

#include "recon/fft_order.hpp"

SynthesisReport noise_adaptive_step(const VolumeTransform& transform, Complex* image, const Complex* phase,
                                    const SampledRanges& ranges, float noise_power, PhaseConstraint form,
                                    bool quadrature, Complex* scratch)
{
    SynthesisReport report;
    const float voxels = static_cast<float>(transform.voxels());
    to_fft_order(image, transform.n(), scratch);
    transform.forward(scratch);
    weight_samples_by_snr(scratch, transform.n(), ranges, noise_power, form, KSpaceOrder::origin_first, report);
    transform.inverse(scratch);
    to_centred(scratch, transform.n(), 1.0f / voxels, image);
    if (quadrature) {
        weight_quadrature(image, phase, transform.n(), noise_power / (2.0f * voxels), report);
    }
    return report;
}

void write_output(const Complex* image, const Complex* phase, Index count, ReconOutput output, float* out)
{
    for (Index i = 0; i < count; ++i) {
        const Complex x = image[i];
        switch (output) {
        case ReconOutput::complex:
            out[2 * i] = x.real();
            out[2 * i + 1] = x.imag();
            break;
        case ReconOutput::real:
            out[i] = x.real() * phase[i].real() + x.imag() * phase[i].imag();
            break;
        case ReconOutput::magnitude:
            out[i] = std::sqrt(x.real() * x.real() + x.imag() * x.imag());
            break;
        }
    }
}
