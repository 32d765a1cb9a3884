// The ISMRMRD reader on files written from a known k-space: placement of
// every readout, ranges at either end and on two axes, partial echo, noise
// readouts, oversampling removal, files that lie, bad files; and the image
// and PNG writers read back. (The library's own phantom file, with its noise
// scan, is read in the host test.)

#include <gtest/gtest.h>
#include <ismrmrd/dataset.h>
#include <ismrmrd/xml.h>

#include <hdf5.h>

#include <chrono>
#include <cmath>
#include <complex>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>

#include "io/image_writer.hpp"
#include "io/png_montage.hpp"
#include "io/raw_kspace.hpp"
#include "recon/recon_error.hpp"
#include "scan_file_writer.hpp"

namespace {

std::string data_file(const std::string& name) { return std::string(TEST_DATA_DIR) + "/" + name; }

// A k-space that peaks at k = 0, as an object's does, with random detail.
SyntheticScan peaked_scan(ReconShape shape)
{
    SyntheticScan scan;
    scan.shape = shape;
    scan.kspace.resize(shape.samples());
    std::mt19937 random(11);
    std::uniform_real_distribution<float> detail(-0.3f, 0.3f);
    Index i = 0;
    for (Index v = 0; v < shape.volumes * shape.coils; ++v) {
        for (Index z = 0; z < shape.n[2]; ++z) {
            for (Index y = 0; y < shape.n[1]; ++y) {
                for (Index x = 0; x < shape.n[0]; ++x) {
                    const Index k2 = (x - shape.n[0] / 2) * (x - shape.n[0] / 2) + (y - shape.n[1] / 2) * (y - shape.n[1] / 2) +
                                     (z - shape.n[2] / 2) * (z - shape.n[2] / 2);
                    scan.kspace[i++] = std::exp(-0.25f * static_cast<float>(k2)) * std::complex<float>(1 + detail(random), detail(random));
                }
            }
        }
    }
    return scan;
}

ReconShape shape_of(Index x, Index y, Index z, Index coils, Index volumes)
{
    ReconShape s;
    s.n = {x, y, z};
    s.coils = coils;
    s.volumes = volumes;
    return s;
}

bool inside(const std::optional<KRange>& range, Index k)
{
    return !range || (k >= range->first && k <= range->last);
}

// The k-space the file should give back: the original, zero outside the kept block.
std::vector<std::complex<float>> kept_kspace(const SyntheticScan& scan)
{
    std::vector<std::complex<float>> kept(scan.kspace.size());
    const ReconShape& s = scan.shape;
    for (Index i = 0; i < s.samples(); ++i) {
        const Index x = i % s.n[0], y = i / s.n[0] % s.n[1], z = i / (s.n[0] * s.n[1]) % s.n[2];
        if (inside(scan.keep[0], x - s.n[0] / 2) && inside(scan.keep[1], y - s.n[1] / 2) && inside(scan.keep[2], z - s.n[2] / 2)) {
            kept[i] = scan.kspace[i];
        }
    }
    return kept;
}

std::string fault_of(const std::string& path)
{
    try {
        read_raw_kspace(path);
    } catch (const ReconError& error) {
        EXPECT_EQ(error.id, "homodyne:badFile");
        EXPECT_EQ(std::string(error.what()).rfind(path + ": ", 0), 0u) << error.what();
        return error.what();
    }
    return "";
}

}  // namespace

TEST(RawKspace, RoundTripOfPartialFourierFiles)
{
    const std::vector<SampledRanges> cases{
        {std::nullopt, KRange{-3, 4}, std::nullopt},       // y missing at the negative end
        {std::nullopt, KRange{-5, 2}, KRange{-2, 3}},      // y at the positive end, z at the negative end
        {KRange{-3, 5}, std::nullopt, KRange{-4, 1}},      // partial echo and z at the positive end
    };
    for (const SampledRanges& keep : cases) {
        SyntheticScan scan = peaked_scan(shape_of(12, 10, 8, 3, 2));
        scan.keep = keep;
        scan.noise_readouts = 4;
        const std::string path = data_file("round_trip.h5");
        write_scan_file(path, scan);
        const RawKspace raw = read_raw_kspace(path);
        EXPECT_EQ(raw.shape.n, scan.shape.n);
        EXPECT_EQ(raw.shape.coils, 3);
        EXPECT_EQ(raw.shape.volumes, 2);
        EXPECT_EQ(raw.counter_sizes[REPETITION], 2);
        EXPECT_TRUE(raw.kspace == kept_kspace(scan));
        for (int a = 0; a < 3; ++a) {
            EXPECT_EQ(raw.ranges[a].has_value(), keep[a].has_value());
            if (keep[a]) {
                EXPECT_EQ(raw.ranges[a]->first, keep[a]->first);
                EXPECT_EQ(raw.ranges[a]->last, keep[a]->last);
            }
        }
        EXPECT_TRUE(raw.warnings.empty());
        // Noise of standard deviation 1 per part: mean power 2 per sample.
        ASSERT_EQ(raw.noise_samples, 4 * 12);
        double power = 0;
        for (auto value : raw.noise) {
            power += std::norm(value);
        }
        EXPECT_NEAR(power / static_cast<double>(raw.noise.size()), 2.0, 0.5);
    }
}

