#pragma once
// Checks of a raw-data file before anything is built from it: that the path
// names an ISMRMRD file (the library prints HDF5's whole error stack for a
// missing or foreign file; checking first, with that printing silenced, lets
// the user see one line that names the file and the fault), that each
// readout agrees with the header, and that the k-space fits the machine. A
// file that contradicts itself is refused before its sizes are trusted for
// an allocation or a transform plan.

#include <ismrmrd/ismrmrd.h>
#include <ismrmrd/xml.h>

#include <string>

#include "recon/recon_shape.hpp"

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

// Throws homodyne:badFile when image readout number `number` has a counter
// outside the header's encoding limits (each limit checked where the header
// declares it), or keeps no sample after its discard_pre and discard_post.
void check_readout_against_header(const std::string& path, Index number, const ISMRMRD::Encoding& encoding,
                                  const ISMRMRD::ISMRMRD_AcquisitionHeader& head);

// Throws homodyne:badFile unless a readout of `samples` samples with its
// echo at `centre_sample` reaches an end of the encoded readout axis of
// `encoded_x` samples (a partial echo leaves out one end, never both): a
// header whose matrix is wider than its readouts is refused before a
// readout axis or transform of the header's size is made.
void check_readout_length(const std::string& path, Index samples, Index centre_sample, Index encoded_x,
                          Index recon_x);

// The same for the encoding limits of a phase-encoding axis (`axis` "y" or
// "z", `limit` its kspace_encoding_step_1 or _2), where the header declares
// them: the block they declare, placed with its centre at n/2, must fit the
// encoded matrix of `n` lines and cover at least half of it (partial Fourier
// leaves out less; a matrix far larger than its lines is a header that lies,
// and would cost a reconstruction of its size).
void check_phase_limits(const std::string& path, const char* axis, Index n, const ISMRMRD::Optional<ISMRMRD::Limit>& limit);

// Throws homodyne:badFile when k-space of `samples` complex samples (`what`
// says whose) would take more than half the machine's physical memory: the
// reconstruction needs at least a second copy, so a larger one cannot run
// and comes from a header or counters that lie.
void check_kspace_fits_memory(const std::string& path, double samples, const std::string& what);
