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

/// What the options say that each verb takes.
struct Settings {
    std::string socket = OVIK_CLIENT_SOCKET;
    std::optional<uid_t> serviceUser; ///< trusted like root
    std::optional<double> timeout;    ///< in seconds; each verb has a bound of its own
    bool json = false;
    bool quiet = false;

    Milliseconds bound(Milliseconds otherwise) const
    {
        return timeout ? Milliseconds(static_cast<Milliseconds::rep>(*timeout * 1000)) : otherwise;
    }
};

/// A bound that several calls share.
class Deadline
{
public:
    explicit Deadline(Milliseconds bound) : m_end(Clock::now() + bound) {}
    bool isOver() const { return Clock::now() >= m_end; }
    /// In ms, as the client library takes it.
    int left() const
    {
        const auto rest = std::chrono::ceil<Milliseconds>(m_end - Clock::now()).count();
        return static_cast<int>(std::clamp<Milliseconds::rep>(rest, 0, INT_MAX));
    }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point m_end;
};
