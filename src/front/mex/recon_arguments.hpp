#pragma once
// The "reconstruct" command: reads and checks the k-space and the options
// struct, runs the pipeline, and returns the image and the info struct.

#include "mex.h"

void reconstruct_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs);
