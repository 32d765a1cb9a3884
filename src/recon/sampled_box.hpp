#pragma once
// The acquired block of a coil image: per axis the sampled k range, the whole
// axis where it is fully sampled. The measured samples are kept compactly in
// the block's own order (x fastest, k ascending), and runs over the block map
// them to FFT order.

#include <array>
#include <vector>

#include "recon/fft_order.hpp"
#include "recon/recon_shape.hpp"
#include "recon/volume_transform.hpp"

struct SampledBox {
    std::array<Index, 3> n{1, 1, 1};  // the image's sizes
    std::array<KRange, 3> range;       // acquired k per axis
    std::array<bool, 3> partial{false, false, false};

    Index extent(int axis) const { return range[axis].last - range[axis].first + 1; }
    Index samples() const { return extent(0) * extent(1) * extent(2); }
};

SampledBox sampled_box(const ReconShape& shape, const SampledRanges& ranges);

// Copies the block out of one centred coil image into `box_samples`.
void crop_sampled(const SampledBox& box, const Complex* centred, Complex* box_samples);

// Calls visit(fft_offset, box_offset, count, x, y, z) for runs of `count`
// samples contiguous in both FFT order and block order; x, y, z are the
// run's first position inside the block along each axis.
template <typename Visit>
void for_each_box_run(const SampledBox& box, Visit visit)
{
    const KRange& rx = box.range[0];
    const Index nx = box.n[0], ny = box.n[1], nz = box.n[2];
    const Index negative = rx.first < 0 ? std::min<Index>(rx.last, -1) - rx.first + 1 : 0;
    const Index start = std::max<Index>(rx.first, 0);
    const Index positive = rx.last - start + 1;
    Index offset = 0;
    for (Index z = 0; z < box.extent(2); ++z) {
        const Index fz = fft_index(box.range[2].first + z, nz);
        for (Index y = 0; y < box.extent(1); ++y, offset += box.extent(0)) {
            const Index row = (fz * ny + fft_index(box.range[1].first + y, ny)) * nx;
            if (negative > 0) {
                visit(row + rx.first + nx, offset, negative, Index{0}, y, z);
            }
            if (positive > 0) {
                visit(row + start, offset + negative, positive, negative, y, z);
            }
        }
    }
}
