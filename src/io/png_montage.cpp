#include "io/png_montage.hpp"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "io/raw_file_check.hpp"
#include "recon/recon_error.hpp"

namespace {

// The grey levels of the montage, row by row.
std::vector<png_byte> montage_pixels(const float* images, const ReconShape& shape, Index columns, Index rows)
{
    const Index nx = shape.n[0];
    const Index ny = shape.n[1];
    const Index tiles = shape.samples() / (nx * ny);
    float largest = 0.0f;
    for (Index i = 0; i < shape.samples(); ++i) {
        largest = std::max(largest, std::fabs(images[i]));
    }
    const float scale = largest > 0.0f ? 255.0f / largest : 0.0f;
    std::vector<png_byte> pixels(columns * nx * rows * ny, 0);
    for (Index t = 0; t < tiles; ++t) {
        const Index left = (t % columns) * nx;
        const Index top = (t / columns) * ny;
        for (Index y = 0; y < ny; ++y) {
            for (Index x = 0; x < nx; ++x) {
                const float value = std::fabs(images[(t * ny + y) * nx + x]) * scale;
                pixels[(top + y) * columns * nx + left + x] = static_cast<png_byte>(std::lround(value));
            }
        }
    }
    return pixels;
}

}  // namespace

void write_png_montage(const std::string& path, const float* images, const ReconShape& shape)
{
    const Index tiles = shape.samples() / (shape.n[0] * shape.n[1]);
    const Index columns = static_cast<Index>(std::ceil(std::sqrt(static_cast<double>(tiles))));
    const Index rows = (tiles + columns - 1) / columns;
    const std::vector<png_byte> pixels = montage_pixels(images, shape, columns, rows);
    const Index width = columns * shape.n[0];
    const Index height = rows * shape.n[1];

    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_GRAY;
    if (png_image_write_to_file(&image, path.c_str(), 0, pixels.data(), static_cast<png_int_32>(width), nullptr) == 0) {
        throw ReconError("homodyne:badFile", file_fault(path, std::string("the PNG cannot be written: ") + image.message));
    }
}
