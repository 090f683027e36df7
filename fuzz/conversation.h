#pragma once

#include "ovik_server/ovik_server.h"
#include "protocol/command_table.h"

#include <string>

/// What came of one message.
struct Exchange {
    const Command* command = nullptr; ///< null for a request that must be refused
    std::string response;             ///< without its NUL
    int status = 0;
};

/**
 * A new server on a socket of its own and its one client.
 *
 * What every response must be like, whatever is behind the C API, is checked here.
 */
class Conversation
{
public:
    Conversation();
    ~Conversation();
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    bool isOver() const { return m_server.isQuit(); }

    /// An empty message ends a connection: the client comes back, and there is no response.
    Exchange send(const std::string& message);

private:
    void connect();
    std::string receive();

    OvikServer m_server;
    int m_client = -1;
    /// The server's buffer, as it must look from its own rules.
    std::string m_buffer;
};
