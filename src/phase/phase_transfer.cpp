#include "phase/phase_transfer.hpp"

#include <cmath>
#include <cstddef>

#include "common/vector_clones.hpp"
#include "interpolation/vector_manipulation.hpp"
#include "phase/axis_samples.hpp"

// The query grid is the tensor product of three coordinate vectors, so the
// trilinear interpolation separates: the neighbours and weights of every
// coordinate are found once per axis, and each low-resolution slice is
// interpolated in-plane once (along the second axis, then the first) onto
// the data's first two axes. A data slice then only blends its two
// neighbouring in-plane slices and combines. Every value is formed by the
// same rounded operations in the same order as the per-point trilinear
// kernel (second axis, first axis, third axis), so the results are identical
// bit for bit; the scratch is two in-plane slices per plane, not the data's
// size.

namespace {

// Removes the phase of the values (a, b) that `source(i, a, b)` yields from n
// samples held as `Layout`: the real part at re(i), the imaginary at im(i).
enum class Layout { real, separate, interleaved };

template <Layout L, bool ImageComplex, typename Source>
inline void remove_phase(float* re, float* im, std::ptrdiff_t n, Source source)
{
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        float a, b;
        source(i, a, b);
        const float m = ImageComplex ? std::sqrt(a * a + b * b) : std::sqrt(a * a);
        const float c = a / m;
        const float s = ImageComplex ? (-b) / m : 0.0f;
        // Interleaved pairs are addressed through one pointer, so that the
        // compiler sees the real and imaginary parts cannot overlap.
        float& sample_re = L == Layout::interleaved ? re[2 * i] : re[i];
        float value = c * sample_re;
        if (L != Layout::real) {
            float& sample_im = L == Layout::interleaved ? re[2 * i + 1] : im[i];
            value = value - s * sample_im;
            sample_im = 0.0f;
        }
        sample_re = value;
    }
}

template <bool ImageComplex, typename Source>
inline void remove_phase_in(const ComplexPlanes& data, std::ptrdiff_t offset, std::ptrdiff_t n, Source source)
{
    float* re = &data.real(offset);
    if (!data.is_complex()) {
        remove_phase<Layout::real, ImageComplex>(re, nullptr, n, source);
    } else if (data.stride == 2) {
        remove_phase<Layout::interleaved, ImageComplex>(re, nullptr, n, source);
    } else {
        remove_phase<Layout::separate, ImageComplex>(re, &data.imag(offset), n, source);
    }
}

// Image values already on the data's grid.
HOMODYNE_VECTOR_CLONES
void remove_phase_direct(const ComplexPlanes& data, std::ptrdiff_t offset, std::ptrdiff_t n, const float* a,
                         const float* b)
{
    if (b != nullptr) {
        remove_phase_in<true>(data, offset, n, [=](std::ptrdiff_t i, float& av, float& bv) {
            av = a[i];
            bv = b[i];
        });
    } else {
        remove_phase_in<false>(data, offset, n, [=](std::ptrdiff_t i, float& av, float& bv) {
            av = a[i];
            bv = 0.0f;
        });
    }
}

// Image values blended from two in-plane slices: lower * g + upper * f, with
// the upper slice's product first, as the kernel reduces the third axis.
HOMODYNE_VECTOR_CLONES
void remove_phase_blended(const ComplexPlanes& data, std::ptrdiff_t offset, std::ptrdiff_t n, const float* a_lower,
                          const float* a_upper, const float* b_lower, const float* b_upper, float f, float g)
{
    if (b_lower != nullptr) {
        remove_phase_in<true>(data, offset, n, [=](std::ptrdiff_t i, float& av, float& bv) {
            av = a_upper[i] * f + a_lower[i] * g;
            bv = b_upper[i] * f + b_lower[i] * g;
        });
    } else {
        remove_phase_in<false>(data, offset, n, [=](std::ptrdiff_t i, float& av, float& bv) {
            av = a_upper[i] * f + a_lower[i] * g;
            bv = 0.0f;
        });
    }
}

// One slice of the low-resolution image interpolated onto the data's first
// two axes, stored in the data's order (first axis fastest).
struct InPlaneSlice {
    int slice = -1;  // the low-resolution slice it holds, -1 for none
    std::vector<float> re, im;
};

struct AlignedGrid {
    AxisSamples rows, columns, slices;  // data axes 1, 2, 3 in image indices
    int image_rows, image_columns;
};

