#pragma once

#include <string>
#include <vector>

/**
 * A small single-client server on a Unix-domain SOCK_SEQPACKET socket, driven by polling.
 *
 * process() does not wait for a client or a request: the caller's loop sets the polling interval.
 * Only the write of an answer blocks, while the client does not read. One client is served at a
 * time; others wait in the listen queue until that client has ended. Each message received is one
 * request, and each sendResp() sends one message. Make all calls on the thread of the poll loop.
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
     * Binds to @p name and listens. The address has 107 bytes of the name, but the destructor
     * removes the file of the full name. An existing socket file makes the start fail: only the
     * caller may decide to remove the file.
     *
     * @return true when listening; otherwise the failed step was reported with perror
     */
    bool start(const char* name);

    /**
     * One poll step: accepts a client if there is none, then receives at most one message.
     *
     * A client has ended when it has closed its socket, shut down its sending half, or sent an
     * empty message. Its unread messages are discarded at once, as they would only occupy memory,
     * and its further sends fail with EPIPE. Its descriptor stays open, so that the client sees no
     * end of its answers, until 16 later clients have ended or few descriptors are left.
     *
     * @return true exactly when a request was received and passed to handleReq()
     */
    bool process();

    /**
     * Answers one request; the result is ignored. This class's own handler is a demonstration: it
     * adds up the numbers that it receives and answers "sum = %d".
     *
     * @param req points to the receive buffer. The text is terminated only if the sender sent a
     *            NUL; otherwise it ends at the NUL at the end of the buffer at the latest.
     * @param len number of bytes received
     */
    virtual bool handleReq(const char* req, int len);

    /// Sends @p len bytes as one message to the client; a failure is reported with perror.
    bool sendResp(const char* buf, int len);

private:
    bool accept();
    /// Handles a client that has ended, see process().
    void forget();
    /// The last resort when few descriptors are left.
    void closeForgotten();

    int m_listenSock = -1;
    int m_dataSock = -1;
    int m_result = 0;
    std::string m_sockName;
    /// Descriptors of clients that have ended, the oldest first.
    std::vector<int> m_forgotten;
    /// Initialised, so that even a first request without its NUL reads defined bytes.
    char m_buffer[5000] = {};
};
