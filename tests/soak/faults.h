#pragma once

#include "tests/soak/traffic.h"

enum class Cost {
    Usual,
    Slow,   ///< takes half a minute or more
    Restart ///< of the service
};

/// Something that happens to the panel or the service, with traffic; all is well again at its end.
struct Fault {
    const char* name;
    Cost cost;
    void (*happen)(Traffic& traffic);
};

/// The faults of one kind.
std::vector<Fault> faults(Cost cost);
