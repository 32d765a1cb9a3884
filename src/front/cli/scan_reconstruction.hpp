#pragma once
// Reconstruction of every volume of a raw-data file through the core, a few
// volumes per call so that progress can be told (the core's result does not
// depend on how the volumes are batched).

#include <functional>
#include <vector>

#include "io/raw_kspace.hpp"
#include "recon/noise_level.hpp"
#include "recon/recon_options.hpp"

struct ScanImages {
    // x, y, z, channels (1 after coil combination, else the coils), volumes.
    ReconShape shape;
    ReconOutput output = ReconOutput::magnitude;
    CoilCombination combination = CoilCombination::none;  // what the core did
    NoiseSource noise_source = NoiseSource::none;
    // shape.samples() values, interleaved pairs for complex output.
    std::vector<float> values;
};

// Called after each call of the core with the number of volumes done.
using VolumeProgress = std::function<void(Index done, Index volumes)>;

// `options.ranges` are the scan's. Throws ReconError from the core.
ScanImages reconstruct_scan(const RawKspace& scan, const ReconOptions& options, const VolumeProgress& progress);
