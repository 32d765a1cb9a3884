#include "front/cli/command_run.hpp"

#include <chrono>
#include <cmath>
#include <complex>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>

#include "front/cli/command_input.hpp"
#include "front/cli/pending_file.hpp"
#include "front/cli/report_meta.hpp"
#include "front/cli/wisdom_file.hpp"
#include "io/image_writer.hpp"
#include "io/png_montage.hpp"
#include "recon/info_value.hpp"
#include "recon/recon_call.hpp"
#include "recon/recon_error.hpp"

namespace {

void refuse_overwriting_input(const CommandOptions& options)
{
    std::error_code error;
    for (const std::string& out : {options.output, options.png}) {
        if (!out.empty() && std::filesystem::equivalent(options.input, out, error)) {
            throw ReconError("homodyne:usage", out + ": is the input file; name another output");
        }
    }
}

void warn(const CommandOptions& options, const std::string& warning)
{
    if (!options.quiet && !warning.empty()) {
        std::cerr << "homodyne-recon: warning: " << warning << "\n";
    }
}

// The images of a call: result samples in the caller's order (interleaved
// pairs for complex output), and the shape the writers read them in.
struct Images {
    ReconShape shape;  // x, y, z, channels (1 after coil combination), volumes
    ReconOutput output = ReconOutput::real;
    std::vector<Index> dims;
    std::vector<float> values;
};

void write_ismrmrd_images(const std::string& path, const RawKspace& scan, const Images& images, const ImageMeta& meta)
{
    const auto* pairs = reinterpret_cast<const std::complex<float>*>(images.values.data());
    switch (images.output) {
    case ReconOutput::magnitude:
        write_magnitude_images(path, scan, images.shape, images.values.data(), 1, meta);
        break;
    case ReconOutput::real:
        write_real_images(path, scan, images.shape, images.values.data(), 1, meta);
        break;
    case ReconOutput::complex:
        write_complex_images(path, scan, images.shape, pairs, 1, meta);
        break;
    }
}

void write_montage(const std::string& path, const Images& images)
{
    if (images.output != ReconOutput::complex) {
        write_png_montage(path, images.values.data(), images.shape);
        return;
    }
    std::vector<float> magnitudes(static_cast<std::size_t>(images.shape.samples()));
    const auto* pairs = reinterpret_cast<const std::complex<float>*>(images.values.data());
    for (std::size_t i = 0; i < magnitudes.size(); ++i) {
        magnitudes[i] = std::abs(pairs[i]);
    }
    write_png_montage(path, magnitudes.data(), images.shape);
}

const char* combination_words(CoilCombination combination)
{
    switch (combination) {
    case CoilCombination::adaptive:
        return "coils combined adaptively";
    case CoilCombination::rss:
        return "coils combined by root sum of squares";
    case CoilCombination::none:
        break;
    }
    return nullptr;
}

std::string summary(const CommandOptions& options, const Images& images, const ReconInfo& info,
                    const std::vector<std::string>& notes, double seconds)
{
    const ReconShape& s = images.shape;
    const ReconReport& report = info.report;
    std::ostringstream line;
    line << "homodyne-recon: wrote " << options.output << ": " << s.volumes << (s.volumes == 1 ? " image" : " images")
         << " of " << s.n[0] << " x " << s.n[1] << " x " << s.n[2] << ", "
         << (combination_words(report.combination) != nullptr
                 ? combination_words(report.combination)
                 : std::to_string(s.coils) + (s.coils == 1 ? " channel" : " channels"))
         << ", " << (info.method == ReconMethod::pocs ? "POCS" : "one-pass homodyne");
    if (report.noise_source == NoiseSource::covariance || report.noise_source == NoiseSource::noise_scan) {
        line << ", prewhitened with the noise readouts";
    } else if (report.noise_source == NoiseSource::estimated) {
        line << ", noise level estimated";
    }
    for (const std::string& note : notes) {
        line << ", " << note;
    }
    line << ", ";
    line.precision(2);
    line << std::fixed << seconds << " s";
    return line.str();
}

}  // namespace

void run_command(const CommandOptions& options)
{
    const auto started = std::chrono::steady_clock::now();
    refuse_overwriting_input(options);

    ReconSettings settings = options.settings;
    const CommandInput input = read_command_input(options.input, !options.keep_oversampling, settings);
    for (const std::string& warning : input.warnings) {
        warn(options, warning);
    }
    if (!options.wisdom.empty()) {
        warn(options, load_wisdom(options.wisdom));
    }
    const ReconPlan plan(prepare_call(settings, input.kspace));
    const ReconCall& call = plan.call();
    for (const ReconWarning& warning : call.warnings) {
        warn(options, warning.message);
    }

    Images images;
    images.output = call.options.output;
    images.dims = call.result_dims;
    images.shape = call.shape;
    images.shape.coils = result_images(call.shape, call.options) / call.shape.volumes;
    images.values.resize(static_cast<std::size_t>(images.shape.samples() * values_per_sample(images.output)));
    ReconBuffers buffers;
    buffers.image = images.values.data();
    const ReconInfo info = execute(plan, input.kspace, buffers);
    restore_scale(images.values.data(), static_cast<Index>(images.values.size()), info.scale_exponent, "the image");

    // Everything is written under temporary names and renamed into place at
    // the end; the .cfl writer renames its pair of files itself.
    std::unique_ptr<PendingFile> montage;
    if (!options.png.empty()) {
        montage = std::make_unique<PendingFile>(options.png);
        montage->write([&](const std::string& path) { write_montage(path, images); });
    }
    if (cfl_output(options.output, input)) {
        write_cfl_images(options.output, images.dims, images.values.data(), images.output == ReconOutput::complex);
    } else {
        PendingFile image_file(options.output);
        const ImageMeta meta = report_meta(describe(info, call));
        image_file.write([&](const std::string& path) { write_ismrmrd_images(path, *input.scan, images, meta); });
        image_file.commit();
    }
    if (montage) {
        montage->commit();
    }
    if (!options.wisdom.empty()) {
        warn(options, save_wisdom(options.wisdom));
    }
    // Readouts averaged or left out change the images: the summary says so
    // even when quiet.
    if (!options.quiet || !input.notes.empty()) {
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - started;
        std::cerr << summary(options, images, info, input.notes, seconds.count()) << "\n";
    }
}
