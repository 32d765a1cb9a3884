#include "front/cli/command_run.hpp"

#include <chrono>
#include <cmath>
#include <complex>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <sstream>

#include "front/cli/pending_file.hpp"
#include "front/cli/scan_reconstruction.hpp"
#include "front/cli/unit_scale.hpp"
#include "front/cli/wisdom_file.hpp"
#include "io/image_writer.hpp"
#include "io/png_montage.hpp"
#include "recon/noise_whitening.hpp"
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

void write_images(const std::string& path, const RawKspace& scan, const ScanImages& images)
{
    const auto* pairs = reinterpret_cast<const std::complex<float>*>(images.values.data());
    switch (images.output) {
    case ReconOutput::magnitude:
        write_magnitude_images(path, scan, images.shape, images.values.data());
        break;
    case ReconOutput::real:
        write_real_images(path, scan, images.shape, images.values.data());
        break;
    case ReconOutput::complex:
        write_complex_images(path, scan, images.shape, pairs);
        break;
    }
}

void write_montage(const std::string& path, const ScanImages& images)
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

// The noise covariance of the file's noise readouts, in the units of the
// k-space's noise (their variance differs by the dwell times and the
// oversampling removed) after the k-space was divided by `data_scale`.
void use_noise_readouts(const RawKspace& scan, float data_scale, ReconOptions& options)
{
    ReconShape noise_shape;
    noise_shape.n = {scan.noise_samples, 1, 1};
    noise_shape.coils = scan.shape.coils;
    options.noise_covariance = noise_covariance_from_scan(scan.noise.data(), noise_shape, scan.shape.coils);
    for (std::complex<float>& entry : options.noise_covariance) {
        entry *= scan.noise_variance_scale / (data_scale * data_scale);
    }
    options.covariance_rows = options.covariance_columns = scan.shape.coils;
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

std::string summary(const CommandOptions& options, const ScanImages& images, double seconds)
{
    const ReconShape& s = images.shape;
    std::ostringstream line;
    line << "homodyne-recon: wrote " << options.output << ": " << s.volumes << (s.volumes == 1 ? " image" : " images")
         << " of " << s.n[0] << " x " << s.n[1] << " x " << s.n[2] << ", "
         << (combination_words(images.combination) != nullptr
                 ? combination_words(images.combination)
                 : std::to_string(s.coils) + (s.coils == 1 ? " channel" : " channels"))
         << ", " << (options.recon.method == ReconMethod::pocs ? "POCS" : "one-pass homodyne");
    if (images.noise_source == NoiseSource::covariance) {
        line << ", prewhitened with the noise readouts";
    } else if (images.noise_source == NoiseSource::estimated) {
        line << ", noise level estimated";
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

    RawReadOptions read;
    read.remove_oversampling = !options.keep_oversampling;
    RawKspace scan = read_raw_kspace(options.input, read);
    for (const std::string& warning : scan.warnings) {
        warn(options, warning);
    }
    if (!options.wisdom.empty()) {
        warn(options, load_wisdom(options.wisdom));
    }

    ReconOptions recon = options.recon;
    recon.ranges = scan.ranges;
    const float scale = unit_scale(scan.kspace);
    scale_values(scan.kspace, 1.0f / scale);
    if (options.prewhiten && !scan.noise.empty()) {
        use_noise_readouts(scan, scale, recon);
    }
    const auto progress = [&](Index done, Index volumes) {
        if (!options.quiet && volumes > 1) {
            std::cerr << "homodyne-recon: volume " << done << " of " << volumes << "\n";
        }
    };
    ScanImages images = reconstruct_scan(scan, recon, progress);
    scale_values(images.values, scale);

    PendingFile image_file(options.output);
    image_file.write([&](const std::string& path) { write_images(path, scan, images); });
    if (options.png.empty()) {
        image_file.commit();
    } else {
        PendingFile montage(options.png);
        montage.write([&](const std::string& path) { write_montage(path, images); });
        image_file.commit();
        montage.commit();
    }
    if (!options.wisdom.empty()) {
        warn(options, save_wisdom(options.wisdom));
    }
    if (!options.quiet) {
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - started;
        std::cerr << summary(options, images, seconds.count()) << "\n";
    }
}
