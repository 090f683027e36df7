// The simulated panel as the platform's library "libOVIK.so": the same objects as on the bus, in
// the process. Environment variables simulate faults, for tests:
//
// OVIK_SIM_MISSING=Buzzer,SysStat   these instances are missing
// OVIK_SIM_NO_FACTORY=1             the factory function is missing
// OVIK_SIM_SYSTEMINFO_IN_CALLER=1   the system information lives in the caller's thread

#include "IProxy/OVIKPlatformInterface.h"
#include "panel_sim/platform_devices.h"
#include "panel_sim/platform_info.h"
#include "panel_sim/platform_services.h"

#include <QThread>

#include <cstdlib>
#include <cstring>

namespace
{
constexpr int commandDelayMs = 300;

// As in a real platform's library, the objects live as long as the process.

sim::Panel& panel()
{
    static auto* const thePanel = new sim::Panel({}, commandDelayMs);
    return *thePanel;
}

template <class Object>
QObject* onPanel()
{
    static auto* const object = new Object(panel());
    return object;
}

/// The object lives in its own thread, as callers block until that thread answers.
QObject* systemInfoInThread()
{
    static QObject* const object = [] {
        auto* const info = new SimSystemInfo(panel());
        auto* const thread = new QThread;
        thread->start();
        info->moveToThread(thread);
        // Wait for the event loop: started after the application's end, a loop would never run.
        QMetaObject::invokeMethod(
            info, [] {}, Qt::BlockingQueuedConnection);
        return info;
    }();
    return object;
}

QObject* makeSystemInfo()
{
    return qEnvironmentVariableIsSet("OVIK_SIM_SYSTEMINFO_IN_CALLER") ? onPanel<SimSystemInfo>()
                                                                      : systemInfoInThread();
}

const struct {
    const char* name;
    QObject* (*get)();
} instances[] = {
    {"Buzzer", onPanel<SimBuzzer>},
    {"Backlight", onPanel<SimBacklight>},
    {"SystemInfo", makeSystemInfo},
    {"I2CSEEPROM", onPanel<SimSeeprom>},
    {"OVIK", onPanel<SimOvik>},
    {"MainOSInfo", onPanel<SimMainOsInfo>},
    {"StorageMgr", onPanel<SimStorageManager>},
    {"SysStat", onPanel<SimSysStat>},
    {"NetworkManager", onPanel<SimNetworkManager>},
};
} // namespace

extern "C" {

static QObject* getInstance(const char* name)
{
    if (qEnvironmentVariable("OVIK_SIM_MISSING").split(',').contains(name))
        return nullptr;
    for (const auto& row : instances) {
        if (strcmp(row.name, name) == 0)
            return row.get();
    }
    return nullptr;
}

/// The dynamic linker calls this at every look-up of the factory's symbol, to get the address.
__attribute__((used)) OvikPluginFactory_getInstance_function ovikSimResolveFactory()
{
    return getenv("OVIK_SIM_NO_FACTORY") ? nullptr : getInstance;
}
}

// Compilers lack their own attribute for this (ifunc) on ARM.
asm(".globl OvikPluginFactory_getInstance\n"
    ".type OvikPluginFactory_getInstance, %gnu_indirect_function\n"
    ".set OvikPluginFactory_getInstance, ovikSimResolveFactory\n");
