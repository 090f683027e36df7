#include "local_ovik/OVIKInterfaceLocal.h"

#include "IProxy/log_ovik.h"
#include "local_ovik/BacklightProxyLocal.h"
#include "local_ovik/BuzzerProxyLocal.h"
#include "local_ovik/MainOsProxyLocal.h"
#include "local_ovik/NetworkManagerProxyLocal.h"
#include "local_ovik/OvikProxyLocal.h"
#include "local_ovik/SeepromProxyLocal.h"
#include "local_ovik/StorageManagerProxyLocal.h"
#include "local_ovik/SysStatProxyLocal.h"
#include "local_ovik/SystemInfoProxyLocal.h"

#include <dlfcn.h>

namespace
{
/// Sets @p member to a new proxy, or to null with @p warning when the library lacks its object.
template <class Proxy>
void create(std::unique_ptr<Proxy>& member, const char* warning,
            OvikPluginFactory_getInstance_function factory)
{
    if (member)
        member.release()->deleteLater();
    member = std::make_unique<Proxy>(factory);
    if (!member->isValid()) {
        qWarning("%s", warning);
        member.reset();
    }
}
} // namespace

OVIKInterfaceLocal::OVIKInterfaceLocal() = default;

OVIKInterfaceLocal::~OVIKInterfaceLocal() { OVIKInterfaceLocal::shutdown(); }

bool OVIKInterfaceLocal::init()
{
    if (isValid())
        return true;

    const auto factory = loadFactory();
    if (!factory)
        return false;

    create(m_buzzer, "m_buzzer not valid\n", factory);
    create(m_backlight, "m_backlight not valid\n", factory);
    create(m_systemInfo, "m_systemInfo not valid\n", factory);
    // The EEPROM's warning names the system information on purpose: log readers expect that text.
    create(m_seeprom, "m_systemInfo not valid\n", factory);
    create(m_ovik, "m_ovikProxy not valid\n", factory);
    create(m_mainOs, "m_mainOs not valid\n", factory);
    create(m_storageManager, "m_storageManager not valid\n", factory);
    create(m_sysStat, "m_sysStat not valid\n", factory);
    create(m_networkManager, "m_networkManager not valid\n", factory);
    logOVIK("Local interface loaded");
    return true;
}

OvikPluginFactory_getInstance_function OVIKInterfaceLocal::loadFactory()
{
    m_soHandle = dlopen("libOVIK.so", RTLD_LAZY | RTLD_GLOBAL);
    if (!m_soHandle) {
        qWarning("Failed loading OVIK plugin: %s", dlerror());
        logOVIK("Failed loading OVIK plugin: ");
        return nullptr;
    }
    const auto factory = reinterpret_cast<OvikPluginFactory_getInstance_function>(
        dlsym(m_soHandle, "OvikPluginFactory_getInstance"));
    if (!factory) {
        qWarning("Can't get the getInstance function in so file");
        logOVIK("Can't get the getInstance function in so file");
    }
    return factory;
}

bool OVIKInterfaceLocal::shutdown()
{
    m_ovik.reset();
    m_mainOs.reset();
    m_storageManager.reset();
    m_networkManager.reset();
    m_sysStat.reset();
    m_seeprom.reset();
    m_systemInfo.reset();
    m_backlight.reset();
    m_buzzer.reset();
    m_soHandle = nullptr;
    return true;
}

bool OVIKInterfaceLocal::isValid() const
{
    return m_soHandle && m_systemInfo && m_buzzer && m_backlight && m_seeprom && m_ovik &&
           m_mainOs && m_storageManager && m_sysStat && m_networkManager;
}

ISystemInfoProxy* OVIKInterfaceLocal::systemInfoProxy() { return m_systemInfo.get(); }
IBuzzerProxy* OVIKInterfaceLocal::buzzerProxy() { return m_buzzer.get(); }
IBacklightProxy* OVIKInterfaceLocal::backlightProxy() { return m_backlight.get(); }
ISeepromProxy* OVIKInterfaceLocal::seepromProxy() { return m_seeprom.get(); }
IOvikProxy* OVIKInterfaceLocal::ovikProxy() { return m_ovik.get(); }
IMainOsProxy* OVIKInterfaceLocal::mainOsProxy() { return m_mainOs.get(); }
IStorageManagerProxy* OVIKInterfaceLocal::storageManagerProxy() { return m_storageManager.get(); }
ISysStatProxy* OVIKInterfaceLocal::sysStatProxy() { return m_sysStat.get(); }
INetworkManagerProxy* OVIKInterfaceLocal::networkManagerProxy() { return m_networkManager.get(); }
