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

// One coil image: centred k-space in, the centred image out in the form
// `output` (complex: the real image times the low-resolution phase), and
// into `phase`, unless null, the low-resolution phase in radians (0 where
// the low-resolution image is 0).
VolumeReport homodyne_volume(const HomodynePlan& plan, const VolumeTransform& full, const VolumeTransform& block,
                             const Complex* kspace, ReconOutput output, float* image, float* phase);
