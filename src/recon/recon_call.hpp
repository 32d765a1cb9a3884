#pragma once
// What every front end calls: settings and the caller's k-space in, images and
// a report out.
//
//   ReconCall call = prepare_call(settings, input);   // checks, layout, ranges, warnings
//   ReconPlan plan(call);                             // transforms and method plans
//   ReconInfo info = execute(plan, input, buffers);   // any number of times
//
// prepare_call validates everything once, before anything large is allocated:
// the option values against the data, the layout (coils and volumes), the
// sampled ranges (given, from fractions, from an acquisition, or detected)
// checked against the data; it returns the warnings for the front end to
// show. A plan holds what can be reused for further k-spaces of the same
// sizes (a Python loop, the command line's volumes): they are reconstructed
// with the plan's ranges, not detected again.
//
// Results are written at unit scale in single precision: the data are divided
// by 2^e (e from their largest part) before the computation, which changes no
// digit, and the front end multiplies the results by 2^e in its own
// precision (restore_scale for single-precision results).

#include <memory>
#include <vector>

#include "recon/array_layout.hpp"
#include "recon/call_noise.hpp"
#include "recon/kspace_input.hpp"
#include "recon/method_plans.hpp"
#include "recon/option_table.hpp"
#include "recon/range_detection.hpp"
#include "recon/reconstruct.hpp"

// A call resolved against its k-space.
struct ReconCall {
    ArrayLayout layout;               // the caller's dimensions and the canonical shape
    ReconShape shape;                 // canonical: x, y, z, coils, volumes
    ReconOptions options;             // ranges resolved; the noise comes from `noise`
    CallNoise noise;                  // at the caller's scale
    std::vector<Index> result_dims;   // the caller's order, 1 along combined coils
    RangeDetection detection;
    ReconWarnings warnings;
    bool zero_outside = false;        // planes outside the ranges are zeroed before reconstruction
    // The k-space prepare_call was given, and what it made of it: its unit
    // exponent and, where it could not be read in place, its canonical copy
    // at unit scale (null otherwise), which execute then uses.
    const void* prepared_data = nullptr;
    int prepared_exponent = 0;
    std::shared_ptr<std::vector<Complex>> prepared_copy;
};
ReconCall prepare_call(const ReconSettings& settings, const KspaceInput& input);

// Plans for one call's sizes and options (FFTW plans are made here, before
// any worker thread starts).
class ReconPlan {
public:
    explicit ReconPlan(ReconCall call);
    const ReconCall& call() const { return call_; }
    const MethodPlans& methods() const { return methods_; }

private:
    ReconCall call_;
    MethodPlans methods_;
};

// Caller-owned results, column-major in call.result_dims (the image as
// interleaved pairs for complex output); null for a result not wanted.
// `sensitivities`: complex, in call.input_dims, adaptive combination only.
struct ReconBuffers {
    float* image = nullptr;
    float* phase = nullptr;
    float* zero_filled = nullptr;
    Complex* sensitivities = nullptr;
};

struct ReconInfo {
    ReconReport report;        // per image, threads, noise, adaptive step
    ReconMethod method = ReconMethod::pocs;
    SampledRanges ranges;      // the ranges used, in the caller's coordinates
    RangeDetection detection;
    int scale_exponent = 0;    // multiply every result (and sigma) by 2^this
    double seconds = 0.0;
};

// Reconstructs `input` (of the plan's sizes; homodyne:badInput otherwise, and
// for NaN or Inf) into `buffers`.
ReconInfo execute(const ReconPlan& plan, const KspaceInput& input, const ReconBuffers& buffers);

// values * 2^exponent in place, refused (homodyne:scale, naming `name`) where
// a result would overflow single precision or lose all its digits.
void restore_scale(float* values, Index count, int exponent, const std::string& name);
