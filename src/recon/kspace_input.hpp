#pragma once
// The k-space of a call as the caller holds it, and the one pass that brings it
// into the core's canonical order at unit scale.

#include <string>
#include <vector>

#include "recon/array_layout.hpp"
#include "recon/volume_transform.hpp"

// Any of four element types, any strides. The core reads it; it never writes
// into it.
struct KspaceInput {
    enum class Type { complex_float, complex_double, real_float, real_double };
    Type type = Type::complex_float;
    const void* data = nullptr;
    // Separate imaginary plane of real-typed data (hosts that keep complex
    // data as two planes), else null.
    const void* imag = nullptr;
    std::vector<Index> dims;     // the caller's sizes, first = x; trailing ones may be left out
    std::vector<Index> strides;  // per dimension, in elements; empty: column-major (first fastest)
    std::string name = "KSPACE";  // the argument's name in messages
};

// The strides of `input` for every dimension of `layout` (column-major where
// the caller gave none; 0 for dimensions the layout added).
std::vector<Index> strides_of(const KspaceInput& input, const ArrayLayout& layout);

// The exponent e with 2^e <= the largest real or imaginary part < 2^(e+1) (0
// for all-zero data). Throws homodyne:badInput for NaN or Inf.
int unit_exponent_of(const KspaceInput& input, const ArrayLayout& layout, const std::vector<Index>& strides);

// Whether the samples can be read where they are: complex single, canonical
// order in memory, already at unit scale.
bool usable_in_place(const KspaceInput& input, const ArrayLayout& layout, const std::vector<Index>& strides,
                     int exponent);

// The samples in canonical order, divided by 2^exponent, into `out`
// (layout.shape.samples() values).
void gather_canonical(const KspaceInput& input, const ArrayLayout& layout, const std::vector<Index>& strides,
                      int exponent, Complex* out);
