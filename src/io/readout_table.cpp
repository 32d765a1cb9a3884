#include "io/readout_table.hpp"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "io/raw_file_check.hpp"
#include "recon/recon_error.hpp"

namespace {

using Header = ISMRMRD::ISMRMRD_AcquisitionHeader;
using Counters = ISMRMRD::ISMRMRD_EncodingCounters;

// Readouts read per HDF5 call: large enough to amortise the call, small
// enough that the block's samples stay in cache-sized memory.
constexpr Index kBlock = 256;

// One element of the table as this reader holds it: the header laid out as
// the library's struct, and the samples as a variable-length float array.
struct Row {
    Header head;
    hvl_t data;
};

hid_t array_type(hid_t base, hsize_t n) { return H5Tarray_create2(base, 1, &n); }

void insert(hid_t compound, const char* name, std::size_t offset, hid_t type, bool owned)
{
    H5Tinsert(compound, name, offset, type);
    if (owned) {
        H5Tclose(type);
    }
}

hid_t counters_type()
{
    const hid_t t = H5Tcreate(H5T_COMPOUND, sizeof(Counters));
    insert(t, "kspace_encode_step_1", HOFFSET(Counters, kspace_encode_step_1), H5T_NATIVE_UINT16, false);
    insert(t, "kspace_encode_step_2", HOFFSET(Counters, kspace_encode_step_2), H5T_NATIVE_UINT16, false);
    insert(t, "average", HOFFSET(Counters, average), H5T_NATIVE_UINT16, false);
    insert(t, "slice", HOFFSET(Counters, slice), H5T_NATIVE_UINT16, false);
    insert(t, "contrast", HOFFSET(Counters, contrast), H5T_NATIVE_UINT16, false);
    insert(t, "phase", HOFFSET(Counters, phase), H5T_NATIVE_UINT16, false);
    insert(t, "repetition", HOFFSET(Counters, repetition), H5T_NATIVE_UINT16, false);
    insert(t, "set", HOFFSET(Counters, set), H5T_NATIVE_UINT16, false);
    insert(t, "segment", HOFFSET(Counters, segment), H5T_NATIVE_UINT16, false);
    return t;
}

// The header members the reader uses; the rest are left at zero.
hid_t header_type()
{
    const hid_t t = H5Tcreate(H5T_COMPOUND, sizeof(Header));
    insert(t, "flags", HOFFSET(Header, flags), H5T_NATIVE_UINT64, false);
    insert(t, "measurement_uid", HOFFSET(Header, measurement_uid), H5T_NATIVE_UINT32, false);
    insert(t, "acquisition_time_stamp", HOFFSET(Header, acquisition_time_stamp), H5T_NATIVE_UINT32, false);
    insert(t, "number_of_samples", HOFFSET(Header, number_of_samples), H5T_NATIVE_UINT16, false);
    insert(t, "active_channels", HOFFSET(Header, active_channels), H5T_NATIVE_UINT16, false);
    insert(t, "discard_pre", HOFFSET(Header, discard_pre), H5T_NATIVE_UINT16, false);
    insert(t, "discard_post", HOFFSET(Header, discard_post), H5T_NATIVE_UINT16, false);
    insert(t, "center_sample", HOFFSET(Header, center_sample), H5T_NATIVE_UINT16, false);
    insert(t, "encoding_space_ref", HOFFSET(Header, encoding_space_ref), H5T_NATIVE_UINT16, false);
    insert(t, "sample_time_us", HOFFSET(Header, sample_time_us), H5T_NATIVE_FLOAT, false);
    insert(t, "position", HOFFSET(Header, position), array_type(H5T_NATIVE_FLOAT, 3), true);
    insert(t, "read_dir", HOFFSET(Header, read_dir), array_type(H5T_NATIVE_FLOAT, 3), true);
    insert(t, "phase_dir", HOFFSET(Header, phase_dir), array_type(H5T_NATIVE_FLOAT, 3), true);
    insert(t, "slice_dir", HOFFSET(Header, slice_dir), array_type(H5T_NATIVE_FLOAT, 3), true);
    insert(t, "patient_table_position", HOFFSET(Header, patient_table_position), array_type(H5T_NATIVE_FLOAT, 3), true);
    insert(t, "idx", HOFFSET(Header, idx), counters_type(), true);
    return t;
}

hid_t row_type()
{
    const hid_t t = H5Tcreate(H5T_COMPOUND, sizeof(Row));
    insert(t, "head", HOFFSET(Row, head), header_type(), true);
    insert(t, "data", HOFFSET(Row, data), H5Tvlen_create(H5T_NATIVE_FLOAT), true);
    return t;
}

[[noreturn]] void fail(const std::string& path, const std::string& what)
{
    throw ReconError("homodyne:badFile", file_fault(path, what));
}

}  // namespace

