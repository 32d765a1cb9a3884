#pragma once
// The one place where a failure of homodyne-recon becomes its line on stderr
// ("homodyne-recon: <file or option>: <fault>") and its exit status.

#include <exception>
#include <string>

enum ExitStatus : int { EXIT_DONE = 0, EXIT_DATA_FAULT = 1, EXIT_USAGE = 2 };

struct Failure {
    std::string line;  // without the trailing newline
    ExitStatus status;
};

// `error` is the exception caught in main; `input` the input file named on
// the command line ("" before it is known). File faults name their file
// already, option faults their option; every other fault is one of the
// input's data, so the input is named.
Failure failure_of(const std::exception_ptr& error, const std::string& input);
