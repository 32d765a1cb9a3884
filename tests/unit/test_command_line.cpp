// The homodyne-recon program, run as a user runs it, on files written from a
// known k-space: its images equal the core's reconstruction of that k-space
// with the file's acquisition (ranges, coils, noise readouts),
// and every bad file or option gives one line naming it, the right exit
// status and no output.

#include <gtest/gtest.h>
#include <hdf5.h>
#include <ismrmrd/dataset.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "io/raw_kspace.hpp"
#include "recon/recon_call.hpp"
#include "scan_file_writer.hpp"

namespace {

std::string data_file(const std::string& name) { return std::string(TEST_DATA_DIR) + "/cli_" + name; }

struct ProgramRun {
    int status;
    std::string errors;
};

ProgramRun homodyne_recon(const std::string& arguments)
{
    // One file per test: CTest runs the tests of this file side by side.
    const std::string errors = data_file(std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) +
                                         ".stderr");
    const int code = std::system(("\"" HOMODYNE_RECON_PROGRAM "\" " + arguments + " 2> \"" + errors + "\"").c_str());
    std::ifstream in(errors);
    std::stringstream text;
    text << in.rdbuf();
    return {WIFEXITED(code) ? WEXITSTATUS(code) : -1, text.str()};
}

// Two coils of an object-like k-space (peaked at k = 0) in two volumes,
// ky kept from -8 to 3 of 16.
SyntheticScan partial_scan()
{
    SyntheticScan scan;
    scan.shape.n = {16, 16, 4};
    scan.shape.coils = 2;
    scan.shape.volumes = 2;
    scan.keep[AXIS_Y] = KRange{-8, 3};
    scan.kspace.resize(scan.shape.samples());
    for (Index i = 0; i < scan.shape.samples(); ++i) {
        const Index x = i % 16 - 8, y = i / 16 % 16 - 8, z = i / 256 % 4 - 2, image = i / scan.shape.voxels();
        const float envelope = std::exp(-0.2f * static_cast<float>(x * x + y * y + z * z));
        const bool kept = y <= 3;
        scan.kspace[i] = kept ? envelope * std::complex<float>(1.0f + 0.1f * image, 0.3f * std::sin(float(i))) : 0.0f;
    }
    return scan;
}

// Every image of image_1 in `path`: channels x voxels values per image.
template <typename T>
std::vector<T> images_in(const std::string& path, Index images, const std::array<Index, 4>& matrix)
{
    ISMRMRD::Dataset file(path.c_str(), "dataset", false);
    EXPECT_EQ(file.getNumberOfImages("image_1"), static_cast<std::size_t>(images));
    std::vector<T> values;
    for (Index i = 0; i < images; ++i) {
        ISMRMRD::Image<T> image;
        file.readImage("image_1", i, image);
        EXPECT_EQ((std::array<Index, 4>{image.getMatrixSizeX(), image.getMatrixSizeY(), image.getMatrixSizeZ(),
                                        image.getNumberOfChannels()}),
                  matrix);
        values.insert(values.end(), image.getDataPtr(), image.getDataPtr() + image.getNumberOfDataElements());
    }
    return values;
}

template <typename T>
void expect_within_rounding(const std::vector<T>& got, const std::vector<T>& expected)
{
    ASSERT_EQ(got.size(), expected.size());
    double largest = 0, error = 0;
    for (std::size_t i = 0; i < got.size(); ++i) {
        largest = std::max(largest, double(std::abs(expected[i])));
        error = std::max(error, double(std::abs(got[i] - expected[i])));
    }
    EXPECT_GT(largest, 0.0);
    EXPECT_LE(error, 1e-5 * largest);
}


// What the core makes of the file's k-space with its acquisition (ranges,
// coils, noise readouts) and `options`.
template <typename T>
std::vector<T> core_images(const std::string& path, std::initializer_list<std::pair<const char*, OptionValue>> options)
{
    const RawKspace raw = read_raw_kspace(path);
    auto acquisition = std::make_shared<Acquisition>();
    acquisition->ranges = raw.ranges;
    acquisition->noise = raw.noise;
    acquisition->noise_samples = raw.noise_samples;
    acquisition->noise_coils = raw.shape.coils;
    acquisition->noise_variance_scale = raw.noise_variance_scale;
    ReconSettings settings;
    OptionValue acq;
    acq.kind = OptionValue::Kind::acquisition;
    acq.acquisition = acquisition;
    set_option(settings, "Acquisition", acq);
    for (const auto& option : options) {
        set_option(settings, option.first, option.second);
    }
    KspaceInput input;
    input.data = raw.kspace.data();
    input.dims = {raw.shape.n[0], raw.shape.n[1], raw.shape.n[2], raw.shape.coils, raw.shape.volumes};
    const ReconPlan plan(prepare_call(settings, input));
    Index samples = 1;
    for (const Index n : plan.call().result_dims) {
        samples *= n;
    }
    std::vector<T> images(static_cast<std::size_t>(samples));
    ReconBuffers buffers;
    buffers.image = reinterpret_cast<float*>(images.data());
    const ReconInfo info = execute(plan, input, buffers);
    restore_scale(buffers.image, samples * Index(sizeof(T) / sizeof(float)), info.scale_exponent, "IMG");
    return images;
}

}  // namespace

