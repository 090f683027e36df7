#pragma once

#include "ovik_server/domain_server.h"

/// The service's socket: answers each request by one call of the C API.
class OvikServer : public DomainServer
{
public:
    /// True once a client has sent "quit".
    bool isQuit() const { return m_quit; }

    /// Answers with one response. The request ends at the NUL of @p req; @p len is ignored.
    bool handleReq(const char* req, int len) override;

private:
    bool m_quit = false;
};
