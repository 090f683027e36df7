#include "bench/bench.h"
#include "bench/contenders.h"

#include <fstream>
#include <map>
#include <thread>

namespace
{
/// How often it is looked whether a program has come so far.
constexpr auto pause = 200us;

/// From the start of @p command, which runs the service, to its first good answer.
double firstAnswer(const std::vector<std::string>& command)
{
    if (isListening(serverSocket))
        throw std::runtime_error("another server holds " + std::string(serverSocket));
    const double start = nanoseconds();
    const double deadline = start + 30e9;
    Process server(command);
    ovik_client* client = nullptr;
    ovik_client_answer answer = {OVIK_NO_PLATFORM, "", 0};
    while (ovik_client_open(&client, nullptr, 1000) != OVIK_CLIENT_OK && nanoseconds() < deadline)
        std::this_thread::sleep_for(pause);
    while (answer.status != OVIK_OK) {
        if (nanoseconds() > deadline ||
            ovik_client_request(client, "getBrightness", 30000, &answer) != OVIK_CLIENT_OK)
            throw std::runtime_error("the service does not come up");
    }
    const double took = nanoseconds() - start;
    ovik_client_request(client, "quit", 30000, &answer);
    ovik_client_close(client);
    if (server.wait() != 0)
        throw std::runtime_error("the service does not end: " + server.errors());
    return took;
}

double firstCall()
{
    const double start = nanoseconds();
    Process minimal({OVIK_BENCH_MINIMAL_PATH});
    while (minimal.output().empty()) {
        if (!minimal.running() || nanoseconds() > start + 30e9)
            throw std::runtime_error("the minimal program has no answer");
        std::this_thread::sleep_for(pause);
    }
    return nanoseconds() - start;
}

/// The object that a message to the bus, as strace shows it, is for.
std::string objectIn(const std::string& message)
{
    const size_t path = message.find('/', message.find("\\1o\\0"));
    return message.substr(path, message.find('\\', path) - path);
}

/// The stretches of a start, in their order, with their ns.
class Stretches
{
public:
    explicit Stretches(std::istream& trace)
    {
        // PID TIME CALL
        double now = 0;
        int pid = 0;
        for (std::string call; trace >> pid >> now && std::getline(trace, call);)
            take(now * 1e9, call.substr(1));
    }

    std::vector<std::string> names;
    std::map<std::string, double> times;
    double sum = 0;

private:
    void begin(double now, const std::string& name)
    {
        if (!names.empty()) {
            times[names.back()] += now - m_begin;
            sum += now - m_begin;
        }
        if (times.find(name) == times.end())
            names.push_back(name);
        times[name];
        m_begin = now;
    }

    void take(double now, const std::string& call)
    {
        const auto is = [&](const char* name) { return call.rfind(name, 0) == 0; };
        const auto has = [&](const char* text) { return call.find(text) != std::string::npos; };
        if (is("execve"))
            begin(now, "load and link");
        else if (is("bind"))
            begin(now, "socket");
        else if (is("clone") && names.back() == "socket")
            begin(now, "thread, application object");
        else if (is("connect") && has("/bus\""))
            begin(now, "bus connection");
        else if (is("sendmsg") && has("GetNameOwner\\0"))
            m_asked = now; // as each client does when it is made
        else if (is("sendmsg") && has("Introspect\\0"))
            begin(m_asked, "proxy " + nameOf(objectIn(call)));
        else if (is("sendmsg") && has("getBrightness\\0"))
            begin(now, "the platform's answer");
        else if (is("write(") && has("\"0 "))
            begin(now, "");
    }

    /// The objects of plug-in modules count together.
    static std::string nameOf(const std::string& object)
    {
        return object.rfind("/HWPlugin", 0) == 0 ? "/HWPlugin/…" : object;
    }

    double m_begin = 0;
    double m_asked = 0;
};

void measureSplit(Report& report, const Effort& effort, const Rounds& untraced)
{
    const TempDir dir;
    const std::string file = dir.path("trace");
    if (Process({"strace", "-o", file, "true"}).wait() != 0) {
        report.remark("no split: strace is missing, or may not trace here");
        return;
    }
    const std::vector<std::string> command = {
        "strace",
        "-f",
        "-ttt",
        "-s",
        "300",
        "-o",
        file,
        "-e",
        "trace=execve,bind,clone,clone3,connect,sendmsg,write",
        OVIK_SERVER_PATH};
    std::vector<std::string> names;
    std::map<std::string, Rounds> shares;
    std::map<std::string, Rounds> times;
    Rounds traced;
    for (int round = 0; round < effort.rounds(15); ++round) {
        firstAnswer(command);
        std::ifstream trace(file);
        const Stretches stretches(trace);
        names = stretches.names;
        traced.push_back(stretches.sum);
        for (const auto& [name, time] : stretches.times) {
            shares[name].push_back(time / stretches.sum);
            times[name].push_back(time);
        }
    }
    report.row("from exec on, seen by strace", "not seen by it",
               {median(traced) / median(untraced)}, durations(traced, untraced));
    for (const std::string& name : names) {
        if (!name.empty())
            report.row("of it: " + name, "the whole, seen by strace", shares[name],
                       durations(times[name], traced));
    }
}
} // namespace

void measureStart(Report& report, const Effort& effort)
{
    const ServerLock lock;
    const auto took =
        interleave(effort.rounds(25), {
                                          [] { return firstAnswer({OVIK_SERVER_PATH}); },
                                          firstCall,
                                      });
    Rounds shares;
    for (const double time : took[0])
        shares.push_back(time / 60e6);
    report.part("Start to the first good answer: time");
    report.row("ovik_server", "60 ms", shares, duration(median(took[0])), Goal::AtMost, 1);
    report.row("ovik_server", "the minimal program to its first answer",
               quotients(took[0], took[1]), durations(took[0], took[1]));
    measureSplit(report, effort, took[0]);
}
