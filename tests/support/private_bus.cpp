#include "tests/support/private_bus.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace
{
const char* const variable = "DBUS_SYSTEM_BUS_ADDRESS";
}

PrivateBus::PrivateBus()
{
    m_address = "unix:path=" + m_dir.path("bus");
    std::ofstream(m_dir.path("bus.conf"))
        << "<busconfig><type>system</type><listen>" << m_address << "</listen>"
        << "<auth>EXTERNAL</auth><policy context=\"default\">"
        << "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
        << "<allow own=\"*\"/></policy></busconfig>";
    start();
    setenv(variable, m_address.c_str(), 1);
}

PrivateBus::~PrivateBus() { unsetenv(variable); }

void PrivateBus::start()
{
    unlink(m_dir.path("bus").c_str());
    m_daemon = std::make_unique<Process>(
        std::vector<std::string>{"dbus-daemon", "--nofork", "--nopidfile", "--nosyslog",
                                 "--print-address", "--config-file=" + m_dir.path("bus.conf")});
    if (!m_daemon->waitForOutput("\n"))
        throw std::runtime_error("no bus: " + m_daemon->errors());
}
