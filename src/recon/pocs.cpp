#include "recon/pocs.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>

#include "common/vector_clones.hpp"
#include "recon/fft_order.hpp"
#include "recon/image_output.hpp"
#include "recon/phase_calibration.hpp"
#include "recon/power_of_two.hpp"
#include "recon/worker_threads.hpp"

namespace {

// Blend weights of one axis over the block: 1, except over the last `band`
// positions before a cut edge, where they rise as sin^2 from near 0 to near 1.
std::vector<float> blend_weights(const SampledBox& box, int axis, int band)
{
    std::vector<float> w(static_cast<std::size_t>(box.extent(axis)), 1.0f);
    const Index n = box.n[axis];
    const bool cut_low = box.range[axis].first > -(n / 2), cut_high = box.range[axis].last < (n + 1) / 2 - 1;
    const double quarter = 1.57079632679489661923;
    for (Index j = 0; j < std::min<Index>(band, box.extent(axis)); ++j) {
        const double s = std::sin(quarter * static_cast<double>(j + 1) / static_cast<double>(band + 1));
        const float rise = static_cast<float>(s * s);
        if (cut_low) {
            w[j] = std::min(w[j], rise);
        }
        if (cut_high) {
            w[w.size() - 1 - j] = std::min(w[w.size() - 1 - j], rise);
        }
    }
    return w;
}

template <bool Blend>
inline __attribute__((always_inline)) void put_back_runs(const PocsPlan& plan, const BlockShape& shape,
                                                         Complex* block, const Complex* measured)
{
    for (const BlockRun& run : shape.runs) {
        Complex* e_run = block + run.buffer;
        const Complex* m_run = measured + run.box;
        if (Blend) {
            const float* wx = plan.blend[0].data() + run.p[0];
            const float wyz = plan.blend[1][run.p[1]] * plan.blend[2][run.p[2]];
            for (Index i = 0; i < run.count; ++i) {
                const Complex e = e_run[i], m = m_run[i];
                const float w = wx[i] * wyz;
                e_run[i] = Complex(w * m.real() + (1.0f - w) * e.real(), w * m.imag() + (1.0f - w) * e.imag());
            }
        } else {
            std::copy(m_run, m_run + run.count, e_run);
        }
    }
}

// Sums kept in eight single-precision lanes (sample i goes to lane i mod 8),
// so that the loops vectorise and still add in a fixed order: the result
// does not depend on threads or on the machine's vector width.
constexpr Index lanes = 8;

// Adds terms[i] to lane[i mod 8], i < count.
inline __attribute__((always_inline)) void add_to_lanes(const float* terms, Index count, float* lane)
{
    Index i = 0;
    for (; i + lanes <= count; i += lanes) {
        for (Index j = 0; j < lanes; ++j) {
            lane[j] += terms[i + j];
        }
    }
    for (Index j = 0; i < count; ++i, ++j) {
        lane[j] += terms[i];
    }
}

template <PhaseConstraint Form>
inline __attribute__((always_inline)) Projection project_rows(Complex* image, const Complex* phase,
                                                              float* amplitude, Index count, float scale)
{
    // The projection is one elementwise loop that writes each sample's two
    // squares out, and the lanes add them up after it: written as one loop,
    // the compiler vectorised across the lanes' iterations and spent its
    // time transposing. Lanes summed per run of 4096 samples, the runs in
    // double.
    constexpr Index chunk = 512;  // a multiple of the lanes
    float change_terms[chunk], norm_terms[chunk];
    Projection sums;
    for (Index start = 0; start < count; start += 4096) {
        const Index end = std::min<Index>(count, start + 4096);
        float lane_change[lanes] = {}, lane_norm[lanes] = {};
        for (Index from = start; from < end; from += chunk) {
            const Index m = std::min<Index>(chunk, end - from);
            Complex* x = image + from;
            const Complex* e = phase + from;
            float* amp = amplitude + from;
            for (Index i = 0; i < m; ++i) {
                const float xr = x[i].real() * scale, xi = x[i].imag() * scale;
                const float er = e[i].real(), ei = e[i].imag();
                const float a = Form == PhaseConstraint::magnitude ? std::sqrt(xr * xr + xi * xi) : xr * er + xi * ei;
                const float d = a - amp[i];
                change_terms[i] = d * d;
                norm_terms[i] = a * a;
                amp[i] = a;
                x[i] = Complex(a * er, a * ei);
            }
            add_to_lanes(change_terms, m, lane_change);
            add_to_lanes(norm_terms, m, lane_norm);
        }
        for (Index j = 0; j < lanes; ++j) {
            sums.change += lane_change[j];
            sums.norm += lane_norm[j];
        }
    }
    return sums;
}

std::array<Index, 3> extents_of(const SampledBox& box) { return {box.extent(0), box.extent(1), box.extent(2)}; }

// Where along an axis a block position lies: in FFT order on a partial axis
// (a block spans it whole), from the block's origin on a full one.
Index place_in_block(const SampledBox& box, int axis, Index j)
{
    return box.partial[axis] ? fft_index(box.range[axis].first + j, box.n[axis]) : j;
}

BlockShape block_shape(const SampledBox& box, const PocsBlocks& blocks, Index width)
{
    BlockShape shape;
    shape.width = width;
    shape.sizes = box.n;
    if (blocks.along >= 0) {
        shape.sizes[blocks.along] = width;
    }
    if (blocks.across >= 0) {
        shape.sizes[blocks.across] = 1;
    }
    // Along the first hybrid axis a measured row is one run, or two on a
    // partial axis: the negative k at the end of the FFT-order row, then
    // k >= 0 from its start.
    const KRange& rx = box.range[0];
    const bool cut_x = box.partial[0];
    const Index negative = cut_x && rx.first < 0 ? std::min<Index>(rx.last, -1) - rx.first + 1 : 0;
    const Index start = cut_x ? std::max<Index>(rx.first, 0) : 0;
    const Index positive = cut_x ? rx.last - start + 1 : shape.sizes[0];
    const Index ny = box.partial[1] ? box.extent(1) : shape.sizes[1];
    const Index nz = box.partial[2] ? box.extent(2) : shape.sizes[2];
    for (Index z = 0; z < nz; ++z) {
        for (Index y = 0; y < ny; ++y) {
            const Index row = (place_in_block(box, 2, z) * shape.sizes[1] + place_in_block(box, 1, y)) * shape.sizes[0];
            const Index box_row = (z * box.extent(1) + y) * box.extent(0);
            if (negative > 0) {
                shape.runs.push_back({row + rx.first + box.n[0], box_row, negative, {0, y, z}});
            }
            shape.runs.push_back({row + start, box_row + negative, positive, {negative, y, z}});
        }
    }
    return shape;
}

// The block's first position along each axis of the image (0 on the
// partial axes, which it spans whole).
std::array<Index, 3> block_origin(const PocsBlocks& blocks, Index block)
{
    std::array<Index, 3> origin{0, 0, 0};
    if (blocks.along >= 0) {
        origin[blocks.along] = block % blocks.per_row * blocks.wide.width;
    }
    if (blocks.across >= 0) {
        origin[blocks.across] = block / blocks.per_row;
    }
    return origin;
}

// Values per hybrid axis (`order[j]`: the image axis of hybrid axis j)
// placed along the image axes.
std::array<Index, 3> in_image_axes(const std::array<int, 3>& order, const std::array<Index, 3>& hybrid)
{
    std::array<Index, 3> image;
    for (int j = 0; j < 3; ++j) {
        image[order[j]] = hybrid[j];
    }
    return image;
}

// The strides of an array of the given hybrid sizes (first hybrid axis
// fastest), along the image axes.
std::array<Index, 3> strides_in_image_axes(const std::array<int, 3>& order, const std::array<Index, 3>& hybrid_sizes)
{
    return in_image_axes(order, {1, hybrid_sizes[0], hybrid_sizes[0] * hybrid_sizes[1]});
}

// Calls visit(buffer_offset, buffer_stride, centred_offset, count) for the
// runs of a block buffer along the image's x that are contiguous in the
// centred image (the buffer holds them `buffer_stride` apart).
template <typename Visit>
void for_each_block_shift_run(const PocsPlan& plan, Index block, Visit visit)
{
    const std::array<Index, 3>& n = plan.box.n;
    const std::array<Index, 3>& hybrid_sizes = plan.blocks.shape_of(block).sizes;
    const std::array<Index, 3> hybrid_first = block_origin(plan.blocks, block);
    // The block in image axes: its sizes, first positions and buffer strides.
    const std::array<Index, 3> sizes = in_image_axes(plan.order, hybrid_sizes);
    const std::array<Index, 3> first = in_image_axes(plan.order, hybrid_first);
    const std::array<Index, 3> stride = strides_in_image_axes(plan.order, hybrid_sizes);
    const Index low = n[0] - n[0] / 2;  // FFT positions below it are k >= 0
    const Index x0 = first[0], x1 = first[0] + sizes[0];
    for (Index z = 0; z < sizes[2]; ++z) {
        const Index cz = centred_index(first[2] + z, n[2]);
        for (Index y = 0; y < sizes[1]; ++y) {
            const Index buffer = z * stride[2] + y * stride[1];
            const Index centred = (cz * n[1] + centred_index(first[1] + y, n[1])) * n[0];
            if (x0 < low) {
                visit(buffer, stride[0], centred + x0 + n[0] / 2, std::min(x1, low) - x0);
            }
            if (x1 > low) {
                const Index x = std::max(x0, low);
                visit(buffer + (x - x0) * stride[0], stride[0], centred + x - low, x1 - x);
            }
        }
    }
}

// The measured block out of a centred coil image, at unit scale, into the
// order of the hybrid space (partial axes in block order, k ascending; fully
// sampled axes in FFT order), read row by row along x, which lies
// contiguous there. A fully sampled x is transformed row by row on the way
// (`row_transform`): in hybrid order its lines lie far apart. The rows are
// shared among `threads` threads. Returns the echo's position along the
// partial axes (0 along the others), in image axes: the measured sample of
// most power, the first in the image's order among equals; and into `power`
// the measured samples' squared norm, summed row by row in order.
std::array<Index, 3> crop_for_hybrid_space(const PocsPlan& plan, const VolumeTransform& row_transform,
                                           const Complex* centred, int exponent, Complex* measured, int threads,
                                           double& power)
{
    const SampledBox& box = plan.box;
    const std::array<Index, 3>& n = box.n;
    const std::array<Index, 3> stride = strides_in_image_axes(plan.order, extents_of(plan.hybrid));
    const auto source = [&](int axis, Index i) {
        return box.partial[axis] ? box.range[axis].first + i + n[axis] / 2 : centred_index(i, n[axis]);
    };
    const Index low = n[0] - n[0] / 2, count = box.extent(0), rows = box.extent(1) * box.extent(2);
    std::vector<double> row_power(static_cast<std::size_t>(rows));
    struct Peak {
        float power = -1.0f;
        Index at = 0;  // in the block, x fastest
    };
    std::vector<Peak> peaks(static_cast<std::size_t>(threads));
    run_on_threads(threads, [&](int thread) {
        ComplexBuffer row(count);
        Peak& peak = peaks[thread];
        for (Index r = rows * thread / threads; r < rows * (thread + 1) / threads; ++r) {
            const Index y = r % box.extent(1), z = r / box.extent(1);
            const Complex* from = centred + (source(2, z) * n[1] + source(1, y)) * n[0];
            if (box.partial[0]) {
                copy_times_power_of_two(from + source(0, 0), count, -exponent, row.data());
            } else {
                copy_times_power_of_two(from + n[0] / 2, low, -exponent, row.data());
                copy_times_power_of_two(from, n[0] / 2, -exponent, row.data() + low);
            }
            double sum = 0.0;
            for (Index x = 0; x < count; ++x) {
                const float p = std::norm(row[x]);
                sum += p;
                if (p > peak.power) {
                    peak = {p, r * count + x};
                }
            }
            row_power[r] = sum;
            if (!box.partial[0]) {
                row_transform.inverse(row.data());
            }
            Complex* to = measured + y * stride[1] + z * stride[2];
            for (Index x = 0; x < count; ++x) {
                to[x * stride[0]] = row[x];
            }
        }
    });
    power = 0.0;
    for (double sum : row_power) {
        power += sum;
    }
    Peak best;
    for (const Peak& peak : peaks) {  // the threads' rows in order: a later one wins only by more power
        if (peak.power > best.power) {
            best = peak;
        }
    }
    const std::array<Index, 3> at{best.at % count, best.at / count % box.extent(1), best.at / count / box.extent(1)};
    std::array<Index, 3> echo{0, 0, 0};
    for (int axis = 0; axis < 3; ++axis) {
        echo[axis] = box.partial[axis] ? box.range[axis].first + at[axis] : 0;
    }
    return echo;
}

// A block's estimate, phase and amplitude, and one row of the image's x
// gathered from the block's estimate and phase (`row`: the image's nx).
struct BlockBuffers {
    ComplexBuffer work, phase;
    std::vector<float> amplitude;
    std::vector<Complex> row_image, row_phase;
    BlockBuffers(Index voxels, Index row)
        : work(voxels), phase(voxels), amplitude(static_cast<std::size_t>(voxels)),
          row_image(static_cast<std::size_t>(row)), row_phase(static_cast<std::size_t>(row))
    {
    }
};

// Runs job(block, buffers) on every block, the blocks taken in turn by
// `threads` threads, each with buffers of its own.
template <typename Job>
void for_each_block(const PocsPlan& plan, int threads, Job job)
{
    std::atomic<Index> next{0};
    run_on_threads(static_cast<int>(std::min<Index>(threads, plan.blocks.count)), [&](int) {
        BlockBuffers buffers(plan.blocks.wide.voxels(), plan.box.n[0]);
        for (Index block = next++; block < plan.blocks.count; block = next++) {
            job(block, buffers);
        }
    });
}

// The calibration image of one block (its windowed measured centre, inverse
// transformed along the partial axes) into `image`.
void calibrate_block(const BlockShape& shape, const VolumeTransform& transform,
                     const std::array<std::vector<float>, 3>& window, const Complex* measured, Complex* image)
{
    std::fill(image, image + shape.voxels(), Complex(0.0f, 0.0f));
    for (const BlockRun& run : shape.runs) {
        const float* wx = window[0].data() + run.p[0];
        const float wyz = window[1][run.p[1]] * window[2][run.p[2]];
        for (Index i = 0; i < run.count; ++i) {
            image[run.buffer + i] = measured[run.box + i] * (wx[i] * wyz);
        }
    }
    transform.inverse(image);
}

// The iterations of one constraint form on one block, from the zero-filled
// measured data (start) and on from where they stopped (run), leaving the
// data-consistent k-space in the buffers' work.
class BlockPocs {
public:
    // `measured`: the block's origin in the hybrid-space measured block.
    // `least_norm`: the squared image norm below which the block's change
    // is measured against this one instead of its own (see run).
    BlockPocs(const PocsPlan& plan, const BlockShape& shape, const VolumeTransform& transform,
              const Complex* measured, double least_norm, BlockBuffers& buffers)
        : plan_(plan), shape_(shape), transform_(transform), measured_(measured), least_norm_(least_norm),
          buffers_(buffers)
    {
    }

