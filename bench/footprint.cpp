#include "bench/bench.h"
#include "bench/contenders.h"
#include "bench/proc.h"
#include "tests/support/private_bus.h"

#include <csignal>
#include <filesystem>
#include <optional>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{
/// The program that the service is compared with, when it has made its one call.
class Minimal : public Process
{
public:
    explicit Minimal(const std::vector<std::string>& arguments = {})
        : Process(commandOf(OVIK_BENCH_MINIMAL_PATH, arguments))
    {
        if (!waitForOutput("brightness"))
            throw std::runtime_error("the minimal program has no answer: " + errors());
    }
};

std::string kibibytes(const Rounds& ours, const Rounds& others)
{
    return format("%.0f / %.0f KiB", median(ours), median(others));
}

/// Of the service and of the minimal program on a panel with a module in each slot: nothing is
/// missing there that the service would warn of.
void measureWithoutWarning(Rounds& ours, Rounds& others)
{
    const std::string before = getenv("DBUS_SYSTEM_BUS_ADDRESS");
    {
        const PrivateBus bus;
        Process panel({OVIK_PANEL_SIM_PATH, "--slots", "0,1,2,3"});
        if (!panel.waitForOutput("ovik_panel_sim: ready"))
            throw std::runtime_error("no whole panel: " + panel.errors());
        Minimal minimal;
        ReadyServer server;
        ours.push_back(memoryOf(server.process().pid()).resident);
        others.push_back(memoryOf(minimal.pid()).resident);
    }
    setenv("DBUS_SYSTEM_BUS_ADDRESS", before.c_str(), 1);
}

void measureMemory(Report& report, const Effort& effort)
{
    constexpr int load = 10000;
    Rounds resident, own, loaded, bare, bareOwn, client, whole, wholeBare;
    int threads = 0;
    int bareThreads = 0;
    for (int round = 0; round < effort.rounds(9); ++round) {
        measureWithoutWarning(whole, wholeBare); // no other server may run
        Minimal minimal;
        Minimal withClient({"client"});
        ReadyServer server;
        const pid_t pid = server.process().pid();
        const Memory ours = memoryOf(pid);
        const Memory others = memoryOf(minimal.pid());
        Service().batch(std::vector<const char*>(load, "getBrightness"));
        resident.push_back(ours.resident);
        own.push_back(ours.own);
        loaded.push_back(memoryOf(pid).resident);
        bare.push_back(others.resident);
        bareOwn.push_back(others.own);
        client.push_back(memoryOf(withClient.pid()).resident);
        threads = threadsOf(pid);
        bareThreads = threadsOf(minimal.pid());
    }
    report.part("Memory");
    constexpr const char* against = "a minimal Qt D-Bus program after a call";
    report.row("resident, after the first answer", against, quotients(resident, bare),
               kibibytes(resident, bare), Goal::AtMost, 1.1);
    report.row("resident, after 10,000 more", against, quotients(loaded, bare),
               kibibytes(loaded, bare), Goal::AtMost, 1.1);
    report.row("resident, no module missing", against, quotients(whole, wholeBare),
               kibibytes(whole, wholeBare), Goal::AtMost, 1.1);
    report.row("resident, after the first answer", "the same by a QDBusInterface",
               quotients(resident, client), kibibytes(resident, client));
    report.row("private and written, after the first answer", against, quotients(own, bareOwn),
               kibibytes(own, bareOwn));
    report.remark(format("%d threads, the minimal program %d", threads, bareThreads));
}

/// A process that does nothing but the idle sleep, again and again.
class Sleeper
{
public:
    Sleeper() : m_pid(fork())
    {
        if (m_pid == -1)
            throw std::runtime_error("cannot fork");
        if (m_pid != 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (;;)
            usleep(static_cast<useconds_t>(idleSleep / 1000));
    }
    ~Sleeper()
    {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;
    pid_t pid() const { return m_pid; }

private:
    const pid_t m_pid;
};

/// The share of one core that each process takes while nobody asks for anything.
std::vector<double> idleShares(const std::vector<pid_t>& pids, std::chrono::seconds time)
{
    std::vector<double> before;
    before.reserve(pids.size());
    for (const pid_t pid : pids)
        before.push_back(processorTimeOf(pid));
    const double start = nanoseconds();
    std::this_thread::sleep_for(time);
    const double elapsed = nanoseconds() - start;
    std::vector<double> shares;
    for (size_t i = 0; i < pids.size(); ++i)
        shares.push_back((processorTimeOf(pids[i]) - before[i]) / elapsed);
    return shares;
}

void measureIdle(Report& report, const Effort& effort)
{
    const auto time = effort.quick ? 2s : 5s;
    Minimal minimal;
    const Sleeper sleeper;
    ReadyServer server;
    const std::vector<pid_t> pids = {server.process().pid(), minimal.pid(), sleeper.pid()};
    Rounds alone, connected, others, sleeps;
    for (int round = 0; round < effort.rounds(5); ++round) {
        const auto shares = idleShares(pids, time);
        alone.push_back(shares[0] * 100);
        others.push_back(shares[1] * 100);
        sleeps.push_back(shares[2] * 100);
        const Service client;
        connected.push_back(idleShares(pids, time)[0] * 100);
    }
    report.part("Processor time when idle");
    const auto row = [&](const char* what, const Rounds& percent) {
        report.row(what, "1 % of one core", percent,
                   format("%.3g %% of one core, the minimal program %.3g %%", median(percent),
                          median(others)),
                   Goal::AtMost, 0.5);
    };
    row("without a client", alone);
    row("with a client that says nothing", connected);
    report.row("without a client", "a program that only sleeps, 10 ms at a time",
               quotients(alone, sleeps),
               format("%.3g / %.3g %% of one core", median(alone), median(sleeps)));
}

/// Its size without symbols; nothing when there is no such file or no such tool.
std::optional<double> strippedSize(const std::string& strip, const std::string& program)
{
    if (!std::filesystem::exists(program))
        return std::nullopt;
    const TempDir dir;
    Process process({strip, "-o", dir.path("stripped"), program});
    if (process.wait() != 0)
        return std::nullopt;
    return static_cast<double>(std::filesystem::file_size(dir.path("stripped"))) / 1024;
}

void measureSize(Report& report)
{
    const auto ours = strippedSize("strip", OVIK_SERVER_PATH);
    const auto minimal = strippedSize("strip", OVIK_BENCH_MINIMAL_PATH);
    report.part("Program size, stripped");
    if (!ours || !minimal)
        throw std::runtime_error("cannot strip the program");
    report.row("ovik_server", "the minimal program", {*ours / *minimal},
               format("%.0f / %.0f KiB", *ours, *minimal));
    const auto armhf =
        strippedSize("arm-linux-gnueabihf-strip", OVIK_SOURCE_DIR "/build-armhf/bin/ovik_server");
    if (armhf)
        report.row("ovik_server for armhf", "ovik_server", {*armhf / *ours},
                   format("%.0f / %.0f KiB", *armhf, *ours));
    else
        report.remark("ovik_server for armhf: not built (scripts/armhf.sh builds it)");
}
} // namespace

void measureFootprint(Report& report, const Effort& effort)
{
    measureMemory(report, effort);
    measureIdle(report, effort);
    measureSize(report);
}
