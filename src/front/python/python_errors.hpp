#pragma once
// The core's errors and warnings in Python's terms: ReconError becomes
// homodyne.Error (a ValueError with .identifier), its option names spelt as
// Python keywords (partial_fourier, not 'PartialFourier').

#include <string>

#include <pybind11/pybind11.h>

#include "recon/recon_warning.hpp"

std::string in_python_words(const std::string& message);

// Registers the translation of ReconError for every function of the module.
void translate_recon_errors();

// (identifier, message) pairs for the Python layer to pass to warnings.warn.
pybind11::list warning_list(const ReconWarnings& warnings);