TEST(RawKspace, OversamplingKeptOrRemoved)
{
    SyntheticScan scan = peaked_scan(shape_of(16, 6, 1, 2, 1));
    scan.oversampling = 2;
    scan.keep[AXIS_X] = KRange{-16, 11};  // partial echo on the oversampled readout
    const std::string path = data_file("oversampled.h5");
    write_scan_file(path, scan);

    RawReadOptions keep_oversampling;
    keep_oversampling.remove_oversampling = false;
    const RawKspace kept = read_raw_kspace(path, keep_oversampling);
    ASSERT_EQ(kept.shape.n[0], 32);
    EXPECT_FALSE(kept.oversampling_removed);
    EXPECT_EQ(kept.ranges[AXIS_X]->first, -16);
    EXPECT_EQ(kept.ranges[AXIS_X]->last, 11);
    EXPECT_FLOAT_EQ(kept.fov_mm[0], 400.0f);

    scan.keep[AXIS_X].reset();
    write_scan_file(path, scan);
    const RawKspace removed = read_raw_kspace(path);
    ASSERT_EQ(removed.shape.n[0], 16);
    EXPECT_TRUE(removed.oversampling_removed && !removed.ranges[AXIS_X]);
    EXPECT_FLOAT_EQ(removed.fov_mm[0], 200.0f);
    for (std::size_t i = 0; i < scan.kspace.size(); ++i) {
        EXPECT_LT(std::abs(removed.kspace[i] - scan.kspace[i]), 2e-6f) << i;
    }
}

TEST(RawKspace, FilesThatLieAboutTheirLimits)
{
    SyntheticScan scan = peaked_scan(shape_of(8, 16, 1, 1, 1));
    scan.keep[AXIS_Y] = KRange{-3, 7};
    const std::string path = data_file("lies.h5");

    scan.declare_full_y = true;  // limits claim every line: the readouts' block is used
    write_scan_file(path, scan);
    const RawKspace raw = read_raw_kspace(path);
    EXPECT_EQ(raw.ranges[AXIS_Y]->first, -3);
    ASSERT_EQ(raw.warnings.size(), 1u);
    EXPECT_NE(raw.warnings[0].find("declare k = -8 .. 7 but the readouts hold k = -3 .. 7"), std::string::npos) << raw.warnings[0];

    scan.declare_full_y = false;
    scan.declared_centre_shift_y = 2;  // k = 0 declared two lines off
    write_scan_file(path, scan);
    EXPECT_NE(fault_of(path).find("the energy peak lies at k = -2"), std::string::npos);

    scan.declared_centre_shift_y = 0;
    scan.dropped_ky = {2, 3};
    write_scan_file(path, scan);
    EXPECT_NE(fault_of(path).find("lines missing inside the sampled block of kspace_encode_step_1: the readouts hold "
                                  "k = -3 .. 7 but nothing at k = 2 .. 3"),
              std::string::npos);
}

TEST(RawKspace, BadFilesNameTheFileAndTheFault)
{
    EXPECT_NE(fault_of(data_file("absent.h5")).find("no such file"), std::string::npos);

    const std::string text = data_file("text.h5");
    std::ofstream(text) << "not HDF5\n";
    EXPECT_NE(fault_of(text).find("not an HDF5 file"), std::string::npos);

    const std::string empty = data_file("empty.h5");
    H5Fclose(H5Fcreate(empty.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT));
    EXPECT_NE(fault_of(empty).find("no ISMRMRD dataset"), std::string::npos);

    SyntheticScan scan = peaked_scan(shape_of(8, 8, 1, 2, 1));
    const std::string truncated = data_file("truncated.h5");
    write_scan_file(truncated, scan);
    std::filesystem::resize_file(truncated, std::filesystem::file_size(truncated) / 2);
    EXPECT_NE(fault_of(truncated).find("truncated or damaged"), std::string::npos);

    scan.keep[AXIS_Y] = KRange{1, 0};  // no image readouts, only noise
    scan.noise_readouts = 2;
    const std::string noise_only = data_file("noise_only.h5");
    write_scan_file(noise_only, scan);
    EXPECT_NE(fault_of(noise_only).find("no readouts of the image"), std::string::npos);

}

