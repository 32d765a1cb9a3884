#pragma once
// A host array as the core reads it, in place: its element type, planes and
// sizes.

#include "mex.h"
#include "recon/kspace_input.hpp"

// Throws homodyne:badInput, naming the argument `name`, unless the array is
// a full single or double array (real or complex).
KspaceInput input_of(const mxArray* array, const char* name);
