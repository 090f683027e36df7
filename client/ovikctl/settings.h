#pragma once

#include "ovik_client.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <optional>
#include <string>
#include <sys/types.h>

using namespace std::chrono_literals;
using Milliseconds = std::chrono::milliseconds;

/// The options that are common to all verbs.
struct Settings {
    std::string socket = OVIK_CLIENT_SOCKET;
    std::optional<uid_t> serviceUser; ///< trusted like root
    std::optional<double> timeout;    ///< in seconds; each verb has its own default
    bool json = false;
    bool quiet = false;

    Milliseconds bound(Milliseconds otherwise) const
    {
        return timeout ? Milliseconds(static_cast<Milliseconds::rep>(*timeout * 1000)) : otherwise;
    }
};

/// A time limit shared by several calls.
class Deadline
{
public:
    explicit Deadline(Milliseconds bound) : m_end(Clock::now() + bound) {}
    bool isOver() const { return Clock::now() >= m_end; }
    /// The remaining time in ms, from 0 to INT_MAX, for the client library.
    int left() const
    {
        const auto rest = std::chrono::ceil<Milliseconds>(m_end - Clock::now()).count();
        return static_cast<int>(std::clamp<Milliseconds::rep>(rest, 0, INT_MAX));
    }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point m_end;
};
