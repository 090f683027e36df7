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

/// How many objects an incomplete panel lacks at most.
constexpr int mostMissing = 4;

void panelGone(Traffic& t)
{
    t.endPanel();
    t.someTraffic(5);
    t.startPanel();
}

void panelGoesAmidRequests(Traffic& t)
{
    Client client(serverSocket);
    const auto requests = t.send(client, 5, 100);
    pause(t.random(), 20);
    t.endPanel();
    t.checkAnswers(client, requests, Meanwhile::PanelMayGo);
    client.disconnect();
    t.startPanel();
}

void panelComesAmidRequests(Traffic& t)
{
    t.endPanel();
    Client client(serverSocket);
    const auto requests = t.send(client, 5, 100);
    pause(t.random(), 5);
    t.startPanel();
    t.checkAnswers(client, requests, Meanwhile::PanelMayAppear);
}

void panelFreezes(Traffic& t)
{
    Client client(serverSocket);
    const auto requests = t.send(client, 1, 50);
    pause(t.random(), 10);
    t.panel().freeze();
    pause(t.random(), t.random().chance(20) ? 2000 : 200);
    t.panel().resume();
    t.checkAnswers(client, requests);
    t.checkCalls();
}

void panelGoesWhileFrozen(Traffic& t)
{
    t.panel().freeze();
    Client client(serverSocket);
    const auto requests = t.send(client, 1, 50);
    pause(t.random(), 300);
    t.endPanel();
    t.checkAnswers(client, requests);
    client.disconnect();
    t.startPanel();
}

void panelLacksParts(Traffic& t)
{
    t.startPanel(mostMissing);
    t.someTraffic(5);
    t.startPanel();
}

/// Outcomes of commands that the service has not sent. A stranger's outcomes are ignored.
void outcomesOfOthers(Traffic& t)
{
    FakePlatform stranger(FakePlatform::wholePanel(), false);
    std::vector<std::string> right = {scanRequest("own").row.response};
    for (int left = t.random().between(1, 5); left > 0; --left) {
        const std::string options = "another" + std::to_string(left);
        stranger.emitCommandResult("wifi", "scan", "stranger");
        t.panel().emitCommandResult("wifi", "scan", options);
        right.push_back(scanRequest(options).row.response);
        pause(t.random(), 30);
    }
    const Request scan = scanRequest("own");
    Client client(serverSocket);
    client.sendBytes(scan.message);
    const std::string answer = t.receive(client);
    const bool isRight = std::find(right.begin(), right.end(), answer) != right.end();
    t.checkAnswer(scan, answer, isRight ? answer : "one of the panel's outcomes");
    client.disconnect();
    // After these requests, no outcome is pending.
    t.allRows();
}

/// The service waits for the outcome of a scan until the next panel reports one.
void panelGoesDuringScan(Traffic& t)
{
    const Request scan = scanRequest("lost");
    t.panel().answer("ServiceManager.command", replyWith("i", 0));
    Client client(serverSocket);
    client.sendBytes(scan.message);
    if (!t.panel().waitForCall(scan.row.calls.front()))
        throw std::runtime_error("the panel is not asked for a scan");
    pause(t.random(), 200);
    t.startPanel();
    t.panel().emitCommandResult("wifi", "scan", "rescue");
    t.checkAnswer(scan, t.receive(client), scanRequest("rescue").row.response);
    t.forgetCalls();
}

/// Longer than the bus's reply time-out. The panel's late reply is dropped.
void panelFreezesForLong(Traffic& t)
{
    const CommandRow& row = t.random().pick(commandRows());
    t.panel().freeze();
    Client client(serverSocket);
    client.sendBytes(row.request() + '\0');
    const auto sent = Clock::now();
    const auto requests = t.send(client, 30, 30);
    const std::string answer = t.receive(client, 60s);
    const auto took = Clock::now() - sent;
    t.panel().resume();
    t.checkAnswer({row.request(), row}, took < 24s ? "too soon: " + answer : answer,
                  row.responseTo(Obstacle::Failing));
    t.checkAnswers(client, requests);
    t.forgetCalls();
}

void serviceQuits(Traffic& t)
{
    t.quit();
    t.startService();
    t.waitForAdoption();
}

void serviceIsKilledAmidRequests(Traffic& t)
{
    Client client(serverSocket);
    const auto requests = t.send(client, 5, 100);
    pause(t.random(), 10);
    t.service().signal(SIGKILL);
    t.expectEnd(128 + SIGKILL);
    for (const Request& request : requests) {
        auto answer = client.receiveBytes();
        if (!answer) // the connection reset, because of requests not received
            answer = client.receiveBytes();
        if (!answer || answer->empty())
            break;
        t.checkAnswer(request, answer->substr(0, answer->size() - 1));
    }
    client.disconnect();
    t.startService();
    t.waitForAdoption();
}

void serviceStartsBeforeThePanel(Traffic& t)
{
    t.quit();
    t.endPanel();
    t.startService();
    t.someTraffic(10);
    t.startPanel();
    t.waitForAdoption();
}

/// Objects missing at the start of the service stay missing.
void serviceStartsWithPartOfThePanel(Traffic& t)
{
    t.quit();
    t.startPanel(mostMissing);
    t.startService();
    t.waitForAdoption();
    t.someTraffic(10);
    t.startPanel();
    t.someTraffic(10);
    serviceQuits(t);
}
} // namespace

std::vector<Fault> faults(Cost cost)
{
    static const Fault all[] = {
        {"the panel is gone for a while", Cost::Usual, panelGone},
        {"the panel goes amid requests", Cost::Usual, panelGoesAmidRequests},
        {"the panel comes amid requests", Cost::Usual, panelComesAmidRequests},
        {"the panel freezes for a moment", Cost::Usual, panelFreezes},
        {"the panel goes while frozen", Cost::Usual, panelGoesWhileFrozen},
        {"the panel lacks parts", Cost::Usual, panelLacksParts},
        {"others command the panel", Cost::Usual, outcomesOfOthers},
        {"the panel goes during a scan", Cost::Usual, panelGoesDuringScan},
        {"the panel freezes for long", Cost::Slow, panelFreezesForLong},
        {"the service quits", Cost::Restart, serviceQuits},
        {"the service is killed amid requests", Cost::Restart, serviceIsKilledAmidRequests},
        {"the service starts before the panel", Cost::Restart, serviceStartsBeforeThePanel},
        {"the service starts with part of the panel", Cost::Restart,
         serviceStartsWithPartOfThePanel},
    };
    std::vector<Fault> found;
    std::copy_if(std::begin(all), std::end(all), std::back_inserter(found),
                 [&](const Fault& fault) { return fault.cost == cost; });
    return found;
}
