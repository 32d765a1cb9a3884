// Test helper: writes the values of every image of an ISMRMRD image file
// (the array image_1, as homodyne-recon writes it) one after the other to a
// raw file, float32, complex values as interleaved pairs, for the Octave
// tests and benchmarks; and to standard output the meta attributes of the
// first image, a line each: the name, then its values, separated by tabs.
//
//   dump_images IMAGES.h5 OUT.raw

#include <ismrmrd/dataset.h>
#include <ismrmrd/meta.h>

#include <complex>
#include <fstream>
#include <iostream>

namespace {

template <typename T>
void dump(ISMRMRD::Dataset& file, std::size_t images, std::ofstream& out)
{
    for (std::size_t i = 0; i < images; ++i) {
        ISMRMRD::Image<T> image;
        file.readImage("image_1", static_cast<uint32_t>(i), image);
        out.write(reinterpret_cast<const char*>(image.getDataPtr()), static_cast<std::streamsize>(image.getDataSize()));
        if (i == 0 && image.getAttributeStringLength() > 0) {
            ISMRMRD::MetaContainer meta;
            ISMRMRD::deserialize(image.getAttributeString(), meta);
            for (const auto& [name, values] : meta) {
                std::cout << name;
                for (const ISMRMRD::MetaValue& value : values) {
                    std::cout << '\t' << value.as_str();
                }
                std::cout << '\n';
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: dump_images IMAGES.h5 OUT.raw\n";
        return 1;
    }
    try {
        ISMRMRD::Dataset file(argv[1], "dataset", false);
        const std::size_t images = file.getNumberOfImages("image_1");
        ISMRMRD::Image<float> probe;
        bool complex = false;
        try {
            file.readImage("image_1", 0, probe);
        } catch (const std::exception&) {
            complex = true;
        }
        std::ofstream out(argv[2], std::ios::binary);
        if (complex) {
            dump<std::complex<float>>(file, images, out);
        } else {
            dump<float>(file, images, out);
        }
        if (!out) {
            throw std::runtime_error(std::string(argv[2]) + " cannot be written");
        }
    } catch (const std::exception& error) {
        std::cerr << "dump_images: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
