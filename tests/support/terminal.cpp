#include "tests/support/terminal.h"

#include <csignal>
#include <fcntl.h>
#include <pty.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

Terminal::Terminal(const std::vector<std::string>& command,
                   const std::vector<std::string>& environment)
{
    std::vector<std::string> variables = {"TERM=xterm"};
    variables.insert(variables.end(), environment.begin(), environment.end());
    const ProgramStart program(command, variables);
    winsize size = {};
    size.ws_row = 40;
    size.ws_col = 100;
    m_pid = forkpty(&m_master, nullptr, nullptr, &size);
    if (m_pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL); // a crashed test leaves no child behind
        program.execute();
    }
    if (m_pid == -1)
        throw std::runtime_error("cannot start " + command.front());
    fcntl(m_master, F_SETFL, O_NONBLOCK);
    fcntl(m_master, F_SETFD, FD_CLOEXEC);
}

Terminal::~Terminal()
{
    if (m_pid != -1) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    close(m_master);
}

void Terminal::type(const std::string& keys)
{
    if (write(m_master, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
        throw std::runtime_error("cannot type");
}

const std::string& Terminal::screen()
{
    char chunk[4096];
    ssize_t got;
    while ((got = read(m_master, chunk, sizeof chunk)) > 0)
        m_screen.append(chunk, static_cast<size_t>(got));
    return m_screen;
}

bool Terminal::shows(const std::string& text)
{
    size_t found = std::string::npos;
    const bool isThere =
        waitUntil([&] { return (found = screen().find(text, m_seen)) != std::string::npos; });
    if (isThere)
        m_seen = found + text.size();
    return isThere;
}

bool Terminal::isPlain() const
{
    termios modes = {};
    return tcgetattr(m_master, &modes) == 0 && (modes.c_lflag & ICANON) && (modes.c_lflag & ECHO);
}

int Terminal::wait()
{
    int status = 0;
    const bool ended = waitUntil([&] {
        screen(); // a full terminal blocks the program
        return m_pid == -1 || waitpid(m_pid, &status, WNOHANG) == m_pid;
    });
    if (!ended)
        return -1;
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
