// The Interp3 driver end to end: every method on both paths, null and
// explicit grids, against the test's reference evaluation.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "interp3_reference.hpp"
#include "interpolation/interp3.hpp"

namespace {

using namespace interp3_reference;
using Interp3::InterpolationMethod;

InterpolationMethod library_method(Method m) {
    switch (m) {
        case Method::Nearest: return Interp3::NEAREST;
        case Method::Linear: return Interp3::LINEAR;
        case Method::Cubic: return Interp3::BICUBIC;
    }
    return Interp3::NEAREST;
}

const char* method_name(Method m) {
    switch (m) {
        case Method::Nearest: return "Nearest";
        case Method::Linear: return "Linear";
        case Method::Cubic: return "Cubic";
    }
    return "";
}

// Output buffers start out filled with this NaN so that untouched elements
// can be told from written ones.
float sentinel() {
    const std::uint32_t bits = 0x7fa5a5a5u;
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return f;
}

bool all_sentinel(const float* begin, const float* end) {
    const float s = sentinel();
    for (const float* p = begin; p != end; ++p) {
        if (std::memcmp(p, &s, sizeof s) != 0) return false;
    }
    return true;
}

// Physical extent of an explicit grid axis, and the map it implies from a
// coordinate to the 1-based sample index (first -> 1, last -> size).
struct AxisSpan {
    float first, last;
    float at(float index, int size) const {
        return static_cast<float>(first + (static_cast<double>(last) - first) *
                                              index / (size - 1));
    }
    AxisMap map(int size) const {
        AxisMap m;
        m.scale = static_cast<float>(1 - size) / (first - last);
        m.offset = 1.0f - first * m.scale;
        return m;
    }
};

// The explicit grids' extents; y runs downwards on purpose.
const AxisSpan kSpanX{-2.5f, 4.0f}, kSpanY{10.0f, 3.0f}, kSpanZ{0.5f, 1.75f};

// Grid arrays of `total` elements (all samples of all volumes) in which only
// the first element and the far corner at total - 1 hold coordinates: the
// driver must read nothing else, so everything in between is NaN.
struct Grid {
    std::vector<float> x, y, z;
    Map map;
};

Grid sparse_explicit_grid(int d0, int d1, int d2, size_t total) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Grid g{std::vector<float>(total, nan), std::vector<float>(total, nan),
           std::vector<float>(total, nan),
           {kSpanX.map(d1), kSpanY.map(d0), kSpanZ.map(d2)}};
    g.x.front() = kSpanX.first, g.x.back() = kSpanX.last;
    g.y.front() = kSpanY.first, g.y.back() = kSpanY.last;
    g.z.front() = kSpanZ.first, g.z.back() = kSpanZ.last;
    return g;
}

// Index-space queries carried over to the explicit grid's coordinates.
Queries to_physical(const Queries& q, int d0, int d1, int d2) {
    Queries p;
    for (long long i = 0; i < q.size(); ++i) {
        p.x.push_back(kSpanX.at(q.x[i], d1));
        p.y.push_back(kSpanY.at(q.y[i], d0));
        p.z.push_back(kSpanZ.at(q.z[i], d2));
    }
    return p;
}

enum class Path { SingleVolume, MultiVolume, MultiVolumeFiveDims };

struct SweepCase {
    Method method;
    Path path;
    bool explicit_grid;
    int volumes;
};

std::string case_name(const ::testing::TestParamInfo<SweepCase>& info) {
    const SweepCase& c = info.param;
    const char* path = c.path == Path::SingleVolume  ? "Single"
                       : c.path == Path::MultiVolume ? "Multi"
                                                     : "MultiFiveDims";
    return std::string(method_name(c.method)) + path +
           (c.explicit_grid ? "ExplicitGrid" : "NullGrid") +
           std::to_string(c.volumes) + "Volumes";
}

std::vector<SweepCase> sweep_cases() {
    std::vector<SweepCase> cases;
    for (Method m : {Method::Nearest, Method::Linear, Method::Cubic}) {
        for (bool explicit_grid : {false, true}) {
            cases.push_back({m, Path::SingleVolume, explicit_grid, 1});
            for (int v = 1; v <= 12; ++v) {
                cases.push_back({m, Path::MultiVolume, explicit_grid, v});
                cases.push_back({m, Path::MultiVolumeFiveDims, explicit_grid, v});
            }
        }
    }
    return cases;
}

// Dimension list of a volume set for the given path.
std::vector<unsigned> dims_for(Path path, unsigned a, unsigned b, unsigned c,
                               unsigned volumes) {
    switch (path) {
        case Path::SingleVolume: return {a, b, c};
        case Path::MultiVolume: return {a, b, c, volumes};
        case Path::MultiVolumeFiveDims: return {a, b, c, 1, volumes};
    }
    return {};
}

class Interp3DriverSweep : public ::testing::TestWithParam<SweepCase> {};

