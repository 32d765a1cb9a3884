#include "recon/image_output.hpp"

#include <cmath>

#include "recon/fft_order.hpp"

void write_image(const Complex* image, const Complex* phase, const std::array<Index, 3>& n, float scale,
                 ReconOutput output, float* out)
{
    for_each_shift_run(n, [&](Index fft, Index centred, Index count) {
        const Complex* x = image + fft;
        const Complex* e = phase + fft;
        switch (output) {
        case ReconOutput::complex:
            for (Index i = 0; i < count; ++i) {
                out[2 * (centred + i)] = x[i].real() * scale;
                out[2 * (centred + i) + 1] = x[i].imag() * scale;
            }
            break;
        case ReconOutput::real:
            for (Index i = 0; i < count; ++i) {
                out[centred + i] = (x[i].real() * scale) * e[i].real() + (x[i].imag() * scale) * e[i].imag();
            }
            break;
        case ReconOutput::magnitude:
            for (Index i = 0; i < count; ++i) {
                const float re = x[i].real() * scale, im = x[i].imag() * scale;
                out[centred + i] = std::sqrt(re * re + im * im);
            }
            break;
        }
    });
}
