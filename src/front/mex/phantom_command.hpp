#pragma once
// The toolbox's test object from the core, behind homodyne_phantom:
//   [IMAGE, KSPACE] = homodyne_recon_mex('phantom', [nx ny nz])

#include "mex.h"

void phantom_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs);
