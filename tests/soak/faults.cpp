#include "tests/soak/faults.h"

#include <algorithm>
#include <csignal>
#include <stdexcept>
#include <thread>

namespace
{
void pause(Random& random, int longestMs)
{
    std::this_thread::sleep_for(std::chrono::microseconds(random.between(0, 1000 * longestMs)));
}

PanelOptions whole(Random& random)
{
    PanelOptions options;
    options.scanDelay = random.pick(std::vector{0, 5, 20, 100});
    return options;
}

PanelOptions partly(Random& random)
{
    static const QStringList objects = {
        "OVIK",     "Backlight",  "Buzzer",     "I2CSEEPROM",     "MainOSInfo",
        "SysStat",  "SystemInfo", "StorageMgr", "NetworkManager", "ServiceManager",
        "HWPlugin", "Leds",       "Sensors"};
    PanelOptions options = whole(random);
    for (int count = random.between(0, 3); count > 0; --count)
        options.missing.append(random.pick(objects));
    options.modules =
        random.pick(QList<QList<int>>{{}, {0}, {1}, {2}, {0, 2}, {1, 3}, {0, 1, 2, 3}});
    return options;
}

void traffic(Scene& s, int most)
{
    for (int left = s.random.between(1, most); left > 0; --left)
        s.traffic.someClients();
}

void panelGone(Scene& s)
{
    s.panel.kill();
    s.panel.gone();
    traffic(s, 5);
    s.restartPanel();
}

void panelReplaced(Scene& s)
{
    s.restartPanel();
    traffic(s, 3);
}

void panelGoesAmidRequests(Scene& s)
{
    Client client(serverSocket);
    const auto sent = Clock::now();
    const auto messages =
        s.traffic.send(client, static_cast<size_t>(s.random.between(5, 100)), false);
    pause(s.random, 20);
    s.panel.kill();
    s.traffic.checkAnswers(client, messages, sent, Meanwhile::PanelMayGo);
    client.disconnect();
    s.restartPanel();
}

void panelComesAmidRequests(Scene& s)
{
    s.panel.kill();
    s.panel.gone();
    s.panel.launch(whole(s.random));
    while (!s.panel.isUp() && !s.traffic.isOutOfStep()) {
        Client client(serverSocket);
        const auto sent = Clock::now();
        const auto messages =
            s.traffic.send(client, static_cast<size_t>(s.random.between(5, 100)), false);
        s.traffic.checkAnswers(client, messages, sent, Meanwhile::PanelMayAppear);
    }
}

void panelFreezes(Scene& s)
{
    Client client(serverSocket);
    const auto sent = Clock::now();
    const auto messages = s.traffic.send(client, static_cast<size_t>(s.random.between(1, 50)));
    pause(s.random, 10);
    s.panel.freeze();
    pause(s.random, s.random.chance(20) ? 2000 : 200);
    s.panel.resume();
    s.model.resultsDelayed();
    s.traffic.checkAnswers(client, messages, sent);
}

void panelGoesWhileFrozen(Scene& s)
{
    s.panel.freeze();
    s.panel.gone(); // as it will answer nothing any more
    Client client(serverSocket);
    const auto sent = Clock::now();
    const auto messages =
        s.traffic.send(client, static_cast<size_t>(s.random.between(1, 50)), false);
    pause(s.random, 300);
    s.panel.kill();
    s.traffic.checkAnswers(client, messages, sent);
    client.disconnect();
    s.restartPanel();
}

void panelLacksParts(Scene& s)
{
    s.panel.kill();
    s.panel.gone();
    s.panel.start(partly(s.random));
    traffic(s, 5);
    s.restartPanel();
}

void commandsByOthers(Scene& s)
{
    for (int left = s.random.between(1, 5); left > 0; --left) {
        s.panel.signalByStranger();
        s.panel.commandByAnother("wifi", "scan", "{\"by\":\"another\"}");
        s.model.resultDue("wifi", "scan", "{\"by\":\"another\"}");
        pause(s.random, 30);
    }
    s.traffic.request("serviceCommand;wifi;scan;{}");
}

/// A panel on which a scan takes @p scanDelay milliseconds, in place of the one there was.
void startSlowPanel(Scene& s, int scanDelay)
{
    PanelOptions slow = whole(s.random);
    slow.scanDelay = scanDelay;
    s.panel.kill();
    s.panel.gone();
    s.panel.start(slow);
    s.traffic.settle();
}

/// The panel goes while the service waits for the outcome of a scan; that of another command, to
/// the next panel, ends the wait.
void panelGoesDuringScan(Scene& s)
{
    startSlowPanel(s, 400);

    const std::string scan = std::string("serviceCommand;wifi;scan;lost") + '\0';
    Client client(serverSocket);
    client.sendBytes(scan);
    pause(s.random, 200);
    s.panel.kill();
    const Expected expected = s.model.expect(scan);
    s.panel.gone();
    s.panel.start(whole(s.random));
    s.panel.commandByAnother("wifi", "scan", "rescue");
    s.model.resultDue("wifi", "scan", "rescue");

    const std::string answer = s.traffic.receive(client);
    const auto outcomes = s.model.possibleOutcomes();
    if (std::find(outcomes.begin(), outcomes.end(), answer) != outcomes.end())
        s.model.answered(expected);
    else if (answer != "-4")
        s.traffic.wrong(scan, expected.text() + " or the next outcome", answer);
    client.disconnect();
    s.traffic.settle();
}

/// Longer than the bus waits for a reply. What the panel does and says afterwards comes too late.
void panelFreezesForLong(Scene& s)
{
    static const std::vector<std::string> requests = {"getBrightness",
                                                      "getAllSystemParametersJson",
                                                      "serviceStop;ssh",
                                                      "saveBrightness;123",
                                                      "setSystemParameter;k1;late",
                                                      "getHWPluginLedMode;0;1",
                                                      "getHWPluginIO;1;3",
                                                      "seepromRead;0;4",
                                                      "getAvailableMemory"};
    const std::string late = s.random.pick(requests) + '\0';
    s.panel.freeze();
    Client client(serverSocket);
    client.sendBytes(late);
    auto sent = Clock::now();
    const auto messages = s.traffic.send(client, 30);
    const std::string answer = s.traffic.receive(client, 60s);
    const auto took = Clock::now() - sent;
    sent = Clock::now();
    s.panel.resume();
    s.model.resultsDelayed();
    const Expected expected = s.model.expect(late);
    if (answer != expected.ifGone.front() || took < 24s)
        s.traffic.wrong(late, expected.ifGone.front() + " after 25 s", answer);
    s.traffic.checkAnswers(client, messages, sent);
}

void scanTimesOut(Scene& s)
{
    startSlowPanel(s, 5000);
    const std::string scan = std::string("serviceCommand;wifi;scan;never") + '\0';
    Client client(serverSocket);
    const auto sent = Clock::now();
    client.sendBytes(scan);
    std::this_thread::sleep_for(2s);
    s.panel.kill();
    s.model.expect(scan);
    s.panel.gone();
    s.panel.start(whole(s.random));
    const std::string answer = s.traffic.receive(client, 90s);
    if (answer != "-9" || Clock::now() - sent < 60s)
        s.traffic.wrong(scan, "-9 after 60 s", answer);
    client.disconnect();
    s.traffic.settle();
}

void end(Scene& s, int status)
{
    const int ended = s.server.process().wait();
    if (ended != status)
        throw std::runtime_error("the service ended with " + std::to_string(ended) + ", saying " +
                                 s.server.process().errors());
}

void quit(Scene& s)
{
    s.traffic.request("quit");
    end(s, 0);
}

void startAgain(Scene& s)
{
    s.server.start();
    s.model.serviceStarts();
}

void serviceQuits(Scene& s)
{
    quit(s);
    startAgain(s);
    s.waitForAdoption();
}

void serviceIsKilledAmidRequests(Scene& s)
{
    Client client(serverSocket);
    const auto sent = Clock::now();
    const auto messages =
        s.traffic.send(client, static_cast<size_t>(s.random.between(5, 100)), false);
    pause(s.random, 10);
    s.server.process().signal(SIGKILL);
    end(s, 128 + SIGKILL);
    for (const std::string& message : messages) {
        auto answer = client.receiveBytes();
        if (!answer) // the reset that comes with requests not received
            answer = client.receiveBytes();
        if (!answer || answer->empty())
            break;
        s.traffic.checkText(message, answer->substr(0, answer->size() - 1), sent);
    }
    client.disconnect();
    s.model.serviceStarts(); // the one that may have waited for an outcome is gone
    s.restartPanel();        // whether it was told more than was answered is not known
    startAgain(s);
    s.waitForAdoption();
}

void serviceStartsBeforeThePanel(Scene& s)
{
    quit(s);
    s.panel.kill();
    s.panel.gone();
    startAgain(s);
    traffic(s, 10);
    s.panel.start(whole(s.random));
    s.waitForAdoption();
}

/// What it does not find at its start it does not look for again.
void serviceStartsWithPartOfThePanel(Scene& s)
{
    quit(s);
    s.panel.kill();
    s.panel.gone();
    s.panel.start(partly(s.random));
    startAgain(s);
    s.waitForAdoption();
    traffic(s, 10);
    s.restartPanel();
    traffic(s, 10);
    serviceQuits(s);
}
} // namespace

