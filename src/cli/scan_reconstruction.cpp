#include "cli/scan_reconstruction.hpp"

#include <algorithm>
#include <climits>
#include <complex>

#include "recon/coil_combine.hpp"
#include "recon/reconstruct.hpp"

ScanImages reconstruct_scan(const RawKspace& scan, const ReconOptions& options, const VolumeProgress& progress)
{
    const ReconShape& shape = scan.shape;
    ScanImages result;
    result.output = options.output;
    result.coils_combined = options.output == ReconOutput::magnitude && shape.coils > 1;
    result.shape = shape;
    if (result.coils_combined) {
        result.shape.coils = 1;
    }
    result.values.resize(static_cast<std::size_t>(result.shape.samples() * values_per_sample(options.output)));

    // The core runs the coil images of one call on its threads: enough
    // volumes per call to keep them all busy.
    const Index threads = thread_count(options, INT_MAX);
    const Index per_call = std::min(shape.volumes, std::max<Index>(1, (threads + shape.coils - 1) / shape.coils));
    ReconOptions coil_options = options;
    std::vector<std::complex<float>> coil_images;
    if (result.coils_combined) {
        coil_options.output = ReconOutput::complex;
        coil_images.resize(static_cast<std::size_t>(per_call * shape.volume_stride()));
    }
    for (Index first = 0; first < shape.volumes; first += per_call) {
        ReconShape part = shape;
        part.volumes = std::min(per_call, shape.volumes - first);
        const Complex* kspace = scan.kspace.data() + first * shape.volume_stride();
        const Index out_values = result.shape.volume_stride() * values_per_sample(options.output);
        float* out = result.values.data() + first * out_values;
        if (result.coils_combined) {
            reconstruct(part, kspace, coil_options, reinterpret_cast<float*>(coil_images.data()));
            combine_coils_rss(coil_images.data(), part, out);
        } else {
            reconstruct(part, kspace, options, out);
        }
        if (progress) {
            progress(first + part.volumes, shape.volumes);
        }
    }
    return result;
}
