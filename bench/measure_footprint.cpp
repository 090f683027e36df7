#include "bench/contenders.h"
#include "bench/measurements.h"
#include "tests/support/private_bus.h"

#include <cstdlib>
#include <ctime>
#include <thread>

namespace
{
/// A line of /proc/PID/smaps_rollup, in KiB: "Rss:", or "Private_Dirty:" for written memory that is
/// not shared.
double memoryOf(pid_t pid, const std::string& line)
{
    std::ifstream rollup("/proc/" + std::to_string(pid) + "/smaps_rollup");
    for (std::string word; rollup >> word;) {
        double kib;
        if (word == line && rollup >> kib)
            return kib;
    }
    throw std::runtime_error("cannot read the memory of process " + std::to_string(pid));
}

/// Processor time of all threads, in ns.
double processorTimeOf(pid_t pid)
{
    clockid_t clock;
    timespec time;
    if (clock_getcpuclockid(pid, &clock) != 0 || clock_gettime(clock, &time) != 0)
        throw std::runtime_error("no processor time of process " + std::to_string(pid));
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

void measureMemory(Report& report, const Effort& effort)
{
    const std::string address = getenv("DBUS_SYSTEM_BUS_ADDRESS");
    const auto row = [&](const char* what, const char* modules) {
        Samples ours, others;
        for (int round = 0; round < effort.rounds(9); ++round) {
            const PrivateBus bus;
            const ReadyPanel panel(modules);
            const ReadyProcess minimal({OVIK_BENCH_MINIMAL_PROGRAM_PATH}, "brightness");
            ReadyServer server;
            ours.push_back(memoryOf(server.process().pid(), "Rss:"));
            others.push_back(memoryOf(minimal.pid(), "Rss:"));
        }
        report.row(what, "the minimal Qt D-Bus program", quotients(ours, others),
                   kibibytes(ours, others), {Goal::AtMost, 1.1});
    };
    row("resident memory, two of four slots empty", "0,2");
    row("resident memory, a module in each slot", "0,1,2,3");
    setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1); // each PrivateBus replaces the variable
}

/// A process's share of one core, in %.
double processorShareOf(pid_t pid, std::chrono::seconds time)
{
    const double before = processorTimeOf(pid);
    const double start = nanoseconds();
    std::this_thread::sleep_for(time);
    return (processorTimeOf(pid) - before) / (nanoseconds() - start) * 100;
}

void measureIdle(Report& report, const Effort& effort)
{
    const auto time = effort.quick ? 2s : 5s;
    ReadyServer server;
    Samples alone, connected;
    for (int round = 0; round < effort.rounds(5); ++round) {
        alone.push_back(processorShareOf(server.process().pid(), time));
        const ServiceClient client;
        connected.push_back(processorShareOf(server.process().pid(), time));
    }
    const auto row = [&](const char* what, const Samples& percent) {
        report.row(what, "1 % of a core", percent, format("%.3g / 1 %%", median(percent)),
                   {Goal::AtMost, 0.5});
    };
    row("processor share when idle, no client", alone);
    row("processor share when idle, a silent client", connected);
}
} // namespace

void measureFootprint(Report& report, const Effort& effort)
{
    measureMemory(report, effort);
    measureIdle(report, effort);
}

void measureGrowth(Report& report, const Effort& effort)
{
    const int total = effort.quick ? 20000 : 1000000;
    constexpr int chunks = 100;
    const int chunk = total / chunks;
    ReadyServer server;
    ServiceClient service;
    DirectProgram direct;
    const Contender many = batch(service, "getBrightness", chunk);
    const Contender single = batch(service, "getBrightness", 1);
    const Contender call = repeated(chunk / 5, [&] { direct.getBrightness(); });
    auto points = report.points("requests");
    Samples privateMemory, resident, batches, singles;
    for (int done = chunk; done <= total; done += chunk) {
        // The machine may slow down between the first and the last requests, minutes later.
        // Divide each time by that of direct calls at the same moment.
        const double batchTime = many();
        // A request that arrives just before an idle sleep does not wait: use the slowest of five.
        const double slowest = quantile(alternate(5, {single}).front(), 1);
        const double callTime = call();
        batches.push_back(batchTime / callTime);
        singles.push_back(slowest / (idleSleep + callTime));
        privateMemory.push_back(memoryOf(server.process().pid(), "Private_Dirty:"));
        resident.push_back(memoryOf(server.process().pid(), "Rss:"));
        points << done;
        for (const Samples* samples : {&privateMemory, &resident, &batches, &singles})
            points << '\t' << samples->back() / samples->front();
        points << '\n';
    }
    const auto memoryRow = [&](const char* what, const Samples& kib) {
        report.row(format("%s memory after %d requests", what, total),
                   format("after %d requests", chunk), {kib.back() / kib.front()},
                   kibibytes({kib.back()}, {kib.front()}), {Goal::AtMost, 1});
    };
    memoryRow("private", privateMemory);
    memoryRow("resident", resident);
    const auto timeRow = [&](const char* what, const Samples& ratios) {
        const Samples first(ratios.begin(), ratios.begin() + chunks / 10);
        const Samples last(ratios.end() - chunks / 10, ratios.end());
        report.row(format("%s, last %d requests", what, total / 10),
                   format("first %d requests", total / 10), quotients(last, first),
                   format("%.3g / %.3g", median(last), median(first)), {Goal::AtMost, 1.25});
    };
    timeRow("batch time / time of direct calls", batches);
    timeRow("slowest of 5 single requests / (idle sleep + direct call)", singles);
}
