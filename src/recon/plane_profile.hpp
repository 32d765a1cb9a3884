#pragma once
// Small statistics of plane-energy profiles, as the detection rules were
// measured with them.

#include <algorithm>
#include <vector>

// The median, the mean of the two middle values for an even count (0 for none).
inline double median_of(std::vector<double> values)
{
    if (values.empty()) {
        return 0.0;
    }
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : 0.5 * (values[middle - 1] + values[middle]);
}
