#include "io/readout_crop.hpp"

#include <new>

namespace {

// Index in FFT order (k = 0 first) of centred index i on an axis of n.
Index unshifted(Index i, Index n) { return ((i - n / 2) % n + n) % n; }

}  // namespace

ReadoutCrop::ReadoutCrop(Index n_in, Index n_out) : n_in_(n_in), n_out_(n_out)
{
    wide_ = fftwf_alloc_complex(n_in);
    narrow_ = fftwf_alloc_complex(n_out);
    if (wide_ != nullptr && narrow_ != nullptr) {
        to_image_ = fftwf_plan_dft_1d(static_cast<int>(n_in), wide_, wide_, FFTW_BACKWARD, FFTW_ESTIMATE);
        to_kspace_ = fftwf_plan_dft_1d(static_cast<int>(n_out), narrow_, narrow_, FFTW_FORWARD, FFTW_ESTIMATE);
    }
    if (to_image_ == nullptr || to_kspace_ == nullptr) {
        release();
        throw std::bad_alloc();
    }
}

ReadoutCrop::~ReadoutCrop() { release(); }

void ReadoutCrop::release()
{
    if (to_image_ != nullptr) fftwf_destroy_plan(to_image_);
    if (to_kspace_ != nullptr) fftwf_destroy_plan(to_kspace_);
    fftwf_free(wide_);
    fftwf_free(narrow_);
    to_image_ = to_kspace_ = nullptr;
    wide_ = narrow_ = nullptr;
}

void ReadoutCrop::apply(const std::complex<float>* in, std::complex<float>* out)
{
    for (Index i = 0; i < n_in_; ++i) {
        const Index j = unshifted(i, n_in_);
        wide_[j][0] = in[i].real();
        wide_[j][1] = in[i].imag();
    }
    fftwf_execute(to_image_);
    // Image position p sits at FFT index p mod n on either grid.
    for (Index q = 0; q < n_out_; ++q) {
        const Index p = q < n_out_ - n_out_ / 2 ? q : q - n_out_;
        const Index from = (p + n_in_) % n_in_;
        narrow_[q][0] = wide_[from][0];
        narrow_[q][1] = wide_[from][1];
    }
    fftwf_execute(to_kspace_);
    const float scale = 1.0f / static_cast<float>(n_in_);
    for (Index i = 0; i < n_out_; ++i) {
        const Index j = unshifted(i, n_out_);
        out[i] = std::complex<float>(narrow_[j][0] * scale, narrow_[j][1] * scale);
    }
}
