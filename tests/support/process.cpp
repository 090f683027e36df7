#include "tests/support/process.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds bound)
{
    const auto deadline = std::chrono::steady_clock::now() + bound;
    for (;;) {
        const bool isLast =
            std::chrono::steady_clock::now() > deadline; // check once more after starvation
        if (condition())
            return true;
        if (isLast)
            return false;
        std::this_thread::sleep_for(1ms);
    }
}

double millisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

TempDir::TempDir()
{
    char name[] = "/tmp/ovik_test_XXXXXX";
    if (!mkdtemp(name))
        throw std::runtime_error("no temporary directory");
    m_path = name;
}

TempDir::~TempDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::vector<std::string> commandOf(const std::string& path,
                                   const std::vector<std::string>& arguments)
{
    std::vector<std::string> words = {OVIK_TEST_EMULATOR};
    words.push_back(path);
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

ProgramStart::ProgramStart(std::vector<std::string> command,
                           const std::vector<std::string>& environment)
    : m_words(std::move(command))
{
    std::map<std::string, std::string> byName;
    const auto set = [&](const std::string& variable) {
        byName[variable.substr(0, variable.find('='))] = variable;
    };
    for (char** variable = environ; *variable; ++variable)
        set(*variable);
    set("LC_ALL=C.UTF-8");
    for (const char* name :
         {"LANGUAGE", "NO_COLOR", "QDBUS_DEBUG", "QT_LOGGING_RULES", "QT_MESSAGE_PATTERN"})
        byName.erase(name);
    for (const std::string& variable : environment)
        set(variable);

    for (const auto& variable : byName)
        m_variables.push_back(variable.second);
    for (std::string& word : m_words)
        m_argv.push_back(word.data());
    m_argv.push_back(nullptr);
    for (std::string& variable : m_variables)
        m_envp.push_back(variable.data());
    m_envp.push_back(nullptr);
}

void ProgramStart::execute() const
{
    execvpe(m_argv[0], m_argv.data(), m_envp.data());
    _exit(127);
}

namespace
{
/// A pipe whose ends no other child inherits; its reading end does not block.
void makePipe(int (&ends)[2])
{
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
}
} // namespace

Process::Process(const std::vector<std::string>& command,
                 const std::vector<std::string>& environment)
{
    int out[2];
    int err[2];
    makePipe(out);
    makePipe(err);

    const ProgramStart program(command, environment);
    m_pid = fork();
    if (m_pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL); // a crashed test leaves no child behind
        ::signal(SIGPIPE, SIG_DFL);       // the parent may ignore it
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        program.execute();
    }
    close(out[1]);
    close(err[1]);
    m_out.fd = out[0];
    m_err.fd = err[0];
    if (m_pid == -1)
        throw std::runtime_error("cannot start " + command.front());
}

Process::~Process()
{
    stop();
    closeOutput();
}

void Process::closeOutput()
{
    for (Stream* stream : {&m_out, &m_err}) {
        if (stream->fd != -1)
            close(stream->fd);
        stream->fd = -1;
    }
}

void Process::Stream::drain()
{
    char chunk[4096];
    ssize_t got;
    while ((got = read(fd, chunk, sizeof chunk)) > 0)
        text.append(chunk, static_cast<size_t>(got));
}

const std::string& Process::output()
{
    m_out.drain();
    return m_out.text;
}

const std::string& Process::errors()
{
    m_err.drain();
    return m_err.text;
}

std::string Process::newOutput()
{
    const std::string fresh = output().substr(m_seen);
    m_seen = m_out.text.size();
    return fresh;
}

bool Process::waitForOutput(const std::string& text, std::chrono::milliseconds bound)
{
    return waitUntil([&] { return output().find(text) != std::string::npos; }, bound);
}

bool Process::waitForErrors(const std::string& text, std::chrono::milliseconds bound)
{
    return waitUntil([&] { return errors().find(text) != std::string::npos; }, bound);
}

bool Process::running()
{
    if (m_pid == -1)
        return false;
    int status = 0;
    if (waitpid(m_pid, &status, WNOHANG) != m_pid)
        return true;
    m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    m_pid = -1;
    return false;
}

int Process::wait(std::chrono::milliseconds bound)
{
    // Keep reading, or the child could block on a full pipe.
    return waitUntil([&] { return output(), errors(), !running(); }, bound) ? m_status : -1;
}

void Process::signal(int number)
{
    if (running())
        kill(m_pid, number);
}

void Process::stop()
{
    signal(SIGTERM);
    if (wait(patienceFactor * 5s) == -1 && running()) {
        signal(SIGKILL);
        wait();
    }
}
