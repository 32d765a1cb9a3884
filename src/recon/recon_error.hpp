#pragma once
// The one error type of the reconstruction toolbox. `id` is the identifier the
// front ends report (the Octave entry points raise it as the error identifier,
// the command line prints the message and exits non-zero); the message names
// the argument or option at fault in the user's words.
//
// Identifiers, shared with the M-code wrappers:
//   homodyne:usage     wrong number or kind of arguments, unknown command
//   homodyne:badInput  k-space, image or matrix arguments of the wrong class,
//                      shape or values
//   homodyne:badRange  a sampled range that is malformed or does not fit the data
//   homodyne:badOption an unknown option or an option value out of its domain
//   homodyne:sampling  sampling that cannot be reconstructed (gaps, too little
//                      of the symmetric centre, no signal)
//   homodyne:scale     values that single precision cannot represent
//   homodyne:badFile   a raw-data file that is missing, foreign or inconsistent
//   homodyne:noMemory  an allocation failed
//   homodyne:internal  anything else (a fault of the toolbox, not the caller)

#include <stdexcept>
#include <string>

struct ReconError : std::runtime_error {
    std::string id;
    ReconError(std::string identifier, const std::string& message)
        : std::runtime_error(message), id(std::move(identifier))
    {
    }
};
