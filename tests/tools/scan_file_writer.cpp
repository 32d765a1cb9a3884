#include "scan_file_writer.hpp"

#include <ismrmrd/dataset.h>
#include <ismrmrd/version.h>
#include <ismrmrd/xml.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <sstream>

namespace {

const double kPi = 3.14159265358979323846;

KRange block(const SampledRanges& keep, int axis, Index n)
{
    return keep[axis] ? *keep[axis] : KRange{-(n / 2), n - 1 - n / 2};
}

std::string header_xml(const SyntheticScan& scan, Index coils)
{
    const Index nx = scan.shape.n[0];
    const Index ny = scan.shape.n[1];
    const Index nz = scan.shape.n[2];
    ISMRMRD::IsmrmrdHeader h;
    h.version = ISMRMRD_XMLHDR_VERSION;
    h.experimentalConditions.H1resonanceFrequency_Hz = 63500000;
    ISMRMRD::AcquisitionSystemInformation system;
    system.receiverChannels = static_cast<unsigned short>(coils);
    h.acquisitionSystemInformation = system;
    ISMRMRD::Encoding e;
    e.trajectory = ISMRMRD::TrajectoryType::CARTESIAN;
    const float fov = 200.0f;
    e.encodedSpace.matrixSize = ISMRMRD::MatrixSize(nx * scan.oversampling, ny, nz);
    e.encodedSpace.fieldOfView_mm = {fov * scan.oversampling, fov, fov * nz / ny};
    e.reconSpace.matrixSize = ISMRMRD::MatrixSize(nx, ny, nz);
    e.reconSpace.fieldOfView_mm = {fov, fov, fov * nz / ny};
    const KRange y = scan.declare_full_y ? KRange{-(ny / 2), ny - 1 - ny / 2} : block(scan.keep, AXIS_Y, ny);
    const KRange z = block(scan.keep, AXIS_Z, nz);
    const Index cy = ny / 2 + scan.declared_centre_shift_y;
    e.encodingLimits.kspace_encoding_step_1 =
        ISMRMRD::Limit(y.first + ny / 2, y.last + ny / 2, cy);
    e.encodingLimits.kspace_encoding_step_2 = ISMRMRD::Limit(z.first + nz / 2, z.last + nz / 2, nz / 2);
    e.encodingLimits.repetition = ISMRMRD::Limit(0, scan.shape.volumes - 1, 0);
    h.encoding.push_back(e);
    if (scan.edit_header) {
        scan.edit_header(h);
    }
    std::ostringstream xml;
    ISMRMRD::serialize(h, xml);
    return xml.str();
}

void store(ISMRMRD::Dataset& dataset, ISMRMRD::Acquisition& acq, const SyntheticScan& scan)
{
    const int copies = scan.edit_readout ? scan.edit_readout(acq) : 1;
    for (int c = 0; c < copies; ++c) {
        dataset.appendAcquisition(acq);
    }
}

}  // namespace

std::vector<std::complex<float>> oversampled_readout(const std::complex<float>* line, Index n, Index factor)
{
    // Image positions p = -floor(n/2) .. ceil(n/2)-1 of the plain inverse DFT.
    std::vector<std::complex<double>> image(n);
    for (Index p = 0; p < n; ++p) {
        for (Index k = 0; k < n; ++k) {
            const double angle = 2.0 * kPi * static_cast<double>((p - n / 2) * (k - n / 2)) / static_cast<double>(n);
            image[p] += std::complex<double>(line[k]) * std::polar(1.0, angle);
        }
        image[p] /= static_cast<double>(n);
    }
    const Index wide = n * factor;
    std::vector<std::complex<float>> out(wide);
    for (Index k = 0; k < wide; ++k) {
        std::complex<double> sum;
        for (Index p = 0; p < n; ++p) {
            const double angle = -2.0 * kPi * static_cast<double>((p - n / 2) * (k - wide / 2)) / static_cast<double>(wide);
            sum += image[p] * std::polar(1.0, angle);
        }
        out[k] = std::complex<float>(sum);
    }
    return out;
}

void write_scan_file(const std::string& path, const SyntheticScan& scan)
{
    const ReconShape& s = scan.shape;
    std::remove(path.c_str());
    ISMRMRD::Dataset dataset(path.c_str(), "dataset", true);
    dataset.writeHeader(header_xml(scan, s.coils));

    const Index readout = s.n[0] * scan.oversampling;
    const KRange x = block(scan.keep, AXIS_X, readout);
    const Index samples = x.last - x.first + 1;
    std::mt19937 random(7);
    std::normal_distribution<float> gauss(0.0f, scan.noise_sigma);
    for (Index r = 0; r < scan.noise_readouts; ++r) {
        ISMRMRD::Acquisition acq(static_cast<std::uint16_t>(readout), static_cast<std::uint16_t>(s.coils));
        ISMRMRD::AcquisitionHeader head = acq.getHead();
        head.setFlag(ISMRMRD::ISMRMRD_ACQ_IS_NOISE_MEASUREMENT);
        head.sample_time_us = 5.0f;
        acq.setHead(head);
        for (auto* value = acq.data_begin(); value != acq.data_end(); ++value) {
            *value = {gauss(random), gauss(random)};
        }
        store(dataset, acq, scan);
    }

    const KRange y = block(scan.keep, AXIS_Y, s.n[1]);
    const KRange z = block(scan.keep, AXIS_Z, s.n[2]);
    for (Index v = 0; v < s.volumes; ++v) {
        for (Index kz = z.first; kz <= z.last; ++kz) {
            for (Index ky = y.first; ky <= y.last; ++ky) {
                if (std::count(scan.dropped_ky.begin(), scan.dropped_ky.end(), ky) > 0) {
                    continue;
                }
                ISMRMRD::Acquisition acq(static_cast<std::uint16_t>(samples), static_cast<std::uint16_t>(s.coils));
                // Fields set on a copy: the library's accessors hand out
                // references into its 2-byte-packed header.
                ISMRMRD::AcquisitionHeader head = acq.getHead();
                head.center_sample = static_cast<std::uint16_t>(-x.first);
                head.sample_time_us = 5.0f;
                head.idx.kspace_encode_step_1 = static_cast<std::uint16_t>(ky + s.n[1] / 2);
                head.idx.kspace_encode_step_2 = static_cast<std::uint16_t>(kz + s.n[2] / 2);
                head.idx.repetition = static_cast<std::uint16_t>(v);
                head.read_dir[0] = head.phase_dir[1] = head.slice_dir[2] = 1.0f;
                acq.setHead(head);
                for (Index c = 0; c < s.coils; ++c) {
                    const Index line = (((v * s.coils + c) * s.n[2] + kz + s.n[2] / 2) * s.n[1] + ky + s.n[1] / 2) * s.n[0];
                    std::vector<std::complex<float>> full = scan.oversampling == 1
                        ? std::vector<std::complex<float>>(scan.kspace.begin() + line, scan.kspace.begin() + line + s.n[0])
                        : oversampled_readout(scan.kspace.data() + line, s.n[0], scan.oversampling);
                    std::copy(full.begin() + x.first + readout / 2, full.begin() + x.last + readout / 2 + 1,
                              acq.getDataPtr() + c * samples);
                }
                store(dataset, acq, scan);
            }
        }
    }
}
