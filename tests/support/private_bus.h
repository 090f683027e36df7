#pragma once

#include "tests/support/process.h"

#include <memory>

/// A private bus daemon of type system. During its lifetime it is this process's system bus.
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();

    const std::string& address() const { return m_address; }

    /// Stops the daemon; the address remains valid for start().
    void stop() { m_daemon.reset(); }
    void signal(int number) { m_daemon->signal(number); }
    void start();

private:
    TempDir m_dir;
    std::string m_address;
    std::unique_ptr<Process> m_daemon;
};
