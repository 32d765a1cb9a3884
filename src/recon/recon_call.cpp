#include "recon/recon_call.hpp"

#include <cfloat>
#include <chrono>
#include <cmath>

#include "recon/power_of_two.hpp"
#include "recon/recon_error.hpp"
#include "recon/zero_filled.hpp"

namespace {

RangeLabels labels_of(const std::string& source)
{
    return {source + " x range", source + " y range", source + " z range"};
}

// The dimensions a plan was made for and those of another k-space agree.
bool same_dims(const ArrayLayout& layout, const std::vector<Index>& dims)
{
    for (std::size_t d = 0; d < std::max(layout.dims.size(), dims.size()); ++d) {
        const Index a = d < layout.dims.size() ? layout.dims[d] : 1, b = d < dims.size() ? dims[d] : 1;
        if (a != b) {
            return false;
        }
    }
    return true;
}

// The canonical k-space of `input` at unit scale: read in place where it can
// be, else gathered into `copy`; planes outside `ranges` zeroed when asked
// (in the copy, made for that if need be).
const Complex* unit_kspace(const KspaceInput& input, const ArrayLayout& layout, int exponent, bool zero,
                           const SampledRanges& ranges, std::vector<Complex>& copy)
{
    const std::vector<Index> strides = strides_of(input, layout);
    const Complex* kspace = static_cast<const Complex*>(input.data);
    if (!usable_in_place(input, layout, strides, exponent) || zero) {
        copy.resize(static_cast<std::size_t>(layout.shape.samples()));
        gather_canonical(input, layout, strides, exponent, copy.data());
        if (zero) {
            zero_outside(layout.shape, ranges, copy.data());
        }
        kspace = copy.data();
    }
    return kspace;
}

// Copies canonical results (`values` floats per sample, in the order x, y, z,
// result channels, volumes) into the caller's order of `result`.
void scatter_results(const ArrayLayout& result, const float* canonical, Index values, float* out)
{
    const std::vector<Index> strides = result.column_major();
    const ReconShape& s = result.shape;
    Index from = 0;
    for (Index v = 0; v < s.volumes; ++v) {
        for (Index c = 0; c < s.coils; ++c) {
            for (Index z = 0; z < s.n[2]; ++z) {
                for (Index y = 0; y < s.n[1]; ++y) {
                    for (Index x = 0; x < s.n[0]; ++x, from += values) {
                        const Index to = result.offset(strides, x, y, z, c, v) * values;
                        for (Index i = 0; i < values; ++i) {
                            out[to + i] = canonical[from + i];
                        }
                    }
                }
            }
        }
    }
}

}  // namespace

ReconCall prepare_call(const ReconSettings& settings, const KspaceInput& input)
{
    ReconCall call;
    // An acquisition brings its coils (dimension 4) unless the call names the
    // coils, and its noise readouts unless it names coils or a noise reference.
    std::optional<int> coils = settings.coils;
    if (settings.acquisition && !coils && input.dims.size() > 3 && input.dims[3] > 1) {
        coils = 4;
    }
    const bool acquisition_noise = settings.acquisition && !settings.coils && !settings.noise_reference_given;
    call.layout = array_layout(input.dims, coils, settings.dims);
    call.shape = call.layout.shape;
    call.options = settings.options;
    if (!call.layout.coil_dim) {
        call.options.combination = CoilCombination::none;  // further dimensions are volumes
    }
    call.noise = call_noise(settings, call.layout, acquisition_noise);

    const std::vector<Index> strides = strides_of(input, call.layout);
    const int exponent = unit_exponent_of(input, call.layout, strides);
    // The plane energies are relative to the largest part, the same at any
    // scale: single-precision data in the canonical order are read where they
    // are, off unit scale or not (a copy was a quarter of an 8-coil call).
    std::vector<Complex> copy;
    const Complex* kspace = usable_in_place(input, call.layout, strides, 0)
                                ? static_cast<const Complex*>(input.data)
                                : unit_kspace(input, call.layout, exponent, false, {}, copy);
    const PlaneEnergies energies = plane_energies(call.shape, kspace);

    RangeLabels labels;
    if (settings.ranges) {
        call.options.ranges = *settings.ranges;
        labels = labels_of("'Ranges'");
    } else if (settings.partial_fourier) {
        call.options.ranges = partial_fourier_ranges(*settings.partial_fourier, call.shape);
        labels = labels_of("'PartialFourier'");
    } else if (settings.acquisition) {
        call.options.ranges = settings.acquisition->ranges;
        labels = labels_of("the acquisition's");
    } else {
        call.detection = detect_ranges(call.shape, energies);
        for (int axis = 0; axis < 3; ++axis) {
            call.options.ranges[axis] = call.detection[axis].range;
        }
        labels = labels_of("the detected");
    }
    ReconOptions checked = call.options;
    use_noise(call.noise, exponent, checked);
    validate_options(checked, call.shape, labels);
    if (settings.ranges || settings.partial_fourier || settings.acquisition) {
        call.detection = check_given_ranges(call.options.ranges, labels, call.shape, energies);
    }
    call.warnings = layout_warnings(call.detection, energies, call.options.ranges, call.shape);
    call.zero_outside = needs_zero_outside(call.detection);
    call.result_dims = call.layout.result_dims(result_images(call.shape, call.options) != call.shape.coils * call.shape.volumes);

    call.prepared_data = input.data;
    call.prepared_exponent = exponent;
    // Data that are only off unit scale are read in place at execution (the
    // core scales them as it copies them in): no copy is kept for them.
    if (call.zero_outside || !usable_in_place(input, call.layout, strides, 0)) {
        if (copy.empty()) {
            unit_kspace(input, call.layout, exponent, true, call.options.ranges, copy);
        } else if (call.zero_outside) {
            zero_outside(call.shape, call.options.ranges, copy.data());
        }
        call.prepared_copy = std::make_shared<std::vector<Complex>>(std::move(copy));
    }
    return call;
}

