#pragma once

#include "tests/soak/model.h"
#include "tests/soak/report.h"
#include "tests/soak/requests.h"
#include "tests/support/server.h"

/// What may happen to the panel between a request and its answer.
enum class Meanwhile { Nothing, PanelMayGo, PanelMayAppear };

/// Clients of the service; every answer is held against the model.
class Traffic
{
public:
    Traffic(Server& server, Panel& panel, Model& model, Random& random, Report& report)
        : m_server(server), m_panel(panel), m_model(model), m_random(random), m_report(report),
          m_requests(random)
    {
    }

    /// Some clients, who come at once and are served in turn. All requests have been carried out.
    void someClients();
    /// One request of a client of its own.
    void request(const std::string& text);
    /// The largest requests and answers.
    void largestRequests();
    /// Ends a wait that a failed command has left behind, so that no later one waits for a minute.
    void settle();

    /// Requests sent at once; @p commands: service commands too.
    std::vector<std::string> send(Client& client, size_t count, bool commands = true);
    void checkAnswer(Client& client, const std::string& message, Clock::time_point sent,
                     Meanwhile meanwhile = Meanwhile::Nothing);
    void checkText(const std::string& message, const std::string& answer, Clock::time_point sent,
                   Meanwhile meanwhile = Meanwhile::Nothing);
    void checkAnswers(Client& client, const std::vector<std::string>& messages,
                      Clock::time_point sent, Meanwhile meanwhile = Meanwhile::Nothing);

    /// The next answer without its NUL, or a text that says what else came. Throws when the service
    /// has ended.
    std::string receive(Client& client, std::chrono::milliseconds bound = patience);
    void wrong(const std::string& message, const std::string& expected, const std::string& got);

    /// Something was wrong: model and panel may differ from now on.
    bool isOutOfStep() const { return m_outOfStep; }
    void inStepAgain() { m_outOfStep = false; }
    bool haveCommandsAllCome() const { return m_requests.haveCommandsAllCome(); }

private:
    struct Guest;
    void arrive(Guest& guest, size_t requests);
    void serve(Guest& guest);
    bool fits(const Expected& expected, const std::string& answer, Clock::time_point sent) const;

    Server& m_server;
    Panel& m_panel;
    Model& m_model;
    Random& m_random;
    Report& m_report;
    Requests m_requests;
    bool m_outOfStep = false;
};
