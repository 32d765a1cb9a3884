#include "recon/call_noise.hpp"

#include <cmath>

namespace {

// A noise scan of any number of dimensions with its coils along `coil_dim`
// (counted from 0; none: one coil), its other samples pooled.
CallNoise pooled_scan(const std::vector<Complex>& values, const std::vector<Index>& dims, std::optional<int> coil_dim)
{
    CallNoise noise;
    const Index coils = coil_dim && *coil_dim < static_cast<int>(dims.size()) ? dims[*coil_dim] : 1;
    const Index samples = static_cast<Index>(values.size()) / coils;
    noise.scan_shape.n = {samples, 1, 1};
    noise.scan_shape.coils = coils;
    noise.scan.resize(values.size());
    // Index i of the scan: the coil is its coordinate along coil_dim, the
    // sample its other coordinates in order.
    Index below = 1;
    for (int d = 0; coil_dim && d < *coil_dim; ++d) {
        below *= dims[d];
    }
    for (Index i = 0; i < static_cast<Index>(values.size()); ++i) {
        const Index coil = coils == 1 ? 0 : (i / below) % coils;
        const Index sample = coils == 1 ? i : i % below + (i / (below * coils)) * below;
        noise.scan[coil * samples + sample] = values[i];
    }
    return noise;
}

}  // namespace

CallNoise call_noise(const ReconSettings& settings, const ArrayLayout& layout, bool acquisition_noise)
{
    if (settings.noise_reference_given) {
        const std::vector<Index>& dims = settings.noise_reference_dims;
        if (settings.noise_reference.empty()) {
            return {};
        }
        const bool matrix = dims.size() == 2 && (layout.coil_dim || settings.noise_reference.size() == 1);
        if (matrix) {
            CallNoise noise;
            noise.covariance = settings.noise_reference;
            noise.rows = dims[0];
            noise.columns = dims[1];
            return noise;
        }
        return pooled_scan(settings.noise_reference, dims, layout.coil_dim);
    }
    const Acquisition* acq = settings.acquisition.get();
    if (!acquisition_noise || acq == nullptr || acq->noise.empty() || acq->noise_coils != layout.shape.coils) {
        return {};
    }
    // The readouts' noise at the k-space's noise variance.
    const float gain = static_cast<float>(std::sqrt(acq->noise_variance_scale));
    std::vector<Complex> scaled(acq->noise.size());
    for (std::size_t i = 0; i < scaled.size(); ++i) {
        scaled[i] = acq->noise[i] * gain;
    }
    CallNoise noise = pooled_scan(scaled, {acq->noise_samples, acq->noise_coils}, 1);
    noise.name = "The covariance of the noise readouts";
    return noise;
}

void use_noise(const CallNoise& noise, int exponent, ReconOptions& options)
{
    options.noise_covariance = noise.covariance;
    options.covariance_rows = noise.rows;
    options.covariance_columns = noise.columns;
    options.noise_scan = noise.scan.empty() ? nullptr : noise.scan.data();
    options.noise_scan_shape = noise.scan_shape;
    options.noise_exponent = exponent;
    options.noise_name = noise.name;
}
