#include "io/image_writer.hpp"

#include <ismrmrd/dataset.h>
#include <ismrmrd/meta.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <sstream>

#include "io/raw_file_check.hpp"
#include "recon/recon_error.hpp"

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& what)
{
    throw ReconError("homodyne:badFile", file_fault(path, what));
}

void check_shape(const std::string& path, const RawKspace& scan, const ReconShape& shape)
{
    const Index limit = std::numeric_limits<std::uint16_t>::max();
    if (shape.volumes != static_cast<Index>(scan.volumes.size()) || shape.n[0] > limit || shape.n[1] > limit ||
        shape.n[2] > limit || shape.coils > limit) {
        fail(path, "the images do not match the scan's volumes or exceed ISMRMRD's image sizes");
    }
}

template <typename T>
void fill_header(ISMRMRD::Image<T>& image, const RawKspace& scan, const VolumeGeometry& g, Index v, std::uint16_t series,
                 std::uint16_t type)
{
    image.setFieldOfView(scan.fov_mm[0], scan.fov_mm[1], scan.fov_mm[2]);
    image.setPosition(g.position[0], g.position[1], g.position[2]);
    image.setReadDirection(g.read_dir[0], g.read_dir[1], g.read_dir[2]);
    image.setPhaseDirection(g.phase_dir[0], g.phase_dir[1], g.phase_dir[2]);
    image.setSliceDirection(g.slice_dir[0], g.slice_dir[1], g.slice_dir[2]);
    image.setPatientTablePosition(g.patient_table_position[0], g.patient_table_position[1], g.patient_table_position[2]);
    image.setMeasurementUid(scan.measurement_uid);
    image.setSlice(g.counters[SLICE]);
    image.setContrast(g.counters[CONTRAST]);
    image.setPhase(g.counters[PHASE]);
    image.setRepetition(g.counters[REPETITION]);
    image.setSet(g.counters[SET]);
    image.setAverage(g.counters[AVERAGE]);
    image.setAcquisitionTimeStamp(g.acquisition_time_stamp);
    image.setImageType(type);
    image.setImageIndex(static_cast<std::uint16_t>(v + 1));
    image.setImageSeriesIndex(series);
}

std::string serialised(const ImageMeta& meta)
{
    ISMRMRD::MetaContainer container;
    for (const auto& [name, values] : meta) {
        for (const std::string& value : values) {
            container.append(name.c_str(), value.c_str());
        }
    }
    std::ostringstream text;
    ISMRMRD::serialize(container, text);
    return text.str();
}

// Opens a fresh file with the scan's XML header and appends one image per
// volume, each made by `convert` from the volume's values.
template <typename T, typename Value, typename Convert>
void write_images(const std::string& path, const RawKspace& scan, const ReconShape& shape, const Value* images,
                  std::uint16_t series, const ImageMeta& meta, std::uint16_t type, Convert convert)
{
    check_shape(path, scan, shape);
    QuietHdf5 quiet;
    std::remove(path.c_str());
    try {
        ISMRMRD::Dataset dataset(path.c_str(), "dataset", true);
        dataset.writeHeader(scan.xml_header);
        ISMRMRD::Image<T> image(static_cast<std::uint16_t>(shape.n[0]), static_cast<std::uint16_t>(shape.n[1]),
                                static_cast<std::uint16_t>(shape.n[2]), static_cast<std::uint16_t>(shape.coils));
        if (!meta.empty()) {
            image.setAttributeString(serialised(meta));
        }
        for (Index v = 0; v < shape.volumes; ++v) {
            fill_header(image, scan, scan.volumes[v], v, series, type);
            const Value* from = images + v * shape.volume_stride();
            T* to = image.getDataPtr();
            for (Index i = 0; i < shape.volume_stride(); ++i) {
                to[i] = convert(from[i]);
            }
            dataset.appendImage(image_variable(series), image);
        }
    } catch (const std::exception&) {
        fail(path, "the images cannot be written");
    }
}

}  // namespace

std::string image_variable(std::uint16_t series) { return "image_" + std::to_string(series); }

void write_magnitude_images(const std::string& path, const RawKspace& scan, const ReconShape& shape, const float* images,
                            std::uint16_t series, const ImageMeta& meta)
{
    write_images<float>(path, scan, shape, images, series, meta, ISMRMRD::ISMRMRD_IMTYPE_MAGNITUDE,
                        [](float value) { return std::fabs(value); });
}

void write_magnitude_images(const std::string& path, const RawKspace& scan, const ReconShape& shape,
                            const std::complex<float>* images, std::uint16_t series, const ImageMeta& meta)
{
    write_images<float>(path, scan, shape, images, series, meta, ISMRMRD::ISMRMRD_IMTYPE_MAGNITUDE,
                        [](std::complex<float> value) { return std::abs(value); });
}

void write_real_images(const std::string& path, const RawKspace& scan, const ReconShape& shape, const float* images,
                       std::uint16_t series, const ImageMeta& meta)
{
    write_images<float>(path, scan, shape, images, series, meta, ISMRMRD::ISMRMRD_IMTYPE_REAL,
                        [](float value) { return value; });
}

void write_complex_images(const std::string& path, const RawKspace& scan, const ReconShape& shape,
                          const std::complex<float>* images, std::uint16_t series, const ImageMeta& meta)
{
    write_images<std::complex<float>>(path, scan, shape, images, series, meta, ISMRMRD::ISMRMRD_IMTYPE_COMPLEX,
                                      [](std::complex<float> value) { return value; });
}
