#pragma once
// Reconstruction of every volume of a raw-data file through the core, a few
// volumes per call so that progress can be told, and the coil images of a
// magnitude reconstruction combined by root sum of squares.

#include <functional>
#include <vector>

#include "rawdata/raw_kspace.hpp"
#include "recon/recon_options.hpp"

struct ScanImages {
    // x, y, z, channels (1 after coil combination, else the coils), volumes.
    ReconShape shape;
    ReconOutput output = ReconOutput::magnitude;
    bool coils_combined = false;
    // shape.samples() values, interleaved pairs for complex output.
    std::vector<float> values;
};

// Called after each call of the core with the number of volumes done.
using VolumeProgress = std::function<void(Index done, Index volumes)>;

// `options.ranges` are the scan's. Throws ReconError from the core.
ScanImages reconstruct_scan(const RawKspace& scan, const ReconOptions& options, const VolumeProgress& progress);
