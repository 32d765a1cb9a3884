// The MEX entry point ismrmrd_mex: [kspace, acq] = ismrmrd_mex(file, remove_oversampling).
// Reads an ISMRMRD raw-data file with the C++ reader and returns new arrays;
// read_ismrmrd_kspace.m is its documented front end.
//
// No C++ exception may leave mexFunction (Octave aborts the session): every
// failure is caught, the C++ objects of the call are released, and only then
// is the host error raised with the failure's identifier.

#include <algorithm>
#include <string>
#include <vector>

#include "front/mex/error_barrier.hpp"
#include "gateway/host_arrays.hpp"
#include "io/raw_kspace.hpp"
#include "recon/recon_error.hpp"
#include "mex.h"

namespace {

// A complex single array of `dims` holding `values` (interleaved pairs).
mxArray* complex_array(const std::vector<std::int64_t>& dims, const std::vector<std::complex<float>>& values)
{
    mxArray* array = create_complex_single(dims);
    const ComplexPlanes planes = single_planes(array);
    for (std::size_t i = 0; i < values.size(); ++i) {
        planes.real(static_cast<std::ptrdiff_t>(i)) = values[i].real();
        planes.imag(static_cast<std::ptrdiff_t>(i)) = values[i].imag();
    }
    return array;
}

template <typename Values>
mxArray* row(const Values& values)
{
    mxArray* array = mxCreateDoubleMatrix(1, values.size(), mxREAL);
    std::copy(values.begin(), values.end(), static_cast<double*>(mxGetData(array)));
    return array;
}

mxArray* scalar(double value) { return mxCreateDoubleScalar(value); }

mxArray* ranges_cell(const SampledRanges& ranges)
{
    mxArray* cell = mxCreateCellMatrix(1, 3);
    for (int a = 0; a < 3; ++a) {
        mxSetCell(cell, a, ranges[a] ? row(std::vector<double>{double(ranges[a]->first), double(ranges[a]->last)})
                                     : mxCreateDoubleMatrix(0, 0, mxREAL));
    }
    return cell;
}

mxArray* text_cell(const std::vector<std::string>& texts)
{
    mxArray* cell = mxCreateCellMatrix(1, texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        mxSetCell(cell, i, mxCreateString(texts[i].c_str()));
    }
    return cell;
}

mxArray* acquisition_struct(const RawKspace& raw)
{
    const char* fields[] = {"ranges", "noise", "noise_variance_scale", "matrix", "fov", "coils", "dimensions", "volume_sizes",
                            "encoded_matrix", "recon_matrix", "oversampling_removed", "sample_time_us", "measurement_uid",
                            "warnings", "header"};
    mxArray* acq = mxCreateStructMatrix(1, 1, sizeof fields / sizeof fields[0], fields);
    mxSetField(acq, 0, "ranges", ranges_cell(raw.ranges));
    mxSetField(acq, 0, "noise", raw.noise.empty() ? mxCreateNumericMatrix(0, 0, mxSINGLE_CLASS, mxREAL)
                                                  : complex_array({raw.noise_samples, raw.shape.coils}, raw.noise));
    mxSetField(acq, 0, "noise_variance_scale", scalar(raw.noise_variance_scale));
    mxSetField(acq, 0, "matrix", row(raw.shape.n));
    mxSetField(acq, 0, "fov", row(raw.fov_mm));
    mxSetField(acq, 0, "coils", scalar(static_cast<double>(raw.shape.coils)));
    std::vector<std::string> names{"x", "y", "z", "coil"};
    names.insert(names.end(), kVolumeCounterNames.begin(), kVolumeCounterNames.end());
    mxSetField(acq, 0, "dimensions", text_cell(names));
    mxSetField(acq, 0, "volume_sizes", row(raw.counter_sizes));
    mxSetField(acq, 0, "encoded_matrix", row(raw.encoded_matrix));
    mxSetField(acq, 0, "recon_matrix", row(raw.recon_matrix));
    mxSetField(acq, 0, "oversampling_removed", mxCreateLogicalScalar(raw.oversampling_removed));
    mxSetField(acq, 0, "sample_time_us", scalar(raw.sample_time_us));
    mxSetField(acq, 0, "measurement_uid", scalar(raw.measurement_uid));
    mxSetField(acq, 0, "warnings", text_cell(raw.warnings));
    mxSetField(acq, 0, "header", mxCreateString(raw.xml_header.c_str()));
    return acq;
}

void read_file(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    if (nrhs != 2 || !mxIsChar(prhs[0]) || !mxIsLogicalScalar(prhs[1]) || nlhs > 2) {
        throw ReconError("homodyne:usage", "use [kspace, acq] = ismrmrd_mex(file, remove_oversampling) with a text and a logical scalar");
    }
    char* file = mxArrayToString(prhs[0]);
    const std::string path = file != nullptr ? file : "";
    mxFree(file);
    RawReadOptions options;
    options.remove_oversampling = mxIsLogicalScalarTrue(prhs[1]);
    RawKspace raw = read_raw_kspace(path, options);
    for (const std::string& warning : raw.warnings) {
        mexWarnMsgIdAndTxt("homodyne:badFile", "%s", warning.c_str());
    }
    std::vector<std::int64_t> dims{raw.shape.n[0], raw.shape.n[1], raw.shape.n[2], raw.shape.coils};
    dims.insert(dims.end(), raw.counter_sizes.begin(), raw.counter_sizes.end());
    plhs[0] = complex_array(dims, raw.kspace);
    raw.kspace = {};
    if (nlhs > 1) {
        plhs[1] = acquisition_struct(raw);
    }
}

}  // namespace

void mexFunction(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    run_behind_error_barrier([&] { read_file(nlhs, plhs, nrhs, prhs); },
                             "out of memory while reading the raw-data file",
                             "reading the raw-data file failed");
}