ReconPlan::ReconPlan(ReconCall call) : call_(std::move(call)), methods_(call_.shape, call_.options) {}

ReconInfo execute(const ReconPlan& plan, const KspaceInput& input, const ReconBuffers& buffers)
{
    const auto started = std::chrono::steady_clock::now();
    const ReconCall& call = plan.call();
    if (!same_dims(call.layout, input.dims)) {
        throw ReconError("homodyne:badInput", "KSPACE has size " + size_text(input.dims) +
                                                  "; the plan was made for " + size_text(call.layout.dims) + ".");
    }
    ReconInfo info;
    // The caller's k-space is read in place where its layout allows and no
    // step here needs it at unit scale (the zero-filled image); else a copy.
    std::vector<Complex> copy;
    const Complex* kspace = nullptr;
    int read_exponent = 0;  // the core reads kspace times 2^-read_exponent
    const std::vector<Index> strides = strides_of(input, call.layout);
    const bool prepared = input.data == call.prepared_data;
    info.scale_exponent = prepared ? call.prepared_exponent : unit_exponent_of(input, call.layout, strides);
    if (prepared && call.prepared_copy) {
        kspace = call.prepared_copy->data();
    } else if (!call.zero_outside && buffers.zero_filled == nullptr && usable_in_place(input, call.layout, strides, 0)) {
        kspace = static_cast<const Complex*>(input.data);
        read_exponent = info.scale_exponent;
    } else {
        kspace = unit_kspace(input, call.layout, info.scale_exponent, call.zero_outside, call.options.ranges, copy);
    }

    ReconOptions options = call.options;
    use_noise(call.noise, info.scale_exponent, options);
    options.keep_sensitivities = buffers.sensitivities != nullptr;

    // Results in the caller's order, straight into its buffers where that is
    // the canonical order too.
    ArrayLayout result = call.layout;
    result.dims = call.result_dims;
    result.shape.coils = result.coil_dim ? call.result_dims[*result.coil_dim] : 1;
    const bool direct = result.canonical_in_memory(result.column_major());
    const Index samples = result.shape.samples(), values = values_per_sample(options.output);
    std::vector<float> image(direct ? 0 : static_cast<std::size_t>(samples * values));
    std::vector<float> phase(direct || buffers.phase == nullptr ? 0 : static_cast<std::size_t>(samples));
    info.report = reconstruct_validated(call.shape, kspace, read_exponent, options, plan.methods(),
                                        direct ? buffers.image : image.data(),
                                        direct ? buffers.phase : (buffers.phase != nullptr ? phase.data() : nullptr));
    if (!direct) {
        scatter_results(result, image.data(), values, buffers.image);
        if (buffers.phase != nullptr) {
            scatter_results(result, phase.data(), 1, buffers.phase);
        }
    }
    if (buffers.zero_filled != nullptr) {
        const bool combined = result.shape.coils != call.shape.coils;
        std::vector<float> zero_filled(direct ? 0 : static_cast<std::size_t>(samples));
        zero_filled_images(call.shape, kspace, combined, direct ? buffers.zero_filled : zero_filled.data());
        if (!direct) {
            scatter_results(result, zero_filled.data(), 1, buffers.zero_filled);
        }
    }
    if (buffers.sensitivities != nullptr && !info.report.sensitivities.empty()) {
        scatter_results(call.layout, reinterpret_cast<const float*>(info.report.sensitivities.data()), 2,
                        reinterpret_cast<float*>(buffers.sensitivities));
        info.report.sensitivities.clear();
    }
    info.method = options.method;
    info.ranges = call.options.ranges;
    info.detection = call.detection;
    info.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    return info;
}

void restore_scale(float* values, Index count, int exponent, const std::string& name)
{
    if (exponent == 0) {
        return;
    }
    float unscaled = 0.0f;
    for (Index i = 0; i < count; ++i) {
        unscaled = std::max(unscaled, std::fabs(values[i]));
    }
    copy_times_power_of_two(values, count, exponent, values);
    const float largest = std::ldexp(unscaled, exponent);  // ldexp keeps the order of values
    if (std::isinf(largest) || (unscaled > 0.0f && largest < FLT_MIN)) {
        throw ReconError("homodyne:scale", name + " does not fit single precision at the scale of the data "
                                                  "(largest magnitude about 2^" + std::to_string(exponent) +
                                                  "); pass the data as double.");
    }
}
