#include "recon/pocs.hpp"

#include <algorithm>
#include <cmath>

#include "recon/fft_order.hpp"
#include "recon/image_output.hpp"
#include "recon/phase_calibration.hpp"

namespace {

// Blend weights of one axis over the block: 1, except over the last `band`
// positions before a cut edge, where they rise as sin^2 from near 0 to near 1.
std::vector<float> blend_weights(const SampledBox& box, int axis, int band)
{
    std::vector<float> w(static_cast<std::size_t>(box.extent(axis)), 1.0f);
    const Index n = box.n[axis];
    const bool cut_low = box.range[axis].first > -(n / 2), cut_high = box.range[axis].last < (n + 1) / 2 - 1;
    const double quarter = 1.57079632679489661923;
    for (Index j = 0; j < std::min<Index>(band, box.extent(axis)); ++j) {
        const double s = std::sin(quarter * static_cast<double>(j + 1) / static_cast<double>(band + 1));
        const float rise = static_cast<float>(s * s);
        if (cut_low) {
            w[j] = std::min(w[j], rise);
        }
        if (cut_high) {
            w[w.size() - 1 - j] = std::min(w[w.size() - 1 - j], rise);
        }
    }
    return w;
}

template <bool Blend>
double restore_runs(const PocsPlan& plan, Complex* kspace, const Complex* box_samples)
{
    double residual = 0.0;
    for_each_box_run(plan.box, [&](Index fft, Index at, Index count, Index x, Index y, Index z) {
        const float* wx = plan.blend[0].data() + x;
        const float wyz = plan.blend[1][y] * plan.blend[2][z];
        float row = 0.0f;
        for (Index i = 0; i < count; ++i) {
            const Complex e = kspace[fft + i], m = box_samples[at + i];
            const Complex d = e - m;
            row += d.real() * d.real() + d.imag() * d.imag();
            if (Blend) {
                const float w = wx[i] * wyz;
                kspace[fft + i] = Complex(w * m.real() + (1.0f - w) * e.real(), w * m.imag() + (1.0f - w) * e.imag());
            } else {
                kspace[fft + i] = m;
            }
        }
        residual += row;
    });
    return residual;
}

template <PhaseConstraint Form>
double project_rows(Complex* image, const Complex* phase, float* amplitude, Index count, float scale)
{
    // Sums per run of 4096 samples in single precision, then in double, in a
    // fixed order, so that the result does not depend on threads.
    double change = 0.0, norm = 0.0;
    for (Index start = 0; start < count; start += 4096) {
        const Index end = std::min<Index>(count, start + 4096);
        float run_change = 0.0f, run_norm = 0.0f;
        for (Index i = start; i < end; ++i) {
            const float xr = image[i].real() * scale, xi = image[i].imag() * scale;
            const float er = phase[i].real(), ei = phase[i].imag();
            const float a = Form == PhaseConstraint::magnitude ? std::sqrt(xr * xr + xi * xi) : xr * er + xi * ei;
            const float d = a - amplitude[i];
            run_change += d * d;
            run_norm += a * a;
            amplitude[i] = a;
            image[i] = Complex(a * er, a * ei);
        }
        change += run_change;
        norm += run_norm;
    }
    return norm > 0.0 ? std::sqrt(change / norm) : 0.0;
}

double squared_norm(const Complex* values, Index count)
{
    double sum = 0.0;
    for (Index i = 0; i < count; ++i) {
        sum += static_cast<double>(std::norm(values[i]));
    }
    return sum;
}

struct PocsBuffers {
    ComplexBuffer work, phase;
    std::vector<float> amplitude;
    explicit PocsBuffers(Index voxels) : work(voxels), phase(voxels), amplitude(static_cast<std::size_t>(voxels)) {}
};

// Iterates with one constraint form from the zero-filled measured data;
// leaves the data-consistent k-space in buffers.work.
VolumeReport iterate(const PocsPlan& plan, const VolumeTransform& transform, const Complex* box_samples,
                     double measured_norm, PhaseConstraint form, PocsBuffers& buffers)
{
    const Index voxels = transform.voxels();
    const float scale = 1.0f / static_cast<float>(voxels);
    Complex* work = buffers.work.data();
    std::fill(work, work + voxels, Complex(0.0f, 0.0f));
    std::fill(buffers.amplitude.begin(), buffers.amplitude.end(), 0.0f);
    restore_measured(plan, work, box_samples);

    VolumeReport report;
    report.constraint = form;
    const bool missing = plan.box.samples() < voxels;
    while (missing && report.iterations < plan.options.iterations) {
        transform.inverse(work);
        report.change = project_onto_phase(work, buffers.phase.data(), buffers.amplitude.data(), voxels, scale, form);
        transform.forward(work);
        const double residual = restore_measured(plan, work, box_samples);
        report.residual = measured_norm > 0.0 ? std::sqrt(residual / measured_norm) : 0.0;
        ++report.iterations;
        if (report.change < plan.options.tolerance) {
            break;
        }
    }
    return report;
}

}  // namespace

