#include "recon/one_pass_homodyne.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "phase/phase_transfer.hpp"
#include "recon/fft_order.hpp"
#include "recon/power_of_two.hpp"
#include "recon/reconstruct.hpp"

namespace {

// The source index of every centred index along an axis: k -> -k where the
// axis is mirrored (index floor(n/2) - k, the unpaired -n/2 of an even axis
// staying put), the index itself elsewhere.
std::vector<Index> mirror_map(Index n, bool mirrored)
{
    std::vector<Index> map(static_cast<std::size_t>(n));
    for (Index c = 0; c < n; ++c) {
        map[c] = mirrored ? (2 * (n / 2) - c + n) % n : c;
    }
    return map;
}

ComplexPlanes interleaved(Complex* values)
{
    float* re = reinterpret_cast<float*>(values);
    return ComplexPlanes{re, re + 1, 2};
}

// A centred volume (from ComplexBuffer) transformed in place to its centred
// inverse DFT, divided by the sample count.
void centred_inverse(const VolumeTransform& transform, Complex* centred)
{
    reorder_in_place(centred, transform.n(), false);
    transform.inverse(centred);
    const float count_of_samples = static_cast<float>(transform.voxels());
    reorder_in_place(centred, transform.n(), true, [count_of_samples](Complex x) {
        return Complex(x.real() / count_of_samples, x.imag() / count_of_samples);
    });
}

// A range that starts at k = 0 has no ramp: the module weights it 2 from k = 0
// on. The homodyne weight of k = 0 is 1, as for every plane whose mirror was
// acquired (w(k) + w(-k) = 2), else the image carries the DC term twice. The
// module combines c weighted axes by the geometric mean, so that plane is
// divided by 2^(1/c).
void correct_centre_weight(const HomodynePlan& plan, Complex* weighted)
{
    int weighted_axes = 0;
    for (const AxisFilter& axis : plan.axes) {
        weighted_axes += axis.weighted ? 1 : 0;
    }
    const float excess = std::pow(2.0f, 1.0f / static_cast<float>(std::max(weighted_axes, 1)));
    const Index nx = plan.n[0], ny = plan.n[1], nz = plan.n[2];
    for (int a = 0; a < 3; ++a) {
        if (!plan.axes[a].weighted || plan.axes[a].first != plan.n[a] / 2) {
            continue;
        }
        for (Index z = 0; z < nz; ++z) {
            for (Index y = 0; y < ny; ++y) {
                for (Index x = 0; x < nx; ++x) {
                    const Index at[3] = {x, y, z};
                    if (at[a] == plan.n[a] / 2) {
                        Complex& v = weighted[(z * ny + y) * nx + x];
                        v = Complex(v.real() / excess, v.imag() / excess);
                    }
                }
            }
        }
    }
}

}  // namespace

HomodynePlan plan_homodyne(const ReconShape& shape, const SampledRanges& ranges)
{
    HomodynePlan plan;
    plan.n = shape.n;
    for (int axis = 0; axis < 3; ++axis) {
        const int n = static_cast<int>(shape.n[axis]);
        const std::optional<KRange>& r = ranges[axis];
        if (!r || std::abs(r->first + r->last) <= 1) {
            plan.axes[axis] = plan_axis_filter(n, nullptr);
            continue;
        }
        plan.mirrored[axis] = r->first + r->last < 0;
        const Index highest = (n + 1) / 2 - 1;
        const double range[2] = {static_cast<double>(plan.mirrored[axis] ? -r->last : r->first),
                                 static_cast<double>(plan.mirrored[axis] ? std::min(-r->first, highest) : r->last)};
        plan.axes[axis] = plan_axis_filter(n, range);
    }
    return plan;
}