// Files whose header and readouts contradict each other, made from one
// partial-Fourier scan (readouts 0-3 noise, 4-13 the lines ky = -6 .. 3, the
// centre line readout 10): each refused within 2 s naming the field or
// readout at fault, before a buffer of the header's sizes is made.
TEST(RawKspace, ContradictionsRefusedFastNamingTheFault)
{
    using Head = ISMRMRD::IsmrmrdHeader;
    using Readout = ISMRMRD::Acquisition;
    const auto centre_line = [](Readout& r) { return !r.isFlagSet(ISMRMRD::ISMRMRD_ACQ_IS_NOISE_MEASUREMENT) && r.idx().kspace_encode_step_1 == 6; };
    const struct {
        std::function<void(Head&)> header;
        std::function<int(Readout&)> readout;
        std::string fault;
    } cases[] = {
        {[](Head& h) { h.encoding[0].encodedSpace.matrixSize.x = 64; }, nullptr,
         "encodedSpace matrixSize x is 64 (reconSpace 16) but the readouts hold 16 samples centred at sample 8, which reach neither end"},
        {[](Head& h) { h.encoding[0].encodedSpace.matrixSize = ISMRMRD::MatrixSize(65535, 65535, 1); }, nullptr,
         "encodedSpace matrixSize x is 65535"},
        {[](Head& h) { h.encoding[0].encodedSpace.matrixSize.y = 65535; }, nullptr,
         "encodedSpace matrixSize y is 65535 but encodingLimits kspace_encoding_step_1 0 .. 9 (centre 6) cover less than half of it"},
        {[](Head& h) {
             h.encoding[0].encodedSpace.matrixSize = ISMRMRD::MatrixSize(16, 65535, 65535);
             h.encoding[0].encodingLimits.kspace_encoding_step_1 = h.encoding[0].encodingLimits.kspace_encoding_step_2 =
                 ISMRMRD::Limit(0, 65534, 32767);
         },
         nullptr, "the header's matrix and the readouts' channels need 1099.5 GB of k-space, more than half of this machine's"},
        {[](Head& h) { h.encoding[0].encodingLimits.slice = ISMRMRD::Limit(0, 0, 0); },
         [](Readout& r) { r.idx().slice = 7; return 1; },
         "readout 4 has slice = 7, outside the header's encoding limits 0 .. 0"},
        {nullptr, [&](Readout& r) { if (centre_line(r)) r.idx().kspace_encode_step_1 = 11; return 1; },
         "readout 10 has kspace_encode_step_1 = 11, outside the header's encoding limits 0 .. 9"},
        {nullptr, [&](Readout& r) { if (centre_line(r)) r.discard_pre() = 16; return 1; },
         "readout 10 keeps no sample: discard_pre 16 and discard_post 0 of its 16 samples"},
    };
    SyntheticScan scan = peaked_scan(shape_of(16, 12, 1, 2, 1));
    scan.keep[AXIS_Y] = KRange{-6, 3};
    scan.noise_readouts = 4;
    const std::string path = data_file("contradiction.h5");
    for (const auto& c : cases) {
        scan.edit_header = c.header;
        scan.edit_readout = c.readout;
        write_scan_file(path, scan);
        const auto started = std::chrono::steady_clock::now();
        EXPECT_NE(fault_of(path).find(c.fault), std::string::npos) << c.fault;
        EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count(), 2.0) << c.fault;
    }
}

