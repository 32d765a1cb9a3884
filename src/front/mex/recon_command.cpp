#include "front/mex/recon_command.hpp"

#include <cfloat>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "front/mex/array_input.hpp"
#include "front/mex/info_struct.hpp"
#include "front/mex/option_values.hpp"
#include "front/mex/result_array.hpp"
#include "gateway/host_arrays.hpp"
#include "recon/info_value.hpp"
#include "recon/recon_call.hpp"
#include "recon/recon_error.hpp"

namespace {

std::string option_names()
{
    std::string names;
    for (const OptionRow& row : option_table()) {
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    }
    return names;
}

ReconSettings settings_of(int count, const mxArray** args)
{
    if (count % 2 != 0) {
        throw ReconError("homodyne:usage", "options come as name/value pairs; the options are " + option_names() + ".");
    }
    ReconSettings settings;
    for (int k = 0; k < count; k += 2) {
        if (!mxIsChar(args[k]) || mxGetM(args[k]) > 1) {
            throw ReconError("homodyne:usage", std::string("option names must be text, but name/value pair ") +
                                                   std::to_string(k / 2 + 1) + " starts with a " +
                                                   mxGetClassName(args[k]) + "; the options are " + option_names() + ".");
        }
        char* name = mxArrayToString(args[k]);
        const std::string option = name != nullptr ? name : "";
        mxFree(name);
        set_option(settings, option, option_value_of(args[k + 1], option.c_str()));
    }
    return settings;
}

}  // namespace

void reconstruct_command(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    if (nrhs < 2 || nlhs > 5) {
        throw ReconError("homodyne:usage", "usage: [IMAGE, INFO, PHASE, ZERO_FILLED, SENSITIVITIES] = "
                                           "homodyne_recon_mex('reconstruct', KSPACE, name, value, ...).");
    }
    const KspaceInput input = input_of(prhs[1], "KSPACE");
    const ReconSettings settings = settings_of(nrhs - 2, prhs + 2);
    const ReconPlan plan(prepare_call(settings, input));
    const ReconCall& call = plan.call();

    const bool is_double = mxIsDouble(prhs[1]);
    ResultArray image(call.result_dims, is_double, call.options.output == ReconOutput::complex);
    std::unique_ptr<ResultArray> phase, zero_filled, sensitivities;
    ReconBuffers buffers;
    buffers.image = image.values();
    if (nlhs > 2) {
        phase = std::make_unique<ResultArray>(call.result_dims, is_double, false);
        buffers.phase = phase->values();
    }
    if (nlhs > 3) {
        zero_filled = std::make_unique<ResultArray>(call.result_dims, is_double, false);
        buffers.zero_filled = zero_filled->values();
    }
    const bool adaptive = call.options.combination == CoilCombination::adaptive && call.shape.coils > 1;
    if (nlhs > 4 && adaptive) {
        sensitivities = std::make_unique<ResultArray>(call.layout.dims, is_double, true);
        buffers.sensitivities = reinterpret_cast<Complex*>(sensitivities->values());
    }
    const ReconInfo info = execute(plan, input, buffers);

    mxArray* description = host_value_of(describe(info, call));
    plhs[0] = image.finish(info.scale_exponent, "IMG");
    if (nlhs > 1) {
        plhs[1] = description;
    } else {
        mxDestroyArray(description);
    }
    if (phase) {
        plhs[2] = phase->finish(0, "PHASE");
    }
    if (zero_filled) {
        plhs[3] = zero_filled->finish(info.scale_exponent, "ZERO_FILLED");
    }
    if (nlhs > 4) {
        plhs[4] = sensitivities ? sensitivities->finish(0, "SENSITIVITIES")
                                : mxCreateNumericMatrix(0, 0, is_double ? mxDOUBLE_CLASS : mxSINGLE_CLASS, mxREAL);
    }
}
