#include "recon/coil_pipeline.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "recon/coil_combine.hpp"
#include "recon/coil_sensitivities.hpp"
#include "recon/fft_order.hpp"
#include "recon/image_synthesis.hpp"
#include "recon/method_plans.hpp"
#include "recon/phase_calibration.hpp"
#include "recon/power_of_two.hpp"
#include "recon/worker_threads.hpp"

namespace {

// One-pass homodyne makes only a block-sized low-resolution image; the
// sensitivities come from the same calibration image as POCS's phase
// (centred, image units), of k-space read times 2^-exponent. `scratch`: the
// image's size, from ComplexBuffer.
void calibration_of(const SampledBox& box, const VolumeTransform& all, const Complex* kspace, int exponent,
                    CalibrationWindow window, Complex* lowres, Complex* scratch)
{
    std::vector<Complex> box_samples(static_cast<std::size_t>(box.samples()));
    crop_sampled(box, kspace, box_samples.data());
    copy_times_power_of_two(box_samples.data(), box.samples(), -exponent, box_samples.data());
    calibration_image(all, box, box_samples.data(), echo_peak(box, box_samples.data()), window, scratch);
    to_centred(scratch, box.n, 1.0f / static_cast<float>(all.voxels()), lowres);
}

// Fully sampled data have no symmetric centre beside the measured one: the
// phase comes from the centre of every axis of 8 samples or more, as wide as
// a 5/8 acquisition's symmetric centre (a quarter of the axis), under the
// call's window, so that the phase-corrected real part and the quadrature
// weight treat them as they treat partial data, and an image does not come
// out cleaner because less of it was measured.
SampledBox phase_centre(const ReconShape& shape)
{
    SampledBox box = sampled_box(shape, {});
    for (int axis = 0; axis < 3; ++axis) {
        const Index half = shape.n[axis] / 8;
        if (shape.n[axis] >= 8) {
            box.range[axis] = {-half, half - 1};
            box.partial[axis] = true;
        }
    }
    return box;
}

// The unit phase of the calibration image of `box` into `e`, and its angle
// into `radians` unless null.
void phase_of_centre(const SampledBox& box, const VolumeTransform& all, const Complex* kspace, int exponent,
                     CalibrationWindow window, Complex* e, float* radians, Complex* scratch)
{
    calibration_of(box, all, kspace, exponent, window, e, scratch);
    keep_phase(e, all.voxels());
    for (Index i = 0; radians != nullptr && i < all.voxels(); ++i) {
        radians[i] = std::atan2(e[i].imag(), e[i].real());
    }
}

// Noise power per k-space sample of the combination sum_c conj(S_c) x_c /
// sum_c |S_c|^2 of coils with independent noise of power `coil_power`: the
// mean over the image of its per-voxel variance. A block of voxels at a
// time, each coil's run in turn: the coils lie whole images apart.
float combined_noise_power(const Complex* sensitivities, const ReconShape& one_volume, const float* coil_power)
{
    constexpr Index block = 1024;
    const Index voxels = one_volume.voxels();
    double weight[block], power[block];
    double sum = 0.0;
    for (Index start = 0; start < voxels; start += block) {
        const Index count = std::min(block, voxels - start);
        std::fill(weight, weight + count, 0.0);
        std::fill(power, power + count, 0.0);
        for (Index c = 0; c < one_volume.coils; ++c) {
            const Complex* sc = sensitivities + c * voxels + start;
            for (Index i = 0; i < count; ++i) {
                const double s = std::norm(sc[i]);
                weight[i] += s;
                power[i] += s * coil_power[c];
            }
        }
        for (Index i = 0; i < count; ++i) {
            sum += weight[i] > 0.0 ? power[i] / (weight[i] * weight[i]) : 0.0;
        }
    }
    return static_cast<float>(sum / static_cast<double>(voxels));
}

// The constraint most of a volume's coils kept (the magnitude form on a tie).
PhaseConstraint common_constraint(const VolumeReport* coils, Index count)
{
    const Index real = std::count_if(coils, coils + count, [](const VolumeReport& r) {
        return r.constraint == PhaseConstraint::real_part;
    });
    return 2 * real > count ? PhaseConstraint::real_part : PhaseConstraint::magnitude;
}

}  // namespace

