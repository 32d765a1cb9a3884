#include "recon/recon_options.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <thread>

#include "recon/noise_whitening.hpp"
#include "recon/recon_error.hpp"

namespace {

[[noreturn]] void bad_option(const std::string& message) { throw ReconError("homodyne:badOption", message); }


const char* const constraint_names[] = {"auto", "real", "magnitude"};
const char* const combination_names[] = {"adaptive", "rss", "none"};

std::string range_text(const KRange& range)
{
    return "[" + std::to_string(range.first) + " " + std::to_string(range.last) + "]";
}

void validate_range(const std::string& label, const KRange& range, Index n, ReconMethod method)
{
    const Index lowest = -(n / 2), highest = (n + 1) / 2 - 1;
    const std::string name = label + " " + range_text(range);
    if (range.first > range.last) {
        throw ReconError("homodyne:badRange", name + " must be ordered, first <= last.");
    }
    if (range.first < lowest || range.last > highest) {
        throw ReconError("homodyne:badRange", name + " lies outside the axis of " + std::to_string(n) +
                                                  " samples, k = " + std::to_string(lowest) + " .. " +
                                                  std::to_string(highest) + ".");
    }
    if (range.first > 0 || range.last < 0) {
        throw ReconError("homodyne:sampling",
                         name + " does not contain k = 0; homodyne reconstruction needs the centre of k-space.");
    }
    // One-pass weights see the range with its missing part at the negative
    // end (mirrored where it lies at the positive end, the unpaired -n/2 of an
    // even axis having no mirror); at most one plane without its mirror is
    // nothing to weight.
    const bool mirrored = range.first + range.last < 0;
    const Index first = mirrored ? -range.last : range.first;
    const Index last = mirrored ? std::min(-range.first, highest) : range.last;
    if (method != ReconMethod::homodyne || first + last <= 1) {
        return;
    }
    const float fraction = static_cast<float>(last - first + 1) / static_cast<float>(2 * last + 1);
    if (fraction < 0.55f) {
        char percent[16];
        std::snprintf(percent, sizeof percent, "%.0f", 100.0 * fraction);
        throw ReconError("homodyne:sampling", name + " covers " + percent +
                                                  " % of its symmetric extent around k = 0; homodyne "
                                                  "reconstruction needs at least 55 %.");
    }
}

}  // namespace

const char* name_of(CoilCombination combination) { return combination_names[static_cast<int>(combination)]; }
const char* name_of(PhaseConstraint constraint) { return constraint_names[static_cast<int>(constraint)]; }

void validate_values(const ReconOptions& options)
{
    if (options.iterations < 1 || options.iterations > 10000) {
        bad_option("'Iterations' must be a whole number from 1 to 10000.");
    }
    if (!std::isfinite(options.tolerance) || options.tolerance < 0 || options.tolerance >= 1) {
        bad_option("'Tolerance' must be at least 0 and below 1.");
    }
    if (options.threads < 0 || options.threads > 1024) {
        bad_option("'Threads' must be a whole number from 0 (one per core) to 1024.");
    }
    if (options.transition_band < 0 || options.transition_band > 64) {
        bad_option("'TransitionBand' must be a whole number of samples from 0 to 64.");
    }
}

void validate_options(const ReconOptions& options, const ReconShape& shape, const RangeLabels& labels)
{
    validate_values(options);
    for (int axis = 0; axis < 3; ++axis) {
        if (options.ranges[axis]) {
            validate_range(labels[axis], *options.ranges[axis], shape.n[axis], options.method);
        }
    }
    if (!options.noise_covariance.empty() && options.noise_scan != nullptr) {
        bad_option("'NoiseCovariance' takes a covariance matrix or a noise scan, not both.");
    }
    if (!options.noise_covariance.empty() || options.covariance_rows != 0 || options.covariance_columns != 0) {
        if (options.noise_covariance.size() !=
            static_cast<std::size_t>(options.covariance_rows * options.covariance_columns)) {
            throw ReconError("homodyne:internal", "The noise covariance's size does not match its values.");
        }
        noise_whitening_matrix(options.noise_covariance.data(), options.covariance_rows, options.covariance_columns,
                               shape.coils, options.noise_name);
    }
    if (options.noise_scan != nullptr && options.noise_scan_shape.coils != shape.coils) {
        throw ReconError("homodyne:badInput", "The noise scan of 'NoiseCovariance' has " +
                                                  std::to_string(options.noise_scan_shape.coils) +
                                                  " coils; the k-space has " + std::to_string(shape.coils) + ".");
    }
}

int thread_count(const ReconOptions& options, Index independent_volumes)
{
    const int cores = std::max(1u, std::thread::hardware_concurrency());
    const int wanted = options.threads > 0 ? options.threads : cores;
    return static_cast<int>(std::max<Index>(1, std::min<Index>(wanted, independent_volumes)));
}
