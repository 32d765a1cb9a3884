#include "front/python/kspace_array.hpp"

#include <string>

#include "recon/recon_error.hpp"

namespace py = pybind11;

namespace {

KspaceInput::Type type_of(const py::dtype& dtype)
{
    const char kind = dtype.kind();
    const py::ssize_t size = dtype.itemsize();
    if (dtype.attr("isnative").cast<bool>()) {
        if (kind == 'c' && (size == 8 || size == 16)) {
            return size == 8 ? KspaceInput::Type::complex_float : KspaceInput::Type::complex_double;
        }
        if (kind == 'f' && (size == 4 || size == 8)) {
            return size == 4 ? KspaceInput::Type::real_float : KspaceInput::Type::real_double;
        }
    }
    throw py::type_error("kspace must be complex64, complex128, float32 or float64 in native byte order, not " +
                         dtype.attr("name").cast<std::string>() + ".");
}

}  // namespace

KspaceInput kspace_input_of(const py::object& object)
{
    if (!py::isinstance<py::array>(object)) {
        throw py::type_error("kspace must be a numpy array, not " +
                             std::string(py::str(py::type::of(object).attr("__name__"))) + ".");
    }
    const py::array array = py::reinterpret_borrow<py::array>(object);
    KspaceInput input;
    input.type = type_of(array.dtype());
    if (array.ndim() == 0) {
        throw ReconError("homodyne:badInput", "kspace must have at least one dimension (x), not be 0-d.");
    }
    if (!array.attr("flags").attr("aligned").cast<bool>()) {
        throw ReconError("homodyne:badInput", "kspace is not aligned in memory; pass a copy (kspace.copy()).");
    }
    // Real types count their elements in their own size too.
    const py::ssize_t element = array.itemsize();
    for (py::ssize_t d = 0; d < array.ndim(); ++d) {
        input.dims.push_back(static_cast<Index>(array.shape(d)));
        if (array.strides(d) % element != 0) {
            throw ReconError("homodyne:badInput", "kspace's strides are not whole elements; pass a copy.");
        }
        input.strides.push_back(static_cast<Index>(array.strides(d) / element));
    }
    input.data = array.data();
    return input;
}

bool double_precision(const py::array& array)
{
    const char kind = array.dtype().kind();
    return (kind == 'c' && array.itemsize() == 16) || (kind == 'f' && array.itemsize() == 8);
}
