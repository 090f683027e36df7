#pragma once

#include "tests/support/process.h"

#include <string>
#include <vector>

using Words = std::vector<std::string>;

/// What a run of ovikctl leaves behind.
struct Ran {
    int status;
    std::string output;
    std::string errors;
};

/// The words that start it.
Words ovikctl(const Words& arguments);
/// Runs it until its end.
Ran run(const Words& arguments, const Words& prefix = {});
/// Runs it with that text as its standard input.
Ran runWithInput(const std::string& input, const Words& arguments);

/// What to run a program under so that it may not use what a mode forbids, even as root.
Words withoutPrivilege();