    void start(PhaseConstraint form)
    {
        form_ = form;
        iterations_ = 0;
        change_ = residual_ = 0.0;
        const std::array<Index, 3>& n = plan_.box.n;
        converged_ = plan_.box.samples() == n[0] * n[1] * n[2];  // nothing to estimate
        std::fill(buffers_.work.data(), buffers_.work.data() + shape_.voxels(), Complex(0.0f, 0.0f));
        std::fill(buffers_.amplitude.begin(), buffers_.amplitude.end(), 0.0f);
        put_back_measured(plan_, shape_, buffers_.work.data(), measured_);
    }

    void run(int until)
    {
        // The pair of transforms gains their length; the image's scale
        // does not matter to the projections, which commute with it.
        const float scale = 1.0f / static_cast<float>(transform_.transformed());
        Complex* work = buffers_.work.data();
        while (!converged_ && iterations_ < until) {
            transform_.inverse(work);
            const Projection p = project_onto_phase(work, buffers_.phase.data(), buffers_.amplitude.data(),
                                                    shape_.voxels(), scale, form_);
            transform_.forward(work);
            ++iterations_;
            // A block's change counts relative to its own norm, or to its
            // share of the image's where it holds less: background blocks,
            // whose own norm is noise or rounding, stop as soon as they no
            // longer move the image, and when every block has stopped the
            // image as a whole has changed by less than the tolerance.
            const double norm = std::max(p.norm, least_norm_);
            change_ = norm > 0.0 ? std::sqrt(p.change / norm) : 0.0;
            converged_ = change_ < plan_.options.tolerance;
            // The residual is read after the last iteration only: measuring
            // it on every one cost as much as the data step itself.
            if (converged_ || iterations_ == until) {
                residual_ = restore_measured(plan_, shape_, work, measured_);
            } else {
                put_back_measured(plan_, shape_, work, measured_);
            }
        }
    }

