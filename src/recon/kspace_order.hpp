#pragma once
// Where k = 0 sits along an axis of a k-space buffer. The toolbox's arrays are
// centred (index floor(n/2) is k = 0); FFT libraries keep the origin first
// (indices 0 .. ceil(n/2)-1 are k >= 0, the rest k < 0). Steps that need k
// coordinates take the order and map indices through these helpers, so they
// run on either buffer without a shift.

#include "recon/recon_shape.hpp"

enum class KSpaceOrder { centred, origin_first };

// k coordinate of index i on an axis of n samples.
inline Index k_of_index(Index i, Index n, KSpaceOrder order)
{
    if (order == KSpaceOrder::centred) {
        return i - n / 2;
    }
    return i < (n + 1) / 2 ? i : i - n;
}

// Index of k (-floor(n/2) <= k <= ceil(n/2)-1) on an axis of n samples.
inline Index index_of_k(Index k, Index n, KSpaceOrder order)
{
    if (order == KSpaceOrder::centred) {
        return k + n / 2;
    }
    return k >= 0 ? k : k + n;
}

// Index of -k for the sample at index i. On an even axis the lowest k = -n/2
// has no partner inside the axis; periodically it is its own partner.
inline Index mirrored_index(Index i, Index n, KSpaceOrder order)
{
    Index k = -k_of_index(i, n, order);
    if (k >= (n + 1) / 2) {
        k -= n;
    }
    return index_of_k(k, n, order);
}

// Whether k lies in the acquired block of an axis (nullopt: fully sampled).
inline bool k_is_sampled(Index k, const std::optional<KRange>& range)
{
    return !range || (k >= range->first && k <= range->last);
}
