#include "gateway/host_arrays.hpp"

#include <cstring>
#include <new>

#include "gateway/host_error.hpp"

bool has_class(const mxArray* array, const char* name)
{
    return std::strcmp(mxGetClassName(array), name) == 0;
}

std::vector<std::int64_t> dimensions_of(const mxArray* array)
{
    const mwSize count = mxGetNumberOfDimensions(array);
    const mwSize* sizes = mxGetDimensions(array);
    return std::vector<std::int64_t>(sizes, sizes + count);
}

bool is_empty_by_first_dimension(const std::vector<std::int64_t>& dims)
{
    return dims.empty() || dims[0] == 0;
}

#if MX_HAS_INTERLEAVED_COMPLEX

// Octave 7 refuses mxGetComplexSingles on single arrays ("type mismatch"), so
// the interleaved pairs are reached through the untyped data pointer.
ComplexPlanes single_planes(const mxArray* array)
{
    float* values = static_cast<float*>(mxGetData(array));
    if (mxIsComplex(array)) {
        return ComplexPlanes{values, values + 1, 2};
    }
    return ComplexPlanes{values, nullptr, 1};
}

ContiguousPlanes::ContiguousPlanes(const mxArray* array)
{
    const float* values = static_cast<const float*>(mxGetData(array));
    re_ = values;
    if (!mxIsComplex(array)) {
        return;
    }
    const std::size_t n = mxGetNumberOfElements(array);
    split_.resize(2 * n);
    for (std::size_t i = 0; i < n; ++i) {
        split_[i] = values[2 * i];
        split_[n + i] = values[2 * i + 1];
    }
    re_ = split_.data();
    im_ = split_.data() + n;
}

// Calls the host's function `name` for its one result. These calls can only
// fail for want of memory.
mxArray* call_host(const char* name, std::vector<mxArray*> args)
{
    mxArray* result = nullptr;
    mxArray* failure = mexCallMATLABWithTrap(1, &result, static_cast<int>(args.size()), args.data(), name);
    for (mxArray* arg : args) {
        mxDestroyArray(arg);
    }
    if (failure != nullptr) {
        mxDestroyArray(failure);
        throw std::bad_alloc();
    }
    return result;
}

// Octave 7 allocates only half the storage of a complex array made by
// mxCreateNumericArray in this layout, so the host builds it: complex() of
// zeros(dims, 'single'), which also keeps the result complex on return. The
// zeros are the host's own array, so they are not copied on the way in.
mxArray* create_complex(const std::vector<std::int64_t>& dims, mxClassID class_id)
{
    mxArray* size = mxCreateDoubleMatrix(1, dims.size(), mxREAL);
    double* sizes = static_cast<double*>(mxGetData(size));
    for (std::size_t d = 0; d < dims.size(); ++d) {
        sizes[d] = static_cast<double>(dims[d]);
    }
    mxArray* zeros = call_host("zeros", {size, mxCreateString(class_id == mxDOUBLE_CLASS ? "double" : "single")});
    return call_host("complex", {zeros});
}

#else

ComplexPlanes single_planes(const mxArray* array)
{
    float* re = static_cast<float*>(mxGetData(array));
    float* im = mxIsComplex(array) ? static_cast<float*>(mxGetImagData(array)) : nullptr;
    return ComplexPlanes{re, im, 1};
}

ContiguousPlanes::ContiguousPlanes(const mxArray* array)
    : re_(static_cast<const float*>(mxGetData(array))),
      im_(mxIsComplex(array) ? static_cast<const float*>(mxGetImagData(array)) : nullptr)
{
}

mxArray* create_complex(const std::vector<std::int64_t>& dims, mxClassID class_id)
{
    const std::vector<mwSize> sizes(dims.begin(), dims.end());
    mxArray* result = mxCreateNumericArray(sizes.size(), sizes.data(), class_id, mxCOMPLEX);
    if (result == nullptr) {
        throw std::bad_alloc();
    }
    return result;
}

#endif

mxArray* create_complex_single(const std::vector<std::int64_t>& dims)
{
    return create_complex(dims, mxSINGLE_CLASS);
}

const double* double_values(const mxArray* array)
{
    return static_cast<const double*>(mxGetData(array));
}