    int iterations() const { return iterations_; }
    double change() const { return change_; }
    double residual() const { return residual_; }  // ||e - m||^2 of the last iteration

private:
    const PocsPlan& plan_;
    const BlockShape& shape_;
    const VolumeTransform& transform_;
    const Complex* measured_;
    double least_norm_;
    BlockBuffers& buffers_;
    PhaseConstraint form_ = PhaseConstraint::magnitude;
    int iterations_ = 0;
    double change_ = 0.0, residual_ = 0.0;
    bool converged_ = false;
};

struct BlockResult {
    int iterations = 0;
    double change = 0.0, residual = 0.0;
    double trial_real = 0.0, trial_magnitude = 0.0;  // ||e - m||^2 after the trial iterations
};

std::array<double, 3> spread_of(std::vector<int> counts)
{
    std::sort(counts.begin(), counts.end());
    const std::size_t half = counts.size() / 2;
    const double median = counts.size() % 2 == 1 ? counts[half] : 0.5 * (counts[half - 1] + counts[half]);
    return {double(counts.front()), median, double(counts.back())};
}

}  // namespace

PocsPlan plan_pocs(const ReconShape& shape, const ReconOptions& options, Index block_width)
{
    PocsPlan plan;
    plan.options = options;
    plan.box = sampled_box(shape, options.ranges);
    const std::array<bool, 3>& partial = plan.box.partial;
    std::stable_partition(plan.order.begin(), plan.order.end(), [&](int axis) { return partial[axis]; });
    for (int j = 0; j < 3; ++j) {
        const int axis = plan.order[j];
        plan.hybrid.n[j] = plan.box.n[axis];
        plan.hybrid.range[j] = plan.box.range[axis];
        plan.hybrid.partial[j] = partial[axis];
        plan.blend[j] = blend_weights(plan.box, axis, partial[axis] ? options.transition_band : 0);
    }
    plan.blended = options.transition_band > 0;

    const SampledBox& hybrid = plan.hybrid;
    PocsBlocks& blocks = plan.blocks;
    Index piece = 1;  // voxels of one line or plane
    for (int j = 2; j >= 0; --j) {
        if (hybrid.partial[j]) {
            piece *= hybrid.n[j];
        } else {
            blocks.across = blocks.along;
            blocks.along = j;
        }
    }
    Index width = 1;
    if (blocks.along >= 0) {
        const Index n = hybrid.n[blocks.along];
        const Index bytes = piece * static_cast<Index>(2 * sizeof(Complex) + sizeof(float));
        width = std::min(n, block_width > 0 ? block_width : std::max<Index>(1, block_bytes / bytes));
        blocks.per_row = (n + width - 1) / width;
        if (block_width == 0) {  // as many blocks, of widths that differ by at most one
            width = (n + blocks.per_row - 1) / blocks.per_row;
            blocks.per_row = (n + width - 1) / width;
        }
        blocks.count = blocks.per_row * (blocks.across >= 0 ? hybrid.n[blocks.across] : 1);
        blocks.last = block_shape(hybrid, blocks, n - (blocks.per_row - 1) * width);
    } else {
        blocks.last = block_shape(hybrid, blocks, width);
    }
    blocks.wide = block_shape(hybrid, blocks, width);
    return plan;
}

