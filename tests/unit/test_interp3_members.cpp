// The members of each kernel family: every unrolled member against the
// general member for the same volume count, and the counts that must write
// nothing.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "interp3_reference.hpp"
#include "interpolation/interp3.hpp"

namespace {

using namespace interp3_reference;

// A coordinate map that is not the identity, with a reversed y axis.
const Map kMap{{0.9f, 0.7f}, {-1.1f, 5.3f}, {1.25f, 0.5f}};

struct Call {
    float* out;
    const float* data;
    const Queries& q;
    long long count;
    int d0, d1, d2;
};

#define INTERP3_FAMILY(Name, MethodValue, FirstUnrolled, unrolled_kernel,       \
                       general_kernel)                                          \
    struct Name {                                                               \
        static constexpr Method method = MethodValue;                           \
        static constexpr int first_unrolled = FirstUnrolled;                    \
        template <int N>                                                        \
        static void unrolled(const Call& c) {                                   \
            Interp3::unrolled_kernel<float, float, N>(                          \
                c.out, c.data, c.q.x.data(), c.q.y.data(), c.q.z.data(),        \
                c.count, c.d0, c.d1, c.d2, kMap.x.scale, kMap.x.offset,         \
                kMap.y.scale, kMap.y.offset, kMap.z.scale, kMap.z.offset);      \
        }                                                                       \
        static void general(const Call& c, int volume_count) {                  \
            Interp3::general_kernel<float, float>(                              \
                c.out, c.data, c.q.x.data(), c.q.y.data(), c.q.z.data(),        \
                c.count, c.d0, c.d1, c.d2, volume_count, kMap.x.scale,          \
                kMap.x.offset, kMap.y.scale, kMap.y.offset, kMap.z.scale,       \
                kMap.z.offset);                                                 \
        }                                                                       \
    };

INTERP3_FAMILY(NearestFamily, Method::Nearest, 2, interpolate_nearest_unrolled,
               interpolate_nearest)
INTERP3_FAMILY(LinearFamily, Method::Linear, 1, interpolate_linear_unrolled,
               interpolate_linear)
INTERP3_FAMILY(CubicFamily, Method::Cubic, 1, interpolate_bicubic_unrolled,
               interpolate_bicubic)
#undef INTERP3_FAMILY

template <int First, int Last, typename F>
void for_volume_counts(F&& f) {
    if constexpr (First <= Last) {
        f(std::integral_constant<int, First>{});
        for_volume_counts<First + 1, Last>(f);
    }
}

// Queries across and beyond the volume under kMap, plus non-finite and
// huge coordinates.
Queries member_queries(int d0, int d1, int d2, unsigned seed) {
    Queries q = index_space_queries(d0, d1, d2, 300, seed);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    for (float odd : {nan, inf, -inf, 3e9f, -3e9f}) {
        q.x.push_back(odd), q.y.push_back(1.0f), q.z.push_back(1.0f);
        q.x.push_back(1.0f), q.y.push_back(odd), q.z.push_back(1.0f);
        q.x.push_back(1.0f), q.y.push_back(1.0f), q.z.push_back(odd);
    }
    return q;
}

template <typename Family>
class Interp3FamilyMembers : public ::testing::Test {};

using Families = ::testing::Types<NearestFamily, LinearFamily, CubicFamily>;
TYPED_TEST_SUITE(Interp3FamilyMembers, Families);

TYPED_TEST(Interp3FamilyMembers, UnrolledMatchesGeneralBitForBit) {
    using Family = TypeParam;
    for_volume_counts<Family::first_unrolled, 9>([](auto n) {
        constexpr int N = decltype(n)::value;
        SCOPED_TRACE(::testing::Message() << N << " volumes");
        const int d0 = 5, d1 = 6, d2 = 4;
        const Volumes v = random_volumes(d0, d1, d2, N, 100 + N);
        const Queries q = member_queries(d0, d1, d2, 200 + N);
        std::vector<float> unrolled(N * q.size()), general(N * q.size());
        Family::template unrolled<N>({unrolled.data(), v.samples.data(), q,
                                      q.size(), d0, d1, d2});
        Family::general({general.data(), v.samples.data(), q, q.size(), d0, d1, d2},
                        N);
        EXPECT_TRUE(same_bits(unrolled, general));
        EXPECT_TRUE(same_values(general, evaluate_all(Family::method, v, q, kMap)));
    });
}

TYPED_TEST(Interp3FamilyMembers, CountZeroOrNegativeWritesNothing) {
    using Family = TypeParam;
    const Volumes v = random_volumes(3, 3, 3, 9, 300);
    const Queries q = member_queries(3, 3, 3, 301);
    for (long long count : {0LL, -1LL, -100LL}) {
        std::vector<float> out(9 * q.size(), 42.0f);
        const Call call{out.data(), v.samples.data(), q, count, 3, 3, 3};
        for_volume_counts<Family::first_unrolled, 9>(
            [&](auto n) { Family::template unrolled<decltype(n)::value>(call); });
        Family::general(call, 9);
        Family::general(call, 12);
        EXPECT_EQ(out, std::vector<float>(out.size(), 42.0f)) << "count " << count;
    }
}

TYPED_TEST(Interp3FamilyMembers, GeneralWithNoVolumesWritesNothing) {
    using Family = TypeParam;
    const Volumes v = random_volumes(3, 3, 3, 1, 400);
    const Queries q = member_queries(3, 3, 3, 401);
    std::vector<float> out(q.size(), 42.0f);
    for (int volume_count : {0, -1, -7}) {
        Family::general({out.data(), v.samples.data(), q, q.size(), 3, 3, 3},
                        volume_count);
    }
    EXPECT_EQ(out, std::vector<float>(out.size(), 42.0f));
}

}  // namespace
