// Test-side reference for the interpolation library: one query point of one
// volume at a time, written from the interpolation rules with 64-bit index
// arithmetic and explicit per-axis clamping, plus the helpers the tests share.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "interpolation/interp3.hpp"

namespace interp3_reference {

using Floats = std::vector<float>;
using Interp3::InterpolationMethod;
const float kNan = std::numeric_limits<float>::quiet_NaN();
const float kSentinel = 1e30f;  // marks output elements that must stay unwritten

// u = q * scale + offset per axis, in the order x, y, z; null grids give ones.
struct Map {
    float scale[3] = {1, 1, 1}, offset[3] = {1, 1, 1};
};

// d[0] rows (y), d[1] columns (x), d[2] slices (z); volumes one after the
// other, rows fastest.
struct Volumes {
    std::array<int, 3> d;
    Floats v;
    long long size() const { return 1LL * d[0] * d[1] * d[2]; }
    float at(int k, long long column, long long row, long long slice) const {
        column = std::clamp<long long>(column, 0, d[1] - 1);
        row = std::clamp<long long>(row, 0, d[0] - 1);
        slice = std::clamp<long long>(slice, 0, d[2] - 1);
        return v[k * size() + (slice * d[1] + column) * d[0] + row];
    }
};

inline Volumes random_volumes(std::array<int, 3> d, int count, std::mt19937& rng) {
    Volumes vol{d, Floats(1LL * d[0] * d[1] * d[2] * count)};
    std::uniform_real_distribution<float> value(-8.0f, 8.0f);
    for (float& s : vol.v) s = value(rng);
    return vol;
}

// Truncation to a 32-bit index; NaN and values outside [-2^31, 2^31) give -2^31.
inline long long to_index(float f) {
    if (std::isnan(f) || f < -2147483648.0f || f >= 2147483648.0f) return INT_MIN;
    return static_cast<long long>(std::trunc(f));
}
// A sum taken back into the signed 32-bit range as 32-bit arithmetic wraps it.
inline long long wrap(long long value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value & 0xffffffffLL));
}

// Left-to-right sum of products v[0]*w[0] + v[1]*w[1] + ...
inline float dot(const float* v, const float* w, int n) {
    float sum = v[0] * w[0];
    for (int i = 1; i < n; ++i) {
        const float term = v[i] * w[i];
        sum = sum + term;
    }
    return sum;
}

// Value of volume k at query point q = (x, y, z).
inline float reference(InterpolationMethod m, const Volumes& vol, int k,
                       const float q[3], const Map& map) {
    long long base[3];  // 0-based column, row, slice
    float w[3][4];      // per axis, weights of the taps from offset `first` on
    for (int a = 0; a < 3; ++a) {
        const float product = q[a] * map.scale[a];
        const float u = product + map.offset[a];
        if (m == Interp3::NEAREST) {
            base[a] = wrap(to_index(std::floor(u + 0.5f)) - 1);
            continue;
        }
        const float t = u - std::floor(u);
        base[a] = to_index(std::floor(u) - 1.0f);
        if (m == Interp3::LINEAR) {
            w[a][0] = 1.0f - t, w[a][1] = t;
        } else {  // Catmull-Rom weights of offsets -1, 0, +1, +2
            const float t2 = t * t, t3 = t * t2;
            w[a][0] = (((t2 + t2) - t) - t3) * 0.5f;
            w[a][1] = ((2.0f - t2 * 5.0f) + t3 * 3.0f) * 0.5f;
            w[a][2] = ((t2 * 4.0f + t) - t3 * 3.0f) * 0.5f;
            w[a][3] = (t3 - t2) * 0.5f;
        }
    }
    if (m == Interp3::NEAREST) return vol.at(k, base[0], base[1], base[2]);
    const int taps = m == Interp3::LINEAR ? 2 : 4, first = m == Interp3::LINEAR ? 0 : -1;
    // Reduce along x (rows of taps), then y (planes), then z.
    float planes[4];
    for (int c = 0; c < taps; ++c) {
        float rows[4];
        for (int b = 0; b < taps; ++b) {
            float samples[4];
            for (int a = 0; a < taps; ++a) {
                samples[a] = vol.at(k, wrap(base[0] + first + a),
                                    wrap(base[1] + first + b), wrap(base[2] + first + c));
            }
            rows[b] = dot(samples, w[0], taps);
        }
        planes[c] = dot(rows, w[1], taps);
    }
    return dot(planes, w[2], taps);
}

// Reference results of the first `volumes` volumes at every query point,
// volume k's block starting at k * points.
inline Floats reference_all(InterpolationMethod m, const Volumes& vol, int volumes,
                            const Floats (&q)[3], const Map& map) {
    Floats out;
    for (int k = 0; k < volumes; ++k) {
        for (size_t i = 0; i < q[0].size(); ++i) {
            const float point[3] = {q[0][i], q[1][i], q[2][i]};
            out.push_back(reference(m, vol, k, point, map));
        }
    }
    return out;
}

// `out` holds `expected` (same bits, or both NaN) followed only by sentinels.
inline ::testing::AssertionResult matches(const Floats& out, const Floats& expected) {
    for (size_t i = 0; i < out.size(); ++i) {
        const float want = i < expected.size() ? expected[i] : kSentinel;
        if (!(std::isnan(out[i]) && std::isnan(want)) &&
            std::memcmp(&out[i], &want, sizeof want) != 0) {
            return ::testing::AssertionFailure()
                   << "element " << i << ": " << out[i] << " != " << want << " ("
                   << expected.size() << " expected, then sentinels)";
        }
    }
    return ::testing::AssertionSuccess();
}

}  // namespace interp3_reference
