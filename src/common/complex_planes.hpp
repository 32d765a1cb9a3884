#pragma once
// A strided view of complex single-precision samples, so that one numeric core
// serves both host layouts without copying the data:
//   separate planes:  re -> real plane, im -> imaginary plane, stride 1
//   interleaved:      re -> first value, im -> re + 1,        stride 2
// (a stride of 2 always means interleaved pairs, im == re + 1).
// Real data have no imaginary plane (im == nullptr); it then counts as zero.

#include <cstddef>

struct ComplexPlanes {
    float* re = nullptr;
    float* im = nullptr;
    std::ptrdiff_t stride = 1;

    bool is_complex() const { return im != nullptr; }
    float& real(std::ptrdiff_t i) const { return re[i * stride]; }
    float& imag(std::ptrdiff_t i) const { return im[i * stride]; }
};
