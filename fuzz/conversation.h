#pragma once

#include "ovik_server/ovik_server.h"
#include "protocol/command_table.h"

#include <string>

/// The result of one message.
struct Exchange {
    const Command* command = nullptr; ///< null for a request that must be refused
    std::string response;             ///< without its NUL
    int status = 0;
};

/**
 * A new server on a socket of its own, and its only client.
 *
 * Checks the rules that every response must meet, whatever the C API returns.
 */
class Conversation
{
public:
    Conversation();
    ~Conversation();
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    bool isOver() const { return m_server.isQuit(); }

    /// An empty message ends the connection: the client reconnects, and there is no response.
    Exchange send(const std::string& message);

private:
    void connect();
    std::string receive();

    OvikServer m_server;
    int m_client = -1;
    /// The expected contents of the server's buffer.
    std::string m_buffer;
};
