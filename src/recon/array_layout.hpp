#pragma once
// Where the spatial axes, the coils and the volumes of a caller's array lie,
// and how its samples map onto the core's canonical order (x, y, z, coils,
// volumes). A caller's array has any number of dimensions, first = x.

#include <optional>
#include <string>
#include <vector>

#include "recon/recon_shape.hpp"

struct ArrayLayout {
    ReconShape shape;                 // canonical sizes; z = 1 for 2-D data
    int spatial_dims = 3;             // 2 or 3
    std::optional<int> coil_dim;      // the caller's coil dimension, counted from 0
    std::vector<Index> dims;          // the caller's sizes, at least spatial_dims entries
    std::vector<int> volume_dims;     // the caller's dimensions that index volumes, in order

    // The caller's offset (in elements, with `strides`) of canonical sample
    // (x, y, z) of coil c in volume v.
    Index offset(const std::vector<Index>& strides, Index x, Index y, Index z, Index c, Index v) const;
    // Column-major strides of `dims`.
    std::vector<Index> column_major() const;
    // Whether column-major `strides` of the caller already are the canonical
    // order, so that its samples can be read where they are.
    bool canonical_in_memory(const std::vector<Index>& strides) const;
    // The caller's sizes of a result: 1 along the coils when they are combined.
    std::vector<Index> result_dims(bool coils_combined) const;
};

// "16x12x4": sizes as messages show them.
std::string size_text(const std::vector<Index>& dims);

// `coils`: the coil dimension counted from 1 (3 or more), `spatial_dims`: 2
// or 3 (default 3, or 2 when the coils are dimension 3). Throws
// homodyne:badOption for a coil dimension outside the array or among the
// spatial ones, homodyne:badInput for an empty array (naming it `name`).
ArrayLayout array_layout(const std::vector<Index>& dims, std::optional<int> coils, std::optional<int> spatial_dims,
                         const std::string& name = "KSPACE");
