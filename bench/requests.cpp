#include "bench/bench.h"
#include "bench/contenders.h"
#include "bench/proc.h"

#include <QThread>

#include <algorithm>
#include <memory>
#include <sstream>
#include <unistd.h>

namespace
{
std::vector<const char*> same(const char* request, int count)
{
    return std::vector<const char*>(static_cast<size_t>(count), request);
}

Contender batches(Service& service, const std::vector<const char*>& requests, int status = OVIK_OK)
{
    return [&service, requests, status] {
        const double start = nanoseconds();
        service.batch(requests, status);
        return (nanoseconds() - start) / static_cast<double>(requests.size());
    };
}

/// What a server's process took while contenders talked to it.
struct Meter {
    pid_t pid;
    Rounds processor = {}; ///< ns a request
    Rounds waiting = {}; ///< ns a request of its main thread, for requests or for room for answers

    Contender on(const Contender& contender, int requests)
    {
        return [this, contender, requests] {
            const double processorBefore = processorTimeOf(pid);
            const double busyBefore = busyTimeOf(pid);
            const double start = nanoseconds();
            const double took = contender();
            processor.push_back((processorTimeOf(pid) - processorBefore) / requests);
            const double busy = busyTimeOf(pid) - busyBefore;
            waiting.push_back(std::max(0.0, nanoseconds() - start - busy) / requests);
            return took;
        };
    }
};

/// A server to compare with, at a socket in @p dir.
std::unique_ptr<Process> startOther(const char* program, const TempDir& dir)
{
    auto process = std::make_unique<Process>(std::vector<std::string>{program, dir.path("socket")});
    if (!process->waitForOutput("ready"))
        throw std::runtime_error(std::string(program) + ": " + process->errors());
    return process;
}

void measurePipelined(Report& report, const Effort& effort, pid_t server)
{
    constexpr int many = 2000;
    constexpr int some = 1000;
    const TempDir dir;
    const auto leastServer = startOther(OVIK_BENCH_SERVER_PATH, dir);
    Service service;
    Service least(dir.path("socket"));
    QtProgram qt;
    SdBusProgram sdBus;
    QObject elsewhere;
    QThread thread;
    elsewhere.moveToThread(&thread);
    thread.start();
    Meter ours{server};
    Meter program{getpid()};
    const auto took = interleave(effort.rounds(50),
                                 {
                                     ours.on(batches(service, same("getBrightness", many)), many),
                                     program.on(repeated(some, [&] { qt.getBrightness(); }), some),
                                     repeated(some, [&] { sdBus.call(brightness); }),
                                     repeated(10, [] { runBusctl(brightness); }),
                                     repeated(some,
                                              [&] {
                                                  QMetaObject::invokeMethod(
                                                      &elsewhere, [&] { qt.getBrightness(); },
                                                      Qt::BlockingQueuedConnection);
                                              }),
                                     batches(least, same("getBrightness", many)),
                                 });
    thread.quit();
    thread.wait();
    report.part("getBrightness, pipelined");
    report.row("rate of a batch of 2000", "blocking Qt D-Bus calls", quotients(took[1], took[0]),
               rates(took[0], took[1]), Goal::AtLeast, 0.8);
    report.row("rate of a batch of 2000", "the same, each handed over to another thread",
               quotients(took[4], took[0]), rates(took[0], took[4]));
    report.row("rate of a batch of 2000", "the least server with such a hand-over",
               quotients(took[5], took[0]), rates(took[0], took[5]));
    report.row("rate of a batch of 2000", "blocking sd-bus calls", quotients(took[2], took[0]),
               rates(took[0], took[2]));
    report.row("rate of a batch of 2000", "a busctl process each", quotients(took[3], took[0]),
               rates(took[0], took[3]), Goal::AtLeast, 15);
    report.row("processor time of the service", "of the program with Qt D-Bus",
               quotients(ours.processor, program.processor),
               durations(ours.processor, program.processor));
}

void measureCycle(Report& report, const Effort& effort)
{
    Service service;
    QtProgram qt;
    std::vector<const char*> requests;
    for (const Read& read : cycle())
        requests.push_back(read.request);
    const auto took =
        interleave(effort.rounds(25), {
                                          repeated(5, [&] { service.batch(requests); }),
                                          repeated(1,
                                                   [&] {
                                                       for (const char* request : requests)
                                                           service.single(request);
                                                   }),
                                          repeated(1,
                                                   [&] {
                                                       for (const Read& read : cycle())
                                                           runBusctl(read);
                                                   }),
                                          repeated(20, [&] { qt.readCycle(); }),
                                      });
    Rounds allowed;
    for (const double calls : took[3])
        allowed.push_back(idleSleep + 1.3 * calls);
    report.part("A control cycle of 20 reads: time");
    report.row("batch", "an idle sleep (10 ms) + 1.3 x 20 Qt D-Bus calls",
               quotients(took[0], allowed), durations(took[0], allowed), Goal::AtMost, 1);
    report.row("batch", "20 single requests", quotients(took[0], took[1]),
               durations(took[0], took[1]));
    report.row("batch", "20 busctl processes", quotients(took[0], took[2]),
               durations(took[0], took[2]));
    report.row("batch", "20 blocking Qt D-Bus calls", quotients(took[0], took[3]),
               durations(took[0], took[3]));
}

void measureSingle(Report& report, const Effort& effort)
{
    Service service;
    const auto took =
        interleave(effort.rounds(1000), {repeated(1, [&] { service.single("getBrightness"); })});
    const Rounds& one = took[0];
    auto points = report.points("latency");
    for (double percent = 0; percent <= 100; percent += 0.5)
        points << quantile(one, percent / 100) / 1e6 << '\t' << percent << '\n';

    report.part("getBrightness, one after the answer of the other: time");
    const auto beside = [&](const char* what, double share) {
        const double time = quantile(one, share);
        report.row(what, "the idle sleep (10 ms)", {time / idleSleep}, duration(time));
    };
    beside("minimum", 0);
    beside("median", 0.5);
    beside("99th percentile", 0.99);
}

void measureUnknownWord(Report& report, const Effort& effort, pid_t server)
{
    // A word that is none, and its answer: so the same client code talks to both.
    constexpr const char* word = "-8";
    constexpr int many = 20000;
    const TempDir dir;
    const auto echo = startOther(OVIK_BENCH_ECHO_PATH, dir);
    Service service;
    Service plain(dir.path("socket"));
    const auto requests = same(word, many);
    Meter ours{server};
    Meter others{echo->pid()};
    const auto took =
        interleave(effort.rounds(50), {
                                          ours.on(batches(service, requests, OVIK_NOT_RUN), many),
                                          others.on(batches(plain, requests, OVIK_NOT_RUN), many),
                                      });
    report.part("An unknown word, pipelined");
    report.row("rate of a batch of 20000", "a plain echo in C", quotients(took[1], took[0]),
               rates(took[0], took[1]), Goal::AtLeast, 0.5);
    report.row("processor time of the service", "of the echo",
               quotients(ours.processor, others.processor),
               durations(ours.processor, others.processor));
    report.row("it waited, as in its idle sleeps, for", "the batch's time",
               quotients(ours.waiting, took[0]), durations(ours.waiting, took[0]));
}
} // namespace

void measureRequests(Report& report, const Effort& effort)
{
    ReadyServer server;
    const pid_t pid = server.process().pid();
    measurePipelined(report, effort, pid);
    measureCycle(report, effort);
    measureSingle(report, effort);
    measureUnknownWord(report, effort, pid);
}

void measureBridge(Report& report, const Effort& effort)
{
    Process bridge({OVIK_BENCH_BRIDGE_PATH, std::to_string(effort.rounds(100)), "2000"});
    if (bridge.wait(5min) != 0)
        throw std::runtime_error("the bridge's benchmark failed: " + bridge.errors());
    Rounds ours;
    Rounds bare;
    std::istringstream lines(bridge.output());
    for (double a, b; lines >> a >> b;) {
        ours.push_back(a);
        bare.push_back(b);
    }
    report.part("The bridge alone, no backend: time");
    report.row("ovik_getBrightness()", "a bare blocking queued invocation", quotients(ours, bare),
               durations(ours, bare), Goal::AtMost, 1.3);
}
