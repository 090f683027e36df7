#pragma once

#include "tests/support/client.h"
#include "tests/support/process.h"

#include <memory>

/// The path is part of the system, so only one server can run on a machine.
inline const char* const serverSocket = "/tmp/ovik_server.socket";

/// While it lives, no other test of this user's starts a server; waits for its turn. It is a folder
/// that only this user can write to: a file in /tmp could be a stranger's link to another file.
class ServerLock
{
public:
    ServerLock();
    /// Throws when the folder is a link, or others can write to it.
    explicit ServerLock(const std::string& folder);
    ~ServerLock();
    ServerLock(const ServerLock&) = delete;
    ServerLock& operator=(const ServerLock&) = delete;

private:
    int m_fd;
};

/// The real program, alone on the machine. Throws when somebody else's server holds the socket.
class Server
{
public:
    /// @param prefix what to run it under, e.g. {"prlimit", "--nofile=64"}
    explicit Server(const std::vector<std::string>& prefix = {});
    /// Ends it and removes the socket file that it may have left behind.
    ~Server();

    /// Starts it again after it has ended; returns when it listens.
    void start();

    Process& process() { return *m_process; }
    /// Waits until the D-Bus backend answers requests.
    bool waitForPlatform();

private:
    ServerLock m_lock;
    std::vector<std::string> m_command;
    std::unique_ptr<Process> m_process;
};
