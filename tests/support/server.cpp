#include "tests/support/server.h"

#include <cstdio>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <unistd.h>

ServerLock::ServerLock()
{
    const std::string path = "/tmp/ovik_server.test-" + std::to_string(getuid()) + ".lock";
    m_fd = open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    if (m_fd == -1)
        throw std::runtime_error("cannot open " + path);
    if (flock(m_fd, LOCK_EX | LOCK_NB) == 0)
        return;
    fprintf(stderr, "waiting for %s: other tests, or a ./run.sh at a terminal?\n", path.c_str());
    if (flock(m_fd, LOCK_EX) != 0)
        throw std::runtime_error("cannot lock " + path);
}

ServerLock::~ServerLock() { close(m_fd); }

Server::Server(const std::vector<std::string>& prefix) : m_command(prefix)
{
    const std::vector<std::string> words = commandOf(OVIK_SERVER_PATH);
    m_command.insert(m_command.end(), words.begin(), words.end());
    if (isListening(serverSocket))
        throw std::runtime_error("another server holds " + std::string(serverSocket));
    unlink(serverSocket);
    start();
}

Server::~Server()
{
    m_process->stop();
    unlink(serverSocket);
}

void Server::start()
{
    m_process = std::make_unique<Process>(m_command);
    const auto upOrGone = [&] { return isListening(serverSocket) || !m_process->running(); };
    if (!waitUntil(upOrGone) || !m_process->running())
        throw std::runtime_error("the server does not start: " + m_process->errors());
}

bool Server::waitForPlatform()
{
    // Without a backend every request is answered -1.
    return waitUntil([] { return Client(serverSocket).request("getBrightness") != "-1"; });
}
