#pragma once
// Files and test data for Python: ISMRMRD raw data, .cfl arrays, PNG
// montages, and the phantom. Arrays come back in Fortran order, x first,
// owning the reader's storage (no copy).

#include <pybind11/pybind11.h>

void bind_files(pybind11::module_& module);
