// Measures what the service costs, beside what its user would do instead; see bench.sh.

#include "bench/bench.h"
#include "tests/support/private_bus.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

ReadyServer::ReadyServer(const std::vector<std::string>& prefix) : Server(prefix)
{
    if (!waitForPlatform())
        throw std::runtime_error("the server does not find the platform");
}

namespace
{
const struct {
    const char* name;
    void (*measure)(Report&, const Effort&);
} parts[] = {
    {"requests", measureRequests},   {"bridge", measureBridge},           {"start", measureStart},
    {"footprint", measureFootprint}, {"allocations", measureAllocations}, {"growth", measureGrowth},
};

int run(const std::string& directory, const Effort& effort, const char* only)
{
    const PrivateBus bus;
    Process panel({OVIK_PANEL_SIM_PATH});
    if (!panel.waitForOutput("ovik_panel_sim: ready"))
        throw std::runtime_error("no panel: " + panel.errors());
    Report report(directory);
    for (const auto& part : parts) {
        if (!only || strcmp(only, part.name) == 0)
            part.measure(report, effort);
    }
    return 0;
}
} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const bool quick = argc > 1 && strcmp(argv[1], "--quick") == 0;
    argc -= quick;
    argv += quick;
    const auto isNamed = [&](const auto& part) { return strcmp(argv[2], part.name) == 0; };
    if (argc < 2 || argc > 3 ||
        (argc == 3 && std::none_of(std::begin(parts), std::end(parts), isNamed))) {
        fputs("usage: ovik_bench [--quick] DIRECTORY [PART]\n", stderr);
        return 2;
    }
    try {
        return run(argv[1], {quick}, argc > 2 ? argv[2] : nullptr);
    } catch (const std::exception& error) {
        fprintf(stderr, "ovik_bench: %s\n", error.what());
        return 1;
    }
}
