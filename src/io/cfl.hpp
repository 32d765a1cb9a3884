#pragma once
// Complex arrays as NAME.hdr + NAME.cfl, the pair that research toolkits
// exchange: the header is text, a line "# Dimensions" followed by the sizes
// (first = fastest); the data file holds the samples column-major as
// little-endian float pairs (re, im), nothing else.

#include <string>
#include <vector>

#include "recon/recon_shape.hpp"

struct CflArray {
    std::vector<Index> dims;
    std::vector<Complex> values;
};

// Reads NAME.hdr and NAME.cfl (`base` is NAME). Throws homodyne:badFile,
// naming the file, for a missing or unreadable file, a header without sizes
// or with sizes that are not positive whole numbers, more samples than 2^40,
// and a data file whose length is not what the header declares (checked
// before anything is allocated).
CflArray read_cfl(const std::string& base);

// Writes NAME.hdr and NAME.cfl under temporary names and renames them into
// place once both are complete, so a failure leaves no partial pair behind
// (homodyne:badFile naming the file). The sizes' product is the count of
// `values`.
void write_cfl(const std::string& base, const std::vector<Index>& dims, const Complex* values);
