#include "bench/contenders.h"
#include "bench/measurements.h"

#include <sstream>
#include <sys/socket.h>

namespace
{
/// Runs minimal_server.cpp on a socket of its own.
struct MinimalServer {
    explicit MinimalServer(const std::string& mode)
        : process({OVIK_BENCH_MINIMAL_SERVER_PATH, path, mode}, "ready")
    {
    }
    const TempDir dir;
    const std::string path = dir.path("socket");
    const ReadyProcess process;
};

void measureRate(Report& report, const Effort& effort)
{
    constexpr int count = 2000;
    const MinimalServer minimal("brightness");
    ServiceClient service;
    ServiceClient other(minimal.path);
    DirectProgram direct;
    const auto took =
        alternate(effort.rounds(50), {
                                         batch(service, "getBrightness", count),
                                         repeated(1000, [&] { direct.getBrightness(); }),
                                         batch(other, "getBrightness", count),
                                         repeated(10, runBusctl),
                                     });
    const auto row = [&](size_t i, const char* comparedWith, const Goal& goal) {
        report.row(format("rate, batch of %d getBrightness", count), comparedWith,
                   quotients(took[i], took[0]), rates(took[0], took[i]), goal);
    };
    row(1, "blocking Qt D-Bus calls", {Goal::AtLeast, 0.8});
    row(2, "a minimal server with the same hand-over", {});
    row(3, "a busctl process per request", {Goal::AtLeast, 15});
}

void measureCycle(Report& report, const Effort& effort)
{
    constexpr int fours = 5;
    std::vector<const char*> requests;
    for (int i = 0; i < fours; ++i)
        requests.insert(requests.end(),
                        {"getBrightness", "getBuzzerMode", "getSysCounter", "getAvailableMemory"});
    ServiceClient service;
    DirectProgram direct;
    const auto took =
        alternate(effort.rounds(25), {repeated(5, [&] { service.batch(requests); }),
                                      repeated(20 * fours, [&] { direct.readFour(); })});
    Samples allowed;
    for (const double four : took[1])
        allowed.push_back(idleSleep + 1.3 * fours * four);
    report.row("time, batch of 20 reads", "idle sleep (10 ms) + 1.3 x 20 blocking Qt D-Bus calls",
               quotients(took[0], allowed), durations(took[0], allowed), {Goal::AtMost, 1});
}

void measureLatency(Report& report, const Effort& effort)
{
    ServiceClient service;
    const Samples took =
        alternate(effort.rounds(1000), {batch(service, "getBrightness", 1)}).front();
    auto points = report.points("latency");
    for (double percent = 0; percent <= 100; percent += 0.5)
        points << quantile(took, percent / 100) / 1e6 << '\t' << percent << '\n';
    const auto row = [&](const char* what, double share) {
        const double time = quantile(took, share);
        report.row(format("latency of single requests, %s", what), "idle sleep (10 ms)",
                   {time / idleSleep}, durations({time}, {idleSleep}));
    };
    row("median", 0.5);
    row("99th percentile", 0.99);
}

void measureUnknownWord(Report& report, const Effort& effort)
{
    constexpr int count = 20000;
    // An unknown word equal to its response, so the same client code works with both servers.
    constexpr const char* word = "-8";
    const MinimalServer minimal("echo");
    ServiceClient service;
    ServiceClient echo(minimal.path);
    const auto took = alternate(effort.rounds(50), {batch(service, word, count, OVIK_NOT_RUN),
                                                    batch(echo, word, count, OVIK_NOT_RUN)});
    report.row(format("rate, batch of %d unknown words", count), "an echo server",
               quotients(took[1], took[0]), rates(took[0], took[1]), {Goal::AtLeast, 0.5});
}

/// Sends @p count requests, with at most @p underWay unanswered at any time.
void sendAhead(int sock, int count, int underWay)
{
    constexpr char request[] = "getBrightness";
    char answer[64];
    int sent = 0;
    for (int answered = 0; answered < count; ++answered) {
        for (; sent < count && sent - answered < underWay; ++sent) {
            if (send(sock, request, sizeof request, MSG_NOSIGNAL) == -1)
                throw std::runtime_error("cannot send a request");
        }
        if (recv(sock, answer, sizeof answer, 0) <= 0)
            throw std::runtime_error("a request got no answer");
    }
}

void plotRateByRequestsUnderWay(const Report& report, const Effort& effort)
{
    auto points = report.points("window");
    for (const int underWay : {1, 2, 4, 8, 16, 32, 64}) {
        const Client client(serverSocket);
        DirectProgram direct;
        // A single request waits for an idle sleep, so fewer are enough.
        const int count = underWay == 1 ? 20 : 1000;
        const auto took = alternate(effort.rounds(15),
                                    {timed(count, [&] { sendAhead(client.fd(), count, underWay); }),
                                     repeated(200, [&] { direct.getBrightness(); })});
        const Samples ratios = quotients(took[1], took[0]);
        points << underWay << '\t' << median(ratios) << '\t' << quantile(ratios, 0.25) << '\t'
               << quantile(ratios, 0.75) << '\n';
    }
}
} // namespace

void measureRequests(Report& report, const Effort& effort)
{
    const ReadyServer server;
    measureRate(report, effort);
    measureCycle(report, effort);
    measureLatency(report, effort);
    measureUnknownWord(report, effort);
    plotRateByRequestsUnderWay(report, effort);
}

void measureBridge(Report& report, const Effort& effort)
{
    Process bridge({OVIK_BENCH_BRIDGE_PATH, std::to_string(effort.rounds(100)), "2000"});
    if (bridge.wait(5min) != 0)
        throw std::runtime_error("the bridge's benchmark failed: " + bridge.errors());
    Samples ours, plain;
    std::istringstream lines(bridge.output());
    for (double a, b; lines >> a >> b;) {
        ours.push_back(a);
        plain.push_back(b);
    }
    report.row("time, ovik_getBrightness() without a backend", "a plain blocking queued invocation",
               quotients(ours, plain), durations(ours, plain), {Goal::AtMost, 1.3});
}
