#pragma once
// A call's report as an Octave/MATLAB value: records become scalar structs,
// lists of records struct arrays, other lists cells, numbers double matrices.

#include "mex.h"
#include "recon/info_value.hpp"

mxArray* host_value_of(const InfoValue& value);
