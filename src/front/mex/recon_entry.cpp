// homodyne_recon_mex: the reconstruction core for Octave and MATLAB.
//
//   [IMAGE, INFO, PHASE, ZERO_FILLED, SENSITIVITIES] =
//       homodyne_recon_mex('reconstruct', KSPACE, name, value, ...)
//
// KSPACE: single or double, real or complex, centred; the options are those
// of homodyne_recon. The results are new; the inputs are never written. Every
// failure becomes a host error with a homodyne:... identifier, raised only
// after the call's C++ objects are gone.

#include <string>

#include "front/mex/error_barrier.hpp"
#include "recon/recon_error.hpp"
#include "front/mex/phantom_command.hpp"
#include "front/mex/recon_command.hpp"
#include "front/mex/step_commands.hpp"
#include "mex.h"

namespace {

void dispatch(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    const char* const commands = "the commands are 'reconstruct', 'filter', 'phase' and 'phantom'";
    if (nrhs < 1 || !mxIsChar(prhs[0])) {
        throw ReconError("homodyne:usage", std::string("The first input must be a command; ") + commands + ".");
    }
    char command[32] = "";
    const bool read = mxGetString(prhs[0], command, sizeof command) == 0;
    const std::string name = read ? command : "";
    if (name == "reconstruct") {
        reconstruct_command(nlhs, plhs, nrhs, prhs);
    } else if (name == "filter") {
        filter_command(nlhs, plhs, nrhs, prhs);
    } else if (name == "phase") {
        phase_command(nlhs, plhs, nrhs, prhs);
    } else if (name == "phantom") {
        phantom_command(nlhs, plhs, nrhs, prhs);
    } else {
        throw ReconError("homodyne:usage", std::string("Unknown command; ") + commands + ".");
    }
}

}  // namespace

void mexFunction(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    run_behind_error_barrier([&] { dispatch(nlhs, plhs, nrhs, prhs); },
                             "Out of memory: the reconstruction's buffers could not be allocated.",
                             "Internal error: the reconstruction failed.");
}

#if !defined(MATLAB_MEX_FILE)
extern "C" void mexfilerequiredapiversion(unsigned int* built_by_rel, unsigned int* target_api_ver)
{
    *built_by_rel = 0x2017a;
    *target_api_ver = 0;
}
#endif
