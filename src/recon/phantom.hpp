#pragma once
// The toolbox's test object: ellipsoids in the cube [-1, 1]^3 in the manner
// of the classic head phantom (skull, brain, ventricles, small lesions) with a
// smooth phase of a few radians, the kind homodyne reconstruction assumes;
// and its centred k-space, computed in single precision: the one definition
// behind Octave's homodyne_phantom and Python's homodyne.phantom.

#include <array>
#include <vector>

#include "recon/recon_shape.hpp"

struct Phantom {
    std::vector<Complex> image;   // column-major, x fastest
    std::vector<Complex> kspace;  // its centred DFT: k = 0 at index floor(n/2) of every axis
};

// The object and its k-space on an nx x ny x nz grid (nz = 1: a single
// slice). homodyne:badInput for sizes below 1 or of 2^31 samples or more.
Phantom make_phantom(const std::array<Index, 3>& n);
