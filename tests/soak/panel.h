#pragma once

#include "panel_sim/panel_model.h"
#include "tests/support/process.h"

#include <systemd/sd-bus.h>

#include <memory>
#include <optional>
#include <set>

using Clock = std::chrono::steady_clock;

struct PanelOptions {
    QList<int> modules = {0, 2};
    QStringList missing;
    int scanDelay = 20; ///< in ms
};

/**
 * The simulated panel, twice: the process behind the service, and its twin in this program, to
 * which the same is done without the service in between. What the twin answers, the service must.
 */
class Panel
{
public:
    Panel();
    ~Panel();

    /// Starts the process; returns when it serves.
    void start(const PanelOptions& options);
    /// Starts the process only; the twin comes with appeared().
    void launch(const PanelOptions& options);
    void appeared();

    /// Ends the process at once; the twin goes with gone().
    void kill();
    void gone() { m_twin.reset(); }

    /// Stops the process where it is; returns when it stands still.
    void freeze();
    void resume();

    /// True when a call of that object, or of that object of a module, should be answered.
    bool offers(const QString& object) const;
    bool offers(const QString& object, int slot) const;
    bool isUp() const { return m_twin != nullptr; }
    const PanelOptions& options() const { return m_options; }
    sim::Panel& twin() { return *m_twin; }

    /// LEDs of the twin that were flashed: by slot and index.
    std::set<std::pair<int, unsigned int>> flashed;

    /// What a counter of the process that started at @p base may show to a request sent at @p sent.
    bool isPossible(int value, int base, Clock::time_point sent) const;
    int systemBase() const { return m_systemBase; }
    int backlightBase() const { return m_backlightBase; }

    /// Asks the process for a number by itself, past the service.
    std::optional<int> ask(const std::string& object, const std::string& interface,
                           const std::string& member, std::optional<unsigned int> id = {});
    /// Has the process carry out a service's command that the service has not asked for.
    void commandByAnother(const char* service, const char* command, const char* options);
    /// Sends the panel's signal as somebody who is not the panel.
    void signalByStranger();

private:
    PanelOptions m_options;
    std::unique_ptr<Process> m_process;
    std::unique_ptr<sim::Panel> m_twin;
    int m_systemBase = 0;
    int m_backlightBase = 0;
    Clock::time_point m_launched;
    Clock::time_point m_ready;
    sd_bus* m_bus = nullptr;
};
