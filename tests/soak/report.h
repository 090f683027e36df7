#pragma once

#include "tests/support/footprint.h"

#include <map>
#include <string>
#include <vector>

struct Report {
    long requests = 0;
    std::map<std::string, long> clients; ///< by their behaviour
    std::map<std::string, long> faults;
    long wrong = 0;
    std::vector<Footprint> footprints; ///< after the warm-up

    /// Prints and counts an error.
    void complain(const std::string& what, const std::string& expected, const std::string& got);
    /// The final verdict: true when there was no error and no growth.
    bool conclude(unsigned int seed, int seconds) const;
};
