#pragma once
// Octave and MATLAB values as the core's option values: text, logical and
// numeric scalars, cells of [] or numbers, numeric arrays, the acq struct of
// read_ismrmrd_kspace.

#include "mex.h"
#include "recon/option_table.hpp"

OptionValue option_value_of(const mxArray* value, const char* option);
