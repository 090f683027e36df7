#pragma once

#include "tests/support/process.h"

#include <string>
#include <vector>

/// A program at a pseudoterminal, which a test types at; ended by the destructor.
class Terminal
{
public:
    explicit Terminal(const std::vector<std::string>& command,
                      const std::vector<std::string>& environment = {});
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    pid_t pid() const { return m_pid; }

    void type(const std::string& keys);
    /// Waits until the program prints @p text after the previous match.
    bool shows(const std::string& text);
    /// Everything printed so far.
    const std::string& screen();
    /// True while the terminal is in line mode with echo, as a shell needs it.
    bool isPlain() const;

    /// Waits for the end. @return the exit status, 128 + the signal, or -1 on time-out
    int wait();

private:
    pid_t m_pid = -1;
    int m_master = -1;
    std::string m_screen;
    size_t m_seen = 0;
};

namespace keys
{
inline const std::string tab = "\t";
inline const std::string up = "\033[A";
inline const std::string ctrlC = "\003";
inline const std::string ctrlD = "\004";
} // namespace keys
