#pragma once

#include "bench/report.h"
#include "tests/support/server.h"

/// The ns that an idle service sleeps before it looks for requests again.
inline constexpr double idleSleep = 10e6;

/// How much is measured.
struct Effort {
    bool quick;
    int rounds(int full) const { return quick ? (full + 4) / 5 : full; }
};

/// Each measures one part of the table, against the simulated panel on this process's system bus.
void measureRequests(Report& report, const Effort& effort);
void measureBridge(Report& report, const Effort& effort);
void measureStart(Report& report, const Effort& effort);
void measureFootprint(Report& report, const Effort& effort);
void measureGrowth(Report& report, const Effort& effort);
void measureAllocations(Report& report, const Effort& effort);

/// The real program, answering from the platform.
class ReadyServer : public Server
{
public:
    explicit ReadyServer(const std::vector<std::string>& prefix = {});
};
