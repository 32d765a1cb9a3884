#include "recon/image_output.hpp"

#include <cmath>

void write_samples(const Complex* x, const Complex* e, Index count, float scale, ReconOutput output, float* out)
{
    switch (output) {
    case ReconOutput::complex:
        for (Index i = 0; i < count; ++i) {
            out[2 * i] = x[i].real() * scale;
            out[2 * i + 1] = x[i].imag() * scale;
        }
        break;
    case ReconOutput::real:
        for (Index i = 0; i < count; ++i) {
            out[i] = (x[i].real() * scale) * e[i].real() + (x[i].imag() * scale) * e[i].imag();
        }
        break;
    case ReconOutput::magnitude:
        for (Index i = 0; i < count; ++i) {
            const float re = x[i].real() * scale, im = x[i].imag() * scale;
            out[i] = std::sqrt(re * re + im * im);
        }
        break;
    }
}
