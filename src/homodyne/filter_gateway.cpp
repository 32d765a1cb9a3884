// Gateway of the "filter" command: count check, validation in its fixed order,
// then one call into the plain-buffer core per step.

#include "homodyne/filter_gateway.hpp"

#include <array>
#include <cstdint>
#include <vector>

#include "common/index_limits.hpp"
#include "gateway/host_arrays.hpp"
#include "gateway/host_error.hpp"
#include "homodyne/homodyne_filter.hpp"

namespace {

struct RangeInput {
    const mxArray* array;
    std::vector<std::int64_t> dims;
    bool empty;
};

struct RangeMessages {
    const char* not_double;
    const char* not_real;
    const char* too_many_dimensions;
    const char* not_a_vector;
    const char* not_two_elements;
    const char* sparse;
};

constexpr std::array<RangeMessages, 3> range_messages{{
    {"kx-range must be of type double.", "kx-range must be real valued.",
     "The kx-range must be 1 dimensional vector.", "The kx-range coordinates must be 1 dimensional vector.",
     "The kx-range must be of length 2.", "kx-range must not be sparse."},
    {"ky-range must be of type double.", "ky-range must be real valued.",
     "The ky-range must be 1 dimensional vector.", "The ky-range coordinates must be 1 dimensional vector.",
     "The ky-range must be of length 2.", "ky-range must not be sparse."},
    {"kz-range must be of type double.", "kz-range must be real valued.",
     "The kz-range must be 1 dimensional vector.", "The kz-range coordinates must be 1 dimensional vector.",
     "The kz-range must be of length 2.", "kz-range must not be sparse."},
}};

void validate_shape(const RangeInput& range, const RangeMessages& messages)
{
    if (range.empty) {
        return;
    }
    if (range.dims.size() > 2) {
        refuse(messages.too_many_dimensions);
    }
    if (range.dims[0] != 1 && range.dims[1] != 1) {
        refuse(messages.not_a_vector);
    }
    if (range.dims[0] != 2 && range.dims[1] != 2) {
        refuse(messages.not_two_elements);
    }
}

// Size of dimension `index` (0-based), 1 where the data have fewer dimensions.
int size_or_one(const std::vector<std::int64_t>& dims, std::size_t index)
{
    return index < dims.size() ? static_cast<int>(dims[index]) : 1;
}

}  // namespace

void ApplyHomodyneFilter(int /*nlhs*/, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    if (nrhs <= 4) {
        refuse("There must be at least 5 inputs.");
    }
    if (nrhs >= 6) {
        refuse("Too many input arguments.");
    }

    const mxArray* data = prhs[1];
    const std::vector<std::int64_t> data_dims = dimensions_of(data);
    std::array<RangeInput, 3> ranges;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const mxArray* array = prhs[2 + axis];
        std::vector<std::int64_t> dims = dimensions_of(array);
        const bool empty = is_empty_by_first_dimension(dims);
        ranges[axis] = RangeInput{array, std::move(dims), empty};
    }

    if (!has_class(data, "single")) {
        refuse("Data must be of type single.");
    }
    if (is_empty_by_first_dimension(data_dims)) {
        refuse("Data cannot be empty.");
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (!has_class(ranges[axis].array, "double")) {
            refuse(range_messages[axis].not_double);
        }
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (mxIsComplex(ranges[axis].array)) {
            refuse(range_messages[axis].not_real);
        }
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        validate_shape(ranges[axis], range_messages[axis]);
    }
    // Beyond the checks above: a sparse range stores only its nonzeros, and
    // indices past 2^31 would overflow the 32-bit index arithmetic.
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (mxIsSparse(ranges[axis].array)) {
            refuse(range_messages[axis].sparse);
        }
    }
    if (!fits_32bit_indexing(data_dims)) {
        refuse("Data is too large: every dimension and the product of the nonzero dimensions must stay below 2^31.");
    }

    VolumeShape shape;
    shape.nx = size_or_one(data_dims, 0);
    shape.ny = size_or_one(data_dims, 1);
    shape.nz = size_or_one(data_dims, 2);
    shape.nvol = 1;
    for (std::size_t d = 3; d < data_dims.size(); ++d) {
        shape.nvol *= static_cast<int>(data_dims[d]);
    }

    const int sizes[3] = {shape.nx, shape.ny, shape.nz};
    std::array<AxisFilter, 3> axes;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double* range = ranges[axis].empty ? nullptr : double_values(ranges[axis].array);
        axes[axis] = plan_axis_filter(sizes[axis], range);
    }

    std::vector<std::int64_t> block_dims = data_dims;
    for (std::size_t d = 0; d < block_dims.size() && d < 3; ++d) {
        block_dims[d] = axes[d].extent();
    }
    plhs[0] = create_complex_single(block_dims);

    const ComplexPlanes samples = single_planes(data);
    crop_and_weight(samples, shape, axes[0], axes[1], axes[2], single_planes(plhs[0]));
}
