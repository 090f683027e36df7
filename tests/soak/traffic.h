#pragma once

#include "tests/soak/report.h"
#include "tests/soak/requests.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <memory>
#include <optional>
#include <set>

using Clock = std::chrono::steady_clock;
using Paths = std::set<std::string>;

/// What may happen to the panel between a request and its answer.
enum class Meanwhile { Nothing, PanelMayGo, PanelMayAppear };

/// The service, its panel, and clients. Compares every answer, and what the panel was asked, with
/// the known rows.
class Traffic
{
public:
    Traffic(Random& random, Report& report) : m_random(random), m_report(report), m_requests(random)
    {
    }

    Process& service() { return m_server.process(); }
    Random& random() { return m_random; }

    /// Ends the service in order.
    void quit();
    /// Throws when the service does not end, or not with @p status.
    void expectEnd(int status);
    /// Starts the service again.
    void startService();
    /// Waits until a service that has started has found the panel. What the panel lacks then stays
    /// missing for this service.
    void waitForAdoption();

    /// Starts a panel in place of the one there was. It lacks up to @p mostMissing random objects.
    void startPanel(int mostMissing = 0);
    void endPanel();
    FakePlatform& panel() { return *m_panel; }

    /// Up to @p most times some clients, who come at once and are served in turn.
    void someTraffic(int most);
    /// Every known row, by one client.
    void allRows();

    /// Sends @p fewest to @p most requests at once.
    std::vector<Request> send(Client& client, int fewest, int most, bool scans = false);
    void checkAnswers(Client& client, const std::vector<Request>& requests,
                      Meanwhile meanwhile = Meanwhile::Nothing);
    void checkAnswer(const Request& request, const std::string& answer);
    /// As above, but the answer must be @p right, whatever the panel's state.
    void checkAnswer(const Request& request, const std::string& answer, const std::string& right);

    /// Compares the panel's calls with those that the requests need whose answers were checked. No
    /// other request may be on its way.
    void checkCalls();
    /// Starts anew, where it is not known what the panel was asked.
    void forgetCalls();

    /// The next answer without its NUL, or a text that says what else came. Throws when the service
    /// has ended.
    std::string receive(Client& client, std::chrono::milliseconds bound = patience);

private:
    struct Guest;
    void someClients();
    void arrive(Guest& guest, int most);
    void serve(Guest& guest);
    std::string expected(const CommandRow& row, bool isUp) const;
    void carriedOut(const CommandRow& row);

    Random& m_random;
    Report& m_report;
    Requests m_requests;
    PrivateBus m_bus;
    Server m_server{{"prlimit", "--nofile=64"}};
    std::unique_ptr<FakePlatform> m_panel;
    Paths m_missing;                  ///< objects that the panel lacks
    std::optional<Paths> m_adopted;   ///< those that it lacked when the service found it
    std::vector<std::string> m_calls; ///< that the panel must have got
};
