#pragma once
// The sampled range of one k-space axis of a raw file, from what the header
// declares and what the readouts hold. Placement has already put the declared
// k = 0 at index floor(n/2).
//
// What a file that lies about its limits gives:
//  - planes missing inside the held block (gaps): an error, since homodyne
//    reconstruction needs one contiguous block and zero-filled gaps would be
//    taken for acquired zeros;
//  - a declared centre that the data contradict (the energy peak lies elsewhere
//    and holds more than four times the energy at the declared centre): an
//    error naming both positions; moving k = 0 would change the sampled
//    ranges and the image phase behind the user's back;
//  - limits (minimum, maximum) wider than the held block: a warning, and the
//    held block is used, since the readouts show it unambiguously (readouts
//    outside the limits were refused as they were read).

#include <optional>
#include <string>
#include <vector>

#include "recon/recon_shape.hpp"

struct AxisEvidence {
    std::string name;              // the header's name of the axis, for messages
    std::vector<char> held;        // per index: a readout was placed there
    std::vector<double> energy;    // per index: sum of |sample|^2 over the data
    std::optional<KRange> declared;  // the block the header declares, if it does
};

// The range of the axis (nullopt when the whole axis is held), or a
// ReconError homodyne:badFile naming `path`. Warnings are appended.
std::optional<KRange> supported_range(const AxisEvidence& axis, const std::string& path,
                                      std::vector<std::string>& warnings);
