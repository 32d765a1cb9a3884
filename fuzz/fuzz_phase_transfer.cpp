// AddLowResPhase on arbitrary small shapes that keep its caller guarantees
// (equal list lengths of at least three, no zero size in the image, at least
// as many image volumes as data volumes), for complex data in both layouts
// and for real data, with a complex or a real image.
// Input: list length (3-8), image complex (odd byte), same size (odd byte),
// the data sizes (0-4 for the first three axes, 0-2 beyond), the image's
// excess over them, then the data samples and the image samples.
//
// Beyond what the sanitizers see: both layouts give the same bits, the data's
// imaginary part ends up zero, and the image is only read.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/complex_planes.hpp"
#include "fuzz_input.hpp"
#include "phase/phase_transfer.hpp"

namespace {

std::size_t element_count(const DimensionList& dims)
{
    std::size_t count = 1;
    for (const std::uint32_t size : dims) {
        count *= size;
    }
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzInput input(bytes, size);
    const std::size_t length = 3 + input.below(6);
    const bool complex_image = input.take<std::uint8_t>() % 2 == 1;
    const bool same_size = input.take<std::uint8_t>() % 2 == 1;

    DimensionList data_dims(length), low_dims(length);
    for (std::size_t d = 0; d < length; ++d) {
        data_dims[d] = input.below(d < 3 ? 5 : 3);
    }
    // The image is never smaller than the data beyond the third axis, so it
    // holds at least as many volumes; along the first three it is any size.
    for (std::size_t d = 0; d < length; ++d) {
        const std::uint32_t excess = input.below(d < 3 ? 4 : 2);
        low_dims[d] = d < 3 ? 1 + excess : (data_dims[d] > 0 ? data_dims[d] : 1) + excess;
    }
    if (same_size && element_count(data_dims) > 0) {
        low_dims = data_dims;
    }

    const std::size_t data_count = element_count(data_dims);
    const std::size_t low_count = element_count(low_dims);
    std::vector<float> data_re = input.floats(data_count);
    const TwoLayouts data(std::move(data_re), input.floats(data_count));
    const std::vector<float> low_re = input.floats(low_count);
    const std::vector<float> low_im = complex_image ? input.floats(low_count) : std::vector<float>();
    const float* low_im_plane = complex_image ? low_im.data() : nullptr;

    // Separate planes, with copies of the image that must stay as they were.
    TwoLayouts separate = data;
    std::vector<float> image_re = low_re, image_im = low_im;
    AddLowResPhase(ComplexPlanes{separate.re.data(), separate.im.data(), 1}, data_dims, image_re.data(),
                   complex_image ? image_im.data() : nullptr, low_dims);
    require(same_bits(image_re, low_re) && same_bits(image_im, low_im), "the image is only read");
    require(same_bits(separate.im, std::vector<float>(data_count, 0.0f)), "the data's imaginary part becomes zero");

    TwoLayouts interleaved = data;
    AddLowResPhase(ComplexPlanes{interleaved.pairs.data(), interleaved.pairs.data() + 1, 2}, data_dims,
                   low_re.data(), low_im_plane, low_dims);
    require(same_bits(interleaved.pairs_real(), separate.re) && same_bits(interleaved.pairs_imag(), separate.im),
            "both layouts give the same result");

    // Real data: no imaginary plane at all.
    std::vector<float> real = data.re;
    AddLowResPhase(ComplexPlanes{real.data(), nullptr, 1}, data_dims, low_re.data(), low_im_plane, low_dims);
    return 0;
}
