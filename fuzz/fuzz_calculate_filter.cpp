// calculate_filter with any axis length and any pair of range values (NaN,
// infinities, huge and fractional ones included). Input: int32 n, then the
// two doubles of the range.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz_input.hpp"
#include "homodyne/filter_weights.hpp"

namespace {

// Longer axes cost time without reaching new code; every negative n is kept.
constexpr int kMaxSamples = 1 << 12;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzInput input(bytes, size);
    int n = input.take<std::int32_t>();
    if (n > kMaxSamples) {
        n %= kMaxSamples + 1;
    }
    const double range[2] = {input.take<double>(), input.take<double>()};

    // Exactly n weights, so that ASan sees any write past the axis.
    std::vector<float> weights(static_cast<std::size_t>(n > 0 ? n : 0), unwritten_marker());
    int bounds[2] = {-7, -7};
    const int accepted = calculate_filter(n, range, weights.data(), bounds);

    if (!accepted) {
        require(bounds[0] == -7 && bounds[1] == -7, "a rejected range wrote the bounds");
        for (const float w : weights) {
            require(is_unwritten(w), "a rejected range wrote a weight");
        }
        return 0;
    }
    require(accepted == 1, "the success flag is 0 or 1");
    const int last = n > 1 ? n - 1 : 0;
    require(bounds[0] >= 0 && bounds[0] <= last && bounds[1] >= 0 && bounds[1] <= last,
            "the bounds lie on the axis");
    for (const float w : weights) {
        require(!is_unwritten(w), "an accepted range writes every weight");
        require(w >= 0.0f && w <= 2.0f, "every weight lies in [0, 2]");
    }
    return 0;
}