// Every axis length from 1 to 6 appears on every axis; the larger volumes
// also reach the kernels' unclamped interiors. Explicit grids need two
// samples per axis at least (one sample has no spacing to map from).
const std::vector<std::array<int, 3>> kNullGridSizes = {
    {1, 1, 1}, {2, 3, 4}, {4, 5, 6}, {6, 1, 3}, {3, 6, 2},
    {5, 4, 1}, {1, 2, 5}, {6, 6, 6}, {9, 8, 7}};
const std::vector<std::array<int, 3>> kExplicitGridSizes = {
    {2, 2, 2}, {2, 3, 4}, {4, 5, 6}, {6, 2, 3}, {3, 6, 5}, {5, 4, 2}, {8, 9, 7}};

TEST_P(Interp3DriverSweep, MatchesReference) {
    const SweepCase c = GetParam();
    const unsigned p = 12, q = 10, r = 8;  // query dims: 960 points per volume
    const auto& sizes = c.explicit_grid ? kExplicitGridSizes : kNullGridSizes;
    unsigned seed = 1;
    for (const auto& [d0, d1, d2] : sizes) {
        SCOPED_TRACE(::testing::Message() << "volume " << d0 << "x" << d1 << "x" << d2);
        const Volumes v = random_volumes(d0, d1, d2, c.volumes, ++seed);
        Queries queries = index_space_queries(d0, d1, d2, p * q * r, ++seed);
        Grid grid;
        if (c.explicit_grid) {
            grid = sparse_explicit_grid(d0, d1, d2, v.samples.size());
            queries = to_physical(queries, d0, d1, d2);
        }
        const std::vector<float> expected =
            evaluate_all(c.method, v, queries, grid.map);

        std::vector<float> data = v.samples;
        const size_t guard = 16;
        std::vector<float> out(expected.size() + guard, sentinel());
        Interp3::interp3<float, float>(
            c.explicit_grid ? grid.x.data() : nullptr,
            c.explicit_grid ? grid.y.data() : nullptr,
            c.explicit_grid ? grid.z.data() : nullptr, data.data(),
            dims_for(c.path, d0, d1, d2, c.volumes), queries.x.data(),
            queries.y.data(), queries.z.data(),
            dims_for(c.path, p, q, r, c.volumes), library_method(c.method),
            out.data());

        EXPECT_TRUE(same_values({out.begin(), out.end() - guard}, expected));
        EXPECT_TRUE(all_sentinel(out.data() + expected.size(),
                                 out.data() + out.size()));
    }
}

INSTANTIATE_TEST_SUITE_P(AllMethodsPathsAndVolumeCounts, Interp3DriverSweep,
                         ::testing::ValuesIn(sweep_cases()), case_name);

// Runs interp3 with null grids; returns the whole output buffer.
std::vector<float> run_null_grid(Method method, Volumes v, Queries q,
                                 std::vector<unsigned> data_dims,
                                 std::vector<unsigned> query_dims,
                                 size_t out_size) {
    std::vector<float> out(out_size, sentinel());
    Interp3::interp3<float, float>(nullptr, nullptr, nullptr, v.samples.data(),
                                   data_dims, q.x.data(), q.y.data(), q.z.data(),
                                   query_dims, library_method(method), out.data());
    return out;
}

TEST(Interp3Driver, ExactAtSamplePositionsWithNullGrids) {
    const int d0 = 4, d1 = 5, d2 = 3, volumes = 3;
    const Volumes v = random_volumes(d0, d1, d2, volumes, 7);
    Queries q;  // every sample, in storage order
    for (int s = 0; s < d2; ++s)
        for (int c = 0; c < d1; ++c)
            for (int r = 0; r < d0; ++r) {
                q.x.push_back(static_cast<float>(c));
                q.y.push_back(static_cast<float>(r));
                q.z.push_back(static_cast<float>(s));
            }
    const unsigned n = d0 * d1 * d2;
    for (Method m : {Method::Nearest, Method::Linear, Method::Cubic}) {
        SCOPED_TRACE(method_name(m));
        const std::vector<float> single =
            run_null_grid(m, v, q, {d0, d1, d2}, {n, 1, 1}, n);
        EXPECT_TRUE(same_bits(single, {v.samples.begin(), v.samples.begin() + n}));
        const std::vector<float> multi = run_null_grid(
            m, v, q, {d0, d1, d2, volumes}, {n, 1, 1, volumes}, n * volumes);
        EXPECT_TRUE(same_bits(multi, v.samples));
    }
}

