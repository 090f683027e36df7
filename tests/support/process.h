#pragma once

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

using namespace std::chrono_literals;

/// Multiplies the longest waits of the tests: more than 1 under emulation. Bounds that distinguish
/// two of the program's own times are not multiplied.
constexpr int patienceFactor = OVIK_TEST_PATIENCE_FACTOR;

/// The bound of every wait. Tests wait for an event and never sleep in its place.
constexpr std::chrono::milliseconds patience = patienceFactor * 20s;

/// Polls @p condition; false when it is not met within @p bound.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds bound = patience);

double millisecondsSince(std::chrono::steady_clock::time_point start);

/// A new directory under /tmp, removed with its contents.
class TempDir
{
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

/// Sets an environment variable for a scope.
class Variable
{
public:
    Variable(const char* name, const std::string& value) : m_name(name)
    {
        setenv(name, value.c_str(), 1);
    }
    ~Variable() { unsetenv(m_name); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* m_name;
};

/// The command line of a program of this build; under the emulator when it is built for another
/// machine.
std::vector<std::string> commandOf(const std::string& path,
                                   const std::vector<std::string>& arguments = {});

/// A program's arguments and environment, prepared before fork(): after a fork of a multithreaded
/// process, allocating memory is unsafe.
class ProgramStart
{
public:
    /// @p environment is added to this program's, without the variables that translate messages.
    ProgramStart(std::vector<std::string> command, const std::vector<std::string>& environment);
    ProgramStart(const ProgramStart&) = delete;
    ProgramStart& operator=(const ProgramStart&) = delete;

    /// Replaces the calling process; exit status 127 when the program cannot be started.
    [[noreturn]] void execute() const;

private:
    std::vector<std::string> m_words;
    std::vector<std::string> m_variables;
    std::vector<char*> m_argv;
    std::vector<char*> m_envp;
};

/// A child process with its standard output and error; ended by the destructor.
class Process
{
public:
    explicit Process(const std::vector<std::string>& command,
                     const std::vector<std::string>& environment = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return m_pid; }

    /// Everything written to standard output before this call.
    const std::string& output();
    const std::string& errors();
    /// Standard output since the previous call of newOutput().
    std::string newOutput();

    /// Closes the reading end: all later writes of the child fail.
    void closeOutput();

    bool waitForOutput(const std::string& text, std::chrono::milliseconds bound = patience);
    bool waitForErrors(const std::string& text, std::chrono::milliseconds bound = patience);

    bool running();
    /// Waits for the end. @return the exit status, 128 + the signal, or -1 on time-out
    int wait(std::chrono::milliseconds bound = patience);
    void signal(int number);
    /// Ends the process: SIGTERM first.
    void stop();

private:
    struct Stream {
        int fd = -1;
        std::string text;
        void drain();
    };

    pid_t m_pid = -1;
    int m_status = -1;
    Stream m_out;
    Stream m_err;
    size_t m_seen = 0;
};
