#include "front/cli/scan_reconstruction.hpp"

#include <algorithm>
#include <climits>

#include "recon/reconstruct.hpp"

ScanImages reconstruct_scan(const RawKspace& scan, const ReconOptions& options, const VolumeProgress& progress)
{
    const ReconShape& shape = scan.shape;
    ReconShape one_volume = shape;
    one_volume.volumes = 1;
    ScanImages result;
    result.output = options.output;
    result.shape = shape;
    result.shape.coils = result_images(one_volume, options);
    result.values.resize(static_cast<std::size_t>(result.shape.samples() * values_per_sample(options.output)));

    // The core runs the coil images of one call on its threads: enough
    // volumes per call to keep them all busy.
    const Index threads = thread_count(options, INT_MAX);
    const Index per_call = std::min(shape.volumes, std::max<Index>(1, (threads + shape.coils - 1) / shape.coils));
    const Index out_values = result.shape.volume_stride() * values_per_sample(options.output);
    for (Index first = 0; first < shape.volumes; first += per_call) {
        ReconShape part = shape;
        part.volumes = std::min(per_call, shape.volumes - first);
        const ReconReport report = reconstruct(part, scan.kspace.data() + first * shape.volume_stride(), options,
                                               result.values.data() + first * out_values);
        result.combination = report.combination;
        result.noise_source = report.noise_source;
        if (progress) {
            progress(first + part.volumes, shape.volumes);
        }
    }
    return result;
}