TEST(Interp3Driver, BorderLatticeMatchesReference) {
    // Every combination of border, margin and outside positions, in volumes
    // large enough for the kernels' unclamped interiors.
    for (const auto& [d0, d1, d2] : {std::array<int, 3>{9, 8, 7},
                                     std::array<int, 3>{7, 10, 8}}) {
        const Volumes v = random_volumes(d0, d1, d2, 3, 5);
        const Queries q = border_lattice(d0, d1, d2);
        const unsigned n = static_cast<unsigned>(q.size());
        for (Method m : {Method::Nearest, Method::Linear, Method::Cubic}) {
            EXPECT_TRUE(same_values(
                run_null_grid(m, v, q, {unsigned(d0), unsigned(d1), unsigned(d2), 3},
                              {n, 1, 1, 3}, 3 * n),
                evaluate_all(m, v, q, Map{})))
                << method_name(m) << ", " << d0 << "x" << d1 << "x" << d2;
        }
    }
}

std::string thrown_text(const std::function<void()>& call) {
    try {
        call();
    } catch (const char* message) {
        return message;
    }
    return "<nothing thrown>";
}

TEST(Interp3Driver, UnknownMethodThrowsBeforeWriting) {
    Volumes v = random_volumes(3, 3, 3, 2, 11);
    Queries q = index_space_queries(3, 3, 3, 8, 12);
    for (int method : {3, -1, 1000}) {
        for (const std::vector<unsigned>& data_dims :
             {std::vector<unsigned>{3, 3, 3}, std::vector<unsigned>{3, 3, 3, 2}}) {
            std::vector<float> out(16, sentinel());
            const std::vector<unsigned> query_dims =
                data_dims.size() == 3 ? std::vector<unsigned>{8, 1, 1}
                                      : std::vector<unsigned>{8, 1, 1, 2};
            EXPECT_EQ(thrown_text([&] {
                          Interp3::interp3<float, float>(
                              nullptr, nullptr, nullptr, v.samples.data(),
                              data_dims, q.x.data(), q.y.data(), q.z.data(),
                              query_dims,
                              static_cast<InterpolationMethod>(method),
                              out.data());
                      }),
                      "Error in Interp3: Unimplemented interpolation method.")
                << "method " << method << ", " << data_dims.size() << " dims";
            EXPECT_TRUE(all_sentinel(out.data(), out.data() + out.size()));
        }
    }
}

TEST(Interp3Driver, SingleVolumePathUsesOnlyFirstThreeQueryDims) {
    const Volumes v = random_volumes(4, 3, 2, 1, 21);
    const Queries q = index_space_queries(4, 3, 2, 2 * 3 * 4, 22);
    for (Method m : {Method::Nearest, Method::Linear, Method::Cubic}) {
        SCOPED_TRACE(method_name(m));
        const std::vector<float> out =
            run_null_grid(m, v, q, {4, 3, 2}, {2, 3, 4, 2}, 2 * 24);
        EXPECT_TRUE(same_values({out.begin(), out.begin() + 24},
                                evaluate_all(m, v, q, Map{})));
        EXPECT_TRUE(all_sentinel(out.data() + 24, out.data() + out.size()));
    }
}

TEST(Interp3Driver, VolumeCountComesFromQueryDims) {
    const Volumes three = random_volumes(3, 4, 2, 3, 31);
    const Queries q = index_space_queries(3, 4, 2, 10, 32);
    for (Method m : {Method::Nearest, Method::Linear, Method::Cubic}) {
        SCOPED_TRACE(method_name(m));
        // data_dims claim one volume, query_dims ask for three: three are done.
        EXPECT_TRUE(same_values(run_null_grid(m, three, q, {3, 4, 2, 1},
                                              {10, 1, 1, 3}, 30),
                                evaluate_all(m, three, q, Map{})));
        // data_dims claim three volumes, three query dims mean one volume.
        const std::vector<float> out =
            run_null_grid(m, three, q, {3, 4, 2, 3}, {10, 1, 1}, 30);
        Volumes first = three;
        first.count = 1;
        EXPECT_TRUE(same_values({out.begin(), out.begin() + 10},
                                evaluate_all(m, first, q, Map{})));
        EXPECT_TRUE(all_sentinel(out.data() + 10, out.data() + out.size()));
    }
}

TEST(Interp3Driver, ZeroQueryCountWritesNothing) {
    const Volumes v = random_volumes(3, 3, 3, 2, 41);
    const Queries q = index_space_queries(3, 3, 3, 4, 42);
    struct Call {
        std::vector<unsigned> data_dims, query_dims;
    };
    for (Method m : {Method::Nearest, Method::Linear, Method::Cubic}) {
        for (const Call& call : {Call{{3, 3, 3}, {0, 4, 1}},
                                 Call{{3, 3, 3, 2}, {4, 0, 1, 2}}}) {
            const std::vector<float> out =
                run_null_grid(m, v, q, call.data_dims, call.query_dims, 8);
            EXPECT_TRUE(all_sentinel(out.data(), out.data() + out.size()))
                << method_name(m) << ", " << call.data_dims.size() << " data dims";
        }
    }
}

}  // namespace