HOMODYNE_VECTOR_CLONES
Projection project_onto_phase(Complex* image, const Complex* phase, float* amplitude, Index count, float scale,
                              PhaseConstraint form)
{
    return form == PhaseConstraint::magnitude
               ? project_rows<PhaseConstraint::magnitude>(image, phase, amplitude, count, scale)
               : project_rows<PhaseConstraint::real_part>(image, phase, amplitude, count, scale);
}

double restore_measured(const PocsPlan& plan, const BlockShape& shape, Complex* block, const Complex* measured)
{
    double residual = 0.0;
    for (const BlockRun& run : shape.runs) {
        float row = 0.0f;
        for (Index i = 0; i < run.count; ++i) {
            const Complex d = block[run.buffer + i] - measured[run.box + i];
            row += d.real() * d.real() + d.imag() * d.imag();
        }
        residual += row;
    }
    put_back_measured(plan, shape, block, measured);
    return residual;
}

HOMODYNE_VECTOR_CLONES
void put_back_measured(const PocsPlan& plan, const BlockShape& shape, Complex* block, const Complex* measured)
{
    if (plan.blended) {
        put_back_runs<true>(plan, shape, block, measured);
    } else {
        put_back_runs<false>(plan, shape, block, measured);
    }
}

namespace {

// The hybrid axes that are fully sampled and not x (which the crop transforms).
std::array<bool, 3> full_axes_but_x(const PocsPlan& plan)
{
    std::array<bool, 3> axes{};
    for (int j = 0; j < 3; ++j) {
        axes[j] = !plan.hybrid.partial[j] && plan.order[j] != 0;
    }
    return axes;
}

}  // namespace

