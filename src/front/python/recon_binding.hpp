#pragma once
// recon() and Plan: a numpy k-space and keyword options through the core's
// prepare/plan/execute, the GIL released while the core works.

#include <pybind11/pybind11.h>

void bind_recon(pybind11::module_& module);
