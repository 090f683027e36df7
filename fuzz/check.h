#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

/// Aborts the program, which the fuzzer counts as a finding.
[[noreturn]] inline void fail(const std::string& what)
{
    fprintf(stderr, "NOT AS PROMISED: %s\n", what.c_str());
    abort();
}

inline void check(bool holds, const std::string& promise)
{
    if (!holds)
        fail(promise);
}
