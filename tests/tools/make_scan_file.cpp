// Test helper: writes an ISMRMRD raw-data file from a k-space given as a raw
// file of interleaved complex float32 (centred, x fastest), or from the
// k-space of another ISMRMRD file, keeping only the readouts inside the given
// ranges.
//
//   make_scan_file OUT.h5 --kspace FILE X Y Z COILS VOLUMES [options]
//   make_scan_file OUT.h5 --from IN.h5 [options]
// options: --keep-x A B, --keep-y A B, --keep-z A B (k coordinates),
//   --oversampling N, --noise READOUTS, --centre-shift-y D, --declare-full-y,
//   --drop-y K

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

#include "io/raw_kspace.hpp"
#include "recon/recon_error.hpp"
#include "scan_file_writer.hpp"

namespace {

Index number(char** argv, int& a, int argc)
{
    if (++a >= argc) {
        throw std::runtime_error("an option lacks its value");
    }
    return std::stol(argv[a]);
}

SyntheticScan scan_from_raw(const std::string& file, char** argv, int& a, int argc)
{
    SyntheticScan scan;
    scan.shape.n = {number(argv, a, argc), number(argv, a, argc), number(argv, a, argc)};
    scan.shape.coils = number(argv, a, argc);
    scan.shape.volumes = number(argv, a, argc);
    scan.kspace.resize(scan.shape.samples());
    std::ifstream in(file, std::ios::binary);
    in.read(reinterpret_cast<char*>(scan.kspace.data()), static_cast<std::streamsize>(scan.kspace.size() * sizeof(scan.kspace[0])));
    if (!in) {
        throw std::runtime_error(file + " holds fewer samples than the sizes say");
    }
    return scan;
}

SyntheticScan scan_from_file(const std::string& file)
{
    RawReadOptions keep_oversampling;
    keep_oversampling.remove_oversampling = false;
    RawKspace raw = read_raw_kspace(file, keep_oversampling);
    SyntheticScan scan;
    scan.shape = raw.shape;
    scan.kspace = std::move(raw.kspace);
    return scan;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        if (argc < 4) {
            throw std::runtime_error("usage: make_scan_file OUT.h5 (--kspace FILE X Y Z COILS VOLUMES | --from IN.h5) [options]");
        }
        int a = 2;
        const std::string source = argv[a++];
        const std::string input = argv[a];
        SyntheticScan scan = source == "--from" ? scan_from_file(input) : scan_from_raw(input, argv, a, argc);
        for (++a; a < argc; ++a) {
            const std::string option = argv[a];
            if (option.rfind("--keep-", 0) == 0 && option.size() == 8 && option[7] >= 'x' && option[7] <= 'z') {
                const Index first = number(argv, a, argc);
                scan.keep[option[7] - 'x'] = KRange{first, number(argv, a, argc)};
            } else if (option == "--oversampling") {
                scan.oversampling = number(argv, a, argc);
            } else if (option == "--noise") {
                scan.noise_readouts = number(argv, a, argc);
            } else if (option == "--centre-shift-y") {
                scan.declared_centre_shift_y = number(argv, a, argc);
            } else if (option == "--declare-full-y") {
                scan.declare_full_y = true;
            } else if (option == "--drop-y") {
                scan.dropped_ky.push_back(number(argv, a, argc));
            } else {
                throw std::runtime_error("unknown option " + option);
            }
        }
        write_scan_file(argv[1], scan);
    } catch (const std::exception& error) {
        std::cerr << "make_scan_file: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
