// Given ranges against the data, and the warnings about the data's layout.

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <string>

#include "recon/plane_profile.hpp"
#include "recon/range_detection.hpp"
#include "recon/recon_error.hpp"

namespace {

const char axis_names[] = "xyz";

std::string two_digits(double x)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2g", x);
    return text;
}

std::string range_text(const KRange& r) { return "[" + std::to_string(r.first) + " " + std::to_string(r.last) + "]"; }

[[noreturn]] void bad_range(const std::string& message) { throw ReconError("homodyne:badRange", message); }

// An axis given as fully sampled whose all-zero planes lie at one end only
// (two planes or more beyond those at the other end; the unpaired plane -n/2
// of an even axis aside): lines not acquired, not padding.
void refuse_one_sided_zeros(const std::string& label, int axis, const std::vector<char>& held, Index n)
{
    Index first = -1, last = -1;
    for (Index i = 0; i < n; ++i) {
        if (held[i]) {
            first = first < 0 ? i : first;
            last = i;
        }
    }
    if (first < 0) {
        return;
    }
    const Index low = first - (first > 0 && n % 2 == 0 ? 1 : 0), high = n - 1 - last;
    if (std::abs(low - high) >= 2) {
        const std::string k0 = std::to_string(first - n / 2), k1 = std::to_string(last - n / 2);
        bad_range(label + " [] takes the axis as fully sampled, but only the planes from k = " + k0 + " to " + k1 +
                  " along " + axis_names[axis] + " hold data; give their range [" + k0 + " " + k1 + "].");
    }
}

// The largest plane within |k| <= n/8 of the centre, relative to the median plane.
double central_peak(const std::vector<double>& energy)
{
    const Index n = static_cast<Index>(energy.size()), centre = n / 2, reach = n / 8;
    double peak = 0.0;
    for (Index i = std::max<Index>(0, centre - reach); i <= std::min(n - 1, centre + reach); ++i) {
        peak = std::max(peak, energy[i]);
    }
    return peak / std::max(median_of(energy), DBL_MIN);
}

}  // namespace

RangeDetection check_given_ranges(const SampledRanges& ranges, const std::array<std::string, 3>& labels,
                                  const ReconShape& shape, const PlaneEnergies& energies)
{
    RangeDetection detection;
    // All-zero k-space (a blank slice of a batch, say) contradicts no range;
    // its image is zero.
    const bool blank = std::none_of(energies.held[0].begin(), energies.held[0].end(), [](char h) { return h != 0; });
    for (int axis = 0; axis < 3; ++axis) {
        AxisDetection& found = detection[axis];
        found.method = DetectionMethod::given;
        found.range = ranges[axis];
        if (blank) {
            continue;
        }
        const Index n = shape.n[axis], centre = n / 2;
        const std::vector<double>& energy = energies.axis[axis];
        const std::vector<char>& held = energies.held[axis];
        if (!ranges[axis]) {
            refuse_one_sided_zeros(labels[axis], axis, held, n);
            continue;
        }
        const KRange r = *ranges[axis];
        double outside = 0.0, mirrors = 0.0;
        bool outside_held = false;
        for (Index i = 0; i < n; ++i) {
            const Index k = i - centre;
            if (k >= r.first && k <= r.last) {
                continue;
            }
            outside += energy[i];
            outside_held = outside_held || held[i];
            const Index partner = 2 * centre - i;
            if (partner >= 0 && partner < n) {
                mirrors += energy[partner];
            }
        }
        found.ratio = outside / std::max(mirrors, DBL_MIN);
        bool any_held = false;
        Index first = 0, last = 0;  // planes inside the range that hold data
        for (Index k = r.first; k <= r.last; ++k) {
            if (held[k + centre]) {
                first = any_held ? first : k;
                last = k;
                any_held = true;
            }
        }
        const std::string name = labels[axis] + " " + range_text(r);
        if (found.ratio >= 0.6 && outside_held) {
            bad_range(name + " leaves out planes that hold data (" + two_digits(found.ratio) +
                      " of the energy of their mirror planes inside the range): is it the range of another axis, "
                      "or too narrow?");
        }
        if (!any_held) {
            bad_range(name + " holds only zeros.");
        }
        const bool unpaired_first = n % 2 == 0 && r.first == -(n / 2);
        if (last < r.last || first > r.first + (unpaired_first ? 1 : 0)) {
            bad_range(name + " is wider than the data along " + axis_names[axis] + ": the planes from k = " +
                      std::to_string(first) + " to " + std::to_string(last) +
                      " hold data, the rest of the range only zeros, which would be taken as measured.");
        }
    }
    return detection;
}

ReconWarnings layout_warnings(const RangeDetection& detection, const PlaneEnergies& energies,
                              const SampledRanges& ranges, const ReconShape& shape)
{
    ReconWarnings warnings;
    for (int axis = 0; axis < 3; ++axis) {
        if (detection[axis].one_sided) {
            warnings.push_back({"homodyne:oneSided",
                                std::string("along ") + axis_names[axis] +
                                    " no plane is all zero or far weaker than its mirror (k -> -k), so the axis is "
                                    "taken as fully sampled, but one end is weak (a plane at " +
                                    two_digits(detection[axis].ratio) +
                                    " of its mirror's energy): if lines there were not acquired, give 'Ranges' or "
                                    "'PartialFourier'."});
        }
    }
    // The k-space of an object has its energy peak at k = 0; 2-D images of
    // coils or slices stacked along dimension 3 have no k-space centre there.
    // Measured on phantoms (64 x 64 x 4 to 32): true 3-D k-space 2.5-24x with
    // its peak at kz = 0, 3.8-24x with the peak moved by up to nz/8 planes (nz
    // >= 8); stacked slice k-spaces 1.25-1.28x, stacked coil k-spaces with
    // random gains 0.97-1.45x (1.81x at 4 coils: missed); x and y of all of
    // them 38-45x (3.8x at kx = 0 itself for coils with phase ramps of up to
    // 8 rad). With 2 or 3 planes the two cannot be told apart; a partial z
    // axis is k-space by construction.
    const Index nz = shape.n[2];
    const std::optional<KRange>& z = ranges[2];
    const bool z_partial = z && (z->first > 1 - nz / 2 || z->last < (nz + 1) / 2 - 1);
    if (nz >= 4 && nz <= 32 && !z_partial) {
        const double peak = central_peak(energies.axis[2]);
        if (central_peak(energies.axis[0]) >= 4.0 && central_peak(energies.axis[1]) >= 4.0 && peak < 1.8) {
            warnings.push_back({"homodyne:zLooksLikeVolumes",
                                "dimension 3 (" + std::to_string(nz) +
                                    " planes) looks like coils or slices, not kz: its central planes hold at most " +
                                    two_digits(peak) +
                                    " times the median plane, where a k-space centre holds far more. A 3-D "
                                    "transform across it mixes them; pass 'Dims', 2 (slices) or 'Coils', 3 (coils)."});
        }
    }
    return warnings;
}
