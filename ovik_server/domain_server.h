#pragma once

#include <string>
#include <vector>

/**
 * A small single-client server on a Unix-domain SOCK_SEQPACKET socket, driven by polling.
 *
 * process() does not wait for a client or a request, so the caller's loop decides how often to
 * look. What waits is the write of an answer to a client that does not read. One client is served
 * at a time; others wait in the listen queue until it has gone. One message received is one
 * request, one sendResp() is one message sent. All calls belong to the thread of the poll loop.
 */
class DomainServer
{
public:
    DomainServer() = default;

    /// Closes both sockets; removes the socket file if the server was listening.
    virtual ~DomainServer();

    DomainServer(const DomainServer&) = delete;
    DomainServer& operator=(const DomainServer&) = delete;

    /**
     * Binds and listens on @p name. The address holds 107 bytes of it; a longer name is cut there,
     * while the file removed at the end is the one of the full name. An existing socket file makes
     * the start fail: removing it is the caller's decision.
     *
     * @return true when listening; otherwise the failed step has been reported with perror.
     */
    bool start(const char* name);

    /**
     * One poll step: accepts a client if there is none, then receives at most one message.
     *
     * A client has ended when it has closed its socket, shut down its sending half, or sent an
     * empty message. What it has sent and was not received is discarded at once, and sending on
     * fails with EPIPE: nothing of it would ever be received, yet it would occupy memory. The
     * client's descriptor stays open, so that the client sees no end of its answers, until 16 later
     * clients have ended or descriptors are short.
     *
     * @return true exactly when a request was received and handed to handleReq().
     */
    bool process();

    /**
     * Answers one request. @p req points to the receive buffer and @p len is the number of bytes
     * received; the text is only as terminated as its sender made it, with a guard byte at the end
     * of the buffer. The result is not looked at.
     *
     * This class's own handler is a demonstration: it adds up the numbers it is sent and answers
     * "sum = %d".
     */
    virtual bool handleReq(const char* req, int len);

    /// Sends @p len bytes as one message to the client; a failure is reported with perror.
    bool sendResp(const char* buf, int len);

private:
    bool accept();
    /// Takes leave of a client that has ended; see process().
    void forget();
    /// The last resort when descriptors are short.
    void closeForgotten();

    int m_listenSock = -1;
    int m_dataSock = -1;
    int m_result = 0;
    std::string m_sockName;
    /// Descriptors of clients that have ended, the oldest first.
    std::vector<int> m_forgotten;
    /// Cleared, so that even a first request without its NUL reads defined bytes.
    char m_buffer[5000] = {};
};
