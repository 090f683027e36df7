#pragma once

#include "bench/report.h"
#include "tests/support/server.h"

#include <stdexcept>

/// Length of the service's idle sleep in ns.
inline constexpr double idleSleep = 10e6;

struct Effort {
    bool quick;
    int rounds(int full) const { return quick ? (full + 4) / 5 : full; }
};

// Each function adds its rows to the table. The simulated panel must run on the system bus.
void measureRequests(Report& report, const Effort& effort);
void measureBridge(Report& report, const Effort& effort);
void measureStart(Report& report, const Effort& effort);
void measureFootprint(Report& report, const Effort& effort);
void measureGrowth(Report& report, const Effort& effort);

/// A started program; the constructor returns when the program has printed @p ready.
struct ReadyProcess : Process {
    ReadyProcess(const std::vector<std::string>& command, const std::string& ready)
        : Process(command)
    {
        if (!waitForOutput(ready))
            throw std::runtime_error(command.front() + " does not start: " + errors());
    }
};

/// The simulated panel; @p modules lists the occupied plug-in slots, such as "0,2".
struct ReadyPanel : ReadyProcess {
    explicit ReadyPanel(const std::string& modules)
        : ReadyProcess({OVIK_PANEL_SIM_PATH, "--slots", modules}, "ovik_panel_sim: ready")
    {
    }
};

/// The service; the constructor returns after the first answer from the platform.
struct ReadyServer : Server {
    ReadyServer()
    {
        if (!waitForPlatform())
            throw std::runtime_error("the service does not find the platform");
    }
};
