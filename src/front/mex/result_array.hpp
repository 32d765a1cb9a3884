#pragma once
// A result of the caller's class and size, which the core fills through a
// single-precision buffer at unit scale: the array's own storage where it has
// that form, else a temporary, copied over by finish().

#include <cstdint>
#include <string>
#include <vector>

#include "mex.h"
#include "recon/recon_shape.hpp"

class ResultArray {
public:
    ResultArray(const std::vector<Index>& dims, bool is_double, bool is_complex);
    ResultArray(const ResultArray&) = delete;
    ResultArray& operator=(const ResultArray&) = delete;
    ~ResultArray();

    // Interleaved pairs for a complex result.
    float* values() { return scratch_.empty() ? static_cast<float*>(mxGetData(array_)) : scratch_.data(); }

    // The array at the caller's scale (times 2^exponent), handed over; throws
    // homodyne:scale, naming `name`, where a value does not fit the class.
    mxArray* finish(int exponent, const std::string& name);

private:
    std::vector<std::int64_t> dims_;
    bool double_, complex_;
    mxArray* array_ = nullptr;
    Index count_ = 0;
    std::vector<float> scratch_;
};
