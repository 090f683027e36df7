#pragma once

#include "tests/soak/traffic.h"

/// What faults happen to.
struct Scene {
    Server& server;
    Panel& panel;
    Model& model;
    Traffic& traffic;
    Random& random;

    /// A panel with everything, in place of the one there was.
    void restartPanel();
    /// Waits until a service that has started has found the panel.
    void waitForAdoption();
};

enum class Cost {
    Usual,
    Slow,   ///< takes half a minute or more
    Restart ///< of the service
};

/// Something that happens to the panel or the service, with traffic; all is well again at its end.
struct Fault {
    const char* name;
    Cost cost;
    void (*happen)(Scene& scene);
};

const std::vector<Fault>& allFaults();
