#pragma once
// The geometric mean of three weights: out[i] = (float)pow((double)p[i], e)
// with the single-precision exponent e = (double)(1.0f / 3), bit for bit, for
// every float p. The library pow costs as much as dozens of multiplications
// and does not vectorise; this computes a cube root by Halley's method,
// corrects it by p^(e - 1/3), rounds it, and calls pow only where the result
// lies so close to the midpoint between two floats that rounding could go
// either way (about one value in ten thousand), or where p lies outside
// [2^-64, 2^64) (zero, negative, not finite, or far beyond any weight).

void pow_third(const float* p, float* out, long n);
