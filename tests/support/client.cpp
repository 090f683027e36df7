#include "tests/support/client.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{
int tryConnect(const std::string& path)
{
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    // connect() blocks while the listen queue is full, send() while the buffer is.
    const timeval bound = {std::chrono::duration_cast<std::chrono::seconds>(patience).count(), 0};
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &bound, sizeof bound);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return fd;
    close(fd);
    return -1;
}
} // namespace

bool isListening(const std::string& path)
{
    const int fd = tryConnect(path);
    if (fd != -1)
        close(fd);
    return fd != -1;
}

Client::Client(const std::string& path) : m_fd(tryConnect(path))
{
    if (m_fd == -1)
        throw std::runtime_error("cannot connect to " + path + ": " + strerror(errno));
}

bool Client::sendBytes(const std::string& bytes)
{
    return ::send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(bytes.size());
}

bool Client::sendBytes(std::string bytes, const std::vector<int>& descriptors)
{
    const size_t size = descriptors.size() * sizeof(int);
    iovec part = {bytes.data(), bytes.size()};
    std::vector<char> control(CMSG_SPACE(size));
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(size);
    memcpy(CMSG_DATA(header), descriptors.data(), size);
    return sendmsg(m_fd, &message, MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

std::optional<std::string> Client::receiveBytes(std::chrono::milliseconds bound)
{
    pollfd event = {m_fd, POLLIN, 0};
    if (poll(&event, 1, static_cast<int>(bound.count())) <= 0)
        return std::nullopt;
    std::string message(65536, '\0');
    const ssize_t size = recv(m_fd, message.data(), message.size(), 0);
    if (size < 0)
        return std::nullopt;
    message.resize(static_cast<size_t>(size));
    return message;
}

std::string Client::receive(std::chrono::milliseconds bound)
{
    const auto message = receiveBytes(bound);
    if (!message)
        return "(no response)";
    if (message->empty())
        return "(connection closed)";
    if (message->find('\0') != message->size() - 1)
        return "(not terminated by one NUL)";
    return message->substr(0, message->size() - 1);
}

std::string Client::request(const std::string& text, std::chrono::milliseconds bound)
{
    return send(text) ? receive(bound) : "(not sent)";
}

void Client::disconnect()
{
    if (m_fd != -1)
        close(m_fd);
    m_fd = -1;
}