namespace {

// The data gathered with the mirrored axes mirrored (`work`, the k-space's
// voxels) and times 2^-exponent (exact: a power of two), weighted, and the
// unweighted symmetric block cropped into `low`.
void weigh_mirrored(const HomodynePlan& plan, const Complex* kspace, int exponent, Complex* work, Complex* low)
{
    const Index nx = plan.n[0], ny = plan.n[1], nz = plan.n[2];
    const std::vector<Index> mx = mirror_map(nx, plan.mirrored[0]), my = mirror_map(ny, plan.mirrored[1]),
                             mz = mirror_map(nz, plan.mirrored[2]);
    for (Index z = 0, i = 0; z < nz; ++z) {
        for (Index y = 0; y < ny; ++y) {
            const Complex* row = kspace + (mz[z] * ny + my[y]) * nx;
            for (Index x = 0; x < nx; ++x, ++i) {
                work[i] = row[mx[x]];
            }
            if (exponent != 0) {
                copy_times_power_of_two(work + i - nx, nx, -exponent, work + i - nx);
            }
        }
    }
    const std::array<Index, 3> b = plan.block();
    std::fill(low, low + b[0] * b[1] * b[2], Complex(0.0f, 0.0f));
    const VolumeShape shape{static_cast<int>(nx), static_cast<int>(ny), static_cast<int>(nz), 1};
    crop_block(interleaved(work), shape, plan.axes[0], plan.axes[1], plan.axes[2], interleaved(low));
    weight_in_place(interleaved(work), shape, plan.axes[0], plan.axes[1], plan.axes[2]);
    correct_centre_weight(plan, work);
}

// `from` (sizes n) into `to` with every mirrored axis mirrored back.
void unmirror(const std::array<Index, 3>& n, const std::array<bool, 3>& mirrored, const Complex* from, Complex* to)
{
    const std::vector<Index> mx = mirror_map(n[0], mirrored[0]), my = mirror_map(n[1], mirrored[1]),
                             mz = mirror_map(n[2], mirrored[2]);
    for (Index z = 0, i = 0; z < n[2]; ++z) {
        for (Index y = 0; y < n[1]; ++y) {
            for (Index x = 0; x < n[0]; ++x, ++i) {
                to[(mz[z] * n[1] + my[y]) * n[0] + mx[x]] = from[i];
            }
        }
    }
}

}  // namespace

void weigh_volume(const HomodynePlan& plan, const Complex* kspace, Complex* block, Complex* weighted)
{
    const std::array<Index, 3> b = plan.block();
    ComplexBuffer work(plan.n[0] * plan.n[1] * plan.n[2]), low(b[0] * b[1] * b[2]);
    weigh_mirrored(plan, kspace, 0, work.data(), low.data());
    unmirror(plan.n, plan.mirrored, work.data(), weighted);
    unmirror(b, plan.mirrored, low.data(), block);
}

