#pragma once
// An input fault found by a command gateway. Gateways throw it instead of
// calling the host's error function themselves, so that the error is raised
// only once every C++ object of the call has been released (see mex_entry.cpp).
// `message` must point at a string literal.

struct HostError {
    const char* message;
};

[[noreturn]] inline void refuse(const char* message) { throw HostError{message}; }
