#pragma once

#include "tests/support/process.h"

#include <optional>
#include <string>

/// A client of a SOCK_SEQPACKET server. The constructor throws when the connection fails.
class Client
{
public:
    explicit Client(const std::string& path);
    ~Client() { disconnect(); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    int fd() const { return m_fd; }

    /// Sends exactly these bytes as one message.
    bool sendBytes(const std::string& bytes);
    bool sendBytes(std::string bytes, const std::vector<int>& descriptors);
    /// Sends a text with its NUL.
    bool send(const std::string& text) { return sendBytes(text + '\0'); }
    /// The next message with every byte of it; nothing when no message arrives in time.
    std::optional<std::string> receiveBytes(std::chrono::milliseconds bound = patience);
    /// The next message without its NUL, which must be the only one; otherwise an error text.
    std::string receive(std::chrono::milliseconds bound = patience);
    std::string request(const std::string& text, std::chrono::milliseconds bound = patience);
    void disconnect();

private:
    int m_fd = -1;
};

/// True when a process listens at @p path.
bool isListening(const std::string& path);
