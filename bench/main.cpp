// Compares the cost of the service with its alternatives; see bench.sh.

#include "bench/measurements.h"
#include "tests/support/private_bus.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace
{
const struct {
    const char* name;
    void (*measure)(Report&, const Effort&);
} parts[] = {
    {"requests", measureRequests},   {"bridge", measureBridge}, {"start", measureStart},
    {"footprint", measureFootprint}, {"growth", measureGrowth},
};
} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const bool quick = argc > 1 && strcmp(argv[1], "--quick") == 0;
    argc -= quick;
    argv += quick;
    const auto isWanted = [&](const auto& part) {
        return argc < 3 || strcmp(argv[2], part.name) == 0;
    };
    if (argc < 2 || argc > 3 || std::none_of(std::begin(parts), std::end(parts), isWanted)) {
        fputs("usage: ovik_bench [--quick] DIRECTORY [PART]\n", stderr);
        return 2;
    }
    try {
        const PrivateBus bus;
        const ReadyPanel panel("0,2");
        Report report(argv[1]);
        for (const auto& part : parts) {
            if (isWanted(part))
                part.measure(report, {quick});
        }
    } catch (const std::exception& error) {
        fprintf(stderr, "ovik_bench: %s\n", error.what());
        return 1;
    }
}
