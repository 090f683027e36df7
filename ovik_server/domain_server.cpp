#include "ovik_server/domain_server.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{
constexpr int listenBacklog = 20;

bool bindAndListen(int sock, const std::string& name)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, name.c_str(), sizeof address.sun_path - 1);

    if (bind(sock, reinterpret_cast<const sockaddr*>(&address), sizeof address) == -1) {
        perror("OVIK_SERVER: bind");
        return false;
    }
    if (listen(sock, listenBacklog) == -1) {
        perror("OVIK_SERVER: listen");
        return false;
    }
    return true;
}

bool setNonBlocking(int sock)
{
    const int flags = fcntl(sock, F_GETFL);
    if (flags == -1 || fcntl(sock, F_SETFL, flags | O_NONBLOCK) == -1) {
        perror("OVIK_SERVER: set non block");
        return false;
    }
    return true;
}

/// accept() allocates a socket before it notices an empty queue, so poll first: an idle server
/// would pay that 100 times a second.
bool isSomebodyWaiting(int listenSock)
{
    pollfd listener = {listenSock, POLLIN, 0};
    return poll(&listener, 1, 0) > 0;
}

/// True when fewer than 16 descriptors remain above @p descriptor, the newest one. Each attempt to
/// connect to the platform needs some, even while a client is connected.
bool areFewLeftAbove(int descriptor)
{
    constexpr rlim_t few = 16;
    rlimit limit = {};
    return descriptor != -1 && getrlimit(RLIMIT_NOFILE, &limit) == 0 &&
           static_cast<rlim_t>(descriptor) + few >= limit.rlim_cur;
}

/// Refuses further messages, and frees unread ones with the descriptors in them, which could be
/// memory files of any size. shutdown() alone frees nothing.
void discardUnread(int sock)
{
    shutdown(sock, SHUT_RD);

    // An empty message and the end of the queue both receive 0 bytes. With SO_PASSCRED and no
    // buffer for credentials, only a message sets MSG_CTRUNC.
    const int on = 1;
    setsockopt(sock, SOL_SOCKET, SO_PASSCRED, &on, sizeof on);

    // A send buffer queues at most 278 messages by default, and 10,923 with a net.core.wmem_max of
    // 4 MiB. Only a privileged sender can exceed that setting.
    constexpr int most = 65536;
    for (int i = 0; i < most; ++i) {
        msghdr message = {};
        const bool failed = recvmsg(sock, &message, MSG_DONTWAIT) == -1; // a reset is reported once
        if (!failed && !(message.msg_flags & MSG_CTRUNC))
            return;
    }
}
} // namespace

DomainServer::~DomainServer()
{
    if (m_dataSock != -1)
        close(m_dataSock);
    if (m_listenSock != -1) {
        close(m_listenSock);
        unlink(m_sockName.c_str());
    }
}

bool DomainServer::start(const char* name)
{
    m_sockName = name;
    m_listenSock = socket(AF_UNIX, SOCK_SEQPACKET, 0);
    if (m_listenSock == -1) {
        perror("OVIK_SERVER: socket");
        return false;
    }
    if (!setNonBlocking(m_listenSock) || !bindAndListen(m_listenSock, m_sockName)) {
        close(m_listenSock);
        m_listenSock = -1;
        return false;
    }
    return true;
}

bool DomainServer::accept()
{
    if (!isSomebodyWaiting(m_listenSock))
        return false;

    m_dataSock = ::accept(m_listenSock, nullptr, nullptr);
    if (m_dataSock == -1 && (errno == EMFILE || errno == ENFILE) && !m_forgotten.empty()) {
        closeForgotten();
        m_dataSock = ::accept(m_listenSock, nullptr, nullptr);
    } else if (areFewLeftAbove(m_dataSock)) {
        closeForgotten();
    }
    return m_dataSock != -1;
}

void DomainServer::forget()
{
    constexpr size_t mostForgotten = 16;
    discardUnread(m_dataSock);
    m_forgotten.push_back(m_dataSock);
    m_dataSock = -1;
    if (m_forgotten.size() > mostForgotten) {
        close(m_forgotten.front());
        m_forgotten.erase(m_forgotten.begin());
    }
}

void DomainServer::closeForgotten()
{
    for (const int sock : m_forgotten)
        close(sock);
    m_forgotten.clear();
}

bool DomainServer::process()
{
    if (m_dataSock == -1 && !accept())
        return false;

    const ssize_t received = recv(m_dataSock, m_buffer, sizeof m_buffer, MSG_DONTWAIT);
    if (received == -1) {
        if (errno != EAGAIN)
            perror("OVIK_SERVER: read");
        return false;
    }
    if (received == 0) {
        forget();
        return false;
    }
    // This NUL ends the buffer, not the message: a request without its NUL continues with the rest
    // of an earlier, longer request, at most up to here.
    m_buffer[sizeof m_buffer - 1] = 0;
    handleReq(m_buffer, static_cast<int>(received));
    return true;
}

bool DomainServer::handleReq(const char* req, int)
{
    // Unsigned, so that an overflow wraps around.
    m_result = static_cast<int>(static_cast<unsigned int>(m_result) +
                                static_cast<unsigned int>(strtol(req, nullptr, 10)));
    char answer[32];
    const int length = snprintf(answer, sizeof answer, "sum = %d", m_result);
    sendResp(answer, length + 1);
    return true;
}

bool DomainServer::sendResp(const char* buf, int len)
{
    if (write(m_dataSock, buf, static_cast<size_t>(len)) == -1) {
        perror("OVIK_SERVER: write");
        return false;
    }
    return true;
}
