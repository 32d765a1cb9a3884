#include "recon/reconstruct.hpp"

#include <cfloat>
#include <cmath>
#include <limits>
#include <optional>

#include "recon/coil_pipeline.hpp"
#include "recon/largest_part.hpp"
#include "recon/method_plans.hpp"
#include "recon/power_of_two.hpp"
#include "recon/recon_error.hpp"
#include "recon/worker_threads.hpp"

float check_kspace_values(const ReconShape& shape, const Complex* kspace)
{
    const float largest = largest_part(kspace, shape.samples());
    const bool finite = std::isfinite(largest);
    if (!finite) {
        throw ReconError("homodyne:badInput", "KSPACE holds NaN or Inf values.");
    }
    if (static_cast<double>(largest) * static_cast<double>(shape.voxels()) > 0.25 * FLT_MAX) {
        throw ReconError("homodyne:scale", "KSPACE holds values so large that its transform overflows single "
                                           "precision; scale it down.");
    }
    return largest;
}

Index result_images(const ReconShape& shape, const ReconOptions& options)
{
    const bool combined = shape.coils > 1 && options.combination != CoilCombination::none;
    return combined ? shape.volumes : shape.coils * shape.volumes;
}

namespace {

// e with 2^e <= largest < 2^(e + 1); 0 for 0.
int unit_exponent(float largest)
{
    int e = 1;
    if (largest > 0.0f) {
        std::frexp(largest, &e);
    }
    return e - 1;
}

bool through_coil_steps(const ReconShape& shape, const ReconOptions& options)
{
    return options.noise_adaptive || options.noise_scan != nullptr || !options.noise_covariance.empty() ||
           result_images(shape, options) != shape.coils * shape.volumes;
}

// Every coil image reconstructed on its own and written straight out, from
// k-space read at unit scale (times 2^-exponent) as the method copies it in.
// Threads left over by the images share the blocks of one image.
ReconReport reconstruct_images(const ReconShape& shape, const Complex* kspace, int exponent,
                               const ReconOptions& options, const MethodPlans& plans, float* image, float* phase)
{
    const Index images = shape.coils * shape.volumes;
    const Index values = shape.voxels() * values_per_sample(options.output);
    const int image_threads = thread_count(options, images);
    const int block_threads = std::max(1, thread_count(options, std::numeric_limits<Index>::max()) / image_threads);
    ReconReport report;
    report.images.resize(static_cast<std::size_t>(images));
    report.threads = image_threads * block_threads;
    const auto run = [&](int thread) {
        for (Index j = thread; j < images; j += image_threads) {
            const Complex* k = kspace + j * shape.voxels();
            float* phase_of_image = phase != nullptr ? phase + j * shape.voxels() : nullptr;
            report.images[j] = plans.reconstruct(k, exponent, options.output, image + j * values, phase_of_image,
                                                 nullptr, block_threads);
        }
    };
    run_on_threads(image_threads, run);
    return report;
}

// The reconstruction of k-space whose largest part lies in [1, 2) once
// times 2^-exponent, with options relative to that unit-scale k-space. Every
// step scales the k-space as it reads it: none needs a unit-scale copy.
ReconReport reconstruct_unit_scale(const ReconShape& shape, const Complex* kspace, int exponent,
                                   const ReconOptions& options, const MethodPlans& plans, float* image, float* phase)
{
    if (!through_coil_steps(shape, options)) {
        return reconstruct_images(shape, kspace, exponent, options, plans, image, phase);
    }
    return reconstruct_through_coil_steps(shape, kspace, exponent, options, plans, image, phase);
}

}  // namespace

ReconReport reconstruct_validated(const ReconShape& shape, const Complex* kspace, int exponent,
                                  const ReconOptions& options, const MethodPlans& plans, float* image, float* phase)
{
    return reconstruct_unit_scale(shape, kspace, exponent, options, plans, image, phase);
}

ReconReport reconstruct(const ReconShape& shape, const Complex* kspace, const ReconOptions& options, float* image,
                         float* phase, const MethodPlans* plans)
{
    validate_options(options, shape);
    const int exponent = unit_exponent(check_kspace_values(shape, kspace));
    std::optional<MethodPlans> own_plans;  // made before a thread starts
    const MethodPlans& call_plans = plans != nullptr ? *plans : own_plans.emplace(shape, options);
    // Data of any other scale run at unit scale, the noise covariance or scan
    // related to them by the same exponent (see noise_exponent). A power of
    // two changes no digit, so the result is that of the unit-scale data
    // times 2^exponent, bit for bit, and no step sees its squares or fourth
    // powers (the sensitivities' power iteration, the noise estimate, the
    // weighting) underflow or overflow single precision.
    ReconOptions unit_options = options;
    unit_options.noise_exponent += exponent;
    ReconReport report = reconstruct_unit_scale(shape, kspace, exponent, unit_options, call_plans, image, phase);
    if (exponent == 0) {
        return report;
    }
    const Index values = shape.voxels() * result_images(shape, options) * values_per_sample(options.output);
    copy_times_power_of_two(image, values, exponent, image);
    for (std::vector<float>* sigmas : {&report.coil_sigma, &report.image_sigma}) {
        for (float& sigma : *sigmas) {
            sigma = std::ldexp(sigma, exponent);
        }
    }
    return report;
}
