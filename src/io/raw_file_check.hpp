#pragma once
// Checks that a path names an ISMRMRD raw-data file before the library opens
// it. The library prints HDF5's whole error stack for a missing or foreign
// file; checking first, with that printing silenced, lets the user see one
// line that names the file and the fault.

#include <string>

// Throws ReconError homodyne:badFile unless `path` is an existing HDF5 file
// whose group `group` holds the ISMRMRD header ("xml") and readouts ("data").
void check_raw_file(const std::string& path, const std::string& group);

// Silences the printing of HDF5 and ISMRMRD errors for the life of the object
// (HDF5's automatic stack print is restored afterwards; ISMRMRD's printing
// stays off, since the library offers no way to read its handler back).
class QuietHdf5 {
public:
    QuietHdf5();
    ~QuietHdf5();
    QuietHdf5(const QuietHdf5&) = delete;
    QuietHdf5& operator=(const QuietHdf5&) = delete;

private:
    void* saved_function_ = nullptr;
    void* saved_data_ = nullptr;
};

// The message of a fault of `path`: "<path>: <what>".
std::string file_fault(const std::string& path, const std::string& what);
