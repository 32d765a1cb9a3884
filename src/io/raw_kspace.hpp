#pragma once
// The k-space of an ISMRMRD raw-data file, read into the toolbox's canonical
// order, and what the reconstruction and the image writer need to know about
// the acquisition.

#include <array>
#include <complex>
#include <cstdint>
#include <string>
#include <vector>

#include "recon/recon_shape.hpp"

// The encoding counters that index volumes, in the order of the volume axes
// (the first varies fastest).
enum VolumeCounter : int { SLICE, CONTRAST, PHASE, REPETITION, SET, AVERAGE, VOLUME_COUNTERS };
extern const std::array<const char*, VOLUME_COUNTERS> kVolumeCounterNames;  // "slice", ...

// Where a volume sits in the scanner, from its first readout.
struct VolumeGeometry {
    std::array<std::uint16_t, VOLUME_COUNTERS> counters{};
    std::array<float, 3> position{};
    std::array<float, 3> read_dir{};
    std::array<float, 3> phase_dir{};
    std::array<float, 3> slice_dir{};
    std::array<float, 3> patient_table_position{};
    std::uint32_t acquisition_time_stamp = 0;
};

struct RawKspace {
    // Centred k-space: x = readout, y = kspace_encode_step_1, z = step 2,
    // then coils, then the volumes (counters in VolumeCounter order, slice
    // fastest); x fastest, interleaved complex single precision.
    ReconShape shape;
    std::array<Index, VOLUME_COUNTERS> counter_sizes{1, 1, 1, 1, 1, 1};
    std::vector<std::complex<float>> kspace;
    std::vector<VolumeGeometry> volumes;  // one per volume; counters zero for a volume never acquired

    // Sampled block per axis in k coordinates (nullopt: fully sampled), from
    // the encoding limits and the readouts' centre sample, checked against
    // the data.
    SampledRanges ranges;

    // Noise-only readouts, samples x coils (samples fastest); empty if none.
    std::vector<std::complex<float>> noise;
    Index noise_samples = 0;
    // The variance of the noise in `kspace` is the noise scan's variance times
    // this: the ratio of the noise and data dwell times, and n_out/n_in where
    // readout oversampling was removed.
    float noise_variance_scale = 1.0f;

    // Field of view of the k-space grid (the image), mm; readout oversampling
    // removed or not as `shape` is.
    std::array<float, 3> fov_mm{};
    std::array<Index, 3> encoded_matrix{1, 1, 1};  // the header's encoded space
    std::array<Index, 3> recon_matrix{1, 1, 1};    // the header's reconstruction space
    bool oversampling_removed = false;
    float sample_time_us = 0;
    std::uint32_t measurement_uid = 0;
    std::string xml_header;              // as stored in the file
    std::vector<std::string> warnings;   // one line each, naming the file
    // What of the readouts was not used as stored (repeats averaged, noise
    // readouts left out), as short phrases for a summary; each is also among
    // the warnings.
    std::vector<std::string> notes;
};

struct RawReadOptions {
    bool remove_oversampling = true;
    std::string group = "dataset";
};

// Reads the first encoding space of `path`. Every fault of the file is a
// ReconError homodyne:badFile whose message starts with the path.
RawKspace read_raw_kspace(const std::string& path, const RawReadOptions& options = {});
