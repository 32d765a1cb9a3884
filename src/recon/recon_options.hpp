#pragma once
// The options of one reconstruction call, shared by every front end, and the
// one function that checks them against the data's shape.

#include <array>
#include <complex>
#include <string>
#include <vector>

#include "recon/recon_shape.hpp"

enum class ReconMethod { homodyne, pocs };
enum class ReconOutput { real, magnitude, complex };
// POCS image constraint: the real part along the estimated phase, the
// magnitude along it, or both tried and the one that fits the measured data
// better kept.
enum class PhaseConstraint { automatic, real_part, magnitude };
// Window over the symmetric centre from which POCS estimates the phase.
enum class CalibrationWindow { hann, tukey, box };
// How the receive coils of a volume become one image: the sensitivity-weighted
// complex combination, the root sum of squares of the coil images, or none
// (every coil image is a result of its own).
enum class CoilCombination { adaptive, rss, none };

struct ReconOptions {
    ReconMethod method = ReconMethod::pocs;
    ReconOutput output = ReconOutput::real;
    int iterations = 20;       // POCS: at most this many
    double tolerance = 2e-4;   // POCS: stop when the relative change falls below; 0 never stops early
    int threads = 0;           // volumes reconstructed at once; 0 for one per core
    PhaseConstraint constraint = PhaseConstraint::automatic;
    CalibrationWindow window = CalibrationWindow::hann;
    int transition_band = 0;   // POCS: measured samples blended with the estimate at the block's edge
    SampledRanges ranges;      // nullopt: the axis is fully sampled
    CoilCombination combination = CoilCombination::adaptive;  // with one coil there is nothing to combine
    // Synthesised samples weighted by the SNR of their measured partners; needs
    // the noise level: from the covariance or scan below, else estimated.
    bool noise_adaptive = true;
    // The coils' noise covariance, covariance_rows x covariance_columns,
    // column-major (empty: none given). The coils are prewhitened with it.
    std::vector<std::complex<float>> noise_covariance;
    Index covariance_rows = 0, covariance_columns = 0;
    // Or a noise-only scan (x, y, z, coils, volumes), owned by the caller,
    // whose covariance serves instead.
    const std::complex<float>* noise_scan = nullptr;
    ReconShape noise_scan_shape;
    // The covariance or scan is at the data's scale times 2^noise_exponent
    // (the covariance at 4^noise_exponent): data brought to unit scale leave
    // their noise reference as it is, and the one exponent relates the two
    // in double precision, so that noise far below or above the data never
    // squares out of single precision.
    int noise_exponent = 0;
    // The covariance or scan as messages name it.
    std::string noise_name = "NoiseCovariance";
    bool keep_sensitivities = false;  // hand the coil sensitivities back in the report
};

// Throws ReconError naming the option at fault: homodyne:badOption for values
// out of their domain, homodyne:badRange for ranges that do not fit `shape`,
// homodyne:sampling for too little of the symmetric centre, homodyne:badInput
// for a noise covariance or noise scan that does not fit the coils.
// The numeric options' domains alone (homodyne:badOption naming the option):
// checked where an option is set, and again by validate_options.
void validate_values(const ReconOptions& options);

// `labels` name the ranges in messages ("'Ranges' y range").
using RangeLabels = std::array<std::string, 3>;
void validate_options(const ReconOptions& options, const ReconShape& shape,
                      const RangeLabels& labels = {"the x range", "the y range", "the z range"});

const char* name_of(CoilCombination combination);
const char* name_of(PhaseConstraint constraint);

// The number of threads a call runs on: options.threads, or one per core.
int thread_count(const ReconOptions& options, Index independent_volumes);
