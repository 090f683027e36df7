// A long run of the real service against a panel that comes, goes and stands still, with clients of
// every kind; every answer is checked, and what the service holds must not grow.

#include "tests/soak/faults.h"
#include "tests/support/private_bus.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>
#include <iostream>
#include <stdexcept>

namespace
{
constexpr long mostWrong = 20;
constexpr auto measureEvery = 10s;
constexpr auto progressEvery = 30s;
/// A shorter run goes without the slow faults.
constexpr int longRun = 600;

class Soak
{
public:
    Soak(int seconds, unsigned int seed)
        : m_seconds(seconds), m_seed(seed), m_random(seed), m_server({"prlimit", "--nofile=64"}),
          m_model(m_panel), m_traffic(m_server, m_panel, m_model, m_random, m_report)
    {
    }

    bool run();

private:
    std::vector<const Fault*> faults(Cost cost) const;
    void warmUp();
    void step(const Fault* fault);
    void happen(const Fault& fault);
    void measure();
    int elapsed() const
    {
        return static_cast<int>(
            std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - m_start).count());
    }
    bool goesOn() const { return elapsed() < m_seconds && m_report.wrong < mostWrong; }

    const int m_seconds;
    const unsigned int m_seed;
    const Clock::time_point m_start = Clock::now();
    Clock::time_point m_nextMeasure;
    Clock::time_point m_nextProgress = m_start;
    Random m_random;
    Report m_report;
    PrivateBus m_bus;
    Panel m_panel;
    Server m_server;
    Model m_model;
    Traffic m_traffic;
    Scene m_scene{m_server, m_panel, m_model, m_traffic, m_random};
};

std::vector<const Fault*> Soak::faults(Cost cost) const
{
    std::vector<const Fault*> found;
    for (const Fault& fault : allFaults()) {
        if (fault.cost == cost)
            found.push_back(&fault);
    }
    return found;
}

bool Soak::run()
{
    try {
        m_model.serviceStarts();
        m_panel.start({});
        m_scene.waitForAdoption();
        warmUp();
        m_nextMeasure = Clock::now();
        while (goesOn()) {
            const Fault* fault = nullptr;
            if (m_random.chance(10))
                fault = m_random.pick(faults(Cost::Usual));
            else if (m_seconds >= longRun && m_random.below(4000) == 0)
                fault = m_random.pick(faults(Cost::Slow));
            step(fault);
            measure();
        }
        m_traffic.request("quit");
        if (m_server.process().wait() != 0)
            throw std::runtime_error("the service did not end well, saying " +
                                     m_server.process().errors());
    } catch (const std::exception& error) {
        m_report.complain("the run has ended early", error.what());
    }
    return m_report.conclude(m_seed, elapsed());
}

/// Everything happens at least once, in any order. The service is restarted only here, so that
/// there is one long life of it to measure.
void Soak::warmUp()
{
    std::vector<const Fault*> order = faults(Cost::Restart);
    m_random.shuffle(order);
    std::vector<const Fault*> others = faults(Cost::Usual);
    if (m_seconds >= longRun) {
        for (const Fault* fault : faults(Cost::Slow))
            others.push_back(fault);
    }
    m_random.shuffle(others);
    order.insert(order.end(), others.begin(), others.end());
    for (const Fault* fault : order) {
        if (!goesOn())
            return;
        step(fault);
        step(nullptr);
    }
    while (goesOn() && !m_traffic.haveCommandsAllCome())
        step(nullptr);
    // Buffers grow now and not at some later time.
    for (int times = 0; goesOn() && times < 10; ++times)
        m_traffic.largestRequests();
    m_scene.restartPanel();
}

/// Some traffic, perhaps around a fault.
void Soak::step(const Fault* fault)
{
    m_traffic.someClients();
    if (fault) {
        ++m_report.faults[fault->name];
        fault->happen(m_scene);
    }
    if (m_random.chance(20)) {
        const std::string differences = m_model.differences();
        if (!differences.empty())
            m_traffic.wrong("(the panel itself)", "", differences);
    }
    if (m_traffic.isOutOfStep()) {
        m_scene.restartPanel();
        m_traffic.inStepAgain();
    }
    if (Clock::now() >= m_nextProgress) {
        m_report.progress(elapsed(), footprintOf(m_server.process().pid()));
        m_nextProgress = Clock::now() + progressEvery;
    }
}

void Soak::measure()
{
    if (Clock::now() < m_nextMeasure)
        return;
    m_nextMeasure = Clock::now() + measureEvery;
    m_report.footprints.push_back(footprintOf(m_server.process().pid()));
}

int numberOf(const QCommandLineParser& parser, const QString& option)
{
    bool isNumber = false;
    const int number = parser.value(option).toInt(&isNumber);
    if (!isNumber || number < 0)
        throw std::runtime_error("bad value for --" + option.toStdString());
    return number;
}

int run()
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Runs ovik_server with random clients and faults of the panel and checks every answer.");
    parser.addHelpOption();
    parser.addOptions({
        {"seconds", "How long to run.", "number", "120"},
        {"seed", "Repeats the decisions of an earlier run.", "number"},
    });
    parser.process(*QCoreApplication::instance());

    Model::checkCommands();
    Requests::checkArguments();
    const unsigned int seed = parser.isSet("seed")
                                  ? static_cast<unsigned int>(numberOf(parser, "seed"))
                                  : std::random_device()() % 1000000;
    std::cerr << "seed " << seed << std::endl;
    return Soak(numberOf(parser, "seconds"), seed).run() ? EXIT_SUCCESS : EXIT_FAILURE;
}
} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("ovik_soak");
    try {
        return run();
    } catch (const std::exception& error) {
        std::cerr << "ovik_soak: " << error.what() << std::endl;
        return EXIT_FAILURE;
    }
}
