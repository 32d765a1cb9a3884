#include "io/raw_file_check.hpp"

#include <hdf5.h>
#include <ismrmrd/ismrmrd.h>

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
