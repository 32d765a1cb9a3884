#include "recon_gateway/recon_arguments.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "gateway/host_arrays.hpp"
#include "recon/recon_error.hpp"
#include "recon/reconstruct.hpp"

namespace {

[[noreturn]] void bad_option(const std::string& message) { throw ReconError("homodyne:badOption", message); }

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

std::string text_of(const mxArray* value, const char* option)
{
    if (!mxIsChar(value) || mxGetM(value) > 1) {
        bad_option(std::string("'") + option + "' must be text.");
    }
    std::vector<char> text(mxGetNumberOfElements(value) + 1, '\0');
    mxGetString(value, text.data(), text.size());
    return text.data();
}

double number_of(const mxArray* value, const char* option)
{
    if (!mxIsNumeric(value) || mxIsComplex(value) || mxIsSparse(value) || mxGetNumberOfElements(value) != 1) {
        bad_option(std::string("'") + option + "' must be a real numeric scalar.");
    }
    return mxGetScalar(value);
}

int whole_number_of(const mxArray* value, const char* option, double lowest, double highest)
{
    const double x = number_of(value, option);
    if (!(x >= lowest && x <= highest) || x != std::floor(x)) {
        bad_option(std::string("'") + option + "' must be a whole number from " + std::to_string(int(lowest)) +
                   " to " + std::to_string(int(highest)) + ".");
    }
    return static_cast<int>(x);
}

SampledRanges ranges_of(const mxArray* value)
{
    const char* const usage = "'Ranges' must be a cell {kx, ky, kz} of [] or [first last] in whole k coordinates.";
    if (!mxIsCell(value) || mxGetNumberOfElements(value) > 3) {
        bad_option(usage);
    }
    SampledRanges ranges;
    for (std::size_t axis = 0; axis < mxGetNumberOfElements(value); ++axis) {
        const mxArray* r = mxGetCell(value, axis);
        if (r == nullptr || mxIsEmpty(r)) {
            continue;
        }
        if (!mxIsDouble(r) || mxIsComplex(r) || mxIsSparse(r) || mxGetNumberOfElements(r) != 2) {
            bad_option(usage);
        }
        const double* k = static_cast<const double*>(mxGetData(r));
        if (!std::isfinite(k[0]) || !std::isfinite(k[1]) || k[0] != std::floor(k[0]) || k[1] != std::floor(k[1]) ||
            std::fabs(k[0]) > 1e9 || std::fabs(k[1]) > 1e9) {
            bad_option(usage);
        }
        ranges[axis] = KRange{static_cast<Index>(k[0]), static_cast<Index>(k[1])};
    }
    return ranges;
}

ReconOptions options_of(const mxArray* options)
{
    ReconOptions result;
    if (options == nullptr) {
        return result;
    }
    if (!mxIsStruct(options) || mxGetNumberOfElements(options) != 1) {
        throw ReconError("homodyne:usage", "OPTIONS must be a scalar struct.");
    }
    for (int f = 0; f < mxGetNumberOfFields(options); ++f) {
        const std::string name = lower(mxGetFieldNameByNumber(options, f));
        const mxArray* value = mxGetFieldByNumber(options, 0, f);
        if (name == "method") {
            result.method = method_named(text_of(value, "Method"));
        } else if (name == "output") {
            result.output = output_named(text_of(value, "Output"));
        } else if (name == "constraint") {
            result.constraint = constraint_named(text_of(value, "Constraint"));
        } else if (name == "window") {
            result.window = window_named(text_of(value, "Window"));
        } else if (name == "iterations") {
            result.iterations = whole_number_of(value, "Iterations", 1, 10000);
        } else if (name == "tolerance") {
            result.tolerance = number_of(value, "Tolerance");
        } else if (name == "threads") {
            result.threads = whole_number_of(value, "Threads", 0, 1024);
        } else if (name == "transitionband") {
            result.transition_band = whole_number_of(value, "TransitionBand", 0, 64);
        } else if (name == "ranges") {
            result.ranges = ranges_of(value);
        } else {
            bad_option("unknown option '" + std::string(mxGetFieldNameByNumber(options, f)) +
                       "'; the options are Method, Output, Iterations, Tolerance, Threads, Constraint, Window, "
                       "TransitionBand and Ranges.");
        }
    }
    return result;
}

ReconShape shape_of(const std::vector<std::int64_t>& dims)
{
    ReconShape shape;
    for (std::size_t d = 0; d < dims.size(); ++d) {
        if (d < 3) {
            shape.n[d] = dims[d];
        } else if (d == 3) {
            shape.coils = dims[d];
        } else {
            shape.volumes *= dims[d];
        }
    }
    return shape;
}

// The k-space as interleaved complex samples: the caller's own storage where
// it already is that, else a converted copy held in `copy`.
const Complex* samples_of(const mxArray* kspace, std::vector<Complex>& copy)
{
    const std::size_t n = mxGetNumberOfElements(kspace);
#if MX_HAS_INTERLEAVED_COMPLEX
    if (mxIsComplex(kspace)) {
        return static_cast<const Complex*>(mxGetData(kspace));
    }
    const float* re = static_cast<const float*>(mxGetData(kspace));
    const float* im = nullptr;
#else
    const float* re = static_cast<const float*>(mxGetData(kspace));
    const float* im = mxIsComplex(kspace) ? static_cast<const float*>(mxGetImagData(kspace)) : nullptr;
#endif
    copy.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        copy[i] = Complex(re[i], im != nullptr ? im[i] : 0.0f);
    }
    return copy.data();
}

