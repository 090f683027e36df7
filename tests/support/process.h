#pragma once

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

using namespace std::chrono_literals;

/// Multiplies how long the tests wait at most: more than 1 under emulation. A bound that tells two
/// of the program's own times apart stays what it is.
constexpr int patienceFactor = OVIK_TEST_PATIENCE_FACTOR;

/// The bound of every wait of the tests. An event that is due is waited for, never slept for.
constexpr std::chrono::milliseconds patience = patienceFactor * 20s;

/// Polls @p condition until it holds; false when it does not within @p bound.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds bound = patience);

double millisecondsSince(std::chrono::steady_clock::time_point start);

/// A directory of its own under /tmp, removed with everything in it.
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

/// A variable of the environment for as long as a scope lasts.
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

/// The words that start a program of this build: under the emulator, when it is for another
/// machine.
std::vector<std::string> commandOf(const std::string& path,
                                   const std::vector<std::string>& arguments = {});

/// A program's words and environment, made up before a fork: behind one, a process that had several
/// threads cannot rely on memory being given out.
class ProgramStart
{
public:
    /// @p environment adds to this program's, of which is left out what changes the words that
    /// others say.
    ProgramStart(std::vector<std::string> command, const std::vector<std::string>& environment);
    ProgramStart(const ProgramStart&) = delete;
    ProgramStart& operator=(const ProgramStart&) = delete;

    /// Replaces the calling process. Exit status 127: there is no such program.
    [[noreturn]] void execute() const;

private:
    std::vector<std::string> m_words;
    std::vector<std::string> m_variables;
    std::vector<char*> m_argv;
    std::vector<char*> m_envp;
};

/// A child process whose standard output and error are collected. It ends with this object.
class Process
{
public:
    explicit Process(const std::vector<std::string>& command,
                     const std::vector<std::string>& environment = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return m_pid; }

    /// Standard output so far: everything that was written before this call.
    const std::string& output();
    /// Standard error so far.
    const std::string& errors();
    /// Standard output since the last call of this function.
    std::string newOutput();

    /// Reads no more: whatever it writes from now on is refused.
    void closeOutput();

    bool waitForOutput(const std::string& text, std::chrono::milliseconds bound = patience);
    bool waitForErrors(const std::string& text, std::chrono::milliseconds bound = patience);

    bool running();
    /// Waits for the end; the exit status, or 128 + the signal, or -1 when it does not end in time.
    int wait(std::chrono::milliseconds bound = patience);
    void signal(int number);
    /// Ends it, gently at first.
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
