// Test-side reference for the interpolation library: a plain evaluation of
// one query point in one volume at a time, with 64-bit index arithmetic and
// explicit clamping everywhere, plus the test data it is compared on.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace interp3_reference {

enum class Method { Nearest, Linear, Cubic };

// u = q * scale + offset per axis; the identity of null grids is all ones.
struct AxisMap {
    float scale = 1.0f;
    float offset = 1.0f;
    float position(float q) const {
        const float product = q * scale;
        return product + offset;
    }
};

struct Map {
    AxisMap x, y, z;
};

// d0 rows (y), d1 columns (x), d2 slices (z), volumes stored one after the
// other, rows fastest.
struct Volumes {
    int d0 = 1, d1 = 1, d2 = 1, count = 1;
    std::vector<float> samples;

    long long volume_size() const { return 1LL * d0 * d1 * d2; }

    // Sample at (column, row, slice) with each index clamped to its axis.
    float at(int volume, long long column, long long row, long long slice) const {
        column = std::clamp<long long>(column, 0, d1 - 1);
        row = std::clamp<long long>(row, 0, d0 - 1);
        slice = std::clamp<long long>(slice, 0, d2 - 1);
        return samples[volume * volume_size() + (slice * d1 + column) * d0 + row];
    }
};

// Integer conversion as the index rules define it: truncation, with NaN and
// anything outside [-2^31, 2^31) becoming -2^31.
inline long long to_index(float value) {
    if (std::isnan(value) || value < -2147483648.0f || value >= 2147483648.0f) {
        return -2147483648LL;
    }
    return static_cast<long long>(std::trunc(value));
}

// Brings a 64-bit sum back into the signed 32-bit range the way 32-bit
// arithmetic wraps (e.g. -2^31 - 1 becomes 2^31 - 1).
inline long long wrap32(long long value) {
    const long long two32 = 1LL << 32;
    long long wrapped = ((value % two32) + two32) % two32;
    return wrapped >= (1LL << 31) ? wrapped - two32 : wrapped;
}

inline float nearest(const Volumes& v, int volume, float qx, float qy, float qz,
                     const Map& m) {
    const auto index = [](float u) {
        const float rounded = std::floor(u + 0.5f);
        return wrap32(to_index(rounded) - 1);
    };
    return v.at(volume, index(m.x.position(qx)), index(m.y.position(qy)),
                index(m.z.position(qz)));
}

inline float linear(const Volumes& v, int volume, float qx, float qy, float qz,
                    const Map& m) {
    const float ux = m.x.position(qx), uy = m.y.position(qy), uz = m.z.position(qz);
    const float fx = ux - std::floor(ux), fy = uy - std::floor(uy),
                fz = uz - std::floor(uz);
    const long long c = to_index(std::floor(ux) - 1.0f);
    const long long r = to_index(std::floor(uy) - 1.0f);
    const long long s = to_index(std::floor(uz) - 1.0f);
    const auto corner = [&](int dc, int dr, int ds) {
        return v.at(volume, wrap32(c + dc), wrap32(r + dr), wrap32(s + ds));
    };
    // Interpolate along x on each of the four cell edges, then y, then z.
    const auto along_x = [&](int dr, int ds) {
        const float high = corner(1, dr, ds) * fx;
        const float low = corner(0, dr, ds) * (1.0f - fx);
        return high + low;
    };
    const auto along_y = [&](int ds) {
        const float high = along_x(1, ds) * fy;
        const float low = along_x(0, ds) * (1.0f - fy);
        return high + low;
    };
    const float high = along_y(1) * fz;
    const float low = along_y(0) * (1.0f - fz);
    return high + low;
}

// Catmull-Rom weights of offsets -1, 0, +1, +2, each step rounded to float.
inline void cubic_weights(float t, float w[4]) {
    const float t2 = t * t;
    const float t3 = t * t2;
    w[0] = (((t2 + t2) - t) - t3) * 0.5f;
    w[1] = ((2.0f - t2 * 5.0f) + t3 * 3.0f) * 0.5f;
    w[2] = ((t2 * 4.0f + t) - t3 * 3.0f) * 0.5f;
    w[3] = (t3 - t2) * 0.5f;
}

inline float cubic(const Volumes& v, int volume, float qx, float qy, float qz,
                   const Map& m) {
    const float ux = m.x.position(qx), uy = m.y.position(qy), uz = m.z.position(qz);
    float wx[4], wy[4], wz[4];
    cubic_weights(ux - std::floor(ux), wx);
    cubic_weights(uy - std::floor(uy), wy);
    cubic_weights(uz - std::floor(uz), wz);
    const long long c = to_index(std::floor(ux) - 1.0f);
    const long long r = to_index(std::floor(uy) - 1.0f);
    const long long s = to_index(std::floor(uz) - 1.0f);
    float planes[4];
    for (int ds = 0; ds < 4; ++ds) {
        float rows[4];
        for (int dr = 0; dr < 4; ++dr) {
            float sum = 0.0f;
            for (int dc = 0; dc < 4; ++dc) {
                const float term = v.at(volume, wrap32(c + dc - 1),
                                        wrap32(r + dr - 1), wrap32(s + ds - 1)) *
                                   wx[dc];
                sum = dc == 0 ? term : sum + term;
            }
            rows[dr] = sum;
        }
        float sum = 0.0f;
        for (int dr = 0; dr < 4; ++dr) {
            const float term = rows[dr] * wy[dr];
            sum = dr == 0 ? term : sum + term;
        }
        planes[ds] = sum;
    }
    float sum = 0.0f;
    for (int ds = 0; ds < 4; ++ds) {
        const float term = planes[ds] * wz[ds];
        sum = ds == 0 ? term : sum + term;
    }
    return sum;
}

