#pragma once

#include "tests/support/footprint.h"

#include <map>
#include <string>
#include <vector>

/// What a run has seen.
struct Report {
    long requests = 0;
    std::map<std::string, long> clients; ///< by what they did
    std::map<std::string, long> faults;
    long wrong = 0;
    std::vector<Footprint> footprints; ///< since everything had happened at least once

    /// Prints and counts what went wrong.
    void complain(const std::string& what, const std::string& expected, const std::string& got);
    /// The end of a run: true when nothing was wrong and nothing has grown.
    bool conclude(unsigned int seed, int seconds) const;
};
