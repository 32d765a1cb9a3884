#pragma once
// The options of homodyne-recon: the core's option table, each option as a
// flag (--partial-fourier for 'PartialFourier'), and the few that are the
// command line's own (files, montage, wisdom, quiet). Parsing and help are
// made from both tables.

#include <string>

#include "recon/option_table.hpp"

struct CommandOptions {
    ReconSettings settings;       // the reconstruction's options
    std::string input, output;    // ISMRMRD raw data or .cfl k-space in; ISMRMRD images or .cfl out
    std::string png;              // montage, unless empty
    std::string wisdom;           // FFTW wisdom kept between runs, unless empty
    bool keep_oversampling = false;
    bool quiet = false;
    bool help = false;
};

// Parses argv[1..]. Throws ReconError homodyne:usage or homodyne:badOption
// naming the option at fault; values are checked by the core's table.
CommandOptions parse_command_line(int argc, const char* const* argv);

// Every option with its value and meaning, for --help.
std::string command_help();

// A message of the core in the command line's words: the option names of
// the table ('Iterations') replaced by their flags (--iterations).
std::string in_command_words(const std::string& message);
