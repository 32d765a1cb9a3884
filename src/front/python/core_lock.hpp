#pragma once
// FFTW's planner is not thread-safe and the core plans inside prepare_call,
// ReconPlan, execute and the readers, so calls into the core from several
// Python threads take turns. The GIL is released for the wait and the work,
// so other Python threads (and Dask's workers) run meanwhile.

#include <mutex>
#include <utility>

#include <pybind11/pybind11.h>

std::mutex& core_mutex();

// f() without the GIL, holding the core's lock; the lock is given up before
// the GIL is taken back, so neither waits for the other.
template <typename F>
auto in_core(F&& f)
{
    pybind11::gil_scoped_release no_gil;
    const std::lock_guard<std::mutex> lock(core_mutex());
    return std::forward<F>(f)();
}
