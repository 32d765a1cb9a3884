#pragma once
// Moving a coil image between centred order (index floor(n/2) is the origin)
// and FFT order (index 0 is the origin), row by row: along x a row is two
// contiguous runs, so every pass streams.

#include <algorithm>
#include <vector>

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

// Moves an image between the two orders in place (into centred order when
// `to_centred`, else into FFT order), every sample x becoming value(x) on
// the way, so that no second image-sized buffer is needed. Whole planes
// travel along the cycles of their permutation along z, through two
// plane-sized buffers, and are reordered along x and y on the way: every
// sample is read and written once.
template <typename Complex, typename Value>
void reorder_in_place(Complex* image, const std::array<Index, 3>& n, bool to_centred, Value value)
{
    const Index nz = n[2], plane = n[0] * n[1];
    const std::array<Index, 3> plane_n{n[0], n[1], 1};
    // Plane z moves to plane z + shift (mod nz).
    const Index shift = to_centred ? nz / 2 : nz - nz / 2;
    std::vector<Complex> held(static_cast<std::size_t>(plane)), next(static_cast<std::size_t>(plane));
    std::vector<bool> moved(static_cast<std::size_t>(nz), false);
    for (Index start = 0; start < nz; ++start) {
        if (moved[start]) {
            continue;
        }
        std::copy(image + start * plane, image + (start + 1) * plane, held.begin());
        Index z = start;
        do {
            z = (z + shift) % nz;
            moved[z] = true;
            Complex* to = image + z * plane;
            std::copy(to, to + plane, next.begin());
            for_each_shift_run(plane_n, [&](Index fft, Index c, Index count) {
                const Index from = to_centred ? fft : c, at = to_centred ? c : fft;
                for (Index i = 0; i < count; ++i) {
                    to[at + i] = value(held[from + i]);
                }
            });
            held.swap(next);
        } while (z != start);
    }
}

// The same, the samples unchanged.
template <typename Complex>
void reorder_in_place(Complex* image, const std::array<Index, 3>& n, bool to_centred)
{
    reorder_in_place(image, n, to_centred, [](const Complex& x) { return x; });
}
