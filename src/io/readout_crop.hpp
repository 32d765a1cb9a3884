#pragma once
// Removal of readout oversampling: a centred DFT crop. A readout of n_in
// centred k-space samples is transformed to the image line, the central
// n_out positions (-floor(n_out/2) .. ceil(n_out/2)-1) are kept and
// transformed back, scaled so that an object inside the kept field of view
// keeps its k-space values.

#include <complex>
#include <fftw3.h>

#include "recon/recon_shape.hpp"

class ReadoutCrop {
public:
    ReadoutCrop(Index n_in, Index n_out);
    ~ReadoutCrop();
    ReadoutCrop(const ReadoutCrop&) = delete;
    ReadoutCrop& operator=(const ReadoutCrop&) = delete;

    // in: n_in centred samples; out: n_out centred samples.
    void apply(const std::complex<float>* in, std::complex<float>* out);

private:
    void release();

    Index n_in_;
    Index n_out_;
    fftwf_complex* wide_ = nullptr;
    fftwf_complex* narrow_ = nullptr;
    fftwf_plan to_image_ = nullptr;
    fftwf_plan to_kspace_ = nullptr;
};
