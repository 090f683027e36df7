#include "fuzz/conversation.h"

#include "IProxy/ovik_status.h"
#include "fuzz/check.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{
constexpr size_t requestSize = 5000;
constexpr size_t responseSize = 10000;

/// A directory for the lifetime of the process; a fixed path could be in use.
class SocketPlace
{
public:
    SocketPlace()
    {
        const char* const place = getenv("TMPDIR");
        m_dir = std::string(place ? place : "/tmp") + "/ovik_fuzz_XXXXXX";
        check(mkdtemp(m_dir.data()), "a temporary directory can be made");
        m_path = m_dir + "/socket";
    }
    ~SocketPlace() { rmdir(m_dir.c_str()); }

    const std::string& path() const { return m_path; }

private:
    std::string m_dir;
    std::string m_path;
};

const std::string& socketPath()
{
    static const SocketPlace place;
    return place.path();
}

/// The row of a valid request; otherwise null.
const Command* understood(std::string text)
{
    const std::string byteOrderMark = "\xEF\xBB\xBF"; // Qt's UTF-8 decoder skips it
    if (text.rfind(byteOrderMark, 0) == 0)
        text.erase(0, byteOrderMark.size());
    const std::string word = text.substr(0, text.find(';'));
    const auto separators = std::count(text.begin(), text.end(), ';');
    const auto row = std::find_if(commandTable.begin(), commandTable.end(),
                                  [&](const Command& command) { return word == command.word; });
    return row != commandTable.end() && separators >= row->argumentCount() ? &*row : nullptr;
}

/// Removes a decimal number from the start of @p text.
bool takeNumber(std::string& text, bool mayBeNegative)
{
    const size_t sign = mayBeNegative && text.rfind('-', 0) == 0;
    const size_t end = std::min(text.find_first_not_of("0123456789", sign), text.size());
    if (end == sign)
        return false;
    text.erase(0, end);
    return true;
}

/// True for text like "01,AB,00".
bool areBytes(const std::string& text)
{
    for (size_t i = 0; i < text.size(); ++i) {
        const char* const allowed = i % 3 == 2 ? "," : "0123456789ABCDEF";
        if (!strchr(allowed, text[i]))
            return false;
    }
    return text.size() % 3 == 2;
}

/// True when @p text, the rest of a success response after the status, has the command's form.
bool hasShape(Shape shape, std::string text)
{
    if (shape == Shape::Status || (shape == Shape::Bytes && text.empty()))
        return text.empty();
    if (text.rfind(' ', 0) != 0)
        return false;
    text.erase(0, 1);
    switch (shape) {
    case Shape::Unsigned:
        return takeNumber(text, false) && text.empty();
    case Shape::Signed:
    case Shape::Size:
        return takeNumber(text, true) && text.empty();
    case Shape::SystemInfo:
        return std::count(text.begin(), text.end(), ',') >= 2;
    case Shape::Bytes:
        return areBytes(text);
    case Shape::Outcome:
        return takeNumber(text, true) && (text.empty() || text.front() == ';');
    default:
        return true;
    }
}
} // namespace

Conversation::Conversation() : m_buffer(requestSize, 0)
{
    check(m_server.start(socketPath().c_str()), "the server starts");
    connect();
}

Conversation::~Conversation() { close(m_client); }

void Conversation::connect()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, socketPath().c_str(), sizeof address.sun_path - 1);
    m_client = socket(AF_UNIX, SOCK_SEQPACKET, 0);
    check(::connect(m_client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
          "a client can connect");
}

std::string Conversation::receive()
{
    char response[responseSize + 1];
    const ssize_t length = recv(m_client, response, sizeof response, MSG_DONTWAIT | MSG_TRUNC);
    check(length > 0, "every request is answered");
    check(length <= static_cast<ssize_t>(responseSize), "a response has at most 10000 bytes");
    const std::string message(response, static_cast<size_t>(length));
    check(message.find('\0') == message.size() - 1, "a response ends with its only NUL");
    char second;
    check(recv(m_client, &second, 1, MSG_DONTWAIT) == -1 && errno == EAGAIN,
          "a request has one response");
    return message.substr(0, message.size() - 1);
}

Exchange Conversation::send(const std::string& message)
{
    check(::send(m_client, message.data(), message.size(), 0) ==
              static_cast<ssize_t>(message.size()),
          "a request can be sent");
    const bool served = m_server.process();
    check(served != message.empty(), "a message is a request unless it is empty");
    if (!served) {
        close(m_client);
        connect();
        return {};
    }

    m_buffer.replace(0, std::min(message.size(), requestSize), message, 0, requestSize);
    m_buffer.back() = 0;

    Exchange exchange;
    exchange.command = understood(m_buffer.c_str());
    exchange.response = receive();
    std::string rest = exchange.response;
    check(takeNumber(rest, true), "a response starts with a status");
    exchange.status = atoi(exchange.response.c_str());
    if (!exchange.command)
        check(exchange.response == "-8", "what is not understood is answered -8");
    else if (exchange.status == OVIK_OK)
        check(hasShape(exchange.command->shape, rest), "an answer has the form of its command");
    else
        check(rest.empty(), "a failure is its status alone");
    return exchange;
}
