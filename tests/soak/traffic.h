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

enum class Meanwhile { Nothing, PanelMayGo, PanelMayAppear };

/// The service, its panel, and clients. Compares every answer and every call to the panel with the
/// known rows.
class Traffic
{
public:
    Traffic(Random& random, Report& report) : m_random(random), m_report(report), m_requests(random)
    {
    }

    Process& service() { return m_server.process(); }
    Random& random() { return m_random; }

    void quit();
    /// Throws when the service does not end, or ends with another status.
    void expectEnd(int status);
    void startService();
    /// Waits until a started service has found the panel. Objects that the panel lacks then stay
    /// missing for this service.
    void waitForAdoption();

    /// Replaces the panel. The new one lacks up to @p mostMissing random objects.
    void startPanel(int mostMissing = 0);
    void endPanel();
    FakePlatform& panel() { return *m_panel; }

    /// Up to @p most rounds of a few clients, which connect at once and are served in turn.
    void someTraffic(int most);
    /// Every known row, from one client.
    void allRows();

    std::vector<Request> send(Client& client, int fewest, int most, bool scans = false);
    void checkAnswers(Client& client, const std::vector<Request>& requests,
                      Meanwhile meanwhile = Meanwhile::Nothing);
    void checkAnswer(const Request& request, const std::string& answer);
    /// As above, but expects @p right in every state of the panel.
    void checkAnswer(const Request& request, const std::string& answer, const std::string& right);

    /// Compares the panel's calls with those expected for the checked answers. No other request may
    /// be pending.
    void checkCalls();
    /// Discards the expected calls, for when they cannot be known.
    void forgetCalls();

    /// The next answer without its NUL, or a description of anything else received. Throws when the
    /// service has ended.
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
    std::optional<Paths> m_adopted;   ///< objects missing when the service found the panel
    std::vector<std::string> m_calls; ///< expected at the panel
};
