#pragma once
// The largest real or imaginary part of complex single-precision samples, the
// one pass every call makes over its whole k-space before anything else.

#include "recon/recon_shape.hpp"

// max |re|, |im| over `count` samples; Inf or NaN where any part is one.
float largest_part(const Complex* samples, Index count);
