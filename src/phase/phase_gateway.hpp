#pragma once
#include "mex.h"

// The "multiply" command: homodyne_mex('multiply', data, lowres). Corrects the
// phase of `data` in place with the interpolated low-resolution image; creates
// no output.
void AddLowResPhase(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs);
