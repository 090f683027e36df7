#include "tests/support/server.h"

#include <cstdio>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

// run.sh locks the same folder.
ServerLock::ServerLock() : ServerLock("/tmp/ovik_server.test-" + std::to_string(getuid())) {}

ServerLock::ServerLock(const std::string& folder)
{
    mkdir(folder.c_str(), 0700);
    m_fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat status = {};
    if (m_fd == -1 || fstat(m_fd, &status) != 0 || status.st_uid != getuid() ||
        (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        close(m_fd);
        throw std::runtime_error(folder + " is not a folder that only you can write to: " +
                                 "remove it, or have root remove it");
    }
    if (flock(m_fd, LOCK_EX | LOCK_NB) == 0)
        return;
    fprintf(stderr, "waiting for %s: other tests, or a ./run.sh at a terminal?\n", folder.c_str());
    if (flock(m_fd, LOCK_EX) != 0)
        throw std::runtime_error("cannot lock " + folder);
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
    // Without a backend, the server answers every request with -1.
    return waitUntil([] { return Client(serverSocket).request("getBrightness") != "-1"; });
}
