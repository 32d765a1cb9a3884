#include "recon/noise_level.hpp"

#include <cfloat>
#include <cmath>

#include "recon/noise_estimate.hpp"

namespace {

// Fewer samples per coil image do not tell noise from the object's own
// high frequencies (8 noiseless samples of a smooth object gave a "noise"
// level that wiped out the synthesised half).
constexpr Index least_samples_to_estimate = 1024;

// A noise power of the data at unit scale in single precision: a noise so far
// below the data that its power underflows is none; one so far above that it
// overflows is taken as the largest float, which the weighting reads as
// nothing but noise.
float unit_power(double power) { return static_cast<float>(std::min(power, static_cast<double>(FLT_MAX))); }

}  // namespace

const char* name_of(NoiseSource source)
{
    static const char* const names[] = {"none", "covariance", "noise scan", "estimated"};
    return names[static_cast<int>(source)];
}

NoiseLevel noise_level(const ReconOptions& options, const ReconShape& shape, const Complex* kspace, int exponent,
                       const VolumeTransform& transform)
{
    NoiseLevel level;
    ScaledCovariance covariance;
    if (options.noise_scan != nullptr) {
        level.source = NoiseSource::noise_scan;
        covariance = noise_covariance_from_scan(options.noise_scan, options.noise_scan_shape, shape.coils);
    } else if (!options.noise_covariance.empty()) {
        level.source = NoiseSource::covariance;
        covariance.matrix = options.noise_covariance;
    } else if (options.noise_adaptive && shape.voxels() >= least_samples_to_estimate) {
        level.source = NoiseSource::estimated;
        // A range over the whole axis is a fully sampled axis, whichever way it is given.
        SampledRanges ranges = options.ranges;
        for (int axis = 0; axis < 3; ++axis) {
            if (ranges[axis] && ranges[axis]->first == -(shape.n[axis] / 2) &&
                ranges[axis]->last == (shape.n[axis] + 1) / 2 - 1) {
                ranges[axis].reset();
            }
        }
        level.coil_power = estimate_noise_powers(kspace, exponent, shape, ranges, KSpaceOrder::centred, transform,
                                                 thread_count(options, shape.coils * shape.volumes));
        for (float power : level.coil_power) {
            level.coil_sigma.push_back(std::sqrt(power));
        }
        return level;
    } else {
        return level;
    }

    // The covariance's entries are the data's noise powers times 4^to_data.
    const int to_data = covariance.exponent - options.noise_exponent;
    double mean = 0.0;
    for (float power : coil_noise_powers(covariance.matrix, shape.coils)) {
        level.coil_sigma.push_back(std::sqrt(unit_power(std::ldexp(power, 2 * to_data))));
        mean += power / static_cast<double>(shape.coils);
    }
    level.coil_power.assign(static_cast<std::size_t>(shape.coils * shape.volumes), unit_power(std::ldexp(mean, 2 * to_data)));
    for (Index v = 1; v < shape.volumes; ++v) {
        level.coil_sigma.insert(level.coil_sigma.end(), level.coil_sigma.begin(), level.coil_sigma.begin() + shape.coils);
    }
    if (shape.coils > 1) {
        level.whitening = noise_whitening_matrix(covariance.matrix.data(), shape.coils, shape.coils, shape.coils,
                                                 options.noise_name);
        const float g = static_cast<float>(std::sqrt(mean));
        for (Complex& w : level.whitening) {
            w *= g;
        }
    }
    return level;
}