VolumeReport homodyne_volume(const HomodynePlan& plan, const VolumeTransform& full, const VolumeTransform& block,
                             const Complex* kspace, int exponent, ReconOutput output, float* image, float* phase)
{
    const Index nx = plan.n[0], ny = plan.n[1], nz = plan.n[2], voxels = full.voxels();
    const std::vector<Index> mx = mirror_map(nx, plan.mirrored[0]), my = mirror_map(ny, plan.mirrored[1]),
                             mz = mirror_map(nz, plan.mirrored[2]);
    const Index lows = block.voxels();
    const bool unit_wanted = output == ReconOutput::complex || phase != nullptr;

    // The phase transfer reads the low-resolution image as two planes; the
    // second pair of planes, (Im L, -Re L), yields the sine of the phase.
    // They are kept in `image` until the result is written, when they fit.
    const Index plane_floats = (unit_wanted ? 4 : 2) * lows;
    std::vector<float> own_planes(plane_floats <= values_per_sample(output) * voxels ? 0 : plane_floats);
    float* const planes = own_planes.empty() ? image : own_planes.data();
    ComplexBuffer work(voxels);
    {
        ComplexBuffer low(lows);
        weigh_mirrored(plan, kspace, exponent, work.data(), low.data());
        centred_inverse(block, low.data());
        for (Index i = 0; i < lows; ++i) {
            planes[i] = low[i].real();
            planes[lows + i] = low[i].imag();
            if (unit_wanted) {
                planes[2 * lows + i] = low[i].imag();
                planes[3 * lows + i] = -low[i].real();
            }
        }
    }
    centred_inverse(full, work.data());
    const DimensionList data_dims{static_cast<std::uint32_t>(nx), static_cast<std::uint32_t>(ny),
                                  static_cast<std::uint32_t>(nz)};
    const std::array<Index, 3> b = plan.block();
    const DimensionList low_dims{static_cast<std::uint32_t>(b[0]), static_cast<std::uint32_t>(b[1]),
                                 static_cast<std::uint32_t>(b[2])};
    AddLowResPhase(interleaved(work.data()), data_dims, planes, planes + lows, low_dims);

    // The real image, its imaginary parts now 0, packed into the first half
    // of `work` (float i from float 2i, read before it is overwritten). For
    // complex output or the phase, cos and sin of the phase on the image grid
    // from the transfer applied to ones: the cosines in the second half of
    // `work`, the sines in `phase` until it is written (else a plane of their
    // own).
    float* const real_image = reinterpret_cast<float*>(work.data());
    for (Index i = 0; i < voxels; ++i) {
        real_image[i] = real_image[2 * i];
    }
    std::vector<float> own_sines(unit_wanted && phase == nullptr ? voxels : 0);
    float* const cosines = unit_wanted ? real_image + voxels : nullptr;
    float* const sines = !unit_wanted ? nullptr : phase != nullptr ? phase : own_sines.data();
    if (unit_wanted) {
        std::fill(cosines, cosines + voxels, 1.0f);
        std::fill(sines, sines + voxels, 1.0f);
        AddLowResPhase(ComplexPlanes{cosines, nullptr, 1}, data_dims, planes, planes + lows, low_dims);
        AddLowResPhase(ComplexPlanes{sines, nullptr, 1}, data_dims, planes + 2 * lows, planes + 3 * lows, low_dims);
    }
    // Voxel `to` of the result from sample `from` of the mirrored image, `s`
    // the sine there.
    const auto put = [&](Index to, Index from, float s) {
        const float r = std::isnan(real_image[from]) ? 0.0f : real_image[from];
        if (phase != nullptr) {
            const float c = cosines[from];
            phase[to] = std::isnan(c) || std::isnan(s) ? 0.0f : std::atan2(s, c);
        }
        if (output == ReconOutput::complex) {
            image[2 * to] = r == 0.0f ? 0.0f : r * cosines[from];
            image[2 * to + 1] = r == 0.0f ? 0.0f : r * s;
        } else {
            image[to] = output == ReconOutput::magnitude ? std::fabs(r) : r;
        }
    };
    // Mirroring pairs voxels (k -> -k on every mirrored axis): both of a pair
    // are written once their sines are read, as the sines may lie in `phase`.
    for (Index z = 0, i = 0; z < nz; ++z) {
        for (Index y = 0; y < ny; ++y) {
            const Index row = (mz[z] * ny + my[y]) * nx;
            for (Index x = 0; x < nx; ++x, ++i) {
                const Index from = row + mx[x];
                if (from < i) {
                    continue;
                }
                const float s_from = unit_wanted ? sines[from] : 0.0f, s_i = unit_wanted ? sines[i] : 0.0f;
                put(i, from, s_from);
                if (from != i) {
                    put(from, i, s_i);
                }
            }
        }
    }
    return VolumeReport{};
}

void take_off_phase(const ComplexPlanes& image, const std::array<Index, 4>& n, const Complex* low,
                    const std::array<Index, 4>& low_n)
{
    const Index count = low_n[0] * low_n[1] * low_n[2] * low_n[3];
    std::vector<float> planes(static_cast<std::size_t>(2 * count));
    for (Index i = 0; i < count; ++i) {
        planes[i] = low[i].real();
        planes[count + i] = low[i].imag();
    }
    const auto dims = [](const std::array<Index, 4>& d) {
        return DimensionList{static_cast<std::uint32_t>(d[0]), static_cast<std::uint32_t>(d[1]),
                             static_cast<std::uint32_t>(d[2]), static_cast<std::uint32_t>(d[3])};
    };
    AddLowResPhase(image, dims(n), planes.data(), planes.data() + count, dims(low_n));
}
