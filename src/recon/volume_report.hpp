#pragma once
// What the reconstruction of one coil image did, as every method reports it.

#include <array>

#include "recon/recon_options.hpp"

struct VolumeReport {
    int iterations = 0;          // POCS iterations run
    double change = 0.0;         // relative change of the last iteration
    double residual = 0.0;       // ||estimate - measured|| / ||measured|| over the block, last iteration
    PhaseConstraint constraint = PhaseConstraint::real_part;  // the form whose result was kept
    std::array<Index, 3> echo{0, 0, 0};  // k-space peak per partial axis
};
