#pragma once
// Iterative partial-Fourier reconstruction by projections onto convex sets.
// The unknown k-space samples outside the measured block are found by
// alternating two projections, in FFT order throughout:
//   image constraint  x <- Re(x e^{-i phi}) e^{i phi}  (the real form), or
//                     x <- |x| e^{i phi}              (the magnitude form);
//   data consistency  measured samples put back, optionally blended with the
//                     estimate over a transition band at the block's edge.
// The constraint pass also applies the transforms' scale and measures the
// change; the last data pass measures the data residual of the projected
// image.
//
// The measured block spans every fully sampled axis, so the data step
// commutes with transforms along those axes: they are transformed once, up
// front, on the measured block alone. In that hybrid space the problem falls
// apart: with one partial axis every line along it is a problem of its own,
// with two every plane across them. Blocks of adjacent lines (or planes) are
// gathered into a small buffer that stays in cache for all their iterations,
// each block stops on its own relative change, and its image is written
// straight into the output. With three partial axes nothing falls apart: the
// one block is the whole volume.
//
// The hybrid space keeps its axes in the order partial axes first, then the
// fully sampled ones, each group in the order x, y, z: a block's lines are
// contiguous, which makes their transforms 1.3-2.4 times faster than along a
// stride, and the measured samples the data step reads lie in the same order.

#include <array>
#include <vector>

#include "recon/recon_options.hpp"
#include "recon/volume_report.hpp"
#include "recon/sampled_box.hpp"
#include "recon/volume_transform.hpp"

// Automatic constraint with one partial axis: both forms run this many trial
// iterations, and the real form is kept when its data residual is below this
// fraction of the magnitude form's (measured after 5 iterations: 0.15-0.2 on
// images that ring; 0.45-0.8 on sharp phantoms without ringing, where the
// magnitude form gives the better image). The residuals are summed over all
// blocks: the whole image takes one form. With two or three partial axes
// some samples miss their mirror too: the real form has nothing to fill
// them from, the magnitude form's positivity recovers part of them (3-D
// phantoms, ky 5/8 and kz 3/4, noiseless: 0.06 error against 0.17, single
// coil and per coil of 8, where the residual test chose the real form for
// 5 of the 8 coils), so the magnitude form is used.
constexpr int trial_iterations = 5;
constexpr double real_form_margin = 0.35;

// Bytes of a block's working set (its estimate, phase and amplitude) that
// fit the per-core cache together with the FFT's own: the block's width is
// chosen to stay below it.
constexpr Index block_bytes = 256 * 1024;

// A run of measured samples contiguous both in a block buffer (at `buffer`)
// and in the hybrid-space block (at `box`, from the block's origin there);
// p: its first position in the measured block along the hybrid axes,
// counted from the block's origin along the fully sampled axes (whose
// weights are all 1).
struct BlockRun {
    Index buffer, box, count;
    std::array<Index, 3> p;
};

// One width of block: the buffer's sizes (every partial axis whole, in FFT
// order) and the runs of its measured samples.
struct BlockShape {
    Index width = 1;
    std::array<Index, 3> sizes{1, 1, 1};
    std::vector<BlockRun> runs;
    Index voxels() const { return sizes[0] * sizes[1] * sizes[2]; }
};

// Where the blocks lie, in hybrid axes. A block spans every partial axis
// whole; along the first fully sampled axis (`along`) it takes `wide.width` adjacent
// positions (the last block of a row what is left, `last`), along the other
// fully sampled axis (`across`) one. An absent axis is -1.
struct PocsBlocks {
    int along = -1, across = -1;
    Index per_row = 1;  // blocks along `along`
    Index count = 1;
    BlockShape wide, last;
    const BlockShape& shape_of(Index block) const { return block % per_row == per_row - 1 ? last : wide; }
};

// What every volume of one call shares: the block, the order of the hybrid
// axes (`order[j]`: the image axis of hybrid axis j) and the block in that
// order (`hybrid`), the blend weights of the data step per hybrid axis (1
// inside, rising over the transition band), the options, and the blocks of
// the hybrid space.
struct PocsPlan {
    SampledBox box;
    std::array<int, 3> order{0, 1, 2};
    SampledBox hybrid;
    std::array<std::vector<float>, 3> blend;
    bool blended = false;
    ReconOptions options;
    PocsBlocks blocks;
};

// `block_width`: positions per block along the fastest fully sampled axis;
// 0 chooses it from block_bytes.
PocsPlan plan_pocs(const ReconShape& shape, const ReconOptions& options, Index block_width = 0);

// What one projection changed: ||a_new - a_old||^2 and ||a_new||^2.
struct Projection {
    double change = 0.0, norm = 0.0;
};

// The image constraint on every sample of `image` (FFT order, unnormalised
// transform output): x = image * scale is projected onto the phase
// `phase` (unit values) and written back; `amplitude` holds the previous
// projected amplitude and receives the new one.
Projection project_onto_phase(Complex* image, const Complex* phase, float* amplitude, Index count, float scale,
                              PhaseConstraint form);

// Data consistency on one block buffer `block` of the shape `shape`: every
// measured sample m (from `measured`, the block's origin in the hybrid-space
// measured block) replaces the estimate e as w*m + (1 - w)*e, w from the
// plan's blend weights. Returns ||e - m||^2 over the block.
double restore_measured(const PocsPlan& plan, const BlockShape& shape, Complex* block, const Complex* measured);
// The same without measuring the residual.
void put_back_measured(const PocsPlan& plan, const BlockShape& shape, Complex* block, const Complex* measured);

// The transforms of one call: all axes (the phase estimate of other steps);
// a row along x, when x is fully sampled (each measured row as it is
// copied out); the other fully sampled axes on the measured block (once per
// image; FFTW's estimated plan ran as fast as its measured one on
// 256 x 160 x 64, which took 3.3 s to measure); and the partial axes on a
// block buffer of the full width and of the last, narrower width (every
// iteration, so their plans are measured).
struct PocsTransforms {
    VolumeTransform all, row, full_axes, block, last_block;
    explicit PocsTransforms(const PocsPlan& plan);
};

// One coil image: centred k-space in, read as k-space times 2^-`exponent`
// (the unit scale, applied as the measured block is copied out); the image
// of that unit-scale k-space out in the requested output form (interleaved
// pairs for complex output, else one float per voxel), centred; into `phase`, unless null, the
// estimated phase in radians; and into `lowres`, unless null, the
// calibration image (centred, in the image's units), from which coil
// sensitivities are estimated. The blocks are shared among `threads`
// threads; the result does not depend on their number.
VolumeReport pocs_volume(const PocsPlan& plan, const PocsTransforms& transforms, const Complex* kspace, int exponent,
                         ReconOutput output, float* image, float* phase, Complex* lowres, int threads);
