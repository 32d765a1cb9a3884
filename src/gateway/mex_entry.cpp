// The module's exported entry points: the command dispatch and the barrier that
// turns every failure into a host error.
//
// No C++ exception may leave mexFunction: Octave aborts the whole session when
// one does. Gateways therefore report input faults by throwing HostError, and
// the barrier below raises the host error only after the call's C++ objects
// (command text, scratch vectors) have been released, so nothing leaks even on
// hosts whose error function does not unwind C++ frames.

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <vector>

#include "gateway/host_error.hpp"
#include "homodyne/filter_gateway.hpp"
#include "phase/phase_gateway.hpp"
#include "mex.h"

namespace {

void dispatch(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    // A call without inputs is refused like a non-text command.
    if (nrhs < 1 || !mxIsChar(prhs[0])) {
        refuse("The first input must be a string describing the functionality.");
    }
    const std::size_t length = mxGetM(prhs[0]) * mxGetN(prhs[0]) + 1;
    std::vector<char> command(length, '\0');
    if (mxGetString(prhs[0], command.data(), length) != 0) {
        mexWarnMsgTxt("Not enough space. String is truncated.");
    }
    // Two separate, exact, case-sensitive tests; an unknown command does nothing.
    if (std::strcmp(command.data(), "filter") == 0) {
        ApplyHomodyneFilter(nlhs, plhs, nrhs, prhs);
    }
    if (std::strcmp(command.data(), "multiply") == 0) {
        AddLowResPhase(nlhs, plhs, nrhs, prhs);
    }
}

}  // namespace

void mexFunction(int nlhs, mxArray** plhs, int nrhs, const mxArray** prhs)
{
    // The message outlives the exception object that carried it; a plain
    // buffer has nothing to release if the host's error function never returns.
    char failure[512] = "";
    const auto fail = [&failure](const char* message) {
        std::snprintf(failure, sizeof failure, "%s", message[0] != '\0' ? message : "Internal error: the command failed.");
    };
    try {
        dispatch(nlhs, plhs, nrhs, prhs);
    } catch (const HostError& error) {
        fail(error.message);
    } catch (const std::bad_alloc&) {
        fail("Out of memory: the data or the output block could not be allocated.");
    } catch (const std::exception& error) {
        // Also the host's own errors, e.g. a warning that the user turned into an error.
        fail(error.what());
    } catch (...) {
        fail("Internal error: the command failed.");
    }
    if (failure[0] != '\0') {
        mexErrMsgTxt(failure);
    }
}

// Tells a host that asks which release the module was built for (2017a) and
// the API version it targets (0). MATLAB's mex command links its own
// definition into every MEX file, so this one is compiled only outside it.
#if !defined(MATLAB_MEX_FILE)
extern "C" void mexfilerequiredapiversion(unsigned int* built_by_rel, unsigned int* target_api_ver)
{
    *built_by_rel = 0x2017a;
    *target_api_ver = 0;
}
#endif
