#include "front/mex/recon_arguments.hpp"

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

// The values of a single or double array, real or complex, as complex single.
std::vector<Complex> complex_values_of(const mxArray* array)
{
    const std::size_t n = mxGetNumberOfElements(array);
    const bool is_double = mxIsDouble(array);
    const bool is_complex = mxIsComplex(array);
    std::vector<Complex> values(n);
    const auto at = [&](const void* data, std::size_t i) {
        return is_double ? static_cast<float>(static_cast<const double*>(data)[i]) : static_cast<const float*>(data)[i];
    };
#if MX_HAS_INTERLEAVED_COMPLEX
    const void* data = mxGetData(array);
    for (std::size_t i = 0; i < n; ++i) {
        values[i] = is_complex ? Complex(at(data, 2 * i), at(data, 2 * i + 1)) : Complex(at(data, i), 0.0f);
    }
#else
    const void* re = mxGetData(array);
    const void* im = is_complex ? mxGetImagData(array) : nullptr;
    for (std::size_t i = 0; i < n; ++i) {
        values[i] = Complex(at(re, i), im != nullptr ? at(im, i) : 0.0f);
    }
#endif
    return values;
}

// 'NoiseCovariance': a coils x coils matrix, or a noise-only scan (more than
// two dimensions, coils along the fourth), whose values `scan` keeps.
void noise_reference_of(const mxArray* value, ReconOptions& options, std::vector<Complex>& scan)
{
    if (!(mxIsDouble(value) || has_class(value, "single")) || mxIsSparse(value) || mxIsEmpty(value)) {
        throw ReconError("homodyne:badInput",
                         "'NoiseCovariance' must be a single or double matrix (coils x coils) or noise scan.");
    }
    std::vector<Complex> values = complex_values_of(value);
    for (const Complex& v : values) {
        if (!std::isfinite(v.real()) || !std::isfinite(v.imag())) {
            throw ReconError("homodyne:badInput", "'NoiseCovariance' must hold finite values.");
        }
    }
    const std::vector<std::int64_t> dims = dimensions_of(value);
    if (dims.size() == 2) {
        options.noise_covariance = std::move(values);
        options.covariance_rows = dims[0];
        options.covariance_columns = dims[1];
    } else {
        scan = std::move(values);
        options.noise_scan = scan.data();
        options.noise_scan_shape = shape_of(dims);
    }
}

bool flag_of(const mxArray* value, const char* option)
{
    if ((!mxIsLogical(value) && !mxIsNumeric(value)) || mxIsComplex(value) || mxGetNumberOfElements(value) != 1) {
        bad_option(std::string("'") + option + "' must be true or false.");
    }
    const double x = mxGetScalar(value);
    if (x != 0.0 && x != 1.0) {
        bad_option(std::string("'") + option + "' must be true or false.");
    }
    return x != 0.0;
}

ReconOptions options_of(const mxArray* options, std::vector<Complex>& scan)
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
        } else if (name == "coilcombine") {
            result.combination = combination_named(text_of(value, "CoilCombine"));
        } else if (name == "noiseadaptive") {
            result.noise_adaptive = flag_of(value, "NoiseAdaptive");
        } else if (name == "noisecovariance") {
            if (!mxIsEmpty(value)) {
                noise_reference_of(value, result, scan);
            }
        } else {
            bad_option("unknown option '" + std::string(mxGetFieldNameByNumber(options, f)) +
                       "'; the options are Method, Output, Iterations, Tolerance, Threads, Constraint, Window, "
                       "TransitionBand, Ranges, CoilCombine, NoiseAdaptive and NoiseCovariance.");
        }
    }
    return result;
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

mxArray* row_of(const std::vector<float>& values)
{
    return row_of(std::vector<double>(values.begin(), values.end()), 1);
}

// What the noise-adaptive step did: on which images, with which noise sigma,
// the mean weight of the synthesised samples, the fraction weighted 0 and the
// mean weight of the quadrature component.
mxArray* adaptive_step_of(const ReconReport& report)
{
    const char* fields[] = {"applied_to", "sigma", "mean_weight", "removed", "quadrature_weight"};
    mxArray* step = mxCreateStructMatrix(1, 1, 5, fields);
    std::vector<double> mean_weight, removed, quadrature;
    for (const SynthesisReport& r : report.synthesis) {
        mean_weight.push_back(r.mean_weight);
        removed.push_back(r.synthesised > 0 ? double(r.removed) / double(r.synthesised) : 0.0);
        quadrature.push_back(r.quadrature_weight);
    }
    const char* applied_to = report.synthesis.empty()                              ? "none"
                             : report.combination == CoilCombination::adaptive ? "combined image"
                                                                                 : "each coil image";
    mxSetField(step, 0, "applied_to", mxCreateString(applied_to));
    mxSetField(step, 0, "sigma", row_of(report.image_sigma));
    mxSetField(step, 0, "mean_weight", row_of(mean_weight, 1));
    mxSetField(step, 0, "removed", row_of(removed, 1));
    mxSetField(step, 0, "quadrature_weight", row_of(quadrature, 1));
    return step;
}

