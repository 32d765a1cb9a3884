// The fast paths of both commands against plain reference loops, bit for bit,
// on random inputs: the crop against a plain copy and the weighting against a
// per-sample pow, in both layouts and for real data; the phase transfer
// against per-point trilinear interpolation through the library's general
// entry (full query grids from linspace and ndgrid) followed by the combine.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "homodyne/homodyne_filter.hpp"
#include "interpolation/interp3.hpp"
#include "interpolation/vector_manipulation.hpp"
#include "phase/phase_transfer.hpp"

namespace {

std::vector<float> random_floats(std::size_t n, std::mt19937& rng, float lo, float hi)
{
    std::uniform_real_distribution<float> uniform(lo, hi);
    std::vector<float> v(n);
    for (float& x : v) {
        x = uniform(rng);
    }
    return v;
}

bool same_bits(const std::vector<float>& a, const std::vector<float>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

// Random weights drawn from a few values, so that positions share weights
// the way homodyne ramps do (runs of 0 and 2 at the ends) and also at
// random; a block inside the axis.
AxisFilter random_axis(int n, bool weighted, std::mt19937& rng)
{
    AxisFilter axis;
    axis.weighted = weighted;
    axis.first = n / 3, axis.last = n - 1 - n / 4;
    const std::vector<float> palette = random_floats(5, rng, 0.0f, 2.0f);
    std::uniform_int_distribution<int> pick(0, 6);
    for (int i = 0; i < n; ++i) {
        const int p = i < n / 5 ? 5 : i >= n - n / 6 ? 6 : pick(rng);  // ramps start with 0s, end with 2s
        axis.weights.push_back(!weighted ? 1.0f : p < 5 ? palette[p] : p == 5 ? 0.0f : 2.0f);
    }
    return axis;
}

// The crop (before any weighting) and the weighting with a per-sample pow.
struct Filtered {
    std::vector<float> re, im, block_re, block_im;
};

Filtered reference_filter(const std::vector<float>& re, const std::vector<float>& im, const VolumeShape& s,
                          const AxisFilter& x, const AxisFilter& y, const AxisFilter& z)
{
    Filtered out{re, im, {}, {}};
    const std::size_t volume = std::size_t(s.nx) * s.ny * s.nz;
    for (int v = 0; v < s.nvol; ++v)
        for (int k = z.first; k <= z.last; ++k)
            for (int j = y.first; j <= y.last; ++j)
                for (int i = x.first; i <= x.last; ++i) {
                    const std::size_t at = v * volume + (std::size_t(k) * s.ny + j) * s.nx + i;
                    out.block_re.push_back(re[at]);
                    out.block_im.push_back(im[at]);
                }
    const int c = int(x.weighted) + int(y.weighted) + int(z.weighted);
    const double e = 1.0f / static_cast<float>(c);
    std::size_t n = 0;
    for (int v = 0; v < s.nvol; ++v)
        for (int k = 0; k < s.nz; ++k)
            for (int j = 0; j < s.ny; ++j)
                for (int i = 0; i < s.nx; ++i, ++n) {
                    const float p = x.weights[i] * y.weights[j] * z.weights[k];
                    const float f = static_cast<float>(std::pow(static_cast<double>(p), e));
                    out.re[n] *= f;
                    out.im[n] *= f;
                }
    return out;
}

std::vector<float> every_other(const std::vector<float>& pairs, std::size_t first)
{
    std::vector<float> v(pairs.size() / 2);
    for (std::size_t i = 0; i < v.size(); ++i) {
        v[i] = pairs[2 * i + first];
    }
    return v;
}

}  // namespace

// Separate planes through crop_block and weight_in_place, interleaved pairs
// and real data through the one pass of crop_and_weight.
TEST(FastPaths, FilterMatchesPlainCropAndPerSamplePow)
{
    std::mt19937 rng(2024);
    const VolumeShape shapes[] = {{9, 8, 1, 1}, {16, 7, 5, 1}, {11, 12, 6, 3}, {1, 5, 4, 2}};
    const bool weighted_sets[][3] = {{true, false, false}, {false, true, true}, {true, true, false},
                                     {true, true, true}, {false, false, true}};
    for (const VolumeShape& shape : shapes) {
        for (const auto& weighted : weighted_sets) {
            const AxisFilter x = random_axis(shape.nx, weighted[0], rng);
            const AxisFilter y = random_axis(shape.ny, weighted[1], rng);
            const AxisFilter z = random_axis(shape.nz, weighted[2], rng);
            const std::size_t n = std::size_t(shape.nx) * shape.ny * shape.nz * shape.nvol;
            const std::vector<float> re = random_floats(n, rng, -3, 3), im = random_floats(n, rng, -3, 3);
            const Filtered want = reference_filter(re, im, shape, x, y, z);
            const std::size_t m = want.block_re.size();

            Filtered planes{re, im, std::vector<float>(m), std::vector<float>(m)};
            crop_block(ComplexPlanes{planes.re.data(), planes.im.data(), 1}, shape, x, y, z,
                       ComplexPlanes{planes.block_re.data(), planes.block_im.data(), 1});
            weight_in_place(ComplexPlanes{planes.re.data(), planes.im.data(), 1}, shape, x, y, z);
            std::vector<float> pairs(2 * n), pair_block(2 * m);
            for (std::size_t i = 0; i < n; ++i) {
                pairs[2 * i] = re[i], pairs[2 * i + 1] = im[i];
            }
            crop_and_weight(ComplexPlanes{pairs.data(), pairs.data() + 1, 2}, shape, x, y, z,
                            ComplexPlanes{pair_block.data(), pair_block.data() + 1, 2});
            Filtered real{re, {}, std::vector<float>(m), std::vector<float>(m)};
            crop_and_weight(ComplexPlanes{real.re.data(), nullptr, 1}, shape, x, y, z,
                            ComplexPlanes{real.block_re.data(), real.block_im.data(), 1});

            EXPECT_TRUE(same_bits(planes.re, want.re) && same_bits(planes.im, want.im));
            EXPECT_TRUE(same_bits(planes.block_re, want.block_re) && same_bits(planes.block_im, want.block_im));
            EXPECT_TRUE(same_bits(every_other(pairs, 0), want.re) && same_bits(every_other(pairs, 1), want.im));
            EXPECT_TRUE(same_bits(every_other(pair_block, 0), want.block_re) &&
                        same_bits(every_other(pair_block, 1), want.block_im));
            EXPECT_TRUE(same_bits(real.re, want.re) && same_bits(real.block_re, want.block_re));
            EXPECT_EQ(real.block_im, std::vector<float>(m, 0.0f));  // real data leave the block's imaginary part
        }
    }
}

namespace {

// The phase transfer written plainly: full query grids, the library's general
// entry once per volume and plane, then the combine, sample by sample.
void reference_phase(std::vector<float>& re, std::vector<float>* im, const DimensionList& dd,
                     const std::vector<float>& low_re, const std::vector<float>* low_im, const DimensionList& ld)
{
    const std::size_t nd = std::size_t(dd[0]) * dd[1] * dd[2], nl = std::size_t(ld[0]) * ld[1] * ld[2];
    std::size_t volumes = 1;
    for (std::size_t d = 3; d < dd.size(); ++d) {
        volumes *= dd[d];
    }
    std::vector<float> ly = VectorManipulation::linspace<float>(0, float(int(ld[1]) - 1), int(dd[1]));
    std::vector<float> lx = VectorManipulation::linspace<float>(0, float(int(ld[0]) - 1), int(dd[0]));
    std::vector<float> lz = VectorManipulation::linspace<float>(0, float(int(ld[2]) - 1), int(dd[2]));
    std::vector<float> X, Y, Z;
    VectorManipulation::ndgrid<float, float>(lx, ly, lz, X, Y, Z);
    std::vector<float> a(nd), b(nd, 0.0f);
    const bool same = dd == ld;
    for (std::size_t v = 0; v < volumes; ++v) {
        if (same) {
            std::copy(low_re.begin() + v * nl, low_re.begin() + (v + 1) * nl, a.begin());
            if (low_im) {
                std::copy(low_im->begin() + v * nl, low_im->begin() + (v + 1) * nl, b.begin());
            }
        } else {
            const std::vector<unsigned> grid{ld[0], ld[1], ld[2]}, query{dd[0], dd[1], dd[2]};
            Interp3::interp3<float, float>(nullptr, nullptr, nullptr, const_cast<float*>(low_re.data()) + v * nl,
                                           grid, Y.data(), X.data(), Z.data(), query, Interp3::LINEAR, a.data());
            if (low_im) {
                Interp3::interp3<float, float>(nullptr, nullptr, nullptr, const_cast<float*>(low_im->data()) + v * nl,
                                               grid, Y.data(), X.data(), Z.data(), query, Interp3::LINEAR, b.data());
            }
        }
        for (std::size_t n = 0; n < nd; ++n) {
            const float m = low_im ? std::sqrt(a[n] * a[n] + b[n] * b[n]) : std::sqrt(a[n] * a[n]);
            const float c = a[n] / m;
            const float s = low_im ? (-b[n]) / m : 0.0f;
            float& r = re[v * nd + n];
            r = c * r;
            if (im) {
                r = r - s * (*im)[v * nd + n];
                (*im)[v * nd + n] = 0.0f;
            }
        }
    }
}

DimensionList padded(std::initializer_list<std::uint32_t> sizes)
{
    DimensionList list(13, 1);
    std::copy(sizes.begin(), sizes.end(), list.begin());
    return list;
}

}  // namespace

TEST(FastPaths, PhaseTransferMatchesPerPointInterpolation)
{
    std::mt19937 rng(77);
    struct Shapes {
        DimensionList data, low;
    };
    const Shapes shapes[] = {
        {padded({32, 24}), padded({8, 6})},               // 2-D
        {padded({17, 13, 9}), padded({5, 7, 3})},         // odd sizes, uneven ratios
        {padded({16, 12, 10, 3}), padded({4, 3, 5, 3})},  // 4-D
        {padded({6, 1, 4}), padded({3, 4, 2})},           // a data axis of one sample
        {padded({5, 9, 7}), padded({8, 3, 1})},           // fewer data than image samples; one image slice
        {padded({8, 6, 4, 2}), padded({8, 6, 4, 3})},     // grids coincide, more image volumes
        {padded({7, 5, 3, 2}), padded({7, 5, 3, 2})},     // equal sizes
    };
    for (const Shapes& s : shapes) {
        std::size_t nd = 1, nl = 1;
        for (std::uint32_t d : s.data) nd *= d;
        for (std::uint32_t d : s.low) nl *= d;
        for (int variant = 0; variant < 4; ++variant) {
            const bool image_complex = variant & 1, data_complex = variant & 2;
            std::vector<float> low_re = random_floats(nl, rng, -2, 2), low_im = random_floats(nl, rng, -2, 2);
            low_re[nl / 2] = 0.0f, low_im[nl / 2] = 0.0f;  // a zero image value somewhere
            std::vector<float> re = random_floats(nd, rng, -3, 3), im = random_floats(nd, rng, -3, 3);
            std::vector<float> expected_re = re, expected_im = im;
            reference_phase(expected_re, data_complex ? &expected_im : nullptr, s.data, low_re,
                            image_complex ? &low_im : nullptr, s.low);

            std::vector<float> planes_re = re, planes_im = im, pairs(2 * nd);
            for (std::size_t i = 0; i < nd; ++i) {
                pairs[2 * i] = re[i], pairs[2 * i + 1] = im[i];
            }
            const float* image_im = image_complex ? low_im.data() : nullptr;
            if (data_complex) {
                AddLowResPhase(ComplexPlanes{planes_re.data(), planes_im.data(), 1}, s.data, low_re.data(), image_im,
                               s.low);
                AddLowResPhase(ComplexPlanes{pairs.data(), pairs.data() + 1, 2}, s.data, low_re.data(), image_im,
                               s.low);
                std::vector<float> pairs_re(nd), pairs_im(nd);
                for (std::size_t i = 0; i < nd; ++i) {
                    pairs_re[i] = pairs[2 * i], pairs_im[i] = pairs[2 * i + 1];
                }
                EXPECT_TRUE(same_bits(pairs_re, expected_re) && same_bits(pairs_im, expected_im));
                EXPECT_TRUE(same_bits(planes_im, expected_im));
            } else {
                AddLowResPhase(ComplexPlanes{planes_re.data(), nullptr, 1}, s.data, low_re.data(), image_im, s.low);
            }
            EXPECT_TRUE(same_bits(planes_re, expected_re)) << "variant " << variant;
        }
    }
}
