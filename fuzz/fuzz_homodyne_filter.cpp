// The plain-buffer "filter" core (plan_axis_filter, crop_block,
// weight_in_place, and both in one pass as crop_and_weight for interleaved
// data) on arbitrary small shapes and ranges, in both complex layouts and for
// real data. Input: sizes nx, ny, nz (0-6) and nvol (0-3) as
// one byte each; per axis a byte (odd: the axis has a range) and two doubles;
// then the samples (real parts, then imaginary parts).
//
// Beyond what the sanitizers see, every layout and both paths must give the
// same bits, and real data must give the real part of the complex result.

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/complex_planes.hpp"
#include "fuzz_input.hpp"
#include "homodyne/homodyne_filter.hpp"

namespace {

struct FilterResult {
    std::vector<float> data_re, data_im, block_re, block_im;
};

enum class Layout { separate, interleaved, real_only };

FilterResult run(const TwoLayouts& samples, const VolumeShape& shape, const std::array<AxisFilter, 3>& axes,
                 std::size_t block_size, Layout layout)
{
    TwoLayouts data = samples;
    TwoLayouts block(std::vector<float>(block_size, 0.0f), std::vector<float>(block_size, 0.0f));
    ComplexPlanes data_view, block_view;
    switch (layout) {
        case Layout::separate:
            data_view = ComplexPlanes{data.re.data(), data.im.data(), 1};
            block_view = ComplexPlanes{block.re.data(), block.im.data(), 1};
            break;
        case Layout::interleaved:
            data_view = ComplexPlanes{data.pairs.data(), data.pairs.data() + 1, 2};
            block_view = ComplexPlanes{block.pairs.data(), block.pairs.data() + 1, 2};
            break;
        case Layout::real_only:
            data_view = ComplexPlanes{data.re.data(), nullptr, 1};
            block_view = ComplexPlanes{block.re.data(), block.im.data(), 1};
            break;
    }
    if (layout == Layout::interleaved) {
        crop_and_weight(data_view, shape, axes[0], axes[1], axes[2], block_view);
    } else {
        crop_block(data_view, shape, axes[0], axes[1], axes[2], block_view);
        weight_in_place(data_view, shape, axes[0], axes[1], axes[2]);
    }
    if (layout == Layout::interleaved) {
        return {data.pairs_real(), data.pairs_imag(), block.pairs_real(), block.pairs_imag()};
    }
    return {data.re, data.im, block.re, block.im};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzInput input(bytes, size);
    VolumeShape shape;
    shape.nx = static_cast<int>(input.below(7));
    shape.ny = static_cast<int>(input.below(7));
    shape.nz = static_cast<int>(input.below(7));
    shape.nvol = static_cast<int>(input.below(4));
    const int sizes[3] = {shape.nx, shape.ny, shape.nz};

    std::array<AxisFilter, 3> axes;
    std::size_t block_size = static_cast<std::size_t>(shape.nvol);
    for (int axis = 0; axis < 3; ++axis) {
        const bool has_range = input.take<std::uint8_t>() % 2 == 1;
        const double range[2] = {input.take<double>(), input.take<double>()};
        axes[axis] = plan_axis_filter(sizes[axis], has_range ? range : nullptr);
        const AxisFilter& planned = axes[axis];
        require(planned.weights.size() == static_cast<std::size_t>(sizes[axis]), "one weight per sample");
        require(planned.extent() >= 0, "the block extent is never negative");
        require(planned.extent() == 0 || (planned.first >= 0 && planned.last < sizes[axis]),
                "the block lies inside the axis");
        block_size *= static_cast<std::size_t>(planned.extent());
    }

    const std::size_t count = static_cast<std::size_t>(shape.nx) * shape.ny * shape.nz * shape.nvol;
    std::vector<float> re = input.floats(count);
    const TwoLayouts samples(std::move(re), input.floats(count));

    const FilterResult separate = run(samples, shape, axes, block_size, Layout::separate);
    const FilterResult interleaved = run(samples, shape, axes, block_size, Layout::interleaved);
    const FilterResult real = run(samples, shape, axes, block_size, Layout::real_only);

    require(same_bits(separate.data_re, interleaved.data_re) && same_bits(separate.data_im, interleaved.data_im),
            "both layouts weight the data alike");
    require(same_bits(separate.block_re, interleaved.block_re) && same_bits(separate.block_im, interleaved.block_im),
            "both layouts crop alike");
    require(same_bits(real.data_re, separate.data_re) && same_bits(real.block_re, separate.block_re),
            "real data give the real part of the complex result");
    require(same_bits(real.block_im, std::vector<float>(block_size, 0.0f)), "real data leave the block's imaginary part zero");
    return 0;
}