inline float evaluate(Method method, const Volumes& v, int volume, float qx,
                      float qy, float qz, const Map& m) {
    switch (method) {
        case Method::Nearest: return nearest(v, volume, qx, qy, qz, m);
        case Method::Linear: return linear(v, volume, qx, qy, qz, m);
        case Method::Cubic: return cubic(v, volume, qx, qy, qz, m);
    }
    return 0.0f;
}

struct Queries {
    std::vector<float> x, y, z;
    long long size() const { return static_cast<long long>(x.size()); }
};

// Results of every volume at every query point: volume k's block starts at
// k * (number of points).
inline std::vector<float> evaluate_all(Method method, const Volumes& v,
                                       const Queries& q, const Map& m) {
    std::vector<float> out;
    for (int k = 0; k < v.count; ++k) {
        for (long long i = 0; i < q.size(); ++i) {
            out.push_back(evaluate(method, v, k, q.x[i], q.y[i], q.z[i], m));
        }
    }
    return out;
}

// Volumes of random samples in [-8, 8).
inline Volumes random_volumes(int d0, int d1, int d2, int count, unsigned seed) {
    Volumes v{d0, d1, d2, count, {}};
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> value(-8.0f, 8.0f);
    v.samples.resize(static_cast<size_t>(v.volume_size() * count));
    for (float& s : v.samples) s = value(rng);
    return v;
}

// Index-space positions along an axis of `size` samples: samples, halves,
// both borders and the cells next to them, and points beyond the borders.
inline std::vector<float> border_positions(int size) {
    const float last = static_cast<float>(size - 1);
    return {-3.7f, -1.0f, -0.5f, 0.0f, 0.25f, 0.5f, 1.0f, 1.5f, 2.5f,
            last - 2.5f, last - 1.5f, last - 0.5f, last - 0.25f, last,
            last + 0.5f, last + 1.0f, last + 2.3f};
}

// The border positions plus random fractions across the axis.
inline std::vector<float> axis_positions(int size, std::mt19937& rng) {
    std::vector<float> p = border_positions(size);
    std::uniform_real_distribution<float> inside(-1.5f, size + 0.5f);
    for (int i = 0; i < 12; ++i) p.push_back(inside(rng));
    return p;
}

// Every combination of the three axes' border positions.
inline Queries border_lattice(int d0, int d1, int d2) {
    Queries q;
    for (float z : border_positions(d2))
        for (float y : border_positions(d0))
            for (float x : border_positions(d1)) {
                q.x.push_back(x);
                q.y.push_back(y);
                q.z.push_back(z);
            }
    return q;
}

// `count` index-space query points, each coordinate drawn from its axis's
// positions (x along columns d1, y along rows d0, z along slices d2).
inline Queries index_space_queries(int d0, int d1, int d2, long long count,
                                   unsigned seed) {
    std::mt19937 rng(seed);
    const std::vector<float> px = axis_positions(d1, rng);
    const std::vector<float> py = axis_positions(d0, rng);
    const std::vector<float> pz = axis_positions(d2, rng);
    Queries q;
    for (long long i = 0; i < count; ++i) {
        q.x.push_back(px[rng() % px.size()]);
        q.y.push_back(py[rng() % py.size()]);
        q.z.push_back(pz[rng() % pz.size()]);
    }
    return q;
}

// Same float bits, or both NaN (NaN payloads are not part of the contract).
inline bool same_value(float a, float b) {
    if (std::isnan(a) && std::isnan(b)) return true;
    std::uint32_t ba, bb;
    std::memcpy(&ba, &a, sizeof a);
    std::memcpy(&bb, &b, sizeof b);
    return ba == bb;
}

inline ::testing::AssertionResult same_values(const std::vector<float>& actual,
                                              const std::vector<float>& expected) {
    if (actual.size() != expected.size()) {
        return ::testing::AssertionFailure()
               << "size " << actual.size() << " != " << expected.size();
    }
    for (size_t i = 0; i < actual.size(); ++i) {
        if (!same_value(actual[i], expected[i])) {
            return ::testing::AssertionFailure()
                   << "element " << i << ": " << actual[i] << " != "
                   << expected[i] << " (of " << actual.size() << ")";
        }
    }
    return ::testing::AssertionSuccess();
}

// Exact bit patterns, NaN payloads included.
inline ::testing::AssertionResult same_bits(const std::vector<float>& a,
                                            const std::vector<float>& b) {
    if (a.size() == b.size() &&
        std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "bit patterns differ";
}

}  // namespace interp3_reference
