#include "recon/image_synthesis.hpp"

#include <cmath>

#include "recon/fft_order.hpp"

SynthesisReport weight_image_synthesis(const VolumeTransform& transform, Complex* image, const SampledRanges& ranges,
                                       float noise_power, Complex* scratch)
{
    to_fft_order(image, transform.n(), scratch);
    transform.forward(scratch);
    const SynthesisReport report =
        weight_synthesised_samples(scratch, transform.n(), ranges, noise_power, KSpaceOrder::origin_first);
    transform.inverse(scratch);
    to_centred(scratch, transform.n(), 1.0f / static_cast<float>(transform.voxels()), image);
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
