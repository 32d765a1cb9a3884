// Gateway of the "multiply" command: count check, validation in its fixed
// order, dimension lists, then one call into the plain-buffer phase transfer.

#include "phase/phase_gateway.hpp"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "common/index_limits.hpp"
#include "gateway/host_arrays.hpp"
#include "gateway/host_error.hpp"
#include "phase/phase_transfer.hpp"

namespace {

// The sizes as a list of at least 13 entries padded with 1 (longer for arrays
// of more dimensions), each the low 32 bits of the host's size.
DimensionList dimension_list(const std::vector<std::int64_t>& dims)
{
    DimensionList list(std::max<std::size_t>(13, dims.size()), 1);
    std::transform(dims.begin(), dims.end(), list.begin(),
                   [](std::int64_t size) { return static_cast<std::uint32_t>(size); });
    return list;
}

std::int64_t element_count(const std::vector<std::int64_t>& dims)
{
    std::int64_t count = 1;
    for (const std::int64_t size : dims) {
        count *= size;
    }
    return count;
}

// Volumes beyond the third dimension.
std::int64_t volume_count(const std::vector<std::int64_t>& dims)
{
    std::int64_t count = 1;
    for (std::size_t d = 3; d < dims.size(); ++d) {
        count *= dims[d];
    }
    return count;
}

}  // namespace

void AddLowResPhase(int /*nlhs*/, mxArray** /*plhs*/, int nrhs, const mxArray** prhs)
{
    if (nrhs < 3) {
        refuse("There must be at least 3 inputs.");
    }
    if (nrhs > 3) {
        refuse("Too many input arguments.");
    }
    const mxArray* data = prhs[1];
    const mxArray* lowres = prhs[2];
    const std::vector<std::int64_t> data_dims = dimensions_of(data);
    const std::vector<std::int64_t> low_dims = dimensions_of(lowres);

    // This order is deliberate: the image's emptiness is reported first.
    if (is_empty_by_first_dimension(low_dims)) {
        refuse("The low resolution data cannot be empty.");
    }
    if (!has_class(data, "single")) {
        refuse("Data must be of type single.");
    }
    if (is_empty_by_first_dimension(data_dims)) {
        refuse("Data cannot be empty.");
    }
    if (!has_class(lowres, "single")) {
        refuse("LowRes must be of type single.");
    }
    if (data_dims.size() != low_dims.size()) {
        refuse("The data must have the same number of dimensions than the low resolution data");
    }
    // Beyond the checks above: what the phase transfer would otherwise read
    // outside the image, or index past the 32-bit arithmetic.
    if (!fits_32bit_indexing(data_dims)) {
        refuse("Data is too large: every dimension and the product of the nonzero dimensions must stay below 2^31.");
    }
    if (!fits_32bit_indexing(low_dims)) {
        refuse("The low resolution data is too large: every dimension and the product of the nonzero dimensions must stay below 2^31.");
    }
    if (element_count(data_dims) > 0) {
        if (element_count(low_dims) == 0) {
            refuse("The low resolution data cannot be empty along any dimension.");
        }
        if (volume_count(low_dims) < volume_count(data_dims)) {
            refuse("The low resolution data must hold at least as many volumes (dimensions 4 and up) as the data.");
        }
    }

    const ComplexPlanes samples = single_planes(data);
    const ContiguousPlanes image(lowres);
    AddLowResPhase(samples, dimension_list(data_dims), image.re(), image.im(), dimension_list(low_dims));
}
