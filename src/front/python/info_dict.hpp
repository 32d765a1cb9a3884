#pragma once
// The core's report as Python values: records as dicts, lists as lists, text
// as str, flags as bool, a single number as float, other numbers as float64
// arrays of their sizes.

#include <pybind11/pybind11.h>

#include "recon/info_value.hpp"

pybind11::object python_value_of(const InfoValue& value);
