#include "front/cli/command_input.hpp"

#include "io/cfl.hpp"
#include "recon/recon_error.hpp"

namespace {

bool ends_with(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// NAME of NAME.cfl or NAME.hdr.
std::string cfl_base(const std::string& path)
{
    return is_cfl_name(path) ? path.substr(0, path.size() - 4) : path;
}

}  // namespace

bool is_cfl_name(const std::string& path) { return ends_with(path, ".cfl") || ends_with(path, ".hdr"); }

CommandInput read_command_input(const std::string& path, bool remove_oversampling, ReconSettings& settings)
{
    CommandInput input;
    input.kspace.type = KspaceInput::Type::complex_float;
    if (is_cfl_name(path)) {
        CflArray array = read_cfl(cfl_base(path));
        input.values = std::move(array.values);
        input.kspace.dims = array.dims;
        input.kspace.data = input.values.data();
        return input;
    }
    RawReadOptions read;
    read.remove_oversampling = remove_oversampling;
    input.scan = std::make_unique<RawKspace>(read_raw_kspace(path, read));
    const RawKspace& scan = *input.scan;
    input.warnings = scan.warnings;
    input.notes = scan.notes;
    input.kspace.data = scan.kspace.data();
    input.kspace.dims = {scan.shape.n[0], scan.shape.n[1], scan.shape.n[2], scan.shape.coils};
    input.kspace.dims.insert(input.kspace.dims.end(), scan.counter_sizes.begin(), scan.counter_sizes.end());

    auto acquisition = std::make_shared<Acquisition>();
    acquisition->ranges = scan.ranges;
    acquisition->noise = scan.noise;
    acquisition->noise_samples = scan.noise_samples;
    acquisition->noise_coils = scan.noise.empty() ? 0 : scan.shape.coils;
    acquisition->noise_variance_scale = scan.noise_variance_scale;
    OptionValue value;
    value.kind = OptionValue::Kind::acquisition;
    value.acquisition = acquisition;
    set_option(settings, "Acquisition", value);
    return input;
}

bool cfl_output(const std::string& output, const CommandInput& input)
{
    return input.scan == nullptr || is_cfl_name(output);
}

void write_cfl_images(const std::string& path, const std::vector<Index>& dims, const float* values, bool complex)
{
    Index count = 1;
    for (const Index n : dims) {
        count *= n;
    }
    std::vector<Complex> samples(static_cast<std::size_t>(count));
    for (Index i = 0; i < count; ++i) {
        samples[i] = complex ? Complex(values[2 * i], values[2 * i + 1]) : Complex(values[i], 0.0f);
    }
    write_cfl(cfl_base(path), dims, samples.data());
}
