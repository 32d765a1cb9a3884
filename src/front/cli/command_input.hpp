#pragma once
// The k-space that homodyne-recon reconstructs, from either kind of input
// file, and the .cfl image output.
//   ISMRMRD raw data (.h5): read by the toolbox's reader; its acquisition
//     (ranges from the header, coils, noise readouts) joins the settings.
//   BART's NAME.cfl with NAME.hdr: the array as it is (x, y, z, then coils or
//     volumes); the ranges come from the options or are detected.

#include <memory>
#include <string>
#include <vector>

#include "io/raw_kspace.hpp"
#include "recon/kspace_input.hpp"
#include "recon/option_table.hpp"

struct CommandInput {
    KspaceInput kspace;                // points into `scan` or `values`
    std::unique_ptr<RawKspace> scan;   // ISMRMRD input, else null
    std::vector<Complex> values;       // .cfl input
    std::vector<std::string> warnings;  // of the reader, one line each
    std::vector<std::string> notes;     // of the reader, for the summary
};

// A name of BART's format: NAME.cfl or NAME.hdr.
bool is_cfl_name(const std::string& path);

// Reads `path`; an ISMRMRD file's acquisition is set in `settings`.
CommandInput read_command_input(const std::string& path, bool remove_oversampling, ReconSettings& settings);

// Whether the images go to a .cfl pair: for .cfl input always, for raw data
// when OUTPUT is named so.
bool cfl_output(const std::string& output, const CommandInput& input);

// Writes images of `dims` (interleaved pairs when `complex`, else real values)
// as NAME.cfl and NAME.hdr.
void write_cfl_images(const std::string& path, const std::vector<Index>& dims, const float* values, bool complex);
