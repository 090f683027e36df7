#include "client/ovikctl/connection.h"

#include "client/ovik_client_internal.h"
#include "client/ovikctl/output.h"

#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{
/// The process that called listen(), unless trusted. The kernel reports pid 0 if it is not visible.
std::string strangerAt(const ovik_client* client, const Settings& settings)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (getsockopt(ovik_internal_descriptor(client), SOL_SOCKET, SO_PEERCRED, &peer, &size) == -1)
        return "a process of an unknown user";
    if (isTrusted(peer.uid, settings))
        return "";
    return (peer.pid > 0 ? "process " + std::to_string(peer.pid) : std::string("a process")) +
           " of user " + nameOfUser(peer.uid);
}

void warnOf(const std::string& stranger, const std::string& path)
{
    static std::string last; // watch and wait reconnect repeatedly, but warn once
    if (stranger != last)
        complain("warning: " + stranger + ", neither root nor you, listens at " + path +
                 ": it reads what you send, and its answers may be false; end it and restart the "
                 "service, systemctl restart ovik_server, or name the service's user with "
                 "--service-user");
    last = stranger;
}
} // namespace

std::string nameOfUser(uid_t user)
{
    const passwd* const entry = getpwuid(user);
    return std::string(entry ? entry->pw_name : "unknown") + " (" + std::to_string(user) + ")";
}

bool isTrusted(uid_t user, const Settings& settings)
{
    return user == 0 || user == geteuid() || user == settings.serviceUser;
}

Connection::Connection(const Settings& settings, const Deadline& deadline, bool isReported)
    : m_path(settings.socket)
{
    ovik_client* client = nullptr;
    const ovik_client_error error = ovik_client_open(&client, m_path.c_str(), deadline.left());
    if (error != OVIK_CLIENT_OK)
        throw failureOf(error, m_path);
    m_client.reset(client);
    m_stranger = strangerAt(client, settings);
    if (!m_stranger.empty() && !isReported)
        warnOf(m_stranger, m_path);
}

void Connection::requireMaySend(const Request& request) const
{
    if (!m_stranger.empty() && mayHaveSecret(request))
        throw Failure(noService, commandWordOf(request.text) +
                                     " was not sent: it may have a secret, "
                                     "which " +
                                     m_stranger +
                                     " would read; if that is the service, "
                                     "name its user with --service-user");
}

ovik_client_answer Connection::ask(const Request& request, const Deadline& deadline)
{
    requireMaySend(request);
    ovik_client_answer answer = {};
    const ovik_client_error error =
        ovik_client_request(m_client.get(), request.text.c_str(), deadline.left(), &answer);
    if (error != OVIK_CLIENT_OK)
        throw failureOf(error, m_path);
    return answer;
}
