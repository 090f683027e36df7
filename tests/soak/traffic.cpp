#include "tests/soak/traffic.h"

#include <algorithm>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>

namespace
{
enum Manner { Stays, Asks, Leaves, LeavesLate, HalfCloses, SaysNothing, SendsEmpty };

/// How many of a hundred clients behave in each way.
const struct {
    Manner manner;
    const char* name;
    int weight;
} manners[] = {
    {Stays, "sends all and reads all", 40},    {Asks, "sends and reads in turn", 20},
    {Leaves, "goes before its answers", 12},   {LeavesLate, "goes after some answers", 8},
    {HalfCloses, "shuts its sending half", 8}, {SaysNothing, "is silent", 4},
    {SendsEmpty, "sends an empty message", 8},
};

constexpr int mostClients = 20; // the length of the listen queue

std::string pathOf(const CommandRow& row)
{
    return row.calls.front().substr(0, row.calls.front().find(' '));
}
} // namespace

struct Traffic::Guest {
    Manner manner = Stays;
    Client client{serverSocket};
    std::vector<Request> requests;
};

void Traffic::quit()
{
    Client client(serverSocket);
    client.send("quit");
    checkAnswer(fixedRequest("quit", "0"), receive(client));
    expectEnd(0);
}

void Traffic::expectEnd(int status)
{
    const int ended = service().wait();
    if (ended != status)
        throw std::runtime_error("the service ended with " + std::to_string(ended) + ", saying " +
                                 service().errors());
}

void Traffic::startService()
{
    m_server.start();
    m_adopted.reset();
}

void Traffic::waitForAdoption()
{
    const auto& rows = commandRows();
    const auto probe = std::find_if(rows.begin(), rows.end(), [&](const CommandRow& row) {
        return !row.isPlugin() && m_missing.count(pathOf(row)) == 0;
    });
    const std::string notFound = probe->responseTo(Obstacle::NotFound);
    if (!waitUntil([&] { return Client(serverSocket).request(probe->request()) != notFound; }))
        throw std::runtime_error("the service does not find the panel");
    m_adopted = m_missing;
    forgetCalls();
}

void Traffic::startPanel(int mostMissing)
{
    endPanel();
    auto objects = FakePlatform::wholePanel();
    m_missing.clear();
    for (int left = m_random.between(0, mostMissing); left > 0; --left) {
        const std::string path = m_random.pick(objects).first;
        // The rows use place 1, which exists only while slot 0 has a module.
        if (path.rfind("/HWPlugin/0", 0) != 0)
            m_missing.insert({path, path + "/Leds", path + "/Sensors"});
        for (const std::string& missing : m_missing)
            objects.erase(missing);
    }
    m_panel = std::make_unique<FakePlatform>(objects, false);
    answerRequests(*m_panel);
    for (const CommandRow& row : commandRows()) {
        if (m_missing.count(pathOf(row)) != 0)
            m_panel->answer(row.member, replyError("org.freedesktop.DBus.Error.UnknownObject"));
    }
    m_panel->ownName();
}

void Traffic::endPanel()
{
    m_panel.reset();
    m_calls.clear();
}

void Traffic::someTraffic(int most)
{
    for (int left = m_random.between(1, most); left > 0; --left)
        someClients();
}

void Traffic::someClients()
{
    const bool queue = m_random.chance(30);
    std::vector<std::unique_ptr<Guest>> guests(
        queue ? static_cast<size_t>(m_random.between(2, mostClients)) : 1);
    for (auto& guest : guests) {
        guest = std::make_unique<Guest>();
        int left = m_random.between(1, 100);
        // The last client reads its answers, which proves that all requests have been executed.
        if (&guest == &guests.back())
            left = std::min(left, manners[0].weight + manners[1].weight);
        const auto* manner = manners;
        for (; left > manner->weight; ++manner)
            left -= manner->weight;
        guest->manner = manner->manner;
        ++m_report.clients[manner->name];
        arrive(*guest, queue ? 5 : m_random.chance(50) ? 10 : 100);
    }
    for (auto& guest : guests)
        serve(*guest);
    for (auto& guest : guests) {
        const auto more =
            guest->manner == SendsEmpty ? guest->client.receiveBytes(0ms) : std::nullopt;
        if (more && !more->empty()) // the server may already have closed the connection
            m_report.complain("(a client that has sent an empty message)", "nothing", *more);
    }
    checkCalls();
}

void Traffic::arrive(Guest& guest, int most)
{
    const Request scan = scanRequest("");
    const bool scans = expected(scan.row, m_panel != nullptr) == scan.row.response;
    if (guest.manner == Asks)
        guest.requests = m_requests.some(std::min(m_random.between(1, most), 20), scans);
    else if (guest.manner != SaysNothing)
        guest.requests = send(guest.client, 1, most, scans);
    if (guest.manner == Leaves)
        guest.client.disconnect();
    else if (guest.manner == HalfCloses)
        shutdown(guest.client.fd(), SHUT_WR);
    else if (guest.manner == SendsEmpty)
        guest.client.sendBytes("");
}

