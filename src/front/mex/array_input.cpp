#include "front/mex/array_input.hpp"

#include <string>

#include "gateway/host_arrays.hpp"
#include "recon/recon_error.hpp"

KspaceInput input_of(const mxArray* kspace, const char* name)
{
    const bool is_double = has_class(kspace, "double");
    if ((!is_double && !has_class(kspace, "single")) || mxIsSparse(kspace)) {
        throw ReconError("homodyne:badInput", std::string(name) + " must be a single or double array, not " +
                                                  mxGetClassName(kspace) +
                                                  (mxIsSparse(kspace) ? " (sparse: pass full(" + std::string(name) + "))." : "."));
    }
    KspaceInput input;
    input.name = name;
    input.data = mxGetData(kspace);
    const bool complex = mxIsComplex(kspace);
#if MX_HAS_INTERLEAVED_COMPLEX
    input.type = complex ? (is_double ? KspaceInput::Type::complex_double : KspaceInput::Type::complex_float)
                         : (is_double ? KspaceInput::Type::real_double : KspaceInput::Type::real_float);
#else
    input.type = is_double ? KspaceInput::Type::real_double : KspaceInput::Type::real_float;
    input.imag = complex ? mxGetImagData(kspace) : nullptr;
#endif
    for (const std::int64_t n : dimensions_of(kspace)) {
        input.dims.push_back(static_cast<Index>(n));
    }
    return input;
}
