#include "bench/bench.h"
#include "bench/contenders.h"
#include "bench/proc.h"

namespace
{
void measureWindows(Report& report, const Effort& effort)
{
    auto points = report.points("window");
    report.part("getBrightness over requests under way at a time: rate");
    for (const int outstanding : {1, 2, 4, 8, 16, 32, 64}) {
        Window window;
        QtProgram qt;
        // One at a time waits for an idle sleep each; the others but for the first.
        const int count = outstanding == 1 ? 20 : 1000;
        const auto took = interleave(
            effort.rounds(15),
            {
                [&] {
                    return repeated(1, [&] { window.run("getBrightness", count, outstanding); })() /
                           count;
                },
                repeated(200, [&] { qt.getBrightness(); }),
            });
        const Rounds ratios = quotients(took[1], took[0]);
        report.row(format("%d under way", outstanding), "blocking Qt D-Bus calls", ratios,
                   rates(took[0], took[1]));
        points << outstanding << '\t' << median(ratios) << '\t' << quantile(ratios, 0.25) << '\t'
               << quantile(ratios, 0.75) << '\n';
    }
}

/// Gives the panel a document of system parameters such that the answer has @p size bytes.
void makeDocument(Service& service, size_t size)
{
    // A request is shorter than the longest answer, so it takes several parameters.
    constexpr size_t most = 4900;
    const std::vector<const char*> names = {"pad1", "pad2", "pad3"};
    for (const char* name : names)
        service.single((std::string("setSystemParameter;") + name + ";").c_str());
    for (const char* name : names) {
        const size_t there = service.single("getAllSystemParametersJson").size() + 2;
        const size_t more = there < size ? std::min(most, size - there) : 0;
        service.single(
            (std::string("setSystemParameter;") + name + ";" + std::string(more, 'x')).c_str());
    }
}

void measureSizes(Report& report, const Effort& effort)
{
    constexpr int many = 1000; // one idle sleep is little beside them
    Service service;
    QtProgram qt;
    auto points = report.points("size");
    report.part("Over the size of the answer, pipelined: rate");
    const auto measure = [&](const std::string& request, const std::function<void()>& call) {
        const size_t size = service.single(request.c_str()).size();
        const size_t bytes = size == 0 ? 1 : size + 2; // with the status and the blank
        const std::vector<const char*> requests(many, request.c_str());
        const auto took =
            interleave(effort.rounds(15),
                       {
                           [&] { return repeated(1, [&] { service.batch(requests); })() / many; },
                           repeated(many, call),
                       });
        const Rounds ratios = quotients(took[1], took[0]);
        report.row(format("%s, %zu bytes", request.c_str(), bytes), "blocking Qt D-Bus calls",
                   ratios, rates(took[0], took[1]));
        points << bytes << '\t' << median(ratios) << '\t' << quantile(ratios, 0.25) << '\t'
               << quantile(ratios, 0.75) << '\t' << request << '\n';
    };
    // The EEPROM of the simulated panel has 256 bytes; the answer is as long as was asked for.
    for (const int length : {0, 1, 10, 100, 1000, 3332})
        measure("seepromRead;0;" + std::to_string(length), [&] { qt.readEeprom(length); });
    for (const size_t size : {100U, 1000U, 5000U, 9999U}) {
        makeDocument(service, size);
        measure("getAllSystemParametersJson", [&] { qt.readDocument(); });
    }
    makeDocument(service, 0);
}

void measureEndurance(Report& report, const Effort& effort)
{
    const int many = effort.quick ? 20000 : 1000000;
    const int chunk = many / 100;
    ReadyServer server;
    const pid_t pid = server.process().pid();
    Service service;
    const std::vector<const char*> requests(static_cast<size_t>(chunk), "getBrightness");
    QtProgram qt;
    auto points = report.points("requests");
    // The first requests and the last ones are minutes apart, in which the machine may slow down:
    // the times are held against direct calls made beside them.
    const Contender direct = repeated(chunk / 5, [&] { qt.getBrightness(); });
    Rounds own, resident, pipelined, single, pipelinedRatio, singleRatio;
    for (int done = 0; done < many; done += chunk) {
        pipelined.push_back(repeated(1, [&] { service.batch(requests); })() / chunk);
        // Some are lucky and wait for no idle sleep.
        single.push_back(
            quantile(interleave(5, {repeated(1, [&] { service.single("getBrightness"); })})[0], 1));
        const double call = direct();
        pipelinedRatio.push_back(pipelined.back() / call);
        singleRatio.push_back(single.back() / (idleSleep + call));
        const Memory memory = memoryOf(pid);
        own.push_back(memory.own);
        resident.push_back(memory.resident);
        points << done + chunk << '\t' << own.back() / own.front() << '\t'
               << resident.back() / resident.front() << '\t'
               << pipelinedRatio.back() / pipelinedRatio.front() << '\t'
               << singleRatio.back() / singleRatio.front() << '\n';
    }
    const auto last = [](const Rounds& all) { return Rounds(all.end() - 10, all.end()); };
    const auto first = [](const Rounds& all) { return Rounds(all.begin(), all.begin() + 10); };
    report.part(format("Over %d requests", many));
    const std::string after = format("after the first %d", chunk);
    report.row("private memory at the end", after, {own.back() / own.front()},
               format("%.0f / %.0f KiB", own.back(), own.front()), Goal::AtMost, 1);
    report.row("resident memory at the end", after, {resident.back() / resident.front()},
               format("%.0f / %.0f KiB", resident.back(), resident.front()), Goal::AtMost, 1);
    const auto flat = [&](const char* what, const char* against, const Rounds& ratios,
                          const Rounds& times) {
        report.row(what, against, quotients(last(ratios), first(ratios)),
                   durations(last(times), first(times)) +
                       format(", ratios %.3g / %.3g", median(last(ratios)), median(first(ratios))),
                   Goal::AtMost, 1.25);
    };
    flat("pipelined time over a Qt D-Bus call's, last tenth", "first tenth", pipelinedRatio,
         pipelined);
    flat("slowest of 5 single ones over an idle sleep + a Qt D-Bus call, last tenth", "first tenth",
         singleRatio, single);
}
} // namespace

void measureGrowth(Report& report, const Effort& effort)
{
    {
        const ReadyServer server;
        measureWindows(report, effort);
        measureSizes(report, effort);
    }
    measureEndurance(report, effort);
}
