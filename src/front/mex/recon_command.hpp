#pragma once
// The "reconstruct" command of homodyne_recon_mex:
//   [IMAGE, INFO, PHASE, ZERO_FILLED, SENSITIVITIES] =
//       homodyne_recon_mex('reconstruct', KSPACE, name, value, ...)
// KSPACE and the options in, results of KSPACE's class out; everything in
// between is the core's.

#include "mex.h"

void reconstruct_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs);
