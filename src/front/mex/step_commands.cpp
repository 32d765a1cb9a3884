#include "front/mex/step_commands.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include "front/mex/array_input.hpp"
#include "front/mex/option_values.hpp"
#include "front/mex/result_array.hpp"
#include "recon/array_layout.hpp"
#include "recon/one_pass_homodyne.hpp"
#include "recon/recon_error.hpp"

namespace {

// An argument's layout (x, y, z, then volumes), within the module's 32-bit
// indexing.
ArrayLayout layout_of(const KspaceInput& input)
{
    const ArrayLayout layout = array_layout(input.dims, std::nullopt, std::nullopt, input.name);
    if (layout.shape.samples() >= (Index(1) << 31)) {
        throw ReconError("homodyne:badInput", input.name + " must have fewer than 2^31 elements (its size is " +
                                                  size_text(input.dims) + ").");
    }
    return layout;
}

// The samples in canonical order divided by 2^exponent, the exponent taken
// from the largest part (NaN and Inf refused).
std::vector<Complex> unit_samples(const KspaceInput& input, const ArrayLayout& layout, int& exponent)
{
    const std::vector<Index> strides = strides_of(input, layout);
    exponent = unit_exponent_of(input, layout, strides);
    std::vector<Complex> samples(static_cast<std::size_t>(layout.shape.samples()));
    gather_canonical(input, layout, strides, exponent, samples.data());
    return samples;
}

std::array<Index, 4> sizes_of(const ReconShape& s) { return {s.n[0], s.n[1], s.n[2], s.volumes}; }

}  // namespace

void filter_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    if (nrhs != 5 || nlhs > 2) {
        throw ReconError("homodyne:usage", "usage: [BLOCK, WEIGHTED] = homodyne_recon_mex('filter', KSPACE, KX, KY, KZ).");
    }
    const KspaceInput input = input_of(prhs[1], "KSPACE");
    const ArrayLayout layout = layout_of(input);
    const ReconShape& shape = layout.shape;
    ReconOptions options;
    options.method = ReconMethod::homodyne;
    const RangeLabels labels = {"KX", "KY", "KZ"};
    for (int axis = 0; axis < 3; ++axis) {
        options.ranges[axis] = range_entry(range_numbers_of(prhs[2 + axis], labels[axis]), labels[axis]);
    }
    validate_options(options, shape, labels);
    const HomodynePlan plan = plan_homodyne(shape, options.ranges);

    int exponent = 0;
    const std::vector<Complex> kspace = unit_samples(input, layout, exponent);
    const std::array<Index, 3> b = plan.block();
    std::vector<Index> block_dims = input.dims;
    block_dims.resize(std::max<std::size_t>(3, block_dims.size()), 1);
    std::copy(b.begin(), b.end(), block_dims.begin());
    const bool is_double = mxIsDouble(prhs[1]), is_complex = mxIsComplex(prhs[1]);
    ResultArray block(block_dims, is_double, true), weighted(input.dims, is_double, is_complex);

    const Index voxels = shape.voxels(), block_voxels = b[0] * b[1] * b[2];
    Complex* block_values = reinterpret_cast<Complex*>(block.values());
    std::vector<Complex> volume(static_cast<std::size_t>(voxels));
    for (Index v = 0; v < shape.volumes; ++v) {
        weigh_volume(plan, kspace.data() + v * voxels, block_values + v * block_voxels, volume.data());
        float* out = weighted.values() + v * voxels * (is_complex ? 2 : 1);
        for (Index i = 0; i < voxels; ++i) {
            if (is_complex) {
                out[2 * i] = volume[i].real();
                out[2 * i + 1] = volume[i].imag();
            } else {
                out[i] = volume[i].real();
            }
        }
    }
    plhs[0] = block.finish(exponent, "BLOCK");
    if (nlhs > 1) {
        plhs[1] = weighted.finish(exponent, "WEIGHTED");
    }
}

void phase_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    if (nrhs != 3 || nlhs > 1) {
        throw ReconError("homodyne:usage", "usage: CORRECTED = homodyne_recon_mex('phase', IMAGE, LOWRES).");
    }
    const KspaceInput image = input_of(prhs[1], "IMAGE"), lowres = input_of(prhs[2], "LOWRES");
    const ArrayLayout image_layout = layout_of(image), lowres_layout = layout_of(lowres);
    if (image_layout.shape.volumes != lowres_layout.shape.volumes ||
        !std::equal(image.dims.begin() + std::min<std::size_t>(3, image.dims.size()), image.dims.end(),
                    lowres.dims.begin() + std::min<std::size_t>(3, lowres.dims.size()), lowres.dims.end())) {
        throw ReconError("homodyne:badInput", "LOWRES (size " + size_text(lowres.dims) +
                                                  ") must have the sizes of IMAGE (size " + size_text(image.dims) +
                                                  ") from dimension 4 on: one low-resolution volume per image volume.");
    }
    int exponent = 0, lowres_exponent = 0;
    const std::vector<Complex> samples = unit_samples(image, image_layout, exponent);
    const std::vector<Complex> low = unit_samples(lowres, lowres_layout, lowres_exponent);  // only its phase matters

    const bool is_complex = mxIsComplex(prhs[1]);
    ResultArray corrected(image.dims, mxIsDouble(prhs[1]), is_complex);
    float* out = corrected.values();
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (is_complex) {
            out[2 * i] = samples[i].real();
            out[2 * i + 1] = samples[i].imag();
        } else {
            out[i] = samples[i].real();
        }
    }
    const ComplexPlanes planes = is_complex ? ComplexPlanes{out, out + 1, 2} : ComplexPlanes{out, nullptr, 1};
    take_off_phase(planes, sizes_of(image_layout.shape), low.data(), sizes_of(lowres_layout.shape));
    plhs[0] = corrected.finish(exponent, "CORRECTED");
}