// Readouts used otherwise than as stored, each with the warning that says so.
TEST(RawKspace, DiscardsRepeatsAndUnusableNoiseReadouts)
{
    using Readout = ISMRMRD::Acquisition;
    SyntheticScan scan = peaked_scan(shape_of(16, 12, 1, 2, 1));
    scan.keep[AXIS_Y] = KRange{-6, 3};
    scan.noise_readouts = 4;
    const std::string path = data_file("used_otherwise.h5");

    scan.edit_readout = [](Readout& r) { r.discard_pre() = 3; r.discard_post() = 1; return 1; };
    write_scan_file(path, scan);
    RawKspace raw = read_raw_kspace(path);
    scan.keep[AXIS_X] = KRange{-5, 6};
    EXPECT_TRUE(raw.kspace == kept_kspace(scan));
    EXPECT_EQ(raw.ranges[AXIS_X]->first, -5);
    EXPECT_EQ(raw.noise_samples, 4 * 12);
    scan.keep[AXIS_X].reset();

    // The centre line stored 50 times: its mean is the line.
    scan.edit_readout = [](Readout& r) { return r.idx().kspace_encode_step_1 == 6 ? 50 : 1; };
    write_scan_file(path, scan);
    raw = read_raw_kspace(path);
    const std::vector<std::complex<float>> kept = kept_kspace(scan);
    for (std::size_t i = 0; i < kept.size(); ++i) {
        ASSERT_LT(std::abs(raw.kspace[i] - kept[i]), 1e-6f * std::abs(kept[i]) + 1e-30f) << i;
    }
    EXPECT_EQ(raw.notes, std::vector<std::string>{"49 repeated readouts averaged"});
    ASSERT_EQ(raw.warnings.size(), 1u);
    EXPECT_NE(raw.warnings[0].find("49 readouts repeat the counters of an earlier one"), std::string::npos);

    int noise_readouts = 0;
    scan.edit_readout = [&noise_readouts](Readout& r) {
        if (r.isFlagSet(ISMRMRD::ISMRMRD_ACQ_IS_NOISE_MEASUREMENT) && noise_readouts++ < 2) {
            r.resize(r.number_of_samples(), 3);
        }
        return 1;
    };
    write_scan_file(path, scan);
    raw = read_raw_kspace(path);
    EXPECT_EQ(raw.noise_samples, 2 * 16);
    EXPECT_EQ(raw.notes, std::vector<std::string>{"2 of 4 noise readouts left out"});
    ASSERT_EQ(raw.warnings.size(), 1u);
    EXPECT_NE(raw.warnings[0].find("readouts 0 (3 channels), 1 (3 channels)"), std::string::npos) << raw.warnings[0];
}

TEST(ImageWriters, IsmrmrdImagesAndPngMontageReadBack)
{
    SyntheticScan scan = peaked_scan(shape_of(6, 4, 2, 1, 3));
    const std::string raw_path = data_file("for_images.h5");
    write_scan_file(raw_path, scan);
    const RawKspace raw = read_raw_kspace(raw_path);
    ReconShape shape = raw.shape;
    std::vector<float> images(shape.samples());
    for (std::size_t i = 0; i < images.size(); ++i) {
        images[i] = static_cast<float>(i % 7) - 3.0f;
    }
    const std::string path = data_file("images.h5");
    write_magnitude_images(path, raw, shape, images.data(), 2);
    ISMRMRD::Dataset dataset(path.c_str(), "dataset", false);
    ASSERT_EQ(dataset.getNumberOfImages("image_2"), 3u);
    ISMRMRD::Image<float> image;
    dataset.readImage("image_2", 2, image);
    EXPECT_EQ(image.getMatrixSizeX(), 6);
    EXPECT_EQ(image.getMatrixSizeZ(), 2);
    EXPECT_FLOAT_EQ(image.getFieldOfViewY(), 200.0f);
    EXPECT_EQ(image.getRepetition(), 2);
    EXPECT_EQ(image.getImageIndex(), 3);
    EXPECT_EQ(image.getImageSeriesIndex(), 2);
    EXPECT_EQ(image.getImageType(), ISMRMRD::ISMRMRD_IMTYPE_MAGNITUDE);
    for (Index i = 0; i < 48; ++i) {
        EXPECT_EQ(image.getDataPtr()[i], std::fabs(images[2 * 48 + i]));
    }

    const std::string png = data_file("montage.png");
    write_png_montage(png, images.data(), shape);
    std::ifstream in(png, std::ios::binary);
    std::vector<unsigned char> head(24);
    in.read(reinterpret_cast<char*>(head.data()), 24);
    // Six 6x4 tiles in a 3x2 grid: 18 x 8 pixels, width and height big-endian at bytes 16 and 20.
    EXPECT_EQ(head[1], 'P');
    EXPECT_EQ(head[19], 18);
    EXPECT_EQ(head[23], 8);
}
