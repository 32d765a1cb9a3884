#pragma once
// The sampled block of each spatial axis as the data show it: found where the
// caller gave none, and checked where the caller gave one. All of it works on
// the canonical k-space (x, y, z, coils, volumes; centred, see recon_shape.hpp)
// and judges an axis by its planes: a plane across axis a is every sample
// with one index along a, over the other two axes, all coils and volumes.

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "recon/recon_shape.hpp"
#include "recon/recon_warning.hpp"
#include "recon/volume_transform.hpp"

// Per axis, the energy of every plane across it (sum of |k|^2, computed in
// double), relative to the largest magnitude of any sample so that data of
// any scale give the same profile; and whether the plane holds any non-zero
// sample. One pass over the data.
struct PlaneEnergies {
    std::array<std::vector<double>, 3> axis;
    std::array<std::vector<char>, 3> held;
};
PlaneEnergies plane_energies(const ReconShape& shape, const Complex* kspace);

// How the range of an axis was found.
enum class DetectionMethod { full, zeros, energy, given };
const char* name_of(DetectionMethod method);  // "full", "zeros", "energy", "given"

struct AxisDetection {
    DetectionMethod method = DetectionMethod::full;
    std::optional<KRange> range;  // the planes taken as acquired (the whole axis for `full`)
    // The energy of the planes outside the range relative to their mirror
    // planes (k -> -k); for `full`, the lowest such ratio of a plane near an
    // end; NaN where not judged (too few samples per plane).
    double ratio = 0.0;
    bool one_sided = false;  // fully sampled, but one end looks unacquired
};
using RangeDetection = std::array<AxisDetection, 3>;

// The ranges found in the data. Per axis, first the contiguous block of planes
// holding any non-zero sample (gaps between non-zero planes, and k-space
// without any non-zero sample, throw homodyne:sampling); where no plane (or
// only the unpaired plane -n/2) is all zero and a plane holds at least 16
// samples, unacquired lines holding noise or filler are found by their energy
// against their mirror planes. `ranges` of the result: the whole axis where
// it is fully sampled.
RangeDetection detect_ranges(const ReconShape& shape, const PlaneEnergies& energies);

// Given ranges checked against the data; `labels[a]` names the range of axis
// a in messages ("'Ranges' y range"). Throws homodyne:badRange for planes
// outside a range that carry data (at least 0.6 of their mirrors' energy),
// all-zero planes at an end of a range, and for an axis given as nullopt,
// all-zero planes at one end only; all-zero k-space contradicts no range (its
// image is zero). Method `given`, ratio as above.
RangeDetection check_given_ranges(const SampledRanges& ranges, const std::array<std::string, 3>& labels,
                                  const ReconShape& shape, const PlaneEnergies& energies);

// Ranges from acquired fractions as scan protocols state them (5/8, 0.75;
// negative: the positive end is missing), nullopt for a fully sampled axis.
// An axis of n samples keeps n - floor((1 - |f|) n) planes. Throws
// homodyne:badOption for a fraction outside 0.5 <= |f| <= 1.
SampledRanges partial_fourier_ranges(const std::array<std::optional<double>, 3>& fractions, const ReconShape& shape);

// The layout warnings: homodyne:oneSided for every axis detected as fully
// sampled but one-sided, and homodyne:zLooksLikeVolumes when dimension 3
// looks like stacked coils or slices rather than kz.
ReconWarnings layout_warnings(const RangeDetection& detection, const PlaneEnergies& energies,
                              const SampledRanges& ranges, const ReconShape& shape);

// Whether the planes outside `ranges` must be zeroed before reconstruction
// (they hold noise or filler: a range found by energy, or a given range with
// energy outside it).
bool needs_zero_outside(const RangeDetection& detection);

// Sets every sample outside `ranges` to zero, in canonical k-space.
void zero_outside(const ReconShape& shape, const SampledRanges& ranges, Complex* kspace);
