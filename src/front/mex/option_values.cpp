#include "front/mex/option_values.hpp"

#include <string>

#include "gateway/host_arrays.hpp"
#include "recon/recon_error.hpp"

namespace {

// The values of a real or complex numeric array, as doubles or complex single.
std::vector<double> reals_of(const mxArray* array)
{
    const std::size_t n = mxGetNumberOfElements(array);
    std::vector<double> values(n);
    const void* data = mxGetData(array);
    for (std::size_t i = 0; i < n; ++i) {
        switch (mxGetClassID(array)) {
        case mxDOUBLE_CLASS: values[i] = static_cast<const double*>(data)[i]; break;
        case mxSINGLE_CLASS: values[i] = static_cast<const float*>(data)[i]; break;
        case mxINT8_CLASS: values[i] = static_cast<const std::int8_t*>(data)[i]; break;
        case mxUINT8_CLASS: values[i] = static_cast<const std::uint8_t*>(data)[i]; break;
        case mxINT16_CLASS: values[i] = static_cast<const std::int16_t*>(data)[i]; break;
        case mxUINT16_CLASS: values[i] = static_cast<const std::uint16_t*>(data)[i]; break;
        case mxINT32_CLASS: values[i] = static_cast<const std::int32_t*>(data)[i]; break;
        case mxUINT32_CLASS: values[i] = static_cast<const std::uint32_t*>(data)[i]; break;
        case mxINT64_CLASS: values[i] = static_cast<double>(static_cast<const std::int64_t*>(data)[i]); break;
        case mxUINT64_CLASS: values[i] = static_cast<double>(static_cast<const std::uint64_t*>(data)[i]); break;
        case mxLOGICAL_CLASS: values[i] = static_cast<const mxLogical*>(data)[i] ? 1.0 : 0.0; break;
        default: values[i] = 0.0;
        }
    }
    return values;
}

std::vector<Complex> complex_values_of(const mxArray* array)
{
    const std::size_t n = mxGetNumberOfElements(array);
    const bool is_double = mxIsDouble(array);
    std::vector<Complex> values(n);
    const auto at = [&](const void* data, std::size_t i) {
        return is_double ? static_cast<float>(static_cast<const double*>(data)[i]) : static_cast<const float*>(data)[i];
    };
#if MX_HAS_INTERLEAVED_COMPLEX
    const void* data = mxGetData(array);
    const bool interleaved = mxIsComplex(array);
    for (std::size_t i = 0; i < n; ++i) {
        values[i] = interleaved ? Complex(at(data, 2 * i), at(data, 2 * i + 1)) : Complex(at(data, i), 0.0f);
    }
#else
    const void* re = mxGetData(array);
    const void* im = mxIsComplex(array) ? mxGetImagData(array) : nullptr;
    for (std::size_t i = 0; i < n; ++i) {
        values[i] = Complex(at(re, i), im != nullptr ? at(im, i) : 0.0f);
    }
#endif
    return values;
}

std::string class_text(const mxArray* value)
{
    std::string text = mxGetClassName(value);
    if (mxIsNumeric(value) && mxIsComplex(value)) {
        text = "complex " + text;
    }
    std::string sizes;
    for (const std::int64_t n : dimensions_of(value)) {
        sizes += (sizes.empty() ? "" : "x") + std::to_string(n);
    }
    return text + " " + sizes;
}

bool real_numbers(const mxArray* value)
{
    return (mxIsNumeric(value) || mxIsLogical(value)) && !mxIsComplex(value);
}

// The values of a sparse real double array, zeros included, column-major.
std::vector<double> sparse_values_of(const mxArray* array)
{
    const std::size_t rows = mxGetM(array), columns = mxGetN(array);
    std::vector<double> values(rows * columns, 0.0);
    const double* nonzeros = static_cast<const double*>(mxGetData(array));
    const mwIndex* row = mxGetIr(array);
    const mwIndex* start = mxGetJc(array);
    for (std::size_t c = 0; c < columns; ++c) {
        for (mwIndex i = start[c]; i < start[c + 1]; ++i) {
            values[c * rows + row[i]] = nonzeros[i];
        }
    }
    return values;
}

// [] or real numbers, else `id` naming `label`.
std::optional<std::vector<double>> numbers_or_empty(const mxArray* entry, const std::string& label, const char* id)
{
    if (entry == nullptr || (mxIsNumeric(entry) && mxIsEmpty(entry))) {
        return std::nullopt;
    }
    if (!real_numbers(entry)) {
        throw ReconError(id, label + " must be [] or numbers, not a " + class_text(entry) + ".");
    }
    return mxIsSparse(entry) ? sparse_values_of(entry) : reals_of(entry);
}

// A cell entry of 'Ranges' or 'PartialFourier'.
std::optional<std::vector<double>> entry_of(const mxArray* entry, const char* option, std::size_t axis)
{
    const bool range = std::string(option) == "Ranges";
    return numbers_or_empty(entry, "'" + std::string(option) + "' " + "xyz"[axis] + (range ? " range" : " entry"),
                            range ? "homodyne:badRange" : "homodyne:badOption");
}

std::shared_ptr<const Acquisition> acquisition_of(const mxArray* acq)
{
    const mxArray* ranges = mxGetField(acq, 0, "ranges");
    if (mxGetNumberOfElements(acq) != 1 || ranges == nullptr || !mxIsCell(ranges) ||
        mxGetNumberOfElements(ranges) > 3) {
        throw ReconError("homodyne:badOption",
                         "'Acquisition' must be the struct ACQ of read_ismrmrd_kspace (with a field ranges).");
    }
    auto result = std::make_shared<Acquisition>();
    for (std::size_t axis = 0; axis < mxGetNumberOfElements(ranges); ++axis) {
        const std::optional<std::vector<double>> r = entry_of(mxGetCell(ranges, axis), "Ranges", axis);
        if (r && r->size() == 2) {
            result->ranges[axis] = KRange{static_cast<Index>((*r)[0]), static_cast<Index>((*r)[1])};
        } else if (r) {
            throw ReconError("homodyne:badRange", std::string("'Acquisition' ") + "xyz"[axis] +
                                                      " range must be [] or [first last].");
        }
    }
    const mxArray* noise = mxGetField(acq, 0, "noise");
    if (noise != nullptr && (mxIsDouble(noise) || mxIsSingle(noise)) && !mxIsEmpty(noise) &&
        mxGetNumberOfDimensions(noise) == 2) {
        result->noise = complex_values_of(noise);
        result->noise_samples = static_cast<Index>(mxGetM(noise));
        result->noise_coils = static_cast<Index>(mxGetN(noise));
    }
    const mxArray* scale = mxGetField(acq, 0, "noise_variance_scale");
    if (scale != nullptr && real_numbers(scale) && mxGetNumberOfElements(scale) == 1) {
        result->noise_variance_scale = mxGetScalar(scale);
    }
    return result;
}

}  // namespace

