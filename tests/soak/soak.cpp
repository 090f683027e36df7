// A long run of the real service against a panel that starts, stops and freezes, with clients of
// every kind. Every answer is checked, and the service must not grow.

#include "tests/soak/faults.h"

#include <algorithm>
#include <iostream>

namespace
{
constexpr long mostWrong = 20;
constexpr auto measureEvery = 10s;
/// Shorter runs skip the slow faults.
constexpr int longRun = 600;

struct Soak {
    int seconds;
    unsigned int seed;
    Random random{seed};
    Report report = {};
    Traffic traffic{random, report};
    Clock::time_point start = Clock::now();

    int elapsed() const { return static_cast<int>((Clock::now() - start) / 1s); }
    bool goesOn() const { return elapsed() < seconds && report.wrong < mostWrong; }

    void happen(const Fault& fault)
    {
        ++report.faults[fault.name];
        fault.happen(traffic);
    }
    void warmUp();
    void measure();
    /// False after any error or growth.
    bool run();
};

/// Everything happens at least once. The service is restarted only here: afterwards one long-lived
/// process is measured.
void Soak::warmUp()
{
    for (const Cost cost : {Cost::Restart, Cost::Usual, Cost::Slow}) {
        std::vector<Fault> some = faults(cost);
        std::shuffle(some.begin(), some.end(), random.engine());
        for (const Fault& fault : some) {
            if (!goesOn() || (cost == Cost::Slow && seconds < longRun))
                break;
            happen(fault);
            traffic.someTraffic(2);
        }
    }
    // Let buffers grow before the measurement.
    for (int times = 0; goesOn() && times < 10; ++times)
        traffic.allRows();
}

void Soak::measure()
{
    report.footprints.push_back(footprintOf(traffic.service().pid()));
    std::cerr << elapsed() << " s: " << report.requests << " requests, " << report.wrong
              << " wrong; " << report.footprints.back() << std::endl;
}

bool Soak::run()
{
    try {
        traffic.startPanel();
        traffic.waitForAdoption();
        warmUp();
        for (auto nextMeasure = Clock::now(); goesOn();) {
            traffic.someTraffic(1);
            if (random.chance(10))
                happen(random.pick(faults(Cost::Usual)));
            else if (seconds >= longRun && random.below(4000) == 0)
                happen(random.pick(faults(Cost::Slow)));
            if (Clock::now() >= nextMeasure) {
                measure();
                nextMeasure = Clock::now() + measureEvery;
            }
        }
        traffic.quit();
    } catch (const std::exception& error) {
        report.complain("the run", "no early end", error.what());
    }
    return report.conclude(seed, elapsed());
}
} // namespace

int main(int argc, char* argv[])
{
    std::map<std::string, int> options = {
        {"--seconds", 120}, {"--seed", static_cast<int>(std::random_device()() % 1000000)}};
    try {
        for (int i = 1; i < argc; i += 2)
            options.at(argv[i]) = std::stoi(i + 1 < argc ? argv[i + 1] : "");
        std::cerr << "seed " << options["--seed"] << std::endl;
        Soak soak{options["--seconds"], static_cast<unsigned int>(options["--seed"])};
        return soak.run() ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::logic_error&) { // unknown option, or not a number
        std::cerr << "usage: ovik_soak [--seconds NUMBER] [--seed NUMBER]\n";
    } catch (const std::exception& error) {
        std::cerr << "ovik_soak: " << error.what() << std::endl;
    }
    return EXIT_FAILURE;
}
