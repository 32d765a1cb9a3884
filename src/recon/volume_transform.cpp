#include "recon/volume_transform.hpp"

#include <fftw3.h>

#include <new>

#include "recon/recon_error.hpp"

ComplexBuffer::ComplexBuffer(Index count)
    : data_(static_cast<Complex*>(fftwf_malloc(sizeof(Complex) * static_cast<std::size_t>(count > 0 ? count : 1))))
{
    if (!data_) {
        throw std::bad_alloc();
    }
}

void ComplexBuffer::Free::operator()(Complex* p) const { fftwf_free(p); }

namespace {

fftwf_complex* as_fftw(Complex* p) { return reinterpret_cast<fftwf_complex*>(p); }

}  // namespace

VolumeTransform::VolumeTransform(const std::array<Index, 3>& n) : n_(n)
{
    ComplexBuffer scratch(voxels());
    // FFTW is row-major: its last dimension is our first (x fastest).
    const int nz = static_cast<int>(n[2]), ny = static_cast<int>(n[1]), nx = static_cast<int>(n[0]);
    inverse_ = fftwf_plan_dft_3d(nz, ny, nx, as_fftw(scratch.data()), as_fftw(scratch.data()), FFTW_BACKWARD,
                                 FFTW_ESTIMATE);
    forward_ = fftwf_plan_dft_3d(nz, ny, nx, as_fftw(scratch.data()), as_fftw(scratch.data()), FFTW_FORWARD,
                                 FFTW_ESTIMATE);
    if (inverse_ == nullptr || forward_ == nullptr) {
        release();
        throw ReconError("homodyne:internal", "FFTW could not plan a transform of the image size.");
    }
}

VolumeTransform::~VolumeTransform() { release(); }

void VolumeTransform::release()
{
    if (inverse_ != nullptr) {
        fftwf_destroy_plan(static_cast<fftwf_plan>(inverse_));
    }
    if (forward_ != nullptr) {
        fftwf_destroy_plan(static_cast<fftwf_plan>(forward_));
    }
    inverse_ = forward_ = nullptr;
}

void VolumeTransform::inverse(Complex* data) const
{
    fftwf_execute_dft(static_cast<fftwf_plan>(inverse_), as_fftw(data), as_fftw(data));
}

void VolumeTransform::forward(Complex* data) const
{
    fftwf_execute_dft(static_cast<fftwf_plan>(forward_), as_fftw(data), as_fftw(data));
}
