#pragma once
// The error barrier of the toolbox's MEX entry points (beside homodyne_mex,
// which keeps its own fixed messages): no C++ exception may leave
// mexFunction, since Octave aborts on one. Every failure becomes one host
// error with a "homodyne:..." identifier, raised only after the body's C++
// objects are gone.

#include <cstdio>
#include <new>
#include <stdexcept>

#include "mex.h"
#include "recon/recon_error.hpp"

// Runs `body`; a ReconError keeps its identifier and message, an allocation
// failure reports `out_of_memory` (homodyne:noMemory), anything else its own
// text or `unknown_failure` (homodyne:internal).
template <typename Body>
void run_behind_error_barrier(Body&& body, const char* out_of_memory, const char* unknown_failure)
{
    // The identifier and message outlive the exception that carried them; plain
    // buffers have nothing to release if the host's error function never returns.
    char id[64] = "";
    char message[1024] = "";
    const auto fail = [&](const char* identifier, const char* text) {
        std::snprintf(id, sizeof id, "%s", identifier);
        std::snprintf(message, sizeof message, "%s", text);
    };
    try {
        body();
    } catch (const ReconError& error) {
        fail(error.id.c_str(), error.what());
    } catch (const std::bad_alloc&) {
        fail("homodyne:noMemory", out_of_memory);
    } catch (const std::exception& error) {
        fail("homodyne:internal", error.what());
    } catch (...) {
        fail("homodyne:internal", unknown_failure);
    }
    if (id[0] != '\0') {
        mexErrMsgIdAndTxt(id, "%s", message);
    }
}
