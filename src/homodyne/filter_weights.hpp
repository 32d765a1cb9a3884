#pragma once
// Homodyne weights of one k-space axis.
//
// An axis of n samples carries the k-space coordinates k = lo .. hi - 1 with
// lo = ceil(-n/2) and hi = ceil(n/2), so k = 0 sits at position floor(n/2).
// `k_range` holds the lowest and highest sampled coordinate [a, b]; both are
// truncated toward zero (NaN and values outside the int range become INT_MIN).
// The range is accepted only when its missing part lies at the negative end and
// the sampled fraction (b - a + 1) / (2 max(a, b) + 1) lies in [0.55, 1).
//
// On acceptance the weights are written: 0 up to and including the position P
// of coordinate a, rising as 1 - t^2 to exactly 1 at the centre Z, then as
// 1 + t^2 to 2 at the position Q of coordinate -a, and 2 from there on, so that
// w(k) + w(-k) = 2 inside the symmetric part. Every position of an accepted
// axis is written; a rejected axis keeps the caller's values.
// bounds = {P, Q}: the inclusive first and last position of the symmetrically
// sampled block.
//
// Returns 1 on success and 0 when the range is rejected; on rejection neither
// `weights` nor `bounds` is written. The last position of the axis is never
// searched for P, Q or Z, and a coordinate that is not found leaves its index
// at 0; on a one-sample axis an accepted range therefore gives bounds {0, 0}
// and the single weight 2.0. For n <= 0 an accepted range writes the bounds
// and no weight.
int calculate_filter(int n, const double* k_range, float* weights, int* bounds);