OptionValue option_value_of(const mxArray* value, const char* option)
{
    OptionValue result;
    if (mxIsChar(value)) {
        if (mxGetM(value) > 1) {
            throw ReconError("homodyne:badOption", "'" + std::string(option) + "' must be one row of text.");
        }
        char* text = mxArrayToString(value);
        result = OptionValue::of_text(text != nullptr ? text : "");
        mxFree(text);
    } else if (mxIsStruct(value)) {
        result.kind = OptionValue::Kind::acquisition;
        result.acquisition = acquisition_of(value);
    } else if (mxIsCell(value)) {
        result.kind = OptionValue::Kind::list;
        for (std::size_t i = 0; i < mxGetNumberOfElements(value); ++i) {
            result.list.push_back(entry_of(mxGetCell(value, i), option, i));
        }
    } else if (mxIsEmpty(value)) {
        result.kind = OptionValue::Kind::empty;
    } else if (mxIsLogical(value) && mxGetNumberOfElements(value) == 1) {
        result = OptionValue::of_boolean(mxIsLogicalScalarTrue(value));
    } else if (real_numbers(value) && !mxIsSparse(value) && mxGetNumberOfElements(value) == 1) {
        result = OptionValue::of_number(mxGetScalar(value));
    } else if ((mxIsDouble(value) || mxIsSingle(value)) && !mxIsSparse(value)) {
        result.kind = OptionValue::Kind::array;
        result.values = complex_values_of(value);
        for (const std::int64_t n : dimensions_of(value)) {
            result.dims.push_back(static_cast<Index>(n));
        }
    } else {
        result.kind = OptionValue::Kind::text;  // refused by the option as not one of its values
        result.text = class_text(value);
        if (find_option(option) != nullptr && find_option(option)->kind != OptionKind::choice) {
            throw ReconError("homodyne:badOption", "'" + std::string(find_option(option)->name) +
                                                       "' cannot be a " + class_text(value) + ".");
        }
    }
    return result;
}

std::optional<std::vector<double>> range_numbers_of(const mxArray* value, const std::string& label)
{
    return numbers_or_empty(value, label, "homodyne:badRange");
}