ReconReport reconstruct_through_coil_steps(const ReconShape& shape, const Complex* kspace, int exponent,
                                           const ReconOptions& options, const MethodPlans& plans, float* image,
                                           float* phase)
{
    const CoilCombination combination = shape.coils > 1 ? options.combination : CoilCombination::none;
    const bool adaptive = combination == CoilCombination::adaptive;

    const bool pocs = options.method == ReconMethod::pocs;
    const VolumeTransform& all = plans.all();
    const SampledBox box = sampled_box(shape, options.ranges);
    const bool nothing_missing = !box.partial[0] && !box.partial[1] && !box.partial[2];
    // The quadrature component is weighted for magnitude output only: real
    // output drops it whole, and complex output keeps the phase as measured.
    const bool quadrature = options.output == ReconOutput::magnitude;

    const NoiseLevel noise = noise_level(options, shape, kspace, exponent, all);
    // Prewhitened coils are a unit-scale copy; else the caller's k-space is
    // read in place.
    ComplexBuffer whitened(noise.whitening.empty() ? 0 : shape.samples());
    const Complex* data = kspace;
    int data_exponent = exponent;
    if (!noise.whitening.empty()) {
        copy_times_power_of_two(kspace, shape.samples(), -exponent, whitened.data());
        whiten_coils(whitened.data(), shape, noise.whitening);
        data = whitened.data();
        data_exponent = 0;
    }
    // Complex output keeps the phase and the noise as measured (see
    // adaptive_synthesis.hpp); the noise level is still reported.
    const bool weighting =
        options.noise_adaptive && noise.source != NoiseSource::none && options.output != ReconOutput::complex;
    const bool centre_phase = nothing_missing && weighting;
    const SampledBox calibration_box = centre_phase ? phase_centre(shape) : box;

    const Index voxels = shape.voxels();
    const Index images = shape.coils * shape.volumes;
    const bool separate = combination == CoilCombination::none;  // every coil image is a result
    const bool step_per_image = weighting && !adaptive;
    const bool unit_phase_wanted = step_per_image || (separate && options.output == ReconOutput::real);
    const bool radians_wanted = unit_phase_wanted || (separate && phase != nullptr);
    const bool centre_unit_phase = centre_phase && radians_wanted;
    // Where the phase's angles go: the phase output, else the image's own
    // output while its single values are not yet written, else (coil images
    // that are combined) a buffer of the thread.
    const bool radians_in_output = separate && (phase != nullptr || values_per_sample(options.output) == 1);
    // Results are written as they come; only a combination keeps the coil
    // images. Left unset: the coil threads write every sample, and touch the
    // pages first.
    ComplexBuffer coil_images(separate ? 0 : shape.samples());
    ComplexBuffer lowres(adaptive ? shape.samples() : 0);

    ReconReport report;
    report.images.resize(static_cast<std::size_t>(images));
    report.threads = thread_count(options, images);
    // Threads left over by the coil images share the blocks of one image.
    const int block_threads = std::max(1, thread_count(options, std::numeric_limits<Index>::max()) / report.threads);
    report.combination = combination;
    report.noise_source = noise.source;
    report.coil_sigma = noise.coil_sigma;
    if (weighting) {
        const std::size_t weighted = static_cast<std::size_t>(adaptive ? shape.volumes : images);
        report.image_sigma.resize(weighted);
        report.synthesis.resize(weighted);
    }
    if (adaptive && options.keep_sensitivities) {
        report.sensitivities.resize(static_cast<std::size_t>(shape.samples()));
    }

    const Index values = voxels * values_per_sample(options.output);
    const bool calibrating = centre_unit_phase || (adaptive && (!pocs || centre_phase));
    run_on_threads(report.threads, [&](int thread) {
        // Left unset: every sample is written before it is read.
        ComplexBuffer scratch(calibrating ? voxels : 0);
        ComplexBuffer own(separate ? voxels : 0);
        ComplexBuffer centre_e(centre_unit_phase ? voxels : 0);
        std::vector<float> own_radians(radians_wanted && !radians_in_output ? static_cast<std::size_t>(voxels) : 0);
        for (Index j = thread; j < images; j += report.threads) {
            const Complex* k = data + j * voxels;
            Complex* x = separate ? own.data() : coil_images.data() + j * voxels;
            float* x_values = reinterpret_cast<float*>(x);
            float* radians = !radians_wanted ? nullptr
                             : !radians_in_output ? own_radians.data()
                             : phase != nullptr ? phase + j * voxels
                                                : image + j * values;
            Complex* low = adaptive ? lowres.data() + j * voxels : nullptr;
            report.images[j] =
                plans.reconstruct(k, data_exponent, ReconOutput::complex, x_values, radians, low, block_threads);
            // Fully sampled coils: the sensitivities and the combined phase
            // from the windowed centres too (from the whole noisy images the
            // sensitivities added 27-34 % to the error at SNR 20 and 50).
            if ((!pocs || centre_phase) && low != nullptr) {
                calibration_of(calibration_box, all, k, data_exponent, options.window, low, scratch.data());
            }
            if (centre_unit_phase) {
                phase_of_centre(calibration_box, all, k, data_exponent, options.window, centre_e.data(), radians,
                                scratch.data());
            }
            const UnitPhase e = centre_unit_phase ? UnitPhase(centre_e.data()) : UnitPhase(radians);
            if (step_per_image) {
                const float power = noise.coil_power[static_cast<std::size_t>(j)];
                report.image_sigma[j] = std::sqrt(power);
                report.synthesis[j] = noise_adaptive_step(all, x, e, options.ranges, power,
                                                          report.images[j].constraint, quadrature);
            }
            if (separate) {
                write_output(x, e, voxels, options.output, image + j * values);
            }
        }
    });
    if (separate) {
        return report;
    }

    ReconShape one_volume = shape;
    one_volume.volumes = 1;
    // Volumes on threads of their own, or the planes of one volume.
    const int volume_threads = thread_count(options, shape.volumes);
    const int plane_threads = volume_threads == 1 ? report.threads : 1;
    run_on_threads(volume_threads, [&](int thread) {
        ComplexBuffer combined(voxels), e(voxels);  // every sample written before it is read
        std::vector<float> rss(static_cast<std::size_t>(adaptive ? 0 : voxels));
        ComplexBuffer s(adaptive ? shape.volume_stride() : 0);
        for (Index v = thread; v < shape.volumes; v += volume_threads) {
            const Complex* x = coil_images.data() + v * shape.volume_stride();
            float* out = image + v * values;
            if (!adaptive) {
                combine_coils_rss(x, one_volume, rss.data());
                for (Index i = 0; i < voxels; ++i) {
                    combined[i] = Complex(rss[i], 0.0f);
                    e[i] = Complex(1.0f, 0.0f);
                }
            } else {
                const Complex* low = lowres.data() + v * shape.volume_stride();
                estimate_coil_sensitivities(low, one_volume, s.data(), std::min<int>(plane_threads, shape.n[2]));
                combine_coils_adaptive(x, s.data(), one_volume, combined.data(), plane_threads);
                combine_coils_adaptive(low, s.data(), one_volume, e.data(), plane_threads);
                keep_phase(e.data(), voxels);
                if (weighting) {
                    const float power = combined_noise_power(s.data(), one_volume, noise.coil_power.data() + v * shape.coils);
                    report.image_sigma[v] = std::sqrt(power);
                    report.synthesis[v] =
                        noise_adaptive_step(all, combined.data(), e.data(), options.ranges, power,
                                            common_constraint(report.images.data() + v * shape.coils, shape.coils),
                                            quadrature);
                }
                if (!report.sensitivities.empty()) {
                    std::copy(s.data(), s.data() + shape.volume_stride(), report.sensitivities.begin() + v * shape.volume_stride());
                }
            }
            write_output(combined.data(), e.data(), voxels, options.output, out);
            if (phase != nullptr) {
                for (Index i = 0; i < voxels; ++i) {
                    phase[v * voxels + i] = std::atan2(e[i].imag(), e[i].real());
                }
            }
        }
    });
    return report;
}
