#pragma once
// What homodyne-recon does once its command line is parsed: read the raw
// data, reconstruct every volume, write the images (and the montage) under
// temporary names and rename them into place, telling progress on stderr
// unless quiet.

#include "front/cli/command_options.hpp"

// Throws ReconError (or std::bad_alloc); nothing is left at the output paths
// then.
void run_command(const CommandOptions& options);
