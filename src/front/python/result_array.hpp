#pragma once
// A result of the input's precision that the core fills at unit scale in
// single precision: a float32 or complex64 array in Fortran order is filled
// where it is; float64 and complex128 results go through a float buffer and
// are scaled on the way over, so they keep the range of double.

#include <string>
#include <vector>

#include <pybind11/numpy.h>

#include "recon/recon_shape.hpp"

class ResultArray {
public:
    // Needs the GIL.
    ResultArray(const std::vector<Index>& dims, bool is_double, bool is_complex);
    float* values() { return scratch_.empty() ? static_cast<float*>(array_.mutable_data()) : scratch_.data(); }
    // The array at the caller's scale (times 2^exponent); homodyne:scale
    // where that does not fit the result's precision.
    pybind11::array finish(int exponent, const std::string& name);

private:
    pybind11::array array_;
    std::vector<float> scratch_;
    Index count_ = 0;  // floats: two per complex value
};
