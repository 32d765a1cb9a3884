#pragma once
// The two steps of one-pass homodyne on their own, behind homodyne_filter and
// homodyne_phase: the core's weighting and phase step on the caller's arrays.
//   [BLOCK, WEIGHTED] = homodyne_recon_mex('filter', KSPACE, KX, KY, KZ)
//   CORRECTED = homodyne_recon_mex('phase', IMAGE, LOWRES)

#include "mex.h"

void filter_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs);
void phase_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs);
