#pragma once
// What homodyne-recon does once its command line is parsed: read the k-space,
// reconstruct every volume in one call of the core, write the images (and
// the montage) under temporary names and rename them into place, with the
// warnings and a summary on stderr unless quiet (the summary even then when
// the reader averaged or left out readouts).

#include "front/cli/command_options.hpp"

// Throws ReconError (or std::bad_alloc); nothing is left at the output paths
// then.
void run_command(const CommandOptions& options);