TEST(CommandLine, ImagesEqualTheCoreOnTheSameKspace)
{
    SyntheticScan scan = partial_scan();
    scan.noise_readouts = 8;
    scan.noise_sigma = 0.01f;  // below the data, so the noise weights keep part of them
    const std::string in = data_file("scan.h5"), out = data_file("images.h5"), png = data_file("montage.png");
    write_scan_file(in, scan);

    // POCS magnitude, coils combined adaptively after prewhitening with the
    // file's noise readouts.
    const std::vector<float> combined = core_images<float>(in, {{"Output", OptionValue::of_text("magnitude")}});
    const std::string wisdom = data_file("wisdom.txt");
    std::filesystem::remove(wisdom);
    ProgramRun run = homodyne_recon("--output magnitude --wisdom " + wisdom + " \"" + in + "\" \"" + out + "\"");
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_NE(run.errors.find("prewhitened"), std::string::npos) << run.errors;
    expect_within_rounding(images_in<float>(out, 2, {16, 16, 4, 1}), combined);
    std::ifstream kept(wisdom);
    std::string first_word;
    kept >> first_word;
    EXPECT_EQ(first_word.rfind("(fftw-", 0), 0u) << first_word;  // the plans POCS measured, for the next run

    // One-pass homodyne, complex, one channel per coil, quiet, with a montage.
    const std::vector<std::complex<float>> coils = core_images<std::complex<float>>(
        in, {{"Method", OptionValue::of_text("homodyne")},
             {"Output", OptionValue::of_text("complex")},
             {"CoilCombine", OptionValue::of_text("none")}});
    run = homodyne_recon("--method homodyne --output=complex --coil-combine none --quiet --png \"" + png + "\" \"" +
                         in + "\" \"" + out + "\"");
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    expect_within_rounding(images_in<std::complex<float>>(out, 2, {16, 16, 4, 2}), coils);
    EXPECT_GT(std::filesystem::file_size(png), 0u);
}

// The data readouts 2^100 above or below the noise readouts: the noise
// reference keeps its own scale, so both reconstruct; far above, the noise
// weighs nothing and the images are those of unit scale without the
// noise-adaptive step, times 2^100.
TEST(CommandLine, DataFarFromTheNoiseReadoutsReconstruct)
{
    SyntheticScan scan = partial_scan();
    scan.noise_readouts = 8;
    const std::string unit = data_file("unit.h5"), scaled = data_file("scaled.h5"), out = data_file("scaled_images.h5");
    write_scan_file(unit, scan);
    const std::vector<float> expected = core_images<float>(
        unit, {{"Output", OptionValue::of_text("magnitude")}, {"NoiseAdaptive", OptionValue::of_boolean(false)}});
    for (const int exponent : {100, -100}) {
        scan.edit_readout = [exponent](ISMRMRD::Acquisition& r) {
            for (auto* v = r.data_begin(); !r.isFlagSet(ISMRMRD::ISMRMRD_ACQ_IS_NOISE_MEASUREMENT) && v != r.data_end(); ++v) {
                *v = {std::ldexp(v->real(), exponent), std::ldexp(v->imag(), exponent)};
            }
            return 1;
        };
        write_scan_file(scaled, scan);
        const ProgramRun run = homodyne_recon("--output magnitude \"" + scaled + "\" \"" + out + "\"");
        ASSERT_EQ(run.status, 0) << run.errors;
        std::vector<float> images = images_in<float>(out, 2, {16, 16, 4, 1});
        EXPECT_TRUE(std::all_of(images.begin(), images.end(), [](float v) { return std::isfinite(v); }));
        if (exponent > 0) {
            for (float& v : images) {
                v = std::ldexp(v, -exponent);
            }
            expect_within_rounding(images, expected);
        }
    }
}

