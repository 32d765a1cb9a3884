#pragma once
// Keyword arguments as the core's settings: each value turned into an
// OptionValue by its Python type and handed to the one option table, which
// checks it and knows every name.

#include <memory>

#include <pybind11/pybind11.h>

#include "recon/option_table.hpp"

ReconSettings settings_of(const pybind11::dict& options);

// The dict of read_ismrmrd, as the core's acquisition.
std::shared_ptr<const Acquisition> acquisition_of(const pybind11::handle& acq);
