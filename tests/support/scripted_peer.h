#pragma once

#include "tests/support/process.h"

#include <functional>
#include <string>
#include <sys/socket.h>
#include <thread>

/// A fake service: listens on a socket and runs a test's script in a thread of its own.
class ScriptedPeer
{
public:
    /// @param script runs once; after its end, no further client is accepted
    /// @param backlog as for listen()
    explicit ScriptedPeer(std::function<void(ScriptedPeer&)> script, int type = SOCK_SEQPACKET,
                          int backlog = 20);
    /// Waits for the end of the script.
    ~ScriptedPeer();
    ScriptedPeer(const ScriptedPeer&) = delete;
    ScriptedPeer& operator=(const ScriptedPeer&) = delete;

    const std::string& path() const { return m_path; }

    /// Accepts the next client and closes the connection to the previous one.
    void accept();
    /// The next message with every byte of it; "" when the client has disconnected.
    std::string receive();
    /// Blocks while the buffer is full. False when the client has disconnected.
    bool send(const std::string& bytes);
    bool answer(const std::string& text) { return send(text + '\0'); }
    void disconnect();

private:
    TempDir m_dir;
    std::string m_path = m_dir.path("socket");
    int m_listening;
    int m_client = -1;
    std::thread m_thread;
};
