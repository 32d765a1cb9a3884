#pragma once
// One-pass homodyne reconstruction on plain buffers, through the module's
// cores: an axis missing its positive end
// is mirrored (k -> -k) so that the missing part lies at the negative end;
// the module's weights and crop give the weighted data and the unweighted
// symmetric block; both are inverse transformed (centred); the block image's
// phase is taken off by trilinear transfer; the real part, mirrored back, is
// the image. Where the low-resolution image is exactly 0 no phase exists and
// the image is 0. A range that starts at k = 0 weights that plane 1, the
// homodyne weight of every plane whose mirror was acquired.

#include <array>

#include "common/complex_planes.hpp"
#include "homodyne/homodyne_filter.hpp"
#include "recon/pocs.hpp"
#include "recon/recon_options.hpp"
#include "recon/volume_transform.hpp"

struct HomodynePlan {
    std::array<Index, 3> n{1, 1, 1};
    std::array<bool, 3> mirrored{false, false, false};
    std::array<AxisFilter, 3> axes;  // weights and block bounds, on the mirrored axes
    std::array<Index, 3> block() const
    {
        return {axes[0].extent(), axes[1].extent(), axes[2].extent()};
    }
};

HomodynePlan plan_homodyne(const ReconShape& shape, const SampledRanges& ranges);

// One coil image: centred k-space in, read as k-space times 2^-`exponent`
// (the unit scale), the centred image of that out in the form `output` (complex: the real image times the low-resolution phase), and
// into `phase`, unless null, the low-resolution phase in radians (0 where
// the low-resolution image is 0). `image` holds working data until the
// result is written over it.
VolumeReport homodyne_volume(const HomodynePlan& plan, const VolumeTransform& full, const VolumeTransform& block,
                             const Complex* kspace, int exponent, ReconOutput output, float* image, float* phase);

// The two steps on their own, for callers that run them apart (the toolbox's
// homodyne_filter and homodyne_phase), on one volume of canonical k-space at
// unit scale: the weighted data (the k-space's voxels) and the unweighted
// symmetric block (plan.block() voxels), both in the k-space's own
// orientation (mirrored axes mirrored back).
void weigh_volume(const HomodynePlan& plan, const Complex* kspace, Complex* block, Complex* weighted);

// The phase of the low-resolution image `low` (sizes low_n: x, y, z,
// volumes) taken off `image` (sizes n) as one-pass homodyne takes it off:
// every sample d becomes Re(d conj(L) / |L|), L the trilinear value of `low`
// on the image's grid (first and last samples aligned), NaN where L is 0;
// the imaginary part, if any, becomes 0. Volume v of `low` serves volume v
// of the image.
void take_off_phase(const ComplexPlanes& image, const std::array<Index, 4>& n, const Complex* low,
                    const std::array<Index, 4>& low_n);
