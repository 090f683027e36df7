#pragma once

#include "tests/soak/panel.h"
#include "tests/support/footprint.h"

#include <map>
#include <string>

/// What a run has seen.
struct Report {
    long requests = 0;
    std::map<std::string, long> clients; ///< by what they did
    std::map<std::string, long> faults;
    long wrong = 0;
    std::vector<Footprint> footprints; ///< since everything had happened at least once

    /// Prints what went wrong, and counts it.
    void complain(const std::string& what, const std::string& details);
    void progress(int seconds, const Footprint& now) const;
    /// The end of a run: true when nothing was wrong and nothing has grown.
    bool conclude(unsigned int seed, int seconds) const;
};
