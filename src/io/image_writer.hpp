#pragma once
// Writes reconstructed images as ISMRMRD images, one per volume, with the
// header fields viewers need: matrix, field of view, position and
// orientation, the volume's counters, image type, index and series. The
// input file's XML header is copied so the output describes the same scan.

#include <complex>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "io/raw_kspace.hpp"
#include "recon/recon_shape.hpp"

// Meta attributes written with every image: names, each with its values as
// text (ISMRMRD's meta container, serialised into the image's attribute
// string).
using ImageMeta = std::vector<std::pair<std::string, std::vector<std::string>>>;

// `images` is in the canonical order of `shape` (x fastest, then y, z,
// coils as image channels, volumes); `shape` must have the spatial size and
// volume count of `scan` (coils may differ: 1 after coil combination). The
// file at `path` is replaced. Failures are ReconError homodyne:badFile.

// Magnitude images (float, ISMRMRD_IMTYPE_MAGNITUDE) of real or complex values.
void write_magnitude_images(const std::string& path, const RawKspace& scan, const ReconShape& shape, const float* images,
                            std::uint16_t series = 1, const ImageMeta& meta = {});
void write_magnitude_images(const std::string& path, const RawKspace& scan, const ReconShape& shape,
                            const std::complex<float>* images, std::uint16_t series = 1, const ImageMeta& meta = {});
// Real images (float, ISMRMRD_IMTYPE_REAL), signs kept.
void write_real_images(const std::string& path, const RawKspace& scan, const ReconShape& shape, const float* images,
                       std::uint16_t series = 1, const ImageMeta& meta = {});
// Complex images (complex float, ISMRMRD_IMTYPE_COMPLEX).
void write_complex_images(const std::string& path, const RawKspace& scan, const ReconShape& shape,
                          const std::complex<float>* images, std::uint16_t series = 1, const ImageMeta& meta = {});

// The name of the image array inside the file's group: "image_<series>".
std::string image_variable(std::uint16_t series);
