#pragma once

#include "tests/soak/panel.h"

class Request;

/// What may be answered to one request.
struct Expected {
    /// Any of these is right; more than one only where results of several commands race.
    std::vector<std::string> right;
    /// Also right if the panel goes meanwhile.
    std::vector<std::string> ifGone;
    /// Base of a counter: instead of @p right, the seconds since.
    std::optional<int> counterBase;
    /// A service command: answered only when no outcome is awaited any more.
    bool endsWait = false;

    std::string text() const;
};

/**
 * What the service must answer, by its documented rules: from the bytes of a message to the bytes
 * of the answer, given the twin of the panel and what the service found when it took the platform
 * up.
 */
class Model
{
public:
    explicit Model(Panel& panel) : m_panel(panel) {}

    /// Throws when the service's table has a command that is not known here, or with other
    /// arguments.
    static void checkCommands();

    /// A service that has just started and has not found the platform yet.
    void serviceStarts();
    /// It has found the platform and from now on keeps to what that offers now.
    void serviceAdopts();
    bool isAdopted() const { return m_adopted; }

    /// The answer to a message that is the next to be received. The twin then is as it will be.
    Expected expect(const std::string& message);

    /// What was answered fitted.
    void answered(const Expected& expected);

    /// A command whose result will come, as the service will tell it.
    void resultDue(const QString& service, const QString& command, const QString& options);
    /// Results that are due may come as late as from now on.
    void resultsDelayed();

    /// The answers to a scan that is answered now.
    std::vector<std::string> possibleOutcomes() const;

    /// A command may have to wait for an outcome that an earlier one has left behind.
    bool mayWait() const { return m_mayWait; }
    bool canCommand() const
    {
        return m_adopted && !m_view.missing.contains("ServiceManager") &&
               m_panel.offers("ServiceManager");
    }

    /// Says how the process differs from the twin, asked directly; empty when it does not.
    std::string differences();

private:
    struct Result {
        std::string text;
        Clock::time_point due;
    };

    QString receive(const std::string& message);
    void expectCommand(const Request& in, Expected& expected);

    Panel& m_panel;
    bool m_adopted = false;
    PanelOptions m_view; ///< of the panel that the service took up
    std::string m_buffer;
    bool m_mayWait = false;
    std::vector<Result> m_results;
};
