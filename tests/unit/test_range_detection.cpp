// The sampled block as the data show it: detection by exact zeros and by
// energy against the mirror planes, given ranges checked against the data,
// and ranges from acquired fractions.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "recon/range_detection.hpp"
#include "recon/recon_error.hpp"

namespace {

// An object-like k-space (peaked at k = 0, with a phase ramp) whose planes
// outside `keep` hold `outside` (0, or a filler value).
std::vector<Complex> object_kspace(const ReconShape& shape, const SampledRanges& keep, Complex outside)
{
    std::vector<Complex> k(static_cast<std::size_t>(shape.samples()));
    Index i = 0;
    for (Index c = 0; c < shape.coils * shape.volumes; ++c) {
        for (Index z = 0; z < shape.n[2]; ++z) {
            for (Index y = 0; y < shape.n[1]; ++y) {
                for (Index x = 0; x < shape.n[0]; ++x, ++i) {
                    const Index at[3] = {x - shape.n[0] / 2, y - shape.n[1] / 2, z - shape.n[2] / 2};
                    bool kept = true;
                    for (int a = 0; a < 3; ++a) {
                        kept = kept && (!keep[a] || (at[a] >= keep[a]->first && at[a] <= keep[a]->last));
                    }
                    const double r2 = double(at[0] * at[0] + at[1] * at[1] + at[2] * at[2]);
                    k[i] = kept ? std::polar(float(1.0 / (1.0 + r2)), 0.3f * float(at[0] + c)) : outside;
                }
            }
        }
    }
    return k;
}

ReconShape shape_of(Index nx, Index ny, Index nz, Index coils = 1)
{
    ReconShape s;
    s.n = {nx, ny, nz};
    s.coils = coils;
    return s;
}

void expect_error(const char* id, const std::string& part, const std::function<void()>& call)
{
    try {
        call();
        ADD_FAILURE() << "no error, expected " << part;
    } catch (const ReconError& e) {
        EXPECT_EQ(e.id, id) << e.what();
        EXPECT_NE(std::string(e.what()).find(part), std::string::npos) << e.what();
    }
}

}  // namespace

TEST(RangeDetection, ZerosAndFillerGiveTheSameBlock)
{
    const ReconShape shape = shape_of(32, 24, 6, 2);
    const SampledRanges keep = {KRange{-10, 15}, std::nullopt, KRange{-3, 1}};
    for (const Complex outside : {Complex(0.0f, 0.0f), Complex(1e-6f, -1e-6f)}) {
        const std::vector<Complex> k = object_kspace(shape, keep, outside);
        const RangeDetection found = detect_ranges(shape, plane_energies(shape, k.data()));
        const DetectionMethod method = outside == Complex(0.0f, 0.0f) ? DetectionMethod::zeros : DetectionMethod::energy;
        EXPECT_EQ(found[0].method, method);
        EXPECT_EQ(found[0].range->first, -10);
        EXPECT_EQ(found[0].range->last, 15);
        EXPECT_EQ(found[1].method, DetectionMethod::full);
        EXPECT_EQ(found[1].range->first, -12);
        EXPECT_EQ(found[1].range->last, 11);
        EXPECT_EQ(found[2].range->last, 1);
        EXPECT_FALSE(found[0].one_sided || found[1].one_sided);
    }
}

TEST(RangeDetection, GapsAndEmptyDataAreRefused)
{
    const ReconShape shape = shape_of(16, 12, 1);
    std::vector<Complex> k = object_kspace(shape, {}, {});
    for (Index x = 0; x < 16; ++x) {
        k[static_cast<std::size_t>(2 * 16 + x)] = k[static_cast<std::size_t>(3 * 16 + x)] = Complex(0.0f, 0.0f);
    }
    expect_error("homodyne:sampling", "along y are not contiguous (k = -6 .. 5, but nothing from -4 to -3)",
                 [&] { detect_ranges(shape, plane_energies(shape, k.data())); });
    const std::vector<Complex> blank(k.size());
    expect_error("homodyne:sampling", "no non-zero sample", [&] { detect_ranges(shape, plane_energies(shape, blank.data())); });
    // A blank k-space contradicts no given range.
    EXPECT_NO_THROW(check_given_ranges({KRange{-2, 7}}, {"x", "y", "z"}, shape, plane_energies(shape, blank.data())));
}

TEST(RangeDetection, GivenRangesThatTheDataContradictAreRefused)
{
    const ReconShape shape = shape_of(32, 16, 1);
    const std::vector<Complex> k = object_kspace(shape, {std::nullopt, KRange{-3, 7}}, {});
    const PlaneEnergies energies = plane_energies(shape, k.data());
    const std::array<std::string, 3> labels = {"'Ranges' x range", "'Ranges' y range", "'Ranges' z range"};
    const auto check = [&](const SampledRanges& ranges) { return check_given_ranges(ranges, labels, shape, energies); };
    EXPECT_EQ(check({std::nullopt, KRange{-3, 7}})[1].ratio, 0.0);
    expect_error("homodyne:badRange", "'Ranges' x range [-3 15] leaves out planes that hold data",
                 [&] { check({KRange{-3, 15}, KRange{-3, 7}}); });
    expect_error("homodyne:badRange", "'Ranges' y range [-6 7] is wider than the data along y: the planes from k = -3 to 7",
                 [&] { check({std::nullopt, KRange{-6, 7}}); });
    expect_error("homodyne:badRange", "'Ranges' y range [] takes the axis as fully sampled, but only the planes from k = -3 to 7",
                 [&] { check({}); });
}

TEST(RangeDetection, FractionsKeepTheAcquiredLines)
{
    const ReconShape shape = shape_of(128, 75, 1);
    const SampledRanges r = partial_fourier_ranges({5.0 / 8.0, -0.75, std::nullopt}, shape);
    EXPECT_EQ(r[0]->first, -16);  // 48 of 128 lines missing at the negative end
    EXPECT_EQ(r[0]->last, 63);
    EXPECT_EQ(r[1]->first, -37);  // floor(0.25 * 75) = 18 missing at the positive end
    EXPECT_EQ(r[1]->last, 19);
    EXPECT_FALSE(r[2]);
    expect_error("homodyne:badOption", "'PartialFourier' y entry must be [] or a fraction from 0.5 to 1",
                 [&] { partial_fourier_ranges({std::nullopt, 0.3, std::nullopt}, shape); });
}
