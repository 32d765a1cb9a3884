#pragma once
// The small helpers through which the command gateways read and create host
// arrays. Everything that depends on the MEX layout the module is built for
// (interleaved or separate complex storage) lives here.

#include <cstdint>
#include <vector>

#include "common/complex_planes.hpp"
#include "mex.h"

// The class name of `array` is exactly `name` ("single", "double").
bool has_class(const mxArray* array, const char* name);

// Sizes of `array`, first dimension first.
std::vector<std::int64_t> dimensions_of(const mxArray* array);

// An array is empty for the commands when it has no dimensions or its first
// dimension is 0; later dimensions are not looked at.
bool is_empty_by_first_dimension(const std::vector<std::int64_t>& dims);

// A writable view of the samples of a single-precision array, in the caller's
// own storage where the host allows it. In the interleaved build the view
// reaches the caller's variable for real and complex data. In the separate
// build the host hands over a private copy of a complex array's planes, so
// writes into a complex input do not reach the caller there.
ComplexPlanes single_planes(const mxArray* array);

// Read-only contiguous planes of a single-precision array, as the
// interpolation library reads them. Separate planes and real data are used
// where they are; interleaved complex data are split into planes owned here.
class ContiguousPlanes {
public:
    explicit ContiguousPlanes(const mxArray* array);
    ContiguousPlanes(const ContiguousPlanes&) = delete;
    ContiguousPlanes& operator=(const ContiguousPlanes&) = delete;

    const float* re() const { return re_; }
    const float* im() const { return im_; }  // null for real data

private:
    std::vector<float> split_;
    const float* re_ = nullptr;
    const float* im_ = nullptr;
};

// A new complex single array of the given sizes, zero-filled, that keeps its
// complexity when returned to the caller (in the interleaved build; in the
// separate build the host turns an all-zero imaginary part into a real array).
mxArray* create_complex_single(const std::vector<std::int64_t>& dims);
// The same for single (mxSINGLE_CLASS) or double (mxDOUBLE_CLASS) values.
mxArray* create_complex(const std::vector<std::int64_t>& dims, mxClassID class_id);

// The values of a real double array.
const double* double_values(const mxArray* array);
