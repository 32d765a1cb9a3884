#pragma once
// Octave and MATLAB values as the core's option values: text, logical and
// numeric scalars, cells of [] or numbers, numeric arrays, the acq struct of
// read_ismrmrd_kspace.

#include <optional>
#include <string>
#include <vector>

#include "mex.h"
#include "recon/option_table.hpp"

OptionValue option_value_of(const mxArray* value, const char* option);

// A sampled range given on its own (homodyne_filter's KX): [] or real
// numbers, homodyne:badRange naming `label` otherwise.
std::optional<std::vector<double>> range_numbers_of(const mxArray* value, const std::string& label);
