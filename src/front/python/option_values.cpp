#include "front/python/option_values.hpp"

#include <string>

#include <pybind11/complex.h>
#include <pybind11/numpy.h>

#include "recon/recon_error.hpp"

namespace py = pybind11;

namespace {

std::string type_name(const py::handle& value)
{
    return py::str(py::type::of(value).attr("__name__")).cast<std::string>();
}

bool is_boolean(const py::handle& value)
{
    return py::isinstance<py::bool_>(value) || type_name(value) == "bool_";
}

// Python and numpy real numbers, 0-d arrays included.
bool is_real_number(const py::handle& value)
{
    if (py::isinstance<py::array>(value)) {
        const py::array array = py::reinterpret_borrow<py::array>(value);
        return array.ndim() == 0 && (array.dtype().kind() == 'f' || array.dtype().kind() == 'i' ||
                                     array.dtype().kind() == 'u');
    }
    const py::module_ numpy = py::module_::import("numpy");
    return !is_boolean(value) && (PyLong_Check(value.ptr()) || PyFloat_Check(value.ptr()) ||
                                  py::isinstance(value, numpy.attr("integer")) ||
                                  py::isinstance(value, numpy.attr("floating")));
}

// Complex values column-major with their sizes (a matrix or a noise scan).
OptionValue array_value(const py::handle& value, const std::string& label)
{
    using Array = py::array_t<std::complex<float>, py::array::f_style | py::array::forcecast>;
    const Array array = Array::ensure(value);
    if (!array) {
        PyErr_Clear();
        throw ReconError("homodyne:badInput", label + " must be an array of numbers.");
    }
    OptionValue result;
    result.kind = OptionValue::Kind::array;
    result.values.assign(array.data(), array.data() + array.size());
    for (py::ssize_t d = 0; d < array.ndim(); ++d) {
        result.dims.push_back(static_cast<Index>(array.shape(d)));
    }
    return result;
}

// An entry of 'Ranges' or 'PartialFourier' (ranges' own message words for
// the former): None or an empty sequence (Octave's []), a number, or a few
// numbers.
std::optional<std::vector<double>> entry_of(const py::handle& entry, const std::string& option, std::size_t axis)
{
    if (entry.is_none()) {
        return std::nullopt;
    }
    if (is_real_number(entry)) {
        return std::vector<double>{entry.cast<double>()};
    }
    const bool ranges = option == "Ranges";
    if (py::isinstance<py::sequence>(entry) && !py::isinstance<py::str>(entry)) {
        std::vector<double> numbers;
        for (const py::handle item : entry) {
            if (!is_real_number(item)) {
                numbers.clear();
                break;
            }
            numbers.push_back(item.cast<double>());
        }
        if (py::len(entry) == 0) {
            return std::nullopt;
        }
        if (!numbers.empty()) {
            return numbers;
        }
    }
    const std::string what = ranges ? " range must be None or (first, last)" : " entry must be None or a number";
    throw ReconError(ranges ? "homodyne:badRange" : "homodyne:badOption",
                     "'" + option + "' " + "xyz"[axis] + what + ", not " + std::string(py::repr(entry)) + ".");
}

OptionValue list_value(const py::handle& value, const std::string& option)
{
    OptionValue result;
    result.kind = OptionValue::Kind::list;
    std::size_t axis = 0;
    for (const py::handle entry : value) {
        result.list.push_back(entry_of(entry, option, std::min<std::size_t>(axis++, 2)));
    }
    return result;
}

OptionValue value_of(const py::handle& value, const OptionRow& row)
{
    if (value.is_none()) {
        return OptionValue{};
    }
    if (is_boolean(value)) {
        return OptionValue::of_boolean(value.cast<bool>());
    }
    if (is_real_number(value)) {
        return OptionValue::of_number(value.cast<double>());
    }
    if (py::isinstance<py::str>(value)) {
        return OptionValue::of_text(value.cast<std::string>());
    }
    if (row.kind == OptionKind::acquisition && py::isinstance<py::dict>(value)) {
        OptionValue result;
        result.kind = OptionValue::Kind::acquisition;
        result.acquisition = acquisition_of(value);
        return result;
    }
    if (row.kind == OptionKind::matrix && (py::isinstance<py::array>(value) || py::isinstance<py::sequence>(value) ||
                                           PyComplex_Check(value.ptr()))) {
        return array_value(value, "'" + std::string(row.name) + "'");
    }
    if ((row.kind == OptionKind::ranges || row.kind == OptionKind::fractions) &&
        (py::isinstance<py::list>(value) || py::isinstance<py::tuple>(value))) {
        return list_value(value, row.name);
    }
    throw ReconError("homodyne:badOption", "'" + std::string(row.name) + "' cannot be a " + type_name(value) + ".");
}

}  // namespace

std::shared_ptr<const Acquisition> acquisition_of(const py::handle& acq)
{
    const py::dict dict = py::reinterpret_borrow<py::dict>(acq);
    if (!dict.contains("ranges") || !(py::isinstance<py::list>(dict["ranges"]) || py::isinstance<py::tuple>(dict["ranges"])) ||
        py::len(dict["ranges"]) > 3) {
        throw ReconError("homodyne:badOption", "'Acquisition' must be the dict of read_ismrmrd (with 'ranges').");
    }
    auto result = std::make_shared<Acquisition>();
    const OptionValue ranges = list_value(dict["ranges"], "Ranges");
    for (std::size_t axis = 0; axis < ranges.list.size(); ++axis) {
        const auto& r = ranges.list[axis];
        if (r && r->size() != 2) {
            throw ReconError("homodyne:badRange", std::string("'Acquisition' ") + "xyz"[axis] +
                                                      " range must be None or (first, last).");
        }
        if (r) {
            result->ranges[axis] = KRange{static_cast<Index>((*r)[0]), static_cast<Index>((*r)[1])};
        }
    }
    if (dict.contains("noise") && !dict["noise"].is_none()) {
        const OptionValue noise = array_value(dict["noise"], "'Acquisition' noise");
        if (noise.dims.size() != 2) {
            throw ReconError("homodyne:badOption", "'Acquisition' noise must be samples x coils.");
        }
        result->noise = noise.values;
        result->noise_samples = noise.dims[0];
        result->noise_coils = noise.values.empty() ? 0 : noise.dims[1];
    }
    if (dict.contains("noise_variance_scale")) {
        if (!is_real_number(dict["noise_variance_scale"])) {
            throw ReconError("homodyne:badOption", "'Acquisition' noise_variance_scale must be a number.");
        }
        result->noise_variance_scale = dict["noise_variance_scale"].cast<double>();
    }
    return result;
}

ReconSettings settings_of(const py::dict& options)
{
    ReconSettings settings;
    for (const auto& item : options) {
        const std::string name = item.first.cast<std::string>();
        const OptionRow* row = find_option(name);
        if (row == nullptr) {
            set_option(settings, name, OptionValue{});  // names the closest option
        }
        set_option(settings, name, value_of(item.second, *row));
    }
    return settings;
}
