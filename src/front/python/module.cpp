// The compiled part of the Python package homodyne; homodyne/__init__.py is
// the interface users call.

#include <pybind11/pybind11.h>

#include "front/python/file_binding.hpp"
#include "front/python/python_errors.hpp"
#include "front/python/recon_binding.hpp"

PYBIND11_MODULE(_core, module)
{
    translate_recon_errors();
    bind_recon(module);
    bind_files(module);
}
