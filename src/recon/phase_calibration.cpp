#include "recon/phase_calibration.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

std::array<Index, 3> echo_peak(const SampledBox& box, const Complex* box_samples)
{
    Index best = 0;
    float largest = -1.0f;
    for (Index i = 0; i < box.samples(); ++i) {
        const float power = std::norm(box_samples[i]);
        if (power > largest) {
            largest = power;
            best = i;
        }
    }
    const Index position[3] = {best % box.extent(0), best / box.extent(0) % box.extent(1),
                               best / (box.extent(0) * box.extent(1))};
    std::array<Index, 3> peak{0, 0, 0};
    for (int axis = 0; axis < 3; ++axis) {
        if (box.partial[axis]) {
            peak[axis] = box.range[axis].first + position[axis];
        }
    }
    return peak;
}

float window_value(CalibrationWindow window, double t)
{
    const double pi = 3.14159265358979323846;
    const double a = std::fabs(t);
    switch (window) {
    case CalibrationWindow::hann:
        return static_cast<float>(0.5 * (1.0 + std::cos(pi * a)));
    case CalibrationWindow::tukey:  // flat over the inner half, a Hann taper outside
        return a <= 0.5 ? 1.0f : static_cast<float>(0.5 * (1.0 + std::cos(pi * (2.0 * a - 1.0))));
    case CalibrationWindow::box:
        break;
    }
    return 1.0f;
}

namespace {

std::vector<float> axis_window(const SampledBox& box, int axis, Index peak, CalibrationWindow window)
{
    std::vector<float> w(static_cast<std::size_t>(box.extent(axis)), 1.0f);
    if (!box.partial[axis]) {
        return w;
    }
    const Index half = std::min(peak - box.range[axis].first, box.range[axis].last - peak);
    for (Index i = 0; i < box.extent(axis); ++i) {
        const Index d = box.range[axis].first + i - peak;
        w[i] = std::abs(d) > half ? 0.0f : window_value(window, static_cast<double>(d) / static_cast<double>(half + 1));
    }
    return w;
}

}  // namespace

std::array<std::vector<float>, 3> calibration_windows(const SampledBox& box, const std::array<Index, 3>& peak,
                                                      CalibrationWindow window)
{
    return {axis_window(box, 0, peak[0], window), axis_window(box, 1, peak[1], window),
            axis_window(box, 2, peak[2], window)};
}

void calibration_image(const VolumeTransform& transform, const SampledBox& box, const Complex* box_samples,
                       const std::array<Index, 3>& peak, CalibrationWindow window, Complex* phase)
{
    const std::array<std::vector<float>, 3> w = calibration_windows(box, peak, window);
    const std::vector<float>&wx = w[0], &wy = w[1], &wz = w[2];
    std::fill(phase, phase + transform.voxels(), Complex(0.0f, 0.0f));
    for_each_box_run(box, [&](Index fft, Index at, Index count, Index x, Index y, Index z) {
        const float wyz = wy[y] * wz[z];
        for (Index i = 0; i < count; ++i) {
            phase[fft + i] = box_samples[at + i] * (wx[x + i] * wyz);
        }
    });
    transform.inverse(phase);
}

// |x| as the square root of its power, which vectorises (the library's
// hypot does not): a calibration image at unit scale neither overflows nor
// underflows above its rounding floor.
inline float magnitude_of(Complex x) { return std::sqrt(x.real() * x.real() + x.imag() * x.imag()); }

float largest_magnitude(const Complex* image, Index count)
{
    float largest = 0.0f;
    for (Index i = 0; i < count; ++i) {
        largest = std::max(largest, magnitude_of(image[i]));
    }
    return largest;
}

void keep_phase(Complex* image, Index count) { keep_phase(image, count, largest_magnitude(image, count)); }

void keep_phase(Complex* image, Index count, float largest)
{
    // Below this fraction of the largest magnitude the calibration image is
    // transform rounding, whose phase changes with the FFT plan (and so
    // between processes): such voxels take phase 0, like exact zeros.
    constexpr float rounding_floor = 1e-5f;
    const float floor = rounding_floor * largest;
    for (Index i = 0; i < count; ++i) {
        const float m = magnitude_of(image[i]);
        image[i] = m > floor && m > 0.0f ? image[i] / m : Complex(1.0f, 0.0f);
    }
}
