#pragma once

#include "client/ovikctl/failure.h"
#include "client/ovikctl/settings.h"

#include <memory>

/// A connection to the service for as long as it is needed: others wait meanwhile.
class Connection
{
public:
    /// Throws a Failure.
    Connection(const std::string& path, const Deadline& deadline);

    /// The answer holds until the next request. Throws a Failure, after which there is no
    /// connection any more.
    ovik_client_answer ask(const std::string& request, const Deadline& deadline);

    ovik_client* client() { return m_client.get(); }

private:
    struct Closer {
        void operator()(ovik_client* client) const { ovik_client_close(client); }
    };
    std::string m_path;
    std::unique_ptr<ovik_client, Closer> m_client;
};