PocsPlan plan_pocs(const ReconShape& shape, const ReconOptions& options)
{
    PocsPlan plan;
    plan.options = options;
    plan.box = sampled_box(shape, options.ranges);
    for (int axis = 0; axis < 3; ++axis) {
        plan.blend[axis] = blend_weights(plan.box, axis, plan.box.partial[axis] ? options.transition_band : 0);
    }
    plan.blended = options.transition_band > 0;
    return plan;
}

double project_onto_phase(Complex* image, const Complex* phase, float* amplitude, Index count, float scale,
                          PhaseConstraint form)
{
    return form == PhaseConstraint::magnitude
               ? project_rows<PhaseConstraint::magnitude>(image, phase, amplitude, count, scale)
               : project_rows<PhaseConstraint::real_part>(image, phase, amplitude, count, scale);
}

double restore_measured(const PocsPlan& plan, Complex* kspace, const Complex* box_samples)
{
    return plan.blended ? restore_runs<true>(plan, kspace, box_samples) : restore_runs<false>(plan, kspace, box_samples);
}

VolumeReport pocs_volume(const PocsPlan& plan, const VolumeTransform& transform, const Complex* kspace, float* image)
{
    const Index voxels = transform.voxels();
    std::vector<Complex> box_samples(static_cast<std::size_t>(plan.box.samples()));
    crop_sampled(plan.box, kspace, box_samples.data());
    const double measured_norm = squared_norm(box_samples.data(), plan.box.samples());

    PocsBuffers buffers(voxels);
    const std::array<Index, 3> peak = echo_peak(plan.box, box_samples.data());
    estimate_phase(transform, plan.box, box_samples.data(), peak, plan.options.window, buffers.phase.data());

    const float scale = 1.0f / static_cast<float>(voxels);
    const PhaseConstraint chosen = plan.options.constraint;
    VolumeReport report = iterate(plan, transform, box_samples.data(), measured_norm,
                                  chosen == PhaseConstraint::magnitude ? chosen : PhaseConstraint::real_part, buffers);
    if (chosen == PhaseConstraint::automatic) {
        // Sharp images ring across zero, which only the real form allows: its
        // projections then fit the measured data clearly better. Where both
        // fit alike (smooth anatomy) the magnitude form is the better image.
        transform.inverse(buffers.work.data());
        write_image(buffers.work.data(), buffers.phase.data(), transform.n(), scale, plan.options.output, image);
        const VolumeReport magnitude =
            iterate(plan, transform, box_samples.data(), measured_norm, PhaseConstraint::magnitude, buffers);
        if (report.residual < real_form_margin * magnitude.residual) {
            report.echo = peak;
            return report;
        }
        report = magnitude;
    }
    transform.inverse(buffers.work.data());
    write_image(buffers.work.data(), buffers.phase.data(), transform.n(), scale, plan.options.output, image);
    report.echo = peak;
    return report;
}
