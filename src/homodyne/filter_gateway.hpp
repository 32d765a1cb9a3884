#pragma once
#include "mex.h"

// The "filter" command: out = homodyne_mex('filter', data, kx, ky, kz).
// Returns the symmetric central block of `data` (complex single, not weighted)
// in plhs[0] and multiplies `data` in place by the homodyne weights.
void ApplyHomodyneFilter(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs);
