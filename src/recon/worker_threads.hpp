#pragma once
// Runs job(t) for t = 0 .. threads-1, job 0 on the calling thread, the others
// on threads of their own; joins them all and rethrows the first failure.

#include <exception>
#include <thread>
#include <vector>

template <typename Job>
void run_on_threads(int threads, Job job)
{
    std::vector<std::exception_ptr> failures(static_cast<std::size_t>(threads));
    std::vector<std::thread> workers;
    const auto guarded = [&](int thread) {
        try {
            job(thread);
        } catch (...) {
            failures[thread] = std::current_exception();
        }
    };
    for (int t = 1; t < threads; ++t) {
        workers.emplace_back(guarded, t);
    }
    guarded(0);
    for (std::thread& worker : workers) {
        worker.join();
    }
    for (const std::exception_ptr& failure : failures) {
        if (failure) {
            std::rethrow_exception(failure);
        }
    }
}