ReadoutTable::ReadoutTable(const std::string& path, const std::string& group) : path_(path)
{
    QuietHdf5 quiet;
    file_ = H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
    table_ = file_ < 0 ? -1 : H5Dopen2(file_, ("/" + group + "/data").c_str(), H5P_DEFAULT);
    const hid_t space = table_ < 0 ? -1 : H5Dget_space(table_);
    hsize_t count = 0;
    const bool one_dimensional = space >= 0 && H5Sget_simple_extent_ndims(space) == 1 &&
                                 H5Sget_simple_extent_dims(space, &count, nullptr) == 1;
    if (space >= 0) {
        H5Sclose(space);
    }
    if (!one_dimensional) {
        release();
        fail(path, "the ISMRMRD readout table cannot be read (truncated or damaged)");
    }
    count_ = static_cast<Index>(count);
    type_ = row_type();
}

ReadoutTable::~ReadoutTable() { release(); }

void ReadoutTable::release()
{
    if (type_ >= 0) H5Tclose(type_);
    if (table_ >= 0) H5Dclose(table_);
    if (file_ >= 0) H5Fclose(file_);
    type_ = table_ = file_ = -1;
}

void ReadoutTable::for_each(const Visitor& visit) const
{
    QuietHdf5 quiet;
    std::vector<Row> rows(kBlock);
    for (Index start = 0; start < count_; start += kBlock) {
        const hsize_t first = static_cast<hsize_t>(start);
        const hsize_t n = static_cast<hsize_t>(std::min(kBlock, count_ - start));
        const hid_t file_space = H5Dget_space(table_);
        const hid_t memory_space = H5Screate_simple(1, &n, nullptr);
        H5Sselect_hyperslab(file_space, H5S_SELECT_SET, &first, nullptr, &n, nullptr);
        const herr_t status = H5Dread(table_, type_, memory_space, file_space, H5P_DEFAULT, rows.data());
        H5Sclose(file_space);
        if (status < 0) {
            H5Sclose(memory_space);
            fail(path_, "readouts " + std::to_string(start) + " to " + std::to_string(start + static_cast<Index>(n) - 1) +
                            " cannot be read (truncated or damaged)");
        }
        // The samples are released by HDF5 whether or not a readout is refused.
        struct Release {
            hid_t type, space;
            Row* rows;
            ~Release()
            {
                H5Dvlen_reclaim(type, space, H5P_DEFAULT, rows);
                H5Sclose(space);
            }
        } release{type_, memory_space, rows.data()};
        for (hsize_t r = 0; r < n; ++r) {
            const Header& head = rows[r].head;
            const std::size_t expected = std::size_t{2} * head.number_of_samples * head.active_channels;
            if (rows[r].data.len != expected) {
                fail(path_, "readout " + std::to_string(start + static_cast<Index>(r)) + " stores " +
                                std::to_string(rows[r].data.len / 2) + " samples, its header says " +
                                std::to_string(head.number_of_samples) + " x " + std::to_string(head.active_channels) +
                                " channels");
            }
            visit(head, static_cast<const std::complex<float>*>(rows[r].data.p));
        }
    }
}
