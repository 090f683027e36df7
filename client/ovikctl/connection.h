#pragma once

#include "client/ovikctl/failure.h"
#include "client/ovikctl/request.h"
#include "client/ovikctl/settings.h"

#include <memory>

/// "alice (1001)"
std::string nameOfUser(uid_t user);

/// True when @p user may listen without a warning: root, this user, and that of --service-user.
bool isTrusted(uid_t user, const Settings& settings);

/// A connection to the service. Keep it only as long as needed: other clients wait meanwhile.
class Connection
{
public:
    /// Throws a Failure. Warns, once for each such process, when a user who is not trusted listens,
    /// unless the caller reports that itself.
    Connection(const Settings& settings, const Deadline& deadline, bool isReported = false);

    /// "process 123 of user alice (1001)" when that user is not trusted, else empty.
    const std::string& stranger() const { return m_stranger; }

    /// Throws a Failure when the request may contain a secret and an untrusted user listens.
    void requireMaySend(const Request& request) const;

    /// The answer is valid until the next request. Throws a Failure, after which the connection is
    /// closed.
    ovik_client_answer ask(const Request& request, const Deadline& deadline);

    ovik_client* client() { return m_client.get(); }

private:
    struct Closer {
        void operator()(ovik_client* client) const { ovik_client_close(client); }
    };
    std::string m_path;
    std::string m_stranger;
    std::unique_ptr<ovik_client, Closer> m_client;
};
