#include "recon/noise_level.hpp"

#include <cmath>

#include "recon/noise_estimate.hpp"

const char* name_of(NoiseSource source)
{
    static const char* const names[] = {"none", "covariance", "noise scan", "estimated"};
    return names[static_cast<int>(source)];
}

NoiseLevel noise_level(const ReconOptions& options, const ReconShape& shape, const Complex* kspace)
{
    NoiseLevel level;
    CoilMatrix covariance;
    if (options.noise_scan != nullptr) {
        level.source = NoiseSource::noise_scan;
        covariance = noise_covariance_from_scan(options.noise_scan, options.noise_scan_shape, shape.coils);
    } else if (!options.noise_covariance.empty()) {
        level.source = NoiseSource::covariance;
        covariance = options.noise_covariance;
    } else if (options.noise_adaptive) {
        level.source = NoiseSource::estimated;
        level.coil_power = estimate_noise_powers(kspace, shape, options.ranges, KSpaceOrder::centred);
        for (float power : level.coil_power) {
            level.coil_sigma.push_back(std::sqrt(power));
        }
        return level;
    } else {
        return level;
    }

    double mean = 0.0;
    for (float power : coil_noise_powers(covariance, shape.coils)) {
        level.coil_sigma.push_back(std::sqrt(power));
        mean += power / static_cast<double>(shape.coils);
    }
    level.coil_power.assign(static_cast<std::size_t>(shape.coils), static_cast<float>(mean));
    if (shape.coils > 1) {
        level.whitening = noise_whitening_matrix(covariance.data(), shape.coils, shape.coils, shape.coils);
        const float g = static_cast<float>(std::sqrt(mean));
        for (Complex& w : level.whitening) {
            w *= g;
        }
    }
    return level;
}