mxArray* info_of(const ReconReport& report, const ReconOptions& options, Index coils)
{
    const char* fields[] = {"method",  "constraint",   "iterations",  "change",     "residual",
                            "echo_offset", "threads", "combination", "noise_source", "noise_sigma", "adaptive"};
    mxArray* info = mxCreateStructMatrix(1, 1, 11, fields);
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
    mxSetField(info, 0, "combination", mxCreateString(name_of(report.combination)));
    mxSetField(info, 0, "noise_source", mxCreateString(name_of(report.noise_source)));
    mxSetField(info, 0, "noise_sigma", row_of(std::vector<double>(report.coil_sigma.begin(), report.coil_sigma.end()),
                                                static_cast<mwSize>(report.coil_sigma.empty() ? 1 : coils)));
    mxSetField(info, 0, "adaptive", adaptive_step_of(report));
    return info;
}

// The coil sensitivities as a complex single array of the k-space's size,
// or [] when none were estimated.
mxArray* sensitivities_of(const std::vector<Complex>& sensitivities, const std::vector<std::int64_t>& dims)
{
    if (sensitivities.empty()) {
        return mxCreateNumericMatrix(0, 0, mxSINGLE_CLASS, mxREAL);
    }
    mxArray* array = create_complex_single(dims);
#if MX_HAS_INTERLEAVED_COMPLEX
    std::copy(sensitivities.begin(), sensitivities.end(), static_cast<Complex*>(mxGetData(array)));
#else
    float* re = static_cast<float*>(mxGetData(array));
    float* im = static_cast<float*>(mxGetImagData(array));
    for (std::size_t i = 0; i < sensitivities.size(); ++i) {
        re[i] = sensitivities[i].real();
        im[i] = sensitivities[i].imag();
    }
#endif
    return array;
}

}  // namespace

void reconstruct_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    if (nrhs < 2 || nrhs > 3 || nlhs > 4) {
        throw ReconError("homodyne:usage", "Usage: [IMAGE, INFO, PHASE, SENSITIVITIES] = "
                                           "homodyne_recon_mex('reconstruct', KSPACE, OPTIONS).");
    }
    const mxArray* kspace = prhs[1];
    if (!has_class(kspace, "single") || mxIsSparse(kspace) || mxIsEmpty(kspace)) {
        throw ReconError("homodyne:badInput", "KSPACE must be a non-empty single array.");
    }
    std::vector<Complex> scan;
    ReconOptions options = options_of(nrhs > 2 ? prhs[2] : nullptr, scan);
    options.keep_sensitivities = nlhs > 3;
    const std::vector<std::int64_t> dims = dimensions_of(kspace);
    const ReconShape shape = shape_of(dims);
    validate_options(options, shape);
    // One image per volume when the coils are combined: size 1 along them.
    std::vector<std::int64_t> result_dims = dims;
    if (result_images(shape, options) != shape.coils * shape.volumes) {
        result_dims[3] = 1;
    }

    std::vector<Complex> copy;
    const Complex* samples = samples_of(kspace, copy);
    const bool complex_output = options.output == ReconOutput::complex;
    const std::vector<mwSize> sizes(result_dims.begin(), result_dims.end());
    mxArray* image = complex_output ? create_complex_single(result_dims)
                                    : mxCreateNumericArray(sizes.size(), sizes.data(), mxSINGLE_CLASS, mxREAL);
    mxArray* phase = nlhs > 2 ? mxCreateNumericArray(sizes.size(), sizes.data(), mxSINGLE_CLASS, mxREAL) : nullptr;
    float* phase_values = phase != nullptr ? static_cast<float*>(mxGetData(phase)) : nullptr;
    try {
#if MX_HAS_INTERLEAVED_COMPLEX
        const ReconReport report =
            reconstruct(shape, samples, options, static_cast<float*>(mxGetData(image)), phase_values);
#else
        const Index result_samples = shape.voxels() * result_images(shape, options);
        std::vector<float> pairs(complex_output ? 2 * static_cast<std::size_t>(result_samples) : 0);
        float* out = complex_output ? pairs.data() : static_cast<float*>(mxGetData(image));
        const ReconReport report = reconstruct(shape, samples, options, out, phase_values);
        if (complex_output) {
            float* re = static_cast<float*>(mxGetData(image));
            float* im = static_cast<float*>(mxGetImagData(image));
            for (Index i = 0; i < result_samples; ++i) {
                re[i] = pairs[2 * i];
                im[i] = pairs[2 * i + 1];
            }
        }
#endif
        mxArray* sensitivities = nlhs > 3 ? sensitivities_of(report.sensitivities, dims) : nullptr;
        plhs[0] = image;
        if (nlhs > 1) {
            plhs[1] = info_of(report, options, shape.coils);
        }
        if (phase != nullptr) {
            plhs[2] = phase;
        }
        if (sensitivities != nullptr) {
            plhs[3] = sensitivities;
        }
    } catch (...) {
        mxDestroyArray(image);
        if (phase != nullptr) {
            mxDestroyArray(phase);
        }
        throw;
    }
}
