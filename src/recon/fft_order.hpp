#pragma once
// Moving a coil image between centred order (index floor(n/2) is the origin)
// and FFT order (index 0 is the origin), row by row: along x a row is two
// contiguous runs, so every pass streams.

#include <algorithm>

#include "recon/recon_shape.hpp"

// FFT index of coordinate k on an axis of n samples, and the reverse.
inline Index fft_index(Index k, Index n) { return k < 0 ? k + n : k; }
inline Index centred_index(Index fft, Index n) { return (fft + n / 2) % n; }

// Calls visit(fft_offset, centred_offset, count) for runs of `count` samples
// that are contiguous in both orders, covering a whole image of sizes n.
template <typename Visit>
void for_each_shift_run(const std::array<Index, 3>& n, Visit visit)
{
    const Index nx = n[0], ny = n[1], nz = n[2];
    const Index low = nx - nx / 2;  // FFT positions 0 .. low-1 are k >= 0
    for (Index z = 0; z < nz; ++z) {
        for (Index y = 0; y < ny; ++y) {
            const Index fft_row = (z * ny + y) * nx;
            const Index centred_row = (centred_index(z, nz) * ny + centred_index(y, ny)) * nx;
            visit(fft_row, centred_row + nx / 2, low);
            visit(fft_row + low, centred_row, nx / 2);
        }
    }
}

// Copies an image in FFT order into centred order, times `scale`.
template <typename Complex>
void to_centred(const Complex* fft_order, const std::array<Index, 3>& n, float scale, Complex* centred)
{
    for_each_shift_run(n, [&](Index fft, Index c, Index count) {
        for (Index i = 0; i < count; ++i) {
            centred[c + i] = fft_order[fft + i] * scale;
        }
    });
}

// Copies a centred image into FFT order.
template <typename Complex>
void to_fft_order(const Complex* centred, const std::array<Index, 3>& n, Complex* fft_order)
{
    for_each_shift_run(n, [&](Index fft, Index c, Index count) {
        std::copy(centred + c, centred + c + count, fft_order + fft);
    });
}
