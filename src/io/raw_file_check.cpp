#include "io/raw_file_check.hpp"

#include <hdf5.h>
#include <ismrmrd/ismrmrd.h>

#include <unistd.h>

#include <complex>
#include <cstdio>
#include <filesystem>

#include "recon/recon_error.hpp"

namespace {

void ignore_ismrmrd_error(const char*, int, const char*, int, const char*) {}

// True when `name` exists below the open file (each component checked in turn,
// since H5Lexists needs the parents to exist).
bool has_link(hid_t file, const std::string& name)
{
    std::string::size_type end = 0;
    while (end != std::string::npos) {
        end = name.find('/', end + 1);
        if (H5Lexists(file, name.substr(0, end).c_str(), H5P_DEFAULT) <= 0) {
            return false;
        }
    }
    return true;
}

[[noreturn]] void fail(const std::string& path, const std::string& what)
{
    throw ReconError("homodyne:badFile", file_fault(path, what));
}

std::string gigabytes(double bytes)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f GB", bytes / 1e9);
    return text;
}

}  // namespace

std::string file_fault(const std::string& path, const std::string& what)
{
    return path + ": " + what;
}

QuietHdf5::QuietHdf5()
{
    H5E_auto2_t function = nullptr;
    H5Eget_auto2(H5E_DEFAULT, &function, &saved_data_);
    saved_function_ = reinterpret_cast<void*>(function);
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    ISMRMRD::ismrmrd_set_error_handler(ignore_ismrmrd_error);
}

QuietHdf5::~QuietHdf5()
{
    H5Eset_auto2(H5E_DEFAULT, reinterpret_cast<H5E_auto2_t>(saved_function_), saved_data_);
}

void check_raw_file(const std::string& path, const std::string& group)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        throw ReconError("homodyne:badFile", file_fault(path, "no such file"));
    }
    QuietHdf5 quiet;
    if (H5Fis_hdf5(path.c_str()) <= 0) {
        throw ReconError("homodyne:badFile", file_fault(path, "not an HDF5 file"));
    }
    const hid_t file = H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
    if (file < 0) {
        throw ReconError("homodyne:badFile", file_fault(path, "the HDF5 file cannot be opened (truncated or damaged)"));
    }
    const bool complete = has_link(file, "/" + group + "/xml") && has_link(file, "/" + group + "/data");
    H5Fclose(file);
    if (!complete) {
        throw ReconError("homodyne:badFile",
                         file_fault(path, "no ISMRMRD dataset (the group /" + group + " with its xml header and data)"));
    }
}

void check_readout_against_header(const std::string& path, Index number, const ISMRMRD::Encoding& encoding,
                                  const ISMRMRD::ISMRMRD_AcquisitionHeader& head)
{
    const ISMRMRD::EncodingLimits& limits = encoding.encodingLimits;
    const ISMRMRD::ISMRMRD_EncodingCounters& idx = head.idx;
    const struct {
        const char* name;
        std::uint16_t value;
        const ISMRMRD::Optional<ISMRMRD::Limit>& limit;
    } counters[] = {
        {"kspace_encode_step_1", idx.kspace_encode_step_1, limits.kspace_encoding_step_1},
        {"kspace_encode_step_2", idx.kspace_encode_step_2, limits.kspace_encoding_step_2},
        {"slice", idx.slice, limits.slice},
        {"contrast", idx.contrast, limits.contrast},
        {"phase", idx.phase, limits.phase},
        {"repetition", idx.repetition, limits.repetition},
        {"set", idx.set, limits.set},
        {"average", idx.average, limits.average},
    };
    const std::string readout = "readout " + std::to_string(number);
    for (const auto& c : counters) {
        if (c.limit && (c.value < c.limit->minimum || c.value > c.limit->maximum)) {
            fail(path, readout + " has " + c.name + " = " + std::to_string(c.value) +
                           ", outside the header's encoding limits " + std::to_string(c.limit->minimum) + " .. " +
                           std::to_string(c.limit->maximum));
        }
    }
    if (Index{head.discard_pre} + Index{head.discard_post} >= Index{head.number_of_samples}) {
        fail(path, readout + " keeps no sample: discard_pre " + std::to_string(head.discard_pre) + " and discard_post " +
                       std::to_string(head.discard_post) + " of its " + std::to_string(head.number_of_samples) +
                       " samples");
    }
}

void check_readout_length(const std::string& path, Index samples, Index centre_sample, Index encoded_x, Index recon_x)
{
    const Index offset = encoded_x / 2 - centre_sample;  // encoded index of sample 0
    const bool fits = offset >= 0 && offset + samples <= encoded_x;
    if (fits && (offset == 0 || offset + samples == encoded_x)) {
        return;
    }
    fail(path, "encodedSpace matrixSize x is " + std::to_string(encoded_x) + " (reconSpace " + std::to_string(recon_x) +
                   ") but the readouts hold " + std::to_string(samples) + " samples centred at sample " +
                   std::to_string(centre_sample) +
                   (fits ? ", which reach neither end of it (a partial echo leaves out one end only)"
                         : ", which do not fit it"));
}

void check_phase_limits(const std::string& path, const char* axis, Index n, const ISMRMRD::Optional<ISMRMRD::Limit>& limit)
{
    if (!limit) {
        return;
    }
    const Index first = Index{limit->minimum} - limit->center + n / 2;
    const Index last = Index{limit->maximum} - limit->center + n / 2;
    const bool fits = first >= 0 && last < n;
    if (fits && 2 * (last - first + 1) >= n) {
        return;
    }
    fail(path, std::string("encodedSpace matrixSize ") + axis + " is " + std::to_string(n) +
                   " but encodingLimits kspace_encoding_step_" + (axis[0] == 'y' ? "1" : "2") + " " +
                   std::to_string(limit->minimum) + " .. " + std::to_string(limit->maximum) + " (centre " +
                   std::to_string(limit->center) + ")" +
                   (fits ? " cover less than half of it" : " do not fit it"));
}

void check_kspace_fits_memory(const std::string& path, double samples, const std::string& what)
{
    const double physical = static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
    const double bytes = samples * sizeof(std::complex<float>);
    if (bytes > physical / 2) {
        fail(path, what + " need " + gigabytes(bytes) + " of k-space, more than half of this machine's " +
                       gigabytes(physical) + " of memory (the reconstruction needs a second copy)");
    }
}
