#include "ovik_server/service_command.h"

#include <atomic>
#include <unistd.h>

namespace
{
constexpr int maxSleeps = 120;
constexpr useconds_t sleepMicroseconds = 500000;

// Shared by two threads: the callback writes the texts and then clears the flag; the request reads
// the texts only after the flag is cleared.
std::atomic<bool> g_commandResultPending{false};
QString g_resultService;
QString g_resultCmd;
QString g_resultJson;
} // namespace

void onCommandResult(const char* service, const char* cmd, const char* json)
{
    if (!g_commandResultPending.load(std::memory_order_acquire))
        return;
    g_resultService = QString::fromUtf8(service);
    g_resultCmd = QString::fromUtf8(cmd);
    g_resultJson = QString::fromUtf8(json);
    g_commandResultPending.store(false, std::memory_order_release);
}

CallStatus serviceCommand(const Fields& in, answer::Outcome& out)
{
    const bool isScan = in.text(1) == "wifi" && in.text(2) == "scan";
    // Set before the call, so that an immediate result is not missed. A failed call or a time-out
    // leaves the flag set on purpose: the next command of any kind then waits for that result.
    if (isScan)
        g_commandResultPending.store(true, std::memory_order_release);

    const status_t status =
        ovik_serviceCommand(in.text(1).constData(), in.text(2).constData(), in.text(3).constData(),
                            reinterpret_cast<void*>(onCommandResult), &out.result);
    if (status != OVIK_OK)
        return status;

    for (int sleeps = 0; g_commandResultPending.load(std::memory_order_acquire);) {
        usleep(sleepMicroseconds);
        if (++sleeps == maxSleeps)
            return {OVIK_TIMEOUT,
                    "timeout"}; // on purpose, even if the result came during the last sleep
    }
    if (isScan)
        out.details = QString(";%1;%2;%3").arg(g_resultService, g_resultCmd, g_resultJson).toUtf8();
    return OVIK_OK;
}
