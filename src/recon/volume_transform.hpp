#pragma once
// Unnormalised 3-D DFTs of one coil image in origin-first (FFT) order, planned
// once for a shape and executed on any buffer from `ComplexBuffer`.
//
// FFTW's planner is not thread-safe: make every VolumeTransform before any
// worker thread starts and destroy it after they have joined; executing a
// plan is safe from many threads at once. Plans are estimated, or measured
// (FFTW_MEASURE) on a scratch buffer of their own. FFTW's global state, which a host such
// as Octave shares, is left as found: the thread setting is not touched,
// and the host's wisdom is set aside while the toolbox plans with its own.
// Measured plans may differ between processes, so results may differ
// between sessions by single-precision rounding; within a call every image
// uses the same plans.

#include <complex>
#include <memory>
#include <string>

#include "recon/recon_shape.hpp"

// The toolbox's own wisdom (the plans it has measured in this process) as
// FFTW's text, and such text from an earlier process added to it (false when
// FFTW refuses the text). A front end that runs once per file keeps it
// between runs, so that only the first run spends its time measuring.
std::string toolbox_wisdom();
bool add_toolbox_wisdom(const std::string& text);

// Complex samples aligned as FFTW's SIMD code wants them (fftwf_malloc).
class ComplexBuffer {
public:
    explicit ComplexBuffer(Index count);
    Complex* data() const { return data_.get(); }
    Complex& operator[](Index i) const { return data_.get()[i]; }

private:
    struct Free {
        bool huge = false;  // allocated in huge pages, else by FFTW
        void operator()(Complex* p) const;
    };
    std::unique_ptr<Complex, Free> data_;
};

// Transforms along a chosen set of the three axes (all by default), every
// line along the others transformed on its own; with no axis chosen both
// directions leave the data as they are.
class VolumeTransform {
public:
    // `measured`: plans timed with FFTW_MEASURE, for transforms run many
    // times; else FFTW_ESTIMATE's plans, made at once.
    explicit VolumeTransform(const std::array<Index, 3>& n, const std::array<bool, 3>& axes = {true, true, true},
                             bool measured = false);
    ~VolumeTransform();
    VolumeTransform(const VolumeTransform&) = delete;
    VolumeTransform& operator=(const VolumeTransform&) = delete;

    // In place: k-space to image (exponent +i), and image to k-space (-i).
    void inverse(Complex* data) const;
    void forward(Complex* data) const;
    const std::array<Index, 3>& n() const { return n_; }
    Index voxels() const { return n_[0] * n_[1] * n_[2]; }
    // Samples along the chosen axes: the gain of a forward and inverse pair.
    Index transformed() const { return transformed_; }

private:
    void release();
    std::array<Index, 3> n_;
    Index transformed_ = 1;
    void* inverse_ = nullptr;
    void* forward_ = nullptr;
};
