#include "tests/soak/panel.h"

#include <csignal>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace
{
const char* const busName = "com.wenu.OVIK";

std::string joined(const QStringList& list) { return list.join(',').toStdString(); }

std::string joined(const QList<int>& numbers)
{
    QStringList list;
    for (int number : numbers)
        list.append(QString::number(number));
    return joined(list);
}

bool standsStill(pid_t pid)
{
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    std::getline(stat, line);
    return line.find(") T ") != std::string::npos;
}

void check(int result, const char* what)
{
    if (result < 0)
        throw std::runtime_error(std::string(what) + ": " + strerror(-result));
}
} // namespace

Panel::Panel() { check(sd_bus_open_system(&m_bus), "the bus"); }

Panel::~Panel()
{
    if (m_process)
        m_process->signal(SIGKILL);
    sd_bus_flush_close_unref(m_bus);
}

void Panel::start(const PanelOptions& options)
{
    launch(options);
    appeared();
}

void Panel::launch(const PanelOptions& options)
{
    m_options = options;
    m_launched = Clock::now();
    m_process = std::make_unique<Process>(
        commandOf(OVIK_PANEL_SIM_PATH,
                  {"--slots", joined(options.modules), "--missing", joined(options.missing),
                   "--scan-delay", std::to_string(options.scanDelay)}));
}

void Panel::appeared()
{
    if (!m_process->waitForOutput("ready"))
        throw std::runtime_error("the panel does not start: " + m_process->errors());
    m_ready = Clock::now();
    m_twin = std::make_unique<sim::Panel>(
        QSet<int>(m_options.modules.begin(), m_options.modules.end()), m_options.scanDelay);
    flashed.clear();
    m_systemBase = m_twin->systemSeconds();
    m_backlightBase = m_twin->backlightSeconds();
}

void Panel::kill()
{
    if (!m_process)
        return;
    m_process->signal(SIGKILL);
    m_process->wait();
    m_process.reset();
}

void Panel::freeze()
{
    m_process->signal(SIGSTOP);
    if (!waitUntil([&] { return standsStill(m_process->pid()); }))
        throw std::runtime_error("the panel does not stand still");
}

void Panel::resume() { m_process->signal(SIGCONT); }

bool Panel::offers(const QString& object) const
{
    return m_twin && !m_options.missing.contains(object);
}

bool Panel::offers(const QString& object, int slot) const
{
    return offers(object) && m_options.modules.contains(slot);
}

bool Panel::isPossible(int value, int base, Clock::time_point sent) const
{
    using std::chrono::duration_cast;
    using std::chrono::seconds;
    return value >= base + duration_cast<seconds>(sent - m_ready).count() &&
           value <= base + duration_cast<seconds>(Clock::now() - m_launched).count();
}

std::optional<int> Panel::ask(const std::string& object, const std::string& interface,
                              const std::string& member, std::optional<unsigned int> id)
{
    sd_bus_message* reply = nullptr;
    const std::string full = std::string(busName) + '.' + interface;
    const int result = id ? sd_bus_call_method(m_bus, busName, object.c_str(), full.c_str(),
                                               member.c_str(), nullptr, &reply, "u", *id)
                          : sd_bus_call_method(m_bus, busName, object.c_str(), full.c_str(),
                                               member.c_str(), nullptr, &reply, "");
    std::optional<int> answer;
    int number = 0; // or an unsigned one, of the same size
    if (result >= 0 &&
        sd_bus_message_read_basic(reply, sd_bus_message_has_signature(reply, "u") ? 'u' : 'i',
                                  &number) > 0)
        answer = number;
    sd_bus_message_unref(reply);
    return answer;
}

void Panel::commandByAnother(const char* service, const char* command, const char* options)
{
    check(sd_bus_call_method(m_bus, busName, "/ServiceManager", "com.wenu.OVIK.ServiceManager",
                             "command", nullptr, nullptr, "sss", service, command, options),
          "a command past the service");
}

void Panel::signalByStranger()
{
    check(sd_bus_emit_signal(m_bus, "/ServiceManager", "com.wenu.OVIK.ServiceManager",
                             "commandResult", "sss", "wifi", "scan", "{\"from\":\"a stranger\"}"),
          "a signal");
    check(sd_bus_flush(m_bus), "flush");
}