// Interpolates slice s of one image plane onto the data's first two axes:
// along the second axis first (a column pair blended at each image row), then
// along the first (two of those values blended at each data row).
HOMODYNE_VECTOR_CLONES
void interpolate_in_plane(const float* plane, int s, const AlignedGrid& grid, float* out)
{
    const std::ptrdiff_t rows = grid.image_rows;
    const std::ptrdiff_t data_rows = static_cast<std::ptrdiff_t>(grid.rows.lower.size());
    std::vector<float> column(static_cast<std::size_t>(rows));
    for (std::size_t j = 0; j < grid.columns.lower.size(); ++j) {
        const float* lower = plane + (std::ptrdiff_t{s} * grid.image_columns + grid.columns.lower[j]) * rows;
        const float* upper = plane + (std::ptrdiff_t{s} * grid.image_columns + grid.columns.upper[j]) * rows;
        const float fx = grid.columns.weight_upper[j], gx = grid.columns.weight_lower[j];
        for (std::ptrdiff_t r = 0; r < rows; ++r) {
            column[r] = upper[r] * fx + lower[r] * gx;
        }
        float* target = out + static_cast<std::ptrdiff_t>(j) * data_rows;
        const int* r0 = grid.rows.lower.data();
        const int* r1 = grid.rows.upper.data();
        const float* fy = grid.rows.weight_upper.data();
        const float* gy = grid.rows.weight_lower.data();
        for (std::ptrdiff_t i = 0; i < data_rows; ++i) {
            target[i] = column[r1[i]] * fy[i] + column[r0[i]] * gy[i];
        }
    }
}

// The in-plane slice s, from the two kept ones, made into `spare` if absent.
const InPlaneSlice& in_plane(int s, InPlaneSlice& spare, InPlaneSlice& other, const float* re, const float* im,
                             const AlignedGrid& grid)
{
    if (spare.slice == s) {
        return spare;
    }
    if (other.slice == s) {
        return other;
    }
    interpolate_in_plane(re, s, grid, spare.re.data());
    if (im != nullptr) {
        interpolate_in_plane(im, s, grid, spare.im.data());
    }
    spare.slice = s;
    return spare;
}

}  // namespace

void AddLowResPhase(const ComplexPlanes& data, const DimensionList& data_dims, const float* low_re,
                    const float* low_im, const DimensionList& low_dims)
{
    const bool same_size = low_dims == data_dims;
    const std::uint32_t Dx = data_dims[0], Dy = data_dims[1], Dz = data_dims[2];
    const std::uint32_t Lx = low_dims[0], Ly = low_dims[1], Lz = low_dims[2];
    std::uint32_t volumes = 1;
    for (std::size_t d = 3; d < data_dims.size(); ++d) {
        volumes *= data_dims[d];
    }
    const std::ptrdiff_t slice_size = std::ptrdiff_t{Dx} * Dy;
    const std::ptrdiff_t data_volume = slice_size * Dz;
    const std::ptrdiff_t low_volume = std::ptrdiff_t{Lx} * Ly * Lz;

    if (same_size) {
        for (std::ptrdiff_t v = 0; v < static_cast<std::int32_t>(volumes); ++v) {
            remove_phase_direct(data, v * data_volume, data_volume, low_re + v * low_volume,
                                low_im != nullptr ? low_im + v * low_volume : nullptr);
        }
        return;
    }
    if (data_volume == 0) {
        return;
    }

    // Data sample i of an axis sits at image index i * (L - 1) / (D - 1), as
    // linspace accumulates it.
    const auto coordinates = [](std::uint32_t image_size, std::uint32_t data_size) {
        return VectorManipulation::linspace<float>(0.0f, static_cast<float>(static_cast<int>(image_size) - 1),
                                                   static_cast<int>(data_size));
    };
    AlignedGrid grid;
    grid.rows = sample_axis(coordinates(Lx, Dx), static_cast<int>(Lx));
    grid.columns = sample_axis(coordinates(Ly, Dy), static_cast<int>(Ly));
    grid.slices = sample_axis(coordinates(Lz, Dz), static_cast<int>(Lz));
    grid.image_rows = static_cast<int>(Lx);
    grid.image_columns = static_cast<int>(Ly);

    InPlaneSlice kept[2];
    for (InPlaneSlice& slice : kept) {
        slice.re.resize(static_cast<std::size_t>(slice_size));
        slice.im.resize(low_im != nullptr ? static_cast<std::size_t>(slice_size) : 0);
    }
    for (std::ptrdiff_t v = 0; v < static_cast<std::int32_t>(volumes); ++v) {
        const float* re = low_re + v * low_volume;
        const float* im = low_im != nullptr ? low_im + v * low_volume : nullptr;
        kept[0].slice = kept[1].slice = -1;
        for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{Dz}; ++k) {
            const int s0 = grid.slices.lower[k], s1 = grid.slices.upper[k];
            // Keep the slice that s0 needs, and make s1 in the other place.
            const bool first_holds_s0 = kept[0].slice == s0 || (kept[1].slice != s0 && kept[1].slice == s1);
            InPlaneSlice& lower_place = first_holds_s0 ? kept[0] : kept[1];
            InPlaneSlice& upper_place = first_holds_s0 ? kept[1] : kept[0];
            const InPlaneSlice& lower = in_plane(s0, lower_place, upper_place, re, im, grid);
            const InPlaneSlice& upper = in_plane(s1, upper_place, lower_place, re, im, grid);
            remove_phase_blended(data, v * data_volume + k * slice_size, slice_size, lower.re.data(),
                                 upper.re.data(), im != nullptr ? lower.im.data() : nullptr,
                                 im != nullptr ? upper.im.data() : nullptr, grid.slices.weight_upper[k],
                                 grid.slices.weight_lower[k]);
        }
    }
}
