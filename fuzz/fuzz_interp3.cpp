// The interpolation driver Interp3::interp3 with any method value, data and
// query dimension lists of 3 to 6 entries with small sizes, any coordinates
// (NaN, infinities, huge values) and explicit or null grids. The inputs keep
// the driver's documented preconditions; everything else is arbitrary.
// Input: method (int32), the two list lengths, explicit grids (odd byte), the
// sizes, then grid coordinates, query coordinates and samples as floats.
//
// Beyond what the sanitizers see: an unknown method throws the documented
// text before anything is written; otherwise every result is written, and
// nearest-neighbour results are samples of their own volume.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_input.hpp"
#include "interpolation/interp3.hpp"

namespace {

using Dims = std::vector<unsigned int>;

std::size_t product(const Dims& dims, std::size_t begin, std::size_t end)
{
    std::size_t p = 1;
    for (std::size_t i = begin; i < end; ++i) {
        p *= dims[i];
    }
    return p;
}

// A grid of `count` coordinates whose first and last differ, as the driver
// requires; false when the input cannot give one.
bool make_grid(FuzzInput& input, std::size_t count, std::vector<float>& grid)
{
    grid = input.floats(count);
    return grid.front() != grid.back();
}

bool is_sample_of(float value, const float* volume, std::size_t size)
{
    return std::any_of(volume, volume + size, [value](float s) { return bits_of(s) == bits_of(value); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzInput input(bytes, size);
    const auto method = static_cast<Interp3::InterpolationMethod>(input.take<std::int32_t>());
    Dims data_dims(3 + input.below(4)), query_dims(3 + input.below(4));
    const bool explicit_grids = input.take<std::uint8_t>() % 2 == 1;
    // Volume sizes of at least 1; data sizes beyond the third at least 1 so
    // that explicit grids have a last element; a nonzero volume count.
    for (std::size_t d = 0; d < data_dims.size(); ++d) {
        data_dims[d] = 1 + input.below(d < 3 ? 4 : 3);
    }
    for (std::size_t d = 0; d < query_dims.size(); ++d) {
        query_dims[d] = d < 3 ? input.below(5) : 1 + input.below(3);
    }

    const bool multi_volume = data_dims.size() >= 4;
    const std::size_t volumes = multi_volume ? product(query_dims, 3, query_dims.size()) : 1;
    const std::size_t volume_size = product(data_dims, 0, 3);
    const std::size_t points = product(query_dims, 0, 3);

    std::vector<float> x, y, z;
    if (explicit_grids) {
        const std::size_t grid_count = product(data_dims, 0, data_dims.size());
        if (!make_grid(input, grid_count, x) || !make_grid(input, grid_count, y) ||
            !make_grid(input, grid_count, z)) {
            return 0;
        }
    }
    std::vector<float> xi = input.floats(points), yi = input.floats(points), zi = input.floats(points);
    std::vector<float> data = input.floats(volumes * volume_size);
    std::vector<float> out(volumes * points, unwritten_marker());

    const bool known_method =
        method == Interp3::NEAREST || method == Interp3::LINEAR || method == Interp3::BICUBIC;
    try {
        Interp3::interp3<float, float>(explicit_grids ? x.data() : nullptr, explicit_grids ? y.data() : nullptr,
                                       explicit_grids ? z.data() : nullptr, data.data(), data_dims, xi.data(),
                                       yi.data(), zi.data(), query_dims, method, out.data());
    } catch (const char* message) {
        require(!known_method, "a known method throws nothing");
        require(std::strcmp(message, "Error in Interp3: Unimplemented interpolation method.") == 0,
                "an unknown method throws the documented text");
        require(std::all_of(out.begin(), out.end(), is_unwritten), "an unknown method writes nothing");
        return 0;
    }
    require(known_method, "an unknown method is refused");
    require(std::none_of(out.begin(), out.end(), is_unwritten), "every result is written");
    if (method == Interp3::NEAREST) {
        for (std::size_t k = 0; k < volumes; ++k) {
            for (std::size_t i = 0; i < points; ++i) {
                require(is_sample_of(out[k * points + i], data.data() + k * volume_size, volume_size),
                        "nearest copies a sample of its own volume");
            }
        }
    }
    return 0;
}
