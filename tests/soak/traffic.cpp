#include "tests/soak/traffic.h"

#include <algorithm>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>

namespace
{
enum Manner { Stays, Asks, Leaves, LeavesLate, HalfCloses, SaysNothing, SendsEmpty };

/// With how many of a hundred clients behave so.
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

constexpr size_t mostClients = 20; // that the listen queue takes

/// What may wait in a socket without its sender having to.
constexpr size_t mostBytes = 100000;
size_t cost(const std::string& message) { return 1024 + 2 * message.size(); }
} // namespace

struct Traffic::Guest {
    Manner manner = Stays;
    Client client{serverSocket};
    std::vector<std::string> messages;
    Clock::time_point sent = Clock::now();
};

void Traffic::someClients()
{
    const bool queue = m_random.chance(30);
    std::vector<std::unique_ptr<Guest>> guests(
        queue ? static_cast<size_t>(m_random.between(2, mostClients)) : 1);
    for (auto& guest : guests) {
        guest = std::make_unique<Guest>();
        int left = m_random.between(1, 100);
        // The last one's answers tell that everybody's requests have been carried out.
        if (&guest == &guests.back())
            left = std::min(left, manners[0].weight + manners[1].weight);
        const auto* manner = manners;
        for (; left > manner->weight; ++manner)
            left -= manner->weight;
        guest->manner = manner->manner;
        ++m_report.clients[manner->name];
        const int most = queue ? 5 : m_random.chance(50) ? 10 : 100;
        arrive(*guest, static_cast<size_t>(m_random.between(1, most)));
    }
    for (auto& guest : guests)
        serve(*guest);
    for (auto& guest : guests) {
        const auto more =
            guest->manner == SendsEmpty ? guest->client.receiveBytes(0ms) : std::nullopt;
        if (more && !more->empty()) // its descriptor may be closed by now
            wrong("(a client that has said goodbye)", "nothing", *more);
    }
}

void Traffic::arrive(Guest& guest, size_t requests)
{
    if (guest.manner == SaysNothing)
        return;
    if (guest.manner == Asks) {
        for (size_t i = 0; i < std::min<size_t>(requests, 20); ++i)
            guest.messages.push_back(m_requests.any());
        return;
    }
    guest.messages = send(guest.client, requests);
    if (guest.manner == Leaves)
        guest.client.disconnect();
    else if (guest.manner == HalfCloses)
        shutdown(guest.client.fd(), SHUT_WR);
    else if (guest.manner == SendsEmpty)
        guest.client.sendBytes("");
}

std::vector<std::string> Traffic::send(Client& client, size_t count, bool commands)
{
    std::vector<std::string> messages;
    for (size_t bytes = 0; messages.size() < count && bytes < mostBytes;) {
        messages.push_back(commands ? m_requests.any() : m_requests.anyButCommand());
        bytes += cost(messages.back());
        if (!client.sendBytes(messages.back()))
            wrong(messages.back(), "that it can be sent", "an error");
    }
    return messages;
}

void Traffic::serve(Guest& guest)
{
    switch (guest.manner) {
    case Asks:
        for (const std::string& message : guest.messages) {
            guest.client.sendBytes(message);
            checkAnswer(guest.client, message, Clock::now());
        }
        break;
    case SaysNothing:
        std::this_thread::sleep_for(std::chrono::milliseconds(m_random.between(0, 100)));
        break;
    case Leaves:
    case LeavesLate: {
        // What it has sent is carried out all the same.
        size_t read = guest.manner == Leaves ? 0 : m_random.below(guest.messages.size());
        for (const std::string& message : guest.messages) {
            if (read > 0) {
                checkAnswer(guest.client, message, guest.sent);
                --read;
            } else {
                guest.client.disconnect();
                m_model.answered(m_model.expect(message));
                ++m_report.requests;
            }
        }
        break;
    }
    default:
        checkAnswers(guest.client, guest.messages, guest.sent);
    }
    if (guest.manner != SendsEmpty)
        guest.client.disconnect();
}

void Traffic::request(const std::string& text)
{
    Client client(serverSocket);
    client.send(text);
    checkAnswer(client, text + '\0', Clock::now());
}

void Traffic::largestRequests()
{
    Client client(serverSocket);
    for (const std::string& message : m_requests.largest()) {
        client.sendBytes(message);
        checkAnswer(client, message, Clock::now());
    }
}

void Traffic::settle()
{
    if (m_model.mayWait() && m_model.canCommand())
        request("serviceCommand;wifi;status;settle");
}

void Traffic::checkAnswers(Client& client, const std::vector<std::string>& messages,
                           Clock::time_point sent, Meanwhile meanwhile)
{
    for (const std::string& message : messages)
        checkAnswer(client, message, sent, meanwhile);
}

void Traffic::checkAnswer(Client& client, const std::string& message, Clock::time_point sent,
                          Meanwhile meanwhile)
{
    checkText(message, receive(client), sent, meanwhile);
}

void Traffic::checkText(const std::string& message, const std::string& answer,
                        Clock::time_point sent, Meanwhile meanwhile)
{
    ++m_report.requests;
    Expected expected = m_model.expect(message);
    if (meanwhile == Meanwhile::PanelMayAppear && !m_panel.isUp() &&
        !fits(expected, answer, sent)) {
        m_panel.appeared();
        expected = m_model.expect(message);
    }
    if (fits(expected, answer, sent)) {
        m_model.answered(expected);
        return;
    }
    const auto& ifGone = expected.ifGone;
    if (meanwhile == Meanwhile::PanelMayGo &&
        std::find(ifGone.begin(), ifGone.end(), answer) != ifGone.end()) {
        m_panel.gone();
        return;
    }
    wrong(message, expected.text(), answer);
}

bool Traffic::fits(const Expected& expected, const std::string& answer,
                   Clock::time_point sent) const
{
    if (!expected.counterBase)
        return std::find(expected.right.begin(), expected.right.end(), answer) !=
               expected.right.end();
    const int seconds = answer.rfind("0 ", 0) == 0 ? atoi(answer.c_str() + 2) : -1;
    return answer == "0 " + std::to_string(seconds) &&
           m_panel.isPossible(seconds, *expected.counterBase, sent);
}

std::string Traffic::receive(Client& client, std::chrono::milliseconds bound)
{
    const auto deadline = Clock::now() + bound;
    do {
        // Read on, or the service waits for room in the pipe of its log.
        m_server.process().output();
        m_server.process().errors();
        if (const auto answer = client.receiveBytes(100ms)) {
            if (answer->empty() && waitUntil([&] { return !m_server.process().running(); }, 1s))
                break;
            if (answer->empty() || answer->find('\0') != answer->size() - 1)
                return "(not one text: " + *answer + ")";
            return answer->substr(0, answer->size() - 1);
        }
    } while (m_server.process().running() && Clock::now() < deadline);
    if (!m_server.process().running())
        throw std::runtime_error("the service has ended by itself, saying " +
                                 m_server.process().errors());
    return "(no answer)";
}

void Traffic::wrong(const std::string& message, const std::string& expected, const std::string& got)
{
    m_outOfStep = true;
    m_report.complain(message, "  expected: " + expected + "\n  got:      " + got);
}
