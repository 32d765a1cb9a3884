#pragma once
// FFTW wisdom kept in a file between runs of homodyne-recon: POCS measures
// its transforms (FFTW_MEASURE) once per image shape and set of partial axes,
// 1.2 s at 256 x 256 x 64; with the file only the first run
// pays it. Wisdom never makes a run fail: a fault of the file is a warning
// and the plans are measured again.

#include <string>

// Adds the wisdom in `path` to the toolbox's, if the file exists. Returns a
// warning ("" if none).
std::string load_wisdom(const std::string& path);

// Writes the toolbox's wisdom to `path` (under a temporary name, then
// renamed) unless it is the same as the file's. Returns a warning ("" if none).
std::string save_wisdom(const std::string& path);
