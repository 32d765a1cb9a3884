#pragma once
// The one shape of the reconstruction toolbox, shared by every step, the MEX
// entry points and the command line: three spatial axes (x, y, z), receive
// coils, and independent volumes (slices, echoes, repetitions, ...), stored in
// this order with x fastest, as interleaved complex single-precision samples.
// k-space and images are centred: index floor(n/2) of an axis is k = 0 (or the
// image centre), so an axis of n samples covers k = -floor(n/2) .. ceil(n/2)-1.

#include <array>
#include <complex>
#include <cstddef>
#include <optional>

using Index = std::ptrdiff_t;
using Complex = std::complex<float>;

enum SpatialAxis : int { AXIS_X = 0, AXIS_Y = 1, AXIS_Z = 2 };

struct ReconShape {
    std::array<Index, 3> n{1, 1, 1};  // samples along x, y, z
    Index coils = 1;
    Index volumes = 1;

    Index voxels() const { return n[0] * n[1] * n[2]; }  // samples of one coil image
    Index volume_stride() const { return voxels() * coils; }
    Index samples() const { return volume_stride() * volumes; }
    // Distance between neighbours along a spatial axis.
    Index stride(int axis) const { return axis == AXIS_X ? 1 : axis == AXIS_Y ? n[0] : n[0] * n[1]; }
    // Index of k = 0 along a spatial axis.
    Index centre(int axis) const { return n[axis] / 2; }
};

// The acquired block of one spatial axis, inclusive, in k coordinates.
struct KRange {
    Index first = 0;
    Index last = 0;
};

// Per spatial axis: the acquired block, or nullopt for a fully sampled axis.
using SampledRanges = std::array<std::optional<KRange>, 3>;