mxArray* row_of(const std::vector<double>& values, mwSize rows)
{
    mxArray* array = mxCreateDoubleMatrix(rows, values.size() / rows, mxREAL);
    std::copy(values.begin(), values.end(), static_cast<double*>(mxGetData(array)));
    return array;
}

mxArray* info_of(const ReconReport& report, const ReconOptions& options)
{
    const char* fields[] = {"method", "constraint", "iterations", "change", "residual", "echo_offset", "threads"};
    mxArray* info = mxCreateStructMatrix(1, 1, 7, fields);
    std::vector<double> iterations, change, residual, echo;
    mxArray* constraints = mxCreateCellMatrix(1, report.images.size());
    for (std::size_t j = 0; j < report.images.size(); ++j) {
        const VolumeReport& r = report.images[j];
        iterations.push_back(r.iterations);
        change.push_back(r.change);
        residual.push_back(r.residual);
        echo.insert(echo.end(), {double(r.echo[0]), double(r.echo[1]), double(r.echo[2])});
        mxSetCell(constraints, j, mxCreateString(options.method == ReconMethod::pocs ? name_of(r.constraint) : ""));
    }
    mxSetField(info, 0, "method", mxCreateString(options.method == ReconMethod::pocs ? "pocs" : "homodyne"));
    mxSetField(info, 0, "constraint", constraints);
    mxSetField(info, 0, "iterations", row_of(iterations, 1));
    mxSetField(info, 0, "change", row_of(change, 1));
    mxSetField(info, 0, "residual", row_of(residual, 1));
    mxSetField(info, 0, "echo_offset", row_of(echo, 3));
    mxSetField(info, 0, "threads", mxCreateDoubleScalar(report.threads));
    return info;
}

}  // namespace

void reconstruct_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    if (nrhs < 2 || nrhs > 3 || nlhs > 3) {
        throw ReconError("homodyne:usage",
                         "Usage: [IMAGE, INFO, PHASE] = homodyne_recon_mex('reconstruct', KSPACE, OPTIONS).");
    }
    const mxArray* kspace = prhs[1];
    if (!has_class(kspace, "single") || mxIsSparse(kspace) || mxIsEmpty(kspace)) {
        throw ReconError("homodyne:badInput", "KSPACE must be a non-empty single array.");
    }
    const ReconOptions options = options_of(nrhs > 2 ? prhs[2] : nullptr);
    const std::vector<std::int64_t> dims = dimensions_of(kspace);
    const ReconShape shape = shape_of(dims);
    validate_options(options, shape);

    std::vector<Complex> copy;
    const Complex* samples = samples_of(kspace, copy);
    const bool complex_output = options.output == ReconOutput::complex;
    const std::vector<mwSize> sizes(dims.begin(), dims.end());
    mxArray* image = complex_output ? create_complex_single(dims)
                                    : mxCreateNumericArray(sizes.size(), sizes.data(), mxSINGLE_CLASS, mxREAL);
    mxArray* phase = nlhs > 2 ? mxCreateNumericArray(sizes.size(), sizes.data(), mxSINGLE_CLASS, mxREAL) : nullptr;
    float* phase_values = phase != nullptr ? static_cast<float*>(mxGetData(phase)) : nullptr;
    try {
#if MX_HAS_INTERLEAVED_COMPLEX
        const ReconReport report =
            reconstruct(shape, samples, options, static_cast<float*>(mxGetData(image)), phase_values);
#else
        std::vector<float> pairs(complex_output ? 2 * static_cast<std::size_t>(shape.samples()) : 0);
        float* out = complex_output ? pairs.data() : static_cast<float*>(mxGetData(image));
        const ReconReport report = reconstruct(shape, samples, options, out, phase_values);
        if (complex_output) {
            float* re = static_cast<float*>(mxGetData(image));
            float* im = static_cast<float*>(mxGetImagData(image));
            for (Index i = 0; i < shape.samples(); ++i) {
                re[i] = pairs[2 * i];
                im[i] = pairs[2 * i + 1];
            }
        }
#endif
        plhs[0] = image;
        if (nlhs > 1) {
            plhs[1] = info_of(report, options);
        }
        if (phase != nullptr) {
            plhs[2] = phase;
        }
    } catch (...) {
        mxDestroyArray(image);
        if (phase != nullptr) {
            mxDestroyArray(phase);
        }
        throw;
    }
}
