#include "front/mex/result_array.hpp"

#include <cfloat>
#include <cmath>

#include "gateway/host_arrays.hpp"
#include "recon/recon_call.hpp"
#include "recon/recon_error.hpp"

namespace {

// Double results of non-zero values wholly below double's normal range have
// lost their digits.
void refuse_lost_digits(const float* unit, const double* values, Index count, Index step, const std::string& name)
{
    double largest = 0.0;
    bool nonzero = false;
    for (Index i = 0; i < count; ++i) {
        largest = std::max(largest, std::fabs(values[i]));
        nonzero = nonzero || unit[i * step] != 0.0f;
    }
    if (nonzero && largest < DBL_MIN) {
        throw ReconError("homodyne:scale", name + " does not fit double precision at the scale of the data; "
                                                  "scale the data.");
    }
}

}  // namespace

ResultArray::ResultArray(const std::vector<Index>& dims, bool is_double, bool is_complex)
    : dims_(dims.begin(), dims.end()), double_(is_double), complex_(is_complex)
{
    const std::vector<mwSize> sizes(dims.begin(), dims.end());
    const mxClassID class_id = is_double ? mxDOUBLE_CLASS : mxSINGLE_CLASS;
    array_ = is_complex ? create_complex(dims_, class_id)
                        : mxCreateNumericArray(sizes.size(), sizes.data(), class_id, mxREAL);
    count_ = static_cast<Index>(mxGetNumberOfElements(array_)) * (is_complex ? 2 : 1);
    bool own_storage = !is_double;
#if !MX_HAS_INTERLEAVED_COMPLEX
    own_storage = own_storage && !is_complex;
#endif
    if (!own_storage) {
        scratch_.resize(static_cast<std::size_t>(count_));
    }
}

ResultArray::~ResultArray()
{
    if (array_ != nullptr) {
        mxDestroyArray(array_);
    }
}

mxArray* ResultArray::finish(int exponent, const std::string& name)
{
    if (!double_) {
        restore_scale(values(), count_, exponent, name);
    }
    if (!scratch_.empty()) {
        const Index n = complex_ ? count_ / 2 : count_;
#if MX_HAS_INTERLEAVED_COMPLEX
        double* out = static_cast<double*>(mxGetData(array_));
        for (Index i = 0; i < count_; ++i) {
            out[i] = std::ldexp(static_cast<double>(scratch_[i]), exponent);
        }
        refuse_lost_digits(scratch_.data(), out, count_, 1, name);
        (void)n;
#else
        const int stride = complex_ ? 2 : 1;
        for (int part = 0; part < stride; ++part) {
            void* plane = part == 0 ? mxGetData(array_) : mxGetImagData(array_);
            for (Index i = 0; i < n; ++i) {
                const float v = scratch_[stride * i + part];
                if (double_) {
                    static_cast<double*>(plane)[i] = std::ldexp(static_cast<double>(v), exponent);
                } else {
                    static_cast<float*>(plane)[i] = v;
                }
            }
            if (double_) {
                refuse_lost_digits(scratch_.data() + part, static_cast<double*>(plane), n, stride, name);
            }
        }
#endif
    }
    mxArray* array = array_;
    array_ = nullptr;
    return array;
}
