#pragma once

#include "tests/support/process.h"

#include <memory>

/// A bus daemon of type system of the test's own. While it lives, it is this process's system bus.
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();

    const std::string& address() const { return m_address; }

    /// Ends the daemon; the address stays.
    void stop() { m_daemon.reset(); }
    /// Sends the daemon a signal, such as the one that freezes it.
    void signal(int number) { m_daemon->signal(number); }
    /// Starts the daemon again, at the same address.
    void start();

private:
    TempDir m_dir;
    std::string m_address;
    std::unique_ptr<Process> m_daemon;
};
