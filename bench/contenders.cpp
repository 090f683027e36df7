#include "bench/contenders.h"

#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
constexpr int timeoutMs = 60000;

void check(ovik_client_error error)
{
    if (error != OVIK_CLIENT_OK)
        throw std::runtime_error(ovik_client_error_text(error));
}

void checkStatus(void* wanted, size_t, const ovik_client_answer* answer)
{
    if (answer->status != *static_cast<const int*>(wanted))
        throw std::runtime_error("unexpected status " + std::to_string(answer->status));
}

template <class T>
void check(QDBusPendingReply<T> reply)
{
    reply.waitForFinished();
    if (reply.isError())
        throw std::runtime_error(qPrintable(reply.error().message()));
}
} // namespace

ServiceClient::ServiceClient(const std::string& path)
{
    check(ovik_client_open(&m_client, path.c_str(), timeoutMs));
}

void ServiceClient::batch(const std::vector<const char*>& requests, int status)
{
    check(ovik_client_batch(m_client, requests.data(), requests.size(), timeoutMs, checkStatus,
                            &status, nullptr));
}

Contender batch(ServiceClient& client, const char* request, int count, int status)
{
    const std::vector<const char*> requests(static_cast<size_t>(count), request);
    return timed(count, [&client, requests, status] { client.batch(requests, status); });
}

void DirectProgram::getBrightness() { check(m_backlight.getBrightness()); }

void DirectProgram::readFour()
{
    check(m_backlight.getBrightness());
    check(m_buzzer.GetBuzzerMode());
    check(m_ovik.getSysCounter());
    check(m_sysStat.getAvailableMemory());
}

void runBusctl()
{
    const char* const command[] = {"busctl",
                                   "--system",
                                   "--quiet",
                                   "call",
                                   "com.wenu.OVIK",
                                   "/Backlight",
                                   "com.wenu.OVIK.Backlight",
                                   "getBrightness",
                                   nullptr};
    const auto argv = const_cast<char* const*>(command);
    pid_t pid;
    int status;
    if (posix_spawnp(&pid, command[0], nullptr, nullptr, argv, environ) != 0 ||
        waitpid(pid, &status, 0) != pid || status != 0)
        throw std::runtime_error("busctl failed");
}
