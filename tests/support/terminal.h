#pragma once

#include "tests/support/process.h"

#include <string>
#include <vector>

/// A program at a terminal of its own, which is typed at. It ends with this object.
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
    /// Waits until it shows that text behind what was waited for before.
    bool shows(const std::string& text);
    /// All that it has shown.
    const std::string& screen();
    /// True while what is typed is taken line by line and echoed, as a shell wants it.
    bool isPlain() const;

    /// Waits for the end; the exit status, or 128 + the signal, or -1 when it does not end in time.
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
