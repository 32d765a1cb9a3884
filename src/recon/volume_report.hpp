#pragma once
// What the reconstruction of one coil image did, as every method reports it.

#include <array>

#include "recon/recon_options.hpp"

struct VolumeReport {
    // POCS iterations run by its blocks of lines or planes, each stopping on
    // its own: the fewest, the median and the most.
    std::array<double, 3> iterations{0.0, 0.0, 0.0};
    double change = 0.0;         // relative change of the last iteration, the largest of a block
    double residual = 0.0;       // ||estimate - measured|| / ||measured|| over the block, last iterations
    PhaseConstraint constraint = PhaseConstraint::real_part;  // the form whose result was kept
    std::array<Index, 3> echo{0, 0, 0};  // k-space peak per partial axis
};
