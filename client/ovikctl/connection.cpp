#include "client/ovikctl/connection.h"

Connection::Connection(const std::string& path, const Deadline& deadline) : m_path(path)
{
    ovik_client* client = nullptr;
    const ovik_client_error error = ovik_client_open(&client, path.c_str(), deadline.left());
    if (error != OVIK_CLIENT_OK)
        throw failureOf(error, path);
    m_client.reset(client);
}

ovik_client_answer Connection::ask(const std::string& request, const Deadline& deadline)
{
    ovik_client_answer answer = {};
    const ovik_client_error error =
        ovik_client_request(m_client.get(), request.c_str(), deadline.left(), &answer);
    if (error != OVIK_CLIENT_OK)
        throw failureOf(error, m_path);
    return answer;
}
