// The simulated panel as the platform's library "libOVIK.so": the same objects as on the bus,
// handed out in the process. Variables of the environment make it lack something, for tests:
//
// OVIK_SIM_MISSING=Buzzer,SysStat   the instances that are not there
// OVIK_SIM_NO_FACTORY=1             no factory function either
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

// As of a real platform's library, the objects live as long as the process.

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

/// Served by a thread of its own, as its callers wait for it.
QObject* systemInfoInThread()
{
    static QObject* const object = [] {
        auto* const info = new SimSystemInfo(panel());
        auto* const thread = new QThread;
        thread->start();
        info->moveToThread(thread);
        // Not before its event loop runs: one that begins when the application has gone never does.
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

/// Asked by the dynamic linker, at every look-up of the factory's symbol, what that stands for.
__attribute__((used)) OvikPluginFactory_getInstance_function ovikSimResolveFactory()
{
    return getenv("OVIK_SIM_NO_FACTORY") ? nullptr : getInstance;
}
}

// The compilers' own attribute for this is not there for ARM.
asm(".globl OvikPluginFactory_getInstance\n"
    ".type OvikPluginFactory_getInstance, %gnu_indirect_function\n"
    ".set OvikPluginFactory_getInstance, ovikSimResolveFactory\n");
