#pragma once

#include "fuzz/draw.h"

#include <systemd/sd-bus.h>

#include <atomic>
#include <map>
#include <string>
#include <thread>

/**
 * What this process takes for its system bus: at the other end of a socket, the few answers of a
 * bus itself, and the platform's service.
 *
 * With an input, the service's answers are drawn from it. Without, and when the input is used up,
 * the answers are of the expected types, and there are modules in slots 0 and 2.
 */
class PlatformBus
{
public:
    PlatformBus();
    ~PlatformBus();
    PlatformBus(const PlatformBus&) = delete;
    PlatformBus& operator=(const PlatformBus&) = delete;

    /// To be changed only while no call is under way. Null for none.
    void drawFrom(FuzzedDataProvider* input) { m_input = input; }

    /// Whether the latest answer of the service was an error.
    bool hasFailed() const { return m_hasFailed; }

private:
    static int onMessage(sd_bus_message* message, void* self, sd_bus_error* error);
    void serve(sd_bus_message* call);
    sd_bus_message* driverReply(sd_bus_message* call) const;
    sd_bus_message* reply(sd_bus_message* call);
    sd_bus_message* introspection(sd_bus_message* call);
    sd_bus_message* drawCommandResult(sd_bus_message* call, bool& afterReply);
    void run();

    std::string m_directory;
    int m_listening = -1;
    std::atomic<int> m_connection{-1};
    std::atomic<bool> m_stop{false};
    std::atomic<FuzzedDataProvider*> m_input{nullptr};
    std::atomic<bool> m_hasFailed{false};
    std::map<std::string, std::string> m_signatures; ///< of the replies, by "interface.method"
    std::string m_introspection;                     ///< that lists every interface
    std::thread m_thread;
};
