#pragma once
// Unnormalised 3-D DFTs of one coil image in origin-first (FFT) order, planned
// once for a shape and executed on any buffer from `ComplexBuffer`.
//
// FFTW's planner is not thread-safe: make every VolumeTransform before any
// worker thread starts and destroy it after they have joined; executing a
// plan is safe from many threads at once. Plans are made with FFTW_ESTIMATE,
// which neither reads nor writes the buffers. Nothing touches FFTW's global
// settings (threads, wisdom), which a host such as Octave shares.

#include <complex>
#include <memory>

#include "recon/recon_shape.hpp"

using Complex = std::complex<float>;

// Complex samples aligned as FFTW's SIMD code wants them (fftwf_malloc).
class ComplexBuffer {
public:
    explicit ComplexBuffer(Index count);
    Complex* data() const { return data_.get(); }
    Complex& operator[](Index i) const { return data_.get()[i]; }

private:
    struct Free {
        void operator()(Complex* p) const;
    };
    std::unique_ptr<Complex, Free> data_;
};

class VolumeTransform {
public:
    explicit VolumeTransform(const std::array<Index, 3>& n);
    ~VolumeTransform();
    VolumeTransform(const VolumeTransform&) = delete;
    VolumeTransform& operator=(const VolumeTransform&) = delete;

    // In place: k-space to image (exponent +i), and image to k-space (-i).
    void inverse(Complex* data) const;
    void forward(Complex* data) const;
    const std::array<Index, 3>& n() const { return n_; }
    Index voxels() const { return n_[0] * n_[1] * n_[2]; }

private:
    void release();
    std::array<Index, 3> n_;
    void* inverse_ = nullptr;
    void* forward_ = nullptr;
};
