#include "io/sampled_range.hpp"

#include <algorithm>
#include <iterator>

#include "io/raw_file_check.hpp"
#include "recon/recon_error.hpp"

namespace {

// A peak that holds this many times the energy at the declared centre shows
// unambiguously that the centre is elsewhere; real echoes shifted by phase
// errors stay well below it.
constexpr double kCentrePeakRatio = 4.0;

std::string k_span(Index first, Index last)
{
    return "k = " + std::to_string(first) + " .. " + std::to_string(last);
}

}  // namespace

std::optional<KRange> supported_range(const AxisEvidence& axis, const std::string& path,
                                      std::vector<std::string>& warnings)
{
    const Index n = static_cast<Index>(axis.held.size());
    const Index centre = n / 2;
    const auto first_it = std::find(axis.held.begin(), axis.held.end(), 1);
    const Index first = std::distance(axis.held.begin(), first_it);
    const Index last = n - 1 - std::distance(axis.held.rbegin(), std::find(axis.held.rbegin(), axis.held.rend(), 1));
    const KRange held{first - centre, last - centre};
    const auto gap = std::find(first_it, axis.held.begin() + last, 0);
    if (gap != axis.held.begin() + last) {
        const Index from = std::distance(axis.held.begin(), gap);
        const Index to = std::distance(axis.held.begin(), std::find(gap, axis.held.end(), 1)) - 1;
        throw ReconError("homodyne:badFile",
                         file_fault(path, "lines missing inside the sampled block of " + axis.name + ": the readouts hold " +
                                              k_span(held.first, held.last) + " but nothing at " +
                                              k_span(from - centre, to - centre) +
                                              " (undersampled or incomplete); homodyne reconstruction needs one contiguous block"));
    }
    const Index peak = std::distance(axis.energy.begin(), std::max_element(axis.energy.begin(), axis.energy.end()));
    if (peak != centre && axis.energy[peak] > kCentrePeakRatio * axis.energy[centre]) {
        throw ReconError("homodyne:badFile",
                         file_fault(path, "the header puts k = 0 of " + axis.name + " where the data do not peak: the energy peak lies at k = " +
                                              std::to_string(peak - centre) + ", with more than " +
                                              std::to_string(static_cast<int>(kCentrePeakRatio)) +
                                              " times the energy at the declared centre; the encoding limits' centre is wrong"));
    }
    if (axis.declared && (axis.declared->first != held.first || axis.declared->last != held.last)) {
        warnings.push_back(file_fault(path, "the encoding limits of " + axis.name + " declare " +
                                                k_span(axis.declared->first, axis.declared->last) + " but the readouts hold " +
                                                k_span(held.first, held.last) + "; using the readouts' range"));
    }
    if (first == 0 && last == n - 1) {
        return std::nullopt;
    }
    return held;
}
