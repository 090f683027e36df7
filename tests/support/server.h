#pragma once

#include "tests/support/client.h"
#include "tests/support/process.h"

#include <memory>

/// The fixed socket path allows only one server on a machine.
inline const char* const serverSocket = "/tmp/ovik_server.socket";

/// Lets one server test of this user run at a time. The lock is a folder that only this user can
/// write to: another user could have put a symbolic link in place of a file.
class ServerLock
{
public:
    ServerLock();
    /// Throws when the folder is a link, or when others can write to it.
    explicit ServerLock(const std::string& folder);
    ~ServerLock();
    ServerLock(const ServerLock&) = delete;
    ServerLock& operator=(const ServerLock&) = delete;

private:
    int m_fd;
};

/// The real server. Throws when another process already listens at the socket.
class Server
{
public:
    /// @param prefix command to run the server under, e.g. {"prlimit", "--nofile=64"}
    explicit Server(const std::vector<std::string>& prefix = {});
    /// Ends the server and removes its socket file.
    ~Server();

    /// Starts the server again after its end; returns when it listens.
    void start();

    Process& process() { return *m_process; }
    /// Waits until the D-Bus backend answers requests.
    bool waitForPlatform();

private:
    ServerLock m_lock;
    std::vector<std::string> m_command;
    std::unique_ptr<Process> m_process;
};
