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

// Sums kept in eight single-precision lanes (sample i goes to lane i mod 8),
// so that the loops vectorise and still add in a fixed order: the result
// does not depend on threads or on the machine's vector width.
constexpr Index lanes = 8;

template <PhaseConstraint Form>
inline void project_one(Complex* image, const Complex* phase, float* amplitude, Index i, float scale, float& change,
                        float& norm)
{
    const float xr = image[i].real() * scale, xi = image[i].imag() * scale;
    const float er = phase[i].real(), ei = phase[i].imag();
    const float a = Form == PhaseConstraint::magnitude ? std::sqrt(xr * xr + xi * xi) : xr * er + xi * ei;
    const float d = a - amplitude[i];
    change += d * d;
    norm += a * a;
    amplitude[i] = a;
    image[i] = Complex(a * er, a * ei);
}

template <PhaseConstraint Form>
double project_rows(Complex* image, const Complex* phase, float* amplitude, Index count, float scale)
{
    // Lanes summed per run of 4096 samples, the runs in double.
    double change = 0.0, norm = 0.0;
    for (Index start = 0; start < count; start += 4096) {
        const Index end = std::min<Index>(count, start + 4096);
        float lane_change[lanes] = {}, lane_norm[lanes] = {};
        Index i = start;
        for (; i + lanes <= end; i += lanes) {
            for (Index j = 0; j < lanes; ++j) {
                project_one<Form>(image, phase, amplitude, i + j, scale, lane_change[j], lane_norm[j]);
            }
        }
        for (Index j = 0; i < end; ++i, ++j) {
            project_one<Form>(image, phase, amplitude, i, scale, lane_change[j], lane_norm[j]);
        }
        for (Index j = 0; j < lanes; ++j) {
            change += lane_change[j];
            norm += lane_norm[j];
        }
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

// The iterations of one constraint form, from the zero-filled measured data
// (start) and on from where they stopped (run), leaving the data-consistent
// k-space in buffers.work.
class PocsRun {
public:
    // `transform`: along the partial axes; `box_samples`: the measured block
    // transformed along the fully sampled axes.
    PocsRun(const PocsPlan& plan, const VolumeTransform& transform, const Complex* box_samples, double measured_norm,
            PocsBuffers& buffers)
        : plan_(plan), transform_(transform), box_samples_(box_samples), measured_norm_(measured_norm),
          buffers_(buffers)
    {
    }

    void start(PhaseConstraint form)
    {
        report_ = VolumeReport{};
        report_.constraint = form;
        converged_ = plan_.box.samples() == transform_.voxels();  // nothing to estimate
        Complex* work = buffers_.work.data();
        std::fill(work, work + transform_.voxels(), Complex(0.0f, 0.0f));
        std::fill(buffers_.amplitude.begin(), buffers_.amplitude.end(), 0.0f);
        restore_measured(plan_, work, box_samples_);
    }

    const VolumeReport& run(int until)
    {
        const Index voxels = transform_.voxels();
        // The pair of transforms gains their length; the image's scale
        // does not matter to the projections, which commute with it.
        const float scale = 1.0f / static_cast<float>(transform_.transformed());
        Complex* work = buffers_.work.data();
        while (!converged_ && report_.iterations < until) {
            transform_.inverse(work);
            report_.change = project_onto_phase(work, buffers_.phase.data(), buffers_.amplitude.data(), voxels,
                                                scale, report_.constraint);
            transform_.forward(work);
            const double residual = restore_measured(plan_, work, box_samples_);
            report_.residual = measured_norm_ > 0.0 ? std::sqrt(residual / measured_norm_) : 0.0;
            ++report_.iterations;
            converged_ = report_.change < plan_.options.tolerance;
        }
        return report_;
    }

private:
    const PocsPlan& plan_;
    const VolumeTransform& transform_;
    const Complex* box_samples_;
    double measured_norm_;
    PocsBuffers& buffers_;
    VolumeReport report_;
    bool converged_ = false;
};

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

PocsTransforms::PocsTransforms(const PocsPlan& plan)
    : all(plan.box.n, {true, true, true}, true),
      full_axes(plan.box.n, {!plan.box.partial[0], !plan.box.partial[1], !plan.box.partial[2]}),
      partial_axes(plan.box.n, plan.box.partial, true)
{
}

VolumeReport pocs_volume(const PocsPlan& plan, const PocsTransforms& transforms, const Complex* kspace,
                         ReconOutput output, float* image, float* phase, Complex* lowres)
{
    const VolumeTransform& transform = transforms.partial_axes;
    const Index voxels = transform.voxels();
    std::vector<Complex> box_samples(static_cast<std::size_t>(plan.box.samples()));
    crop_sampled(plan.box, kspace, box_samples.data());

    PocsBuffers buffers(voxels);
    const std::array<Index, 3> peak = echo_peak(plan.box, box_samples.data());
    calibration_image(transforms.all, plan.box, box_samples.data(), peak, plan.options.window, buffers.phase.data());
    if (lowres != nullptr) {
        to_centred(buffers.phase.data(), plan.box.n, 1.0f / static_cast<float>(voxels), lowres);
    }
    keep_phase(buffers.phase.data(), voxels);

    // The measured block into hybrid space: along the fully sampled axes it
    // is whole, so it is its own transform there.
    Complex* work = buffers.work.data();
    std::fill(work, work + voxels, Complex(0.0f, 0.0f));
    restore_measured(plan, work, box_samples.data());
    transforms.full_axes.inverse(work);
    for_each_box_run(plan.box, [&](Index fft, Index at, Index count, Index, Index, Index) {
        std::copy(work + fft, work + fft + count, box_samples.data() + at);
    });
    const double measured_norm = squared_norm(box_samples.data(), plan.box.samples());

    PocsRun pocs(plan, transform, box_samples.data(), measured_norm, buffers);
    const int iterations = plan.options.iterations;
    const int partial_axes = std::count(plan.box.partial.begin(), plan.box.partial.end(), true);
    if (plan.options.constraint != PhaseConstraint::automatic) {
        pocs.start(plan.options.constraint);
    } else if (partial_axes > 1) {
        pocs.start(PhaseConstraint::magnitude);
    } else {
        // Sharp images ring across zero, which only the real form allows: its
        // projections then fit the measured data several times better. Where
        // both fit alike the magnitude form gives the better image. A few
        // trial iterations of each tell them apart; the magnitude form, the
        // usual winner, runs last and so continues where its trial stopped.
        const int trial = std::min(iterations, trial_iterations);
        pocs.start(PhaseConstraint::real_part);
        const double real_residual = pocs.run(trial).residual;
        pocs.start(PhaseConstraint::magnitude);
        const double magnitude_residual = pocs.run(trial).residual;
        if (real_residual < real_form_margin * magnitude_residual) {
            pocs.start(PhaseConstraint::real_part);
        }
    }
    VolumeReport report = pocs.run(iterations);
    transform.inverse(buffers.work.data());
    const float scale = 1.0f / static_cast<float>(voxels);
    write_image(buffers.work.data(), buffers.phase.data(), transform.n(), scale, output, image);
    if (phase != nullptr) {
        const Complex* e = buffers.phase.data();
        for_each_shift_run(transform.n(), [&](Index fft, Index centred, Index count) {
            for (Index i = 0; i < count; ++i) {
                phase[centred + i] = std::atan2(e[fft + i].imag(), e[fft + i].real());
            }
        });
    }
    report.echo = peak;
    return report;
}
