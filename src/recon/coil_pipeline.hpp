#pragma once
// The pipeline of reconstruct() through its coil and noise steps: noise
// level and prewhitening, every coil image reconstructed into a complex
// image and its calibration image, then per volume the combination, the
// noise-adaptive weighting and the output form (see reconstruct.hpp).

#include "recon/method_plans.hpp"
#include "recon/reconstruct.hpp"

// As reconstruct(), on options and k-space that it has checked, read as
// k-space times 2^-`exponent` (the unit scale), with the call's method
// plans, made before any thread starts.
ReconReport reconstruct_through_coil_steps(const ReconShape& shape, const Complex* kspace, int exponent,
                                           const ReconOptions& options, const MethodPlans& plans, float* image,
                                           float* phase);