PocsTransforms::PocsTransforms(const PocsPlan& plan)
    : all(plan.box.n, {true, true, true}),
      row({plan.box.n[0], 1, 1}, {!plan.box.partial[0], false, false}, true),
      full_axes(extents_of(plan.hybrid), full_axes_but_x(plan)),
      block(plan.blocks.wide.sizes, plan.hybrid.partial, true),
      last_block(plan.blocks.last.sizes, plan.hybrid.partial, true)
{
}

VolumeReport pocs_volume(const PocsPlan& plan, const PocsTransforms& transforms, const Complex* kspace, int exponent,
                         ReconOutput output, float* image, float* phase, Complex* lowres, int threads)
{
    const SampledBox& box = plan.box;
    const PocsBlocks& blocks = plan.blocks;
    VolumeReport report;

    // The measured block into hybrid space: along the fully sampled axes it
    // is whole, so it is its own transform there. The echo's position along
    // the partial axes is the same in block order and in this one.
    ComplexBuffer measured(box.samples());
    double measured_norm = 0.0;
    report.echo = crop_for_hybrid_space(plan, transforms.row, kspace, exponent, measured.data(),
                                        static_cast<int>(std::min<Index>(threads, box.extent(1) * box.extent(2))),
                                        measured_norm);
    const std::array<std::vector<float>, 3> image_window = calibration_windows(box, report.echo, plan.options.window);
    const std::array<std::vector<float>, 3> window{image_window[plan.order[0]], image_window[plan.order[1]],
                                                   image_window[plan.order[2]]};
    transforms.full_axes.inverse(measured.data());
    // The unnormalised transforms along the fully sampled axes gain their length.
    measured_norm *= static_cast<double>(box.n[0] * box.n[1] * box.n[2] / transforms.block.transformed());

    const std::array<Index, 3> extents = extents_of(plan.hybrid);
    const std::array<Index, 3> stride{1, extents[0], extents[0] * extents[1]};
    const auto measured_of = [&](Index block) {
        const std::array<Index, 3> origin = block_origin(blocks, block);
        return measured.data() + origin[0] * stride[0] + origin[1] * stride[1] + origin[2] * stride[2];
    };
    const auto transform_of = [&](Index block) -> const VolumeTransform& {
        return block % blocks.per_row == blocks.per_row - 1 ? transforms.last_block : transforms.block;
    };
    const float image_scale = 1.0f / static_cast<float>(box.n[0] * box.n[1] * box.n[2]);
    // The image's squared norm per voxel, in the blocks' units: at least the
    // measured samples' (the estimate adds the synthesised ones), over the
    // partial axes' length that the blocks' projections divide by.
    const double share_of_norm = measured_norm / static_cast<double>(transforms.block.transformed()) /
                                 static_cast<double>(box.n[0] * box.n[1] * box.n[2]);

    // The phase of the calibration image is taken relative to its largest
    // magnitude over the whole image (see keep_phase): a first pass finds it.
    std::vector<float> largest(static_cast<std::size_t>(blocks.count));
    for_each_block(plan, threads, [&](Index block, BlockBuffers& buffers) {
        Complex* calibration = buffers.phase.data();
        calibrate_block(blocks.shape_of(block), transform_of(block), window, measured_of(block), calibration);
        largest[block] = largest_magnitude(calibration, blocks.shape_of(block).voxels());
        if (lowres != nullptr) {
            for_each_block_shift_run(plan, block, [&](Index at, Index stride, Index centred, Index count) {
                for (Index i = 0; i < count; ++i) {
                    lowres[centred + i] = calibration[at + i * stride] * image_scale;
                }
            });
        }
    });
    const float largest_calibration = *std::max_element(largest.begin(), largest.end());

    const int iterations = plan.options.iterations;
    const int trial = std::min(iterations, trial_iterations);
    const Index values = output == ReconOutput::complex ? 2 : 1;
    std::vector<BlockResult> results(static_cast<std::size_t>(blocks.count));
    // Every block solved with the constraint `form`, its image written out;
    // with `trial`, the real form's trial iterations run first, and the
    // residuals of both forms after them are kept.
    const auto solve = [&](PhaseConstraint form, bool with_trial) {
        for_each_block(plan, threads, [&](Index block, BlockBuffers& buffers) {
            const BlockShape& shape = blocks.shape_of(block);
            const VolumeTransform& transform = transform_of(block);
            Complex* e = buffers.phase.data();
            calibrate_block(shape, transform, window, measured_of(block), e);
            keep_phase(e, shape.voxels(), largest_calibration);
            BlockPocs pocs(plan, shape, transform, measured_of(block), share_of_norm * shape.voxels(), buffers);
            BlockResult& result = results[block];
            if (with_trial) {
                pocs.start(PhaseConstraint::real_part);
                pocs.run(trial);
                result.trial_real = pocs.residual();
                pocs.start(form);
                pocs.run(trial);
                result.trial_magnitude = pocs.residual();
            } else {
                pocs.start(form);
            }
            pocs.run(iterations);
            result.iterations = pocs.iterations();
            result.change = pocs.change();
            result.residual = pocs.residual();

            transform.inverse(buffers.work.data());
            for_each_block_shift_run(plan, block, [&](Index at, Index stride, Index centred, Index count) {
                const Complex* x = buffers.work.data() + at;
                const Complex* e_row = e + at;
                if (stride != 1) {
                    for (Index i = 0; i < count; ++i) {
                        buffers.row_image[i] = x[i * stride];
                        buffers.row_phase[i] = e_row[i * stride];
                    }
                    x = buffers.row_image.data();
                    e_row = buffers.row_phase.data();
                }
                write_samples(x, e_row, count, image_scale, output, image + values * centred);
                if (phase != nullptr) {
                    for (Index i = 0; i < count; ++i) {
                        phase[centred + i] = std::atan2(e_row[i].imag(), e_row[i].real());
                    }
                }
            });
        });
    };

    const int partial_axes = std::count(box.partial.begin(), box.partial.end(), true);
    const PhaseConstraint form =
        plan.options.constraint == PhaseConstraint::automatic ? PhaseConstraint::magnitude : plan.options.constraint;
    report.constraint = form;
    if (plan.options.constraint != PhaseConstraint::automatic || partial_axes > 1) {
        solve(form, false);
    } else {
        // Sharp images ring across zero, which only the real form allows: its
        // projections then fit the measured data several times better. Where
        // both fit alike the magnitude form gives the better image. A few
        // trial iterations of each tell them apart; the magnitude form, the
        // usual winner, runs on to its end in the same pass, and the real
        // form, when it wins, solves every block again.
        solve(PhaseConstraint::magnitude, true);
        double real = 0.0, magnitude = 0.0;
        for (const BlockResult& result : results) {
            real += result.trial_real;
            magnitude += result.trial_magnitude;
        }
        if (real < real_form_margin * real_form_margin * magnitude) {
            report.constraint = PhaseConstraint::real_part;
            solve(PhaseConstraint::real_part, false);
        }
    }

    std::vector<int> counts;
    double residual = 0.0;
    for (const BlockResult& result : results) {
        counts.push_back(result.iterations);
        report.change = std::max(report.change, result.change);
        residual += result.residual;
    }
    report.iterations = spread_of(counts);
    report.residual = measured_norm > 0.0 ? std::sqrt(residual / measured_norm) : 0.0;
    return report;
}
