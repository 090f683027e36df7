#include "tests/support/scripted_peer.h"

#include <csignal>
#include <cstring>
#include <stdexcept>
#include <sys/un.h>
#include <unistd.h>

ScriptedPeer::ScriptedPeer(std::function<void(ScriptedPeer&)> script, int type, int backlog)
    : m_listening(socket(AF_UNIX, type | SOCK_CLOEXEC, 0))
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, m_path.c_str(), sizeof address.sun_path - 1);
    if (bind(m_listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) == -1 ||
        listen(m_listening, backlog) == -1)
        throw std::runtime_error("cannot listen at " + m_path);
    m_thread = std::thread([this, script = std::move(script)] {
        // The testing thread handles all signals.
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, nullptr);
        script(*this);
    });
}

ScriptedPeer::~ScriptedPeer()
{
    m_thread.join();
    disconnect();
    close(m_listening);
}

void ScriptedPeer::accept()
{
    disconnect();
    m_client = accept4(m_listening, nullptr, nullptr, SOCK_CLOEXEC);
}

std::string ScriptedPeer::receive()
{
    std::string message(65536, '\0');
    const ssize_t size = recv(m_client, message.data(), message.size(), 0);
    message.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return message;
}

bool ScriptedPeer::send(const std::string& bytes)
{
    return ::send(m_client, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(bytes.size());
}

void ScriptedPeer::disconnect()
{
    if (m_client != -1)
        close(m_client);
    m_client = -1;
}
