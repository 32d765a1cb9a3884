#pragma once
// The "filter" computation on plain buffers: per-axis planning, the crop of the
// symmetric central block and the in-place homodyne weighting.

#include <vector>

#include "common/complex_planes.hpp"

// One k-space axis after planning: its weights (1.0 where it is not weighted)
// and the inclusive bounds [first, last] of the block that the crop keeps.
struct AxisFilter {
    std::vector<float> weights;
    int first = 0;
    int last = 0;
    bool weighted = false;

    int extent() const { return last - first + 1; }
};

// Plans one axis of n samples. `range` points at [first, last] sampled k, or is
// null for an empty range.
// - Empty range, or |first + last| <= 1 (also a NaN sum): the axis counts as
//   fully sampled, is kept whole and is not weighted.
// - Otherwise the range goes to calculate_filter. A rejected range leaves the
//   axis unweighted with bounds {0, 0}: the block keeps only its first sample.
// - An axis without samples (n == 0) has nothing to crop or weight; its block
//   extent is 0 whatever the range says, so no sample outside the data is read.
AxisFilter plan_axis_filter(int n, const double* range);

// Sizes of data seen as nvol volumes of nx * ny * nz samples, x fastest.
struct VolumeShape {
    int nx = 1;
    int ny = 1;
    int nz = 1;
    int nvol = 1;
};

// Copies the block [x.first, x.last] x [y.first, y.last] x [z.first, z.last] of
// every volume of `data` into `block` (of extents x.extent() * y.extent() *
// z.extent() per volume, volumes following each other). The block's imaginary
// part is written only for complex data; it is expected to hold zeros.
void crop_block(const ComplexPlanes& data, const VolumeShape& shape, const AxisFilter& x,
                const AxisFilter& y, const AxisFilter& z, const ComplexPlanes& block);

// Multiplies every sample of `data` in place by the geometric mean of the
// weights of the weighted axes: f = pow(wx[x] * wy[y] * wz[z], e) rounded to
// single, with the single-precision exponent e = 1.0f / (number of weighted
// axes). With no weighted axis the data are left exactly as they were.
void weight_in_place(const ComplexPlanes& data, const VolumeShape& shape, const AxisFilter& x,
                     const AxisFilter& y, const AxisFilter& z);

// Both of the above in one pass over the data, each row copied before it is
// weighted: what the "filter" command does.
void crop_and_weight(const ComplexPlanes& data, const VolumeShape& shape, const AxisFilter& x,
                     const AxisFilter& y, const AxisFilter& z, const ComplexPlanes& block);