// Noise readouts the reader left out are named even in a quiet run.
TEST(CommandLine, QuietRunsStillNameReadoutsLeftOut)
{
    SyntheticScan scan = partial_scan();
    scan.noise_readouts = 8;
    int noise_readouts = 0;
    scan.edit_readout = [&noise_readouts](ISMRMRD::Acquisition& r) {
        if (r.isFlagSet(ISMRMRD::ISMRMRD_ACQ_IS_NOISE_MEASUREMENT) && noise_readouts++ < 2) {
            r.resize(r.number_of_samples(), 1);
        }
        return 1;
    };
    const std::string in = data_file("noise_channels.h5"), out = data_file("noise_channels_images.h5");
    write_scan_file(in, scan);
    const ProgramRun run = homodyne_recon("--quiet \"" + in + "\" \"" + out + "\"");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors.rfind("homodyne-recon: wrote " + out, 0), 0u) << run.errors;
    EXPECT_NE(run.errors.find(", 2 of 8 noise readouts left out, "), std::string::npos) << run.errors;
    EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
}

TEST(CommandLine, BadFilesAndOptionsNameTheFaultAndWriteNothing)
{
    const std::string good = data_file("good.h5"), out = data_file("never.h5"), png = data_file("never.png");
    SyntheticScan scan = partial_scan();
    write_scan_file(good, scan);
    const std::string narrow = data_file("narrow.h5");  // ky -8 .. 0: too little for one pass
    scan.keep[AXIS_Y] = KRange{-8, 0};
    write_scan_file(narrow, scan);
    const std::string text = data_file("text.h5"), empty = data_file("empty.h5"), truncated = data_file("truncated.h5");
    std::ofstream(text) << "not HDF5\n";
    H5Fclose(H5Fcreate(empty.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT));
    std::filesystem::copy_file(good, truncated, std::filesystem::copy_options::overwrite_existing);
    std::filesystem::resize_file(truncated, std::filesystem::file_size(good) / 2);
    const std::string lying = data_file("lying"), no_header = data_file("no_header");
    std::ofstream(lying + ".hdr") << "# Dimensions\n16 16\n";
    std::ofstream(lying + ".cfl", std::ios::binary) << std::string(1000, '\0');
    std::ofstream(no_header + ".cfl", std::ios::binary) << std::string(8, '\0');
    // Files that contradict their header (the reader's table has every rule).
    const std::string huge = data_file("huge.h5"), slice = data_file("slice.h5");
    scan.keep[AXIS_Y] = KRange{-8, 3};
    scan.edit_header = [](ISMRMRD::IsmrmrdHeader& h) { h.encoding[0].encodedSpace.matrixSize = ISMRMRD::MatrixSize(65535, 65535, 4); };
    write_scan_file(huge, scan);
    scan.edit_header = [](ISMRMRD::IsmrmrdHeader& h) { h.encoding[0].encodingLimits.slice = ISMRMRD::Limit(0, 0, 0); };
    scan.edit_readout = [](ISMRMRD::Acquisition& r) { r.idx().slice = 7; return 1; };
    write_scan_file(slice, scan);
    const std::string outputs = " " + out + " --png " + png;
    const struct {
        std::string arguments, message;
        int status;
    } cases[] = {
        {data_file("absent.h5") + outputs, data_file("absent.h5") + ": no such file", 1},
        {text + outputs, text + ": not an HDF5 file", 1},
        {empty + outputs, empty + ": no ISMRMRD dataset", 1},
        {truncated + outputs, truncated + ": ", 1},
        {no_header + ".cfl" + outputs, no_header + ".hdr: no such file", 1},
        {lying + ".cfl" + outputs, lying + ".cfl: holds 1000 bytes, but", 1},
        {huge + outputs, huge + ": encodedSpace matrixSize x is 65535", 1},
        {slice + outputs, slice + ": readout 0 has slice = 7", 1},
        {"--method homodyne " + narrow + outputs, narrow + ": the acquisition's y range [-8 0] covers 53 %", 1},
        {"--colour red " + good + outputs, "--colour: unknown option", 2},
        {good + outputs + " --iterations", "--iterations: needs a value", 2},
        {"--iterations 0 " + good + outputs, "--iterations must be a whole number from 1 to 10000", 2},
        {"--threads 1.5 " + good + outputs, "--threads must be a whole number.", 2},
        {"--partial-fourier y=0.3 " + good + outputs, "--partial-fourier y entry must be [] or a fraction", 2},
        {good, "expects INPUT OUTPUT", 2},
    };
    for (const auto& c : cases) {
        const ProgramRun run = homodyne_recon(c.arguments);
        EXPECT_EQ(run.status, c.status) << c.arguments;
        EXPECT_EQ(run.errors.rfind("homodyne-recon: " + c.message, 0), 0u) << run.errors;
        EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
    }
    for (const auto& entry : std::filesystem::directory_iterator(TEST_DATA_DIR)) {
        EXPECT_EQ(entry.path().filename().string().rfind("cli_never", 0), std::string::npos) << entry.path();
    }
}
