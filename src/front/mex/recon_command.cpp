#include "front/mex/recon_command.hpp"

#include <cfloat>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "front/mex/info_struct.hpp"
#include "front/mex/option_values.hpp"
#include "gateway/host_arrays.hpp"
#include "recon/info_value.hpp"
#include "recon/recon_call.hpp"
#include "recon/recon_error.hpp"

namespace {

std::string option_names()
{
    std::string names;
    for (const OptionRow& row : option_table()) {
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    }
    return names;
}

ReconSettings settings_of(int count, const mxArray** args)
{
    if (count % 2 != 0) {
        throw ReconError("homodyne:usage", "options come as name/value pairs; the options are " + option_names() + ".");
    }
    ReconSettings settings;
    for (int k = 0; k < count; k += 2) {
        if (!mxIsChar(args[k]) || mxGetM(args[k]) > 1) {
            throw ReconError("homodyne:usage", std::string("option names must be text, but name/value pair ") +
                                                   std::to_string(k / 2 + 1) + " starts with a " +
                                                   mxGetClassName(args[k]) + "; the options are " + option_names() + ".");
        }
        char* name = mxArrayToString(args[k]);
        const std::string option = name != nullptr ? name : "";
        mxFree(name);
        set_option(settings, option, option_value_of(args[k + 1], option.c_str()));
    }
    return settings;
}

KspaceInput input_of(const mxArray* kspace)
{
    const bool is_double = has_class(kspace, "double");
    if ((!is_double && !has_class(kspace, "single")) || mxIsSparse(kspace)) {
        throw ReconError("homodyne:badInput", std::string("KSPACE must be a full single or double array, not ") +
                                                  mxGetClassName(kspace) + (mxIsSparse(kspace) ? " (sparse)." : "."));
    }
    KspaceInput input;
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

// A result of the caller's class and size, which the core fills through a
// single-precision buffer at unit scale: the array's own storage where it has
// that form, else a temporary, copied over by finish().
class ResultArray {
public:
    ResultArray(const std::vector<Index>& dims, bool is_double, bool is_complex)
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
    ResultArray(const ResultArray&) = delete;
    ResultArray& operator=(const ResultArray&) = delete;
    ~ResultArray()
    {
        if (array_ != nullptr) {
            mxDestroyArray(array_);
        }
    }

    float* values() { return scratch_.empty() ? static_cast<float*>(mxGetData(array_)) : scratch_.data(); }

    // The array at the caller's scale (times 2^exponent), handed over.
    mxArray* finish(int exponent, const std::string& name)
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

private:
    std::vector<std::int64_t> dims_;
    bool double_, complex_;
    mxArray* array_ = nullptr;
    Index count_ = 0;
    std::vector<float> scratch_;
};

}  // namespace

void reconstruct_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    if (nrhs < 2 || nlhs > 5) {
        throw ReconError("homodyne:usage", "usage: [IMAGE, INFO, PHASE, ZERO_FILLED, SENSITIVITIES] = "
                                           "homodyne_recon_mex('reconstruct', KSPACE, name, value, ...).");
    }
    const KspaceInput input = input_of(prhs[1]);
    const ReconSettings settings = settings_of(nrhs - 2, prhs + 2);
    const ReconPlan plan(prepare_call(settings, input));
    const ReconCall& call = plan.call();

    const bool is_double = mxIsDouble(prhs[1]);
    ResultArray image(call.result_dims, is_double, call.options.output == ReconOutput::complex);
    std::unique_ptr<ResultArray> phase, zero_filled, sensitivities;
    ReconBuffers buffers;
    buffers.image = image.values();
    if (nlhs > 2) {
        phase = std::make_unique<ResultArray>(call.result_dims, is_double, false);
        buffers.phase = phase->values();
    }
    if (nlhs > 3) {
        zero_filled = std::make_unique<ResultArray>(call.result_dims, is_double, false);
        buffers.zero_filled = zero_filled->values();
    }
    const bool adaptive = call.options.combination == CoilCombination::adaptive && call.shape.coils > 1;
    if (nlhs > 4 && adaptive) {
        sensitivities = std::make_unique<ResultArray>(call.layout.dims, is_double, true);
        buffers.sensitivities = reinterpret_cast<Complex*>(sensitivities->values());
    }
    const ReconInfo info = execute(plan, input, buffers);

    mxArray* description = host_value_of(describe(info, call));
    plhs[0] = image.finish(info.scale_exponent, "IMG");
    if (nlhs > 1) {
        plhs[1] = description;
    } else {
        mxDestroyArray(description);
    }
    if (phase) {
        plhs[2] = phase->finish(0, "PHASE");
    }
    if (zero_filled) {
        plhs[3] = zero_filled->finish(info.scale_exponent, "ZERO_FILLED");
    }
    if (nlhs > 4) {
        plhs[4] = sensitivities ? sensitivities->finish(0, "SENSITIVITIES")
                                : mxCreateNumericMatrix(0, 0, is_double ? mxDOUBLE_CLASS : mxSINGLE_CLASS, mxREAL);
    }
}
