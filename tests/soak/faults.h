#pragma once

#include "tests/soak/traffic.h"

enum class Cost {
    Usual,
    Slow,   ///< takes half a minute or more
    Restart ///< restarts the service
};

/// A disturbance of the panel or the service, with traffic; all works again at its end.
struct Fault {
    const char* name;
    Cost cost;
    void (*happen)(Traffic& traffic);
};

std::vector<Fault> faults(Cost cost);
