#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

/// Ends the program, which counts as a finding.
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
