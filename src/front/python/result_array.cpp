#include "front/python/result_array.hpp"

#include <cfloat>
#include <cmath>
#include <complex>

#include "recon/recon_call.hpp"
#include "recon/recon_error.hpp"

namespace py = pybind11;

namespace {

template <typename T>
py::array fortran_array(const std::vector<Index>& dims)
{
    return py::array_t<T, py::array::f_style>(std::vector<py::ssize_t>(dims.begin(), dims.end()));
}

}  // namespace

ResultArray::ResultArray(const std::vector<Index>& dims, bool is_double, bool is_complex)
{
    if (is_double) {
        array_ = is_complex ? fortran_array<std::complex<double>>(dims) : fortran_array<double>(dims);
    } else {
        array_ = is_complex ? fortran_array<std::complex<float>>(dims) : fortran_array<float>(dims);
    }
    count_ = static_cast<Index>(array_.size()) * (is_complex ? 2 : 1);
    if (is_double) {
        scratch_.resize(static_cast<std::size_t>(count_));
    }
}

py::array ResultArray::finish(int exponent, const std::string& name)
{
    if (scratch_.empty()) {
        restore_scale(values(), count_, exponent, name);
        return array_;
    }
    double* out = static_cast<double*>(array_.mutable_data());
    double largest = 0.0;
    bool nonzero = false;
    for (Index i = 0; i < count_; ++i) {
        out[i] = std::ldexp(static_cast<double>(scratch_[i]), exponent);
        largest = std::fmax(largest, std::fabs(out[i]));
        nonzero = nonzero || scratch_[i] != 0.0f;
    }
    // Non-zero values wholly below double's normal range have lost their digits.
    if (nonzero && largest < DBL_MIN) {
        throw ReconError("homodyne:scale", name + " does not fit double precision at the scale of the data; scale the data.");
    }
    return array_;
}
