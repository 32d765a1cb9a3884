#pragma once
// The options of homodyne-recon: one table of every option (its name, value,
// help line and the field it sets), the parser of the command line and the
// help text, both made from that table.

#include <string>

#include "recon/recon_options.hpp"

struct CommandOptions {
    ReconOptions recon;           // ranges come from the file
    std::string input, output;    // ISMRMRD raw data in, ISMRMRD images out
    std::string png;              // montage, unless empty
    std::string wisdom;           // FFTW wisdom kept between runs, unless empty
    bool keep_oversampling = false;
    bool prewhiten = true;        // with the file's noise readouts, if it has any
    bool quiet = false;
    bool help = false;
};

// The defaults of the command line: as the core's, except magnitude images.
CommandOptions default_command_options();

// Parses argv[1..]. Values are converted here; their domains are checked by
// the core's validate_options before the file is read. Throws ReconError
// homodyne:usage or homodyne:badOption naming the option at fault.
CommandOptions parse_command_line(int argc, const char* const* argv);

// Every option with its value and meaning, for --help.
std::string command_help();

// A message of the core about an option, in the command line's words: the
// option's name in the core ('Iterations') replaced by its flag (--iterations).
std::string in_command_words(const std::string& message);
