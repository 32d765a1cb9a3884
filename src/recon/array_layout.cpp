#include "recon/array_layout.hpp"

#include <string>

#include "recon/recon_error.hpp"

std::string size_text(const std::vector<Index>& dims)
{
    std::string text;
    for (std::size_t d = 0; d < dims.size(); ++d) {
        text += (d == 0 ? "" : "x") + std::to_string(dims[d]);
    }
    return text;
}

ArrayLayout array_layout(const std::vector<Index>& dims, std::optional<int> coils, std::optional<int> spatial_dims,
                         const std::string& name)
{
    ArrayLayout layout;
    layout.dims = dims;
    for (const Index n : dims) {
        if (n < 1) {
            throw ReconError("homodyne:badInput", name + " must not be empty (its size is " + size_text(dims) + ").");
        }
    }
    if (dims.empty()) {
        throw ReconError("homodyne:badInput", name + " must have at least one dimension.");
    }
    const int nd = static_cast<int>(dims.size());
    layout.spatial_dims = spatial_dims.value_or(coils == 3 ? 2 : 3);
    if (coils) {
        if (*coils < 3 || *coils > nd) {
            throw ReconError("homodyne:badOption", "'Coils' must be a whole number from 3 to the number of "
                                                   "dimensions of KSPACE, " + std::to_string(nd) +
                                                       " (the dimension that holds the receive coils).");
        }
        if (*coils <= layout.spatial_dims) {
            throw ReconError("homodyne:badOption", "'Coils', " + std::to_string(*coils) + " lies among the " +
                                                       std::to_string(layout.spatial_dims) +
                                                       " spatial dimensions; give 'Dims', 2 for 2-D data.");
        }
        layout.coil_dim = *coils - 1;
    }
    layout.dims.resize(std::max<std::size_t>(layout.dims.size(), layout.spatial_dims), 1);
    for (int d = 0; d < layout.spatial_dims; ++d) {
        layout.shape.n[d] = layout.dims[d];
    }
    for (int d = layout.spatial_dims; d < static_cast<int>(layout.dims.size()); ++d) {
        if (layout.coil_dim == d) {
            layout.shape.coils = layout.dims[d];
        } else {
            layout.volume_dims.push_back(d);
            layout.shape.volumes *= layout.dims[d];
        }
    }
    return layout;
}

std::vector<Index> ArrayLayout::column_major() const
{
    std::vector<Index> strides(dims.size());
    Index stride = 1;
    for (std::size_t d = 0; d < dims.size(); ++d) {
        strides[d] = stride;
        stride *= dims[d];
    }
    return strides;
}

Index ArrayLayout::offset(const std::vector<Index>& strides, Index x, Index y, Index z, Index c, Index v) const
{
    Index at = x * strides[0] + (spatial_dims > 1 ? y * strides[1] : 0) + (spatial_dims > 2 ? z * strides[2] : 0);
    if (coil_dim) {
        at += c * strides[*coil_dim];
    }
    for (const int d : volume_dims) {
        at += (v % dims[d]) * strides[d];
        v /= dims[d];
    }
    return at;
}

bool ArrayLayout::canonical_in_memory(const std::vector<Index>& strides) const
{
    // Canonical order visits the caller's dimensions as x, y, z, coils, then
    // the volumes in order; it is the memory order when each of them, skipping
    // sizes of 1, steps by the product of the ones before.
    std::vector<int> visit;
    for (int d = 0; d < spatial_dims; ++d) {
        visit.push_back(d);
    }
    if (coil_dim) {
        visit.push_back(*coil_dim);
    }
    visit.insert(visit.end(), volume_dims.begin(), volume_dims.end());
    Index expected = 1;
    for (const int d : visit) {
        if (dims[d] == 1) {
            continue;
        }
        if (strides[d] != expected) {
            return false;
        }
        expected *= dims[d];
    }
    return true;
}

std::vector<Index> ArrayLayout::result_dims(bool coils_combined) const
{
    std::vector<Index> result = dims;
    if (coil_dim && coils_combined) {
        result[*coil_dim] = 1;
    }
    return result;
}
