#include "recon/sampled_box.hpp"

#include <algorithm>

SampledBox sampled_box(const ReconShape& shape, const SampledRanges& ranges)
{
    SampledBox box;
    box.n = shape.n;
    for (int axis = 0; axis < 3; ++axis) {
        const Index n = shape.n[axis];
        const KRange whole{-(n / 2), (n + 1) / 2 - 1};
        box.range[axis] = ranges[axis].value_or(whole);
        box.partial[axis] = box.range[axis].first != whole.first || box.range[axis].last != whole.last;
    }
    return box;
}

void crop_sampled(const SampledBox& box, const Complex* centred, Complex* box_samples)
{
    const Index nx = box.n[0], ny = box.n[1], nz = box.n[2];
    const Index x0 = box.range[0].first + nx / 2;
    for (Index z = 0; z < box.extent(2); ++z) {
        const Index cz = box.range[2].first + z + nz / 2;
        for (Index y = 0; y < box.extent(1); ++y) {
            const Complex* row = centred + (cz * ny + box.range[1].first + y + ny / 2) * nx + x0;
            box_samples = std::copy(row, row + box.extent(0), box_samples);
        }
    }
}