void Scene::restartPanel()
{
    panel.kill();
    panel.gone();
    panel.start(whole(random));
    traffic.settle();
}

void Scene::waitForAdoption()
{
    static const std::pair<const char*, const char*> probes[] = {{"Buzzer", "getBuzzerMode"},
                                                                 {"Backlight", "getBrightness"},
                                                                 {"SysStat", "getAvailableMemory"},
                                                                 {"MainOSInfo", "mainOsVersion"}};
    const auto* const probe = std::find_if(std::begin(probes), std::end(probes),
                                           [&](const auto& p) { return panel.offers(p.first); });
    const bool adopted = waitUntil([&] {
        model.expect(probe->second + std::string(1, '\0'));
        return Client(serverSocket).request(probe->second) != "-1";
    });
    if (!adopted)
        throw std::runtime_error("the service does not find the panel");
    model.serviceAdopts();
    traffic.request(probe->second);
}

const std::vector<Fault>& allFaults()
{
    static const std::vector<Fault> faults = {
        {"the panel is gone for a while", Cost::Usual, panelGone},
        {"the panel is replaced at once", Cost::Usual, panelReplaced},
        {"the panel goes amid requests", Cost::Usual, panelGoesAmidRequests},
        {"the panel comes amid requests", Cost::Usual, panelComesAmidRequests},
        {"the panel freezes for a moment", Cost::Usual, panelFreezes},
        {"the panel goes while frozen", Cost::Usual, panelGoesWhileFrozen},
        {"the panel lacks parts", Cost::Usual, panelLacksParts},
        {"others command the panel", Cost::Usual, commandsByOthers},
        {"the panel goes during a scan", Cost::Usual, panelGoesDuringScan},
        {"the panel freezes for long", Cost::Slow, panelFreezesForLong},
        {"a scan times out", Cost::Slow, scanTimesOut},
        {"the service quits", Cost::Restart, serviceQuits},
        {"the service is killed amid requests", Cost::Restart, serviceIsKilledAmidRequests},
        {"the service starts before the panel", Cost::Restart, serviceStartsBeforeThePanel},
        {"the service starts with part of the panel", Cost::Restart,
         serviceStartsWithPartOfThePanel},
    };
    return faults;
}