std::vector<Request> Traffic::send(Client& client, int fewest, int most, bool scans)
{
    const std::vector<Request> requests = m_requests.some(m_random.between(fewest, most), scans);
    for (const Request& request : requests) {
        if (!client.sendBytes(request.message))
            m_report.complain(request.message, "that it can be sent", "an error");
    }
    return requests;
}

void Traffic::serve(Guest& guest)
{
    const std::vector<Request>& requests = guest.requests;
    switch (guest.manner) {
    case Asks:
        for (const Request& request : requests) {
            guest.client.sendBytes(request.message);
            checkAnswer(request, receive(guest.client));
        }
        break;
    case SaysNothing:
        std::this_thread::sleep_for(std::chrono::milliseconds(m_random.between(0, 100)));
        break;
    case Leaves:
    case LeavesLate: {
        const size_t read = guest.manner == Leaves ? 0 : m_random.below(requests.size());
        for (size_t i = 0; i < read; ++i)
            checkAnswer(requests[i], receive(guest.client));
        guest.client.disconnect();
        // The server executes the rest as well.
        for (size_t i = read; i < requests.size(); ++i)
            carriedOut(requests[i].row);
        break;
    }
    default:
        checkAnswers(guest.client, requests);
    }
    if (guest.manner != SendsEmpty)
        guest.client.disconnect();
}

void Traffic::allRows()
{
    Client client(serverSocket);
    for (const Request& request : m_requests.allRows()) {
        client.sendBytes(request.message);
        checkAnswer(request, receive(client));
    }
    checkCalls();
}

std::string Traffic::expected(const CommandRow& row, bool isUp) const
{
    if (row.calls.empty())
        return row.response;
    if (!m_adopted || (row.isPlugin() && m_adopted->count("/HWPlugin/2") != 0))
        return row.responseTo(Obstacle::NotFound);
    if (m_adopted->count(pathOf(row)) != 0)
        return row.responseTo(Obstacle::Lacking);
    if (!isUp || m_missing.count(pathOf(row)) != 0)
        return row.responseTo(Obstacle::Failing);
    return row.response;
}

void Traffic::carriedOut(const CommandRow& row)
{
    ++m_report.requests;
    if (row.calls.empty() || !m_panel || !m_adopted || m_adopted->count(pathOf(row)) != 0)
        return;
    // After a failed query, the guarded write is skipped.
    const bool fails = m_missing.count(pathOf(row)) != 0;
    m_calls.insert(m_calls.end(), row.calls.begin(),
                   fails ? row.calls.begin() + 1 : row.calls.end());
}

void Traffic::checkAnswers(Client& client, const std::vector<Request>& requests,
                           Meanwhile meanwhile)
{
    const bool mayChange = meanwhile != Meanwhile::Nothing;
    const bool wasUp = mayChange ? meanwhile == Meanwhile::PanelMayGo : m_panel != nullptr;
    bool isUp = wasUp;
    for (const Request& request : requests) {
        const CommandRow& row = request.row;
        const std::string answer = receive(client);
        std::string right = expected(row, isUp);
        if (mayChange && isUp == wasUp && answer != right) { // the panel's state has changed
            isUp = !wasUp;
            // The panel may have gone between the two calls of a guarded write.
            const bool isHalf = wasUp && row.isGuarded() && answer == "0 0";
            right = isHalf ? answer : expected(row, isUp);
        }
        checkAnswer(request, answer, right);
    }
    if (mayChange)
        forgetCalls();
}

void Traffic::checkAnswer(const Request& request, const std::string& answer)
{
    checkAnswer(request, answer, expected(request.row, m_panel != nullptr));
}

void Traffic::checkAnswer(const Request& request, const std::string& answer,
                          const std::string& right)
{
    carriedOut(request.row);
    if (answer != right)
        m_report.complain(request.message, right, answer);
}

void Traffic::checkCalls()
{
    const auto calls = m_panel ? m_panel->takeCalls() : std::vector<std::string>();
    const auto differ = std::mismatch(calls.begin(), calls.end(), m_calls.begin(), m_calls.end());
    if (differ.first != calls.end() || differ.second != m_calls.end())
        m_report.complain("(a call of the panel)",
                          differ.second == m_calls.end() ? "none" : *differ.second,
                          differ.first == calls.end() ? "none" : *differ.first);
    m_calls.clear();
}

void Traffic::forgetCalls()
{
    if (m_panel)
        m_panel->takeCalls();
    m_calls.clear();
}

std::string Traffic::receive(Client& client, std::chrono::milliseconds bound)
{
    std::optional<std::string> answer;
    const auto answeredOrEnded = [&] {
        // Keep reading, or the service blocks when its log pipe is full.
        service().output();
        service().errors();
        answer = client.receiveBytes(100ms);
        return answer || !service().running();
    };
    waitUntil(answeredOrEnded, bound);
    if (answer && !answer->empty() && answer->find('\0') == answer->size() - 1)
        return answer->substr(0, answer->size() - 1);
    if (waitUntil([&] { return !service().running(); }, 1s))
        throw std::runtime_error("the service has ended by itself, saying " + service().errors());
    return answer ? "(not one text: " + *answer + ")" : "(no answer)";
}
