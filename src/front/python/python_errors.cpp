#include "front/python/python_errors.hpp"

#include "recon/option_table.hpp"
#include "recon/recon_error.hpp"

namespace py = pybind11;

namespace {

// The list of options that an unknown name's message ends with, in the
// table's spelling and in Python's.
std::string option_list(std::string (*spelling)(const char*))
{
    std::string list;
    for (const OptionRow& row : option_table()) {
        list += (list.empty() ? "" : ", ") + spelling(row.name);
    }
    return list;
}

std::string as_written(const char* name) { return name; }

}  // namespace

std::string in_python_words(const std::string& message)
{
    std::string text = in_option_words(message, snake_case);
    // The core names the data as Octave's help does.
    for (std::string::size_type at = text.find("KSPACE"); at != std::string::npos; at = text.find("KSPACE", at)) {
        text.replace(at, 6, "kspace");
    }
    const std::string table = option_list(as_written);
    const std::string::size_type at = text.find(table);
    if (at != std::string::npos) {
        text.replace(at, table.size(), option_list(snake_case));
    }
    return text;
}

void translate_recon_errors()
{
    py::register_exception_translator([](std::exception_ptr error) {
        try {
            std::rethrow_exception(error);
        } catch (const ReconError& e) {
            py::object type = py::module_::import("homodyne._errors").attr("Error");
            py::object value = type(in_python_words(e.what()), e.id);
            PyErr_SetObject(type.ptr(), value.ptr());
        }
    });
}

py::list warning_list(const ReconWarnings& warnings)
{
    py::list list;
    for (const ReconWarning& warning : warnings) {
        list.append(py::make_tuple(warning.id, in_python_words(warning.message)));
    }
    return list;
}
