#pragma once
// A numpy array as the core's KspaceInput: its dimensions (axis 0 = x) and
// strides in elements, so C order, Fortran order and strided views are all
// read where they are, without a copy.

#include <pybind11/numpy.h>

#include "recon/kspace_input.hpp"

// complex64, complex128, float32 or float64 in native byte order; TypeError
// for any other object or element type, homodyne:badInput for a 0-d array,
// an unaligned one or strides that are not whole elements. The input refers
// into `array`, which the caller keeps alive.
KspaceInput kspace_input_of(const pybind11::object& array);

// Whether results come back in double precision (as the input's class).
bool double_precision(const pybind11::array& array);
