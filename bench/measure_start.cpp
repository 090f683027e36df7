#include "bench/contenders.h"
#include "bench/measurements.h"

#include <thread>

namespace
{
constexpr auto pollInterval = 200us; // for both programs
constexpr double longestStart = 30e9;

double timeToFirstAnswer()
{
    if (isListening(serverSocket))
        throw std::runtime_error("another server listens on " + std::string(serverSocket));
    const double start = nanoseconds();
    Process server({OVIK_SERVER_PATH});
    ovik_client* client = nullptr;
    ovik_client_answer answer = {OVIK_NO_PLATFORM, "", 0};
    while (ovik_client_open(&client, nullptr, 1000) != OVIK_CLIENT_OK &&
           nanoseconds() < start + longestStart)
        std::this_thread::sleep_for(pollInterval);
    while (answer.status != OVIK_OK) {
        if (nanoseconds() > start + longestStart ||
            ovik_client_request(client, "getBrightness", 30000, &answer) != OVIK_CLIENT_OK)
            throw std::runtime_error("the service does not start: " + server.errors());
    }
    const double took = nanoseconds() - start;
    ovik_client_request(client, "quit", 30000, &answer);
    ovik_client_close(client);
    if (server.wait() != 0)
        throw std::runtime_error("the service does not end: " + server.errors());
    return took;
}

double timeToFirstCall()
{
    const double start = nanoseconds();
    Process program({OVIK_BENCH_MINIMAL_PROGRAM_PATH});
    while (program.output().empty()) {
        if (!program.running() || nanoseconds() > start + longestStart)
            throw std::runtime_error("the minimal program gets no answer");
        std::this_thread::sleep_for(pollInterval);
    }
    return nanoseconds() - start;
}
} // namespace

void measureStart(Report& report, const Effort& effort)
{
    const ServerLock lock;
    const auto took = alternate(effort.rounds(25), {timeToFirstAnswer, timeToFirstCall});
    const Samples allowed(took[0].size(), 60e6);
    constexpr const char* what = "start to the first good answer";
    report.row(what, "60 ms", quotients(took[0], allowed), durations(took[0], allowed),
               {Goal::AtMost, 1});
    report.row(what, "the minimal Qt D-Bus program", quotients(took[0], took[1]),
               durations(took[0], took[1]), {Goal::AtMost, 2.2});
}
