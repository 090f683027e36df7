#pragma once

#include "fuzz/draw.h"

#include <systemd/sd-bus.h>

#include <atomic>
#include <map>
#include <string>
#include <thread>

/**
 * A fake system bus for this process: implements the few calls to the bus itself, and the
 * platform's service.
 *
 * With an input, the service's replies are generated from it. Without an input, or after its end,
 * the replies have the expected types, and slots 0 and 2 have modules.
 */
class PlatformBus
{
public:
    PlatformBus();
    ~PlatformBus();
    PlatformBus(const PlatformBus&) = delete;
    PlatformBus& operator=(const PlatformBus&) = delete;

    /// Call this only while no call is pending. Null for no input.
    void drawFrom(FuzzedDataProvider* input) { m_input = input; }

    /// True when the service's latest reply was an error.
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
    std::string m_introspection;                     ///< declares every interface
    std::thread m_thread;
};
