#pragma once
// Writes ISMRMRD raw-data files from a known k-space, for the tests: only the
// readouts inside the kept ranges (partial Fourier at either end, on any
// axes, partial echo on x), optionally with readout oversampling and
// noise-only readouts, and optionally with a header that lies or readouts
// changed after they were made.

#include <ismrmrd/ismrmrd.h>
#include <ismrmrd/xml.h>

#include <complex>
#include <functional>
#include <string>
#include <vector>

#include "recon/recon_shape.hpp"

struct SyntheticScan {
    // Centred k-space at the reconstruction's grid: x, y, z, coils, volumes
    // (the volumes are written as repetitions).
    ReconShape shape;
    std::vector<std::complex<float>> kspace;
    SampledRanges keep;           // per axis: the block written (nullopt: all); x in
                                  // k coordinates of the oversampled readout
    Index oversampling = 1;       // readouts hold this many times nx samples
    Index noise_readouts = 0;     // noise-only readouts written first
    float noise_sigma = 1.0f;     // their standard deviation per real part
    // Lies of the header: the declared centre of ky moved by this many lines
    // away from the data's k = 0, limits that declare the whole y axis, ky
    // lines left out.
    Index declared_centre_shift_y = 0;
    bool declare_full_y = false;
    std::vector<Index> dropped_ky;
    // Any other mutation: of the XML header before it is written, and of
    // every readout (noise readouts first) before it is stored, as many times
    // as edit_readout returns.
    std::function<void(ISMRMRD::IsmrmrdHeader&)> edit_header;
    std::function<int(ISMRMRD::Acquisition&)> edit_readout;
};

// Writes `scan` to `path` (replacing it) as dataset "dataset".
void write_scan_file(const std::string& path, const SyntheticScan& scan);

// The readout of `n` centred samples seen with `factor` times the field of
// view: the centred DFT of the zero-padded image, computed plainly in double.
std::vector<std::complex<float>> oversampled_readout(const std::complex<float>* line, Index n, Index factor);
