#pragma once
// .cfl/.hdr complex arrays: a text header of dimensions, float pairs column-major.
#include <string>
#include <vector>
#include "recon/recon_shape.hpp"
struct CflArray { std::vector<Index> dims; std::vector<Complex> values; };
CflArray read_cfl(const std::string& name);
void write_cfl(const std::string& name, const std::vector<Index>& dims, const Complex* values);
