// The Interp3 library: every kernel family and member on both driver paths
// against the plain reference (rounding of halves, NaN and huge coordinates
// among the positions), then what the reference cannot show: bit patterns
// kept, the thrown text, the counts taken from the query dimensions.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "interp3_reference.hpp"

namespace {

using namespace interp3_reference;
const InterpolationMethod kMethods[] = {Interp3::NEAREST, Interp3::LINEAR, Interp3::BICUBIC};

// Index-space positions along an axis of n samples: beyond, on and next to
// both borders, a generic fraction, the middle (where the kernels skip
// clamping once an axis is large enough), NaN and beyond 32-bit range.
Floats positions(int n) {
    const float last = n - 1.0f;
    return {kNan, -3e9f, -3.7f, -0.5f, 0.0f, 0.5f, 1.37f, last * 0.5f + 0.21f,
            last - 1.4f, last - 0.5f, last, last + 0.5f, last + 2.3f};
}

// Extent (first, last coordinate) of the explicit grids per axis x, y, z;
// y runs downwards.
const float kFirst[3] = {-2.5f, 10.0f, 0.5f}, kLast[3] = {4.0f, 3.0f, 1.75f};
const int kMaxVolumes = 12;
enum Path { kSingle, kMulti, kMultiFiveDims, kGeneralKernel };

// Volumes and a lattice of query points over them (x fastest), in index space
// or, with an explicit grid, carried to the grid's coordinates.
struct Sweep {
    Volumes vol;
    bool grid;
    Floats q[3];
    unsigned dims[3];  // lattice points along x, y, z
    Map map;
};

Sweep make_sweep(Volumes vol, bool grid) {
    Sweep s{std::move(vol), grid, {}, {}, {}};
    const int n_axis[3] = {s.vol.d[1], s.vol.d[0], s.vol.d[2]};  // samples along x, y, z
    Floats p[3];
    for (int a = 0; a < 3; ++a) p[a] = positions(n_axis[a]), s.dims[a] = unsigned(p[a].size());
    for (float z : p[2]) for (float y : p[1]) for (float x : p[0]) {
        s.q[0].push_back(x), s.q[1].push_back(y), s.q[2].push_back(z);
    }
    for (int a = 0; grid && a < 3; ++a) {
        s.map.scale[a] = static_cast<float>(1 - n_axis[a]) / (kFirst[a] - kLast[a]);
        s.map.offset[a] = 1.0f - kFirst[a] * s.map.scale[a];
        for (float& c : s.q[a]) {
            c = static_cast<float>(kFirst[a] + (double(kLast[a]) - kFirst[a]) * c / (n_axis[a] - 1));
        }
    }
    return s;
}

// Runs the first v volumes through `path`, with no query points unless
// `keep`. The output has a volume's worth of sentinels beyond what may be
// written, so that overruns show as mismatches.
Floats run(const Sweep& s, InterpolationMethod m, Path path, int v, bool keep) {
    const long long points = static_cast<long long>(s.q[0].size());
    Floats data = s.vol.v, out(points * (std::max(v, 0) + 1) + 16, kSentinel);
    const auto& d = s.vol.d;
    if (path == kGeneralKernel) {
        const auto kernel = m == Interp3::NEAREST  ? Interp3::interpolate_nearest<float, float>
                            : m == Interp3::LINEAR ? Interp3::interpolate_linear<float, float>
                                                   : Interp3::interpolate_bicubic<float, float>;
        kernel(out.data(), data.data(), s.q[0].data(), s.q[1].data(), s.q[2].data(),
               keep ? points : -1, d[0], d[1], d[2], v, s.map.scale[0], s.map.offset[0],
               s.map.scale[1], s.map.offset[1], s.map.scale[2], s.map.offset[2]);
        return out;
    }
    // Grids as long as all volumes' samples: only the first element and the
    // far corner at the end may be read, all else is NaN.
    Floats g[3];
    for (int a = 0; s.grid && a < 3; ++a) {
        g[a].assign(s.vol.size() * v, kNan);
        g[a].front() = kFirst[a], g[a].back() = kLast[a];
    }
    const unsigned uv = unsigned(v);
    std::vector<unsigned> dd{unsigned(d[0]), unsigned(d[1]), unsigned(d[2])};
    std::vector<unsigned> qd{s.dims[0] * keep, s.dims[1], s.dims[2]};
    if (path == kMulti) dd.push_back(uv), qd.push_back(uv);
    if (path == kMultiFiveDims) dd.insert(dd.end(), {uv, 1}), qd.insert(qd.end(), {1, uv});
    // Query arrays as long as all volumes' points, as callers build them; only
    // the first `points` may be read, the rest is NaN.
    Floats q[3] = {s.q[0], s.q[1], s.q[2]};
    for (Floats& c : q) c.resize(points * v, kNan);
    Interp3::interp3<float, float>(s.grid ? g[0].data() : nullptr, s.grid ? g[1].data() : nullptr,
                                   s.grid ? g[2].data() : nullptr, data.data(), dd, q[0].data(),
                                   q[1].data(), q[2].data(), qd, m, out.data());
    return out;
}

// Single path (one volume), multi-volume path with 1 to 12 volumes given by
// the fourth or the fifth query dimension (1 to 9 unrolled, nearest's 1 the
// driver's loop, 10 to 12 general), and the general kernels called directly
// with -1 to 12 volumes; each also with no query points (count 0, or -1 for
// the direct calls).
TEST(Interp3, EveryFamilyMemberAndPathMatchesReference) {
    const std::array<int, 3> sizes[] = {{1, 1, 1}, {2, 3, 4}, {4, 5, 6}, {6, 1, 3}, {3, 6, 2},
                                        {5, 4, 1}, {1, 2, 5}, {2, 2, 2}, {9, 8, 7}};
    std::mt19937 rng(1);
    for (const auto& d : sizes) {
        const Volumes vol = random_volumes(d, kMaxVolumes, rng);
        for (bool grid : {false, true}) {
            if (grid && std::min({d[0], d[1], d[2]}) < 2) continue;  // no spacing to map
            const Sweep s = make_sweep(vol, grid);
            for (InterpolationMethod m : kMethods) {
                const Floats all = reference_all(m, vol, kMaxVolumes, s.q, s.map);
                for (Path path : {kSingle, kMulti, kMultiFiveDims, kGeneralKernel}) {
                    for (int v = path == kGeneralKernel ? -1 : 1;
                         v <= (path == kSingle ? 1 : kMaxVolumes); ++v) {
                        for (bool keep : {true, false}) {
                            const size_t written = keep ? s.q[0].size() * std::max(v, 0) : 0;
                            EXPECT_TRUE(matches(run(s, m, path, v, keep),
                                                Floats(all.begin(), all.begin() + written)))
                                << "method " << m << ", size " << d[0] << "x" << d[1] << "x"
                                << d[2] << (grid ? ", explicit grid" : ", null grid") << ", path "
                                << path << ", " << v << " volumes" << (keep ? "" : ", no points");
                        }
                    }
                }
            }
        }
    }
}

TEST(Interp3, SamplePositionsGiveTheSampleBitForBit) {
    std::mt19937 rng(3);
    Volumes vol = random_volumes({4, 5, 3}, 3, rng);
    Floats q[3];  // every sample of a volume, in storage order
    for (int s = 0; s < 3; ++s) for (int c = 0; c < 5; ++c) for (int r = 0; r < 4; ++r) {
        q[0].push_back(float(c)), q[1].push_back(float(r)), q[2].push_back(float(s));
    }
    const unsigned n = 60;
    for (InterpolationMethod m : kMethods) {
        Floats data = vol.v, out(3 * n);
        if (m == Interp3::NEAREST) {  // nearest copies any bit pattern unchanged
            const std::uint32_t bits[] = {0x7fc12345u, 0xffa00001u, 0x80000000u, 0x7f800000u};
            std::memcpy(data.data() + 7, bits, sizeof bits);
        }
        Interp3::interp3<float, float>(nullptr, nullptr, nullptr, data.data(), {4, 5, 3, 3},
                                       q[0].data(), q[1].data(), q[2].data(), {n, 1, 1, 3},
                                       m, out.data());
        EXPECT_EQ(std::memcmp(out.data(), data.data(), out.size() * sizeof(float)), 0)
            << "method " << m;
    }
}

TEST(Interp3, UnknownMethodThrowsTheTextAndWritesNothing) {
    Floats data(54, 1.0f), q(4, 0.5f), out(8, 42.0f);
    for (int method : {3, -1}) {
        for (unsigned volumes : {0u, 2u}) {  // 0: the single-volume path
            std::vector<unsigned> dd{3, 3, 3}, qd{4, 1, 1};
            if (volumes) dd.push_back(volumes), qd.push_back(volumes);
            std::string text = "<nothing thrown>";
            try {
                Interp3::interp3<float, float>(nullptr, nullptr, nullptr, data.data(), dd,
                                               q.data(), q.data(), q.data(), qd,
                                               static_cast<InterpolationMethod>(method), out.data());
            } catch (const char* thrown) {
                text = thrown;
            }
            EXPECT_EQ(text, "Error in Interp3: Unimplemented interpolation method.")
                << "method " << method << ", " << dd.size() << " data dims";
            EXPECT_EQ(out, Floats(8, 42.0f));
        }
    }
}

TEST(Interp3, VolumeAndPointCountsComeFromQueryDims) {
    std::mt19937 rng(5);
    const Volumes vol = random_volumes({3, 4, 2}, 3, rng);
    const Floats q[3] = {{0.2f, 1.7f, 2.5f, -1.0f, 3.1f, 0.9f},
                         {1.3f, 0.0f, 2.6f, 0.4f, 1.5f, 5.0f},
                         {0.7f, 1.0f, 0.1f, 0.5f, -2.0f, 0.8f}};
    struct Case { std::vector<unsigned> data_dims, query_dims; int volumes; };
    const Case cases[] = {
        {{3, 4, 2}, {3, 2, 1, 2}, 1},     // single-volume path: 3 * 2 * 1 points
        {{3, 4, 2, 1}, {6, 1, 1, 3}, 3},  // data dims say one volume, query dims three
        {{3, 4, 2, 3}, {6, 1, 1}, 1},     // data dims say three, query dims one
    };
    for (InterpolationMethod m : kMethods) {
        for (const Case& c : cases) {
            Floats data = vol.v, out(24, kSentinel), xq = q[0], yq = q[1], zq = q[2];
            Interp3::interp3<float, float>(nullptr, nullptr, nullptr, data.data(), c.data_dims,
                                           xq.data(), yq.data(), zq.data(), c.query_dims, m,
                                           out.data());
            EXPECT_TRUE(matches(out, reference_all(m, vol, c.volumes, q, Map{})))
                << "method " << m << ", " << c.data_dims.size() << " data dims, "
                << c.query_dims.size() << " query dims";
        }
    }
}

}  // namespace
