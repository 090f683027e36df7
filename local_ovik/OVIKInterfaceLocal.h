#pragma once

#include "IProxy/IOvikInterface.h"
#include "IProxy/OVIKPlatformInterface.h"

#include <memory>

class BacklightProxyLocal;
class BuzzerProxyLocal;
class IMainOsProxy;
class INetworkManagerProxy;
class IOvikProxy;
class ISeepromProxy;
class IStorageManagerProxy;
class ISysStatProxy;
class MainOsProxyLocal;
class NetworkManagerProxyLocal;
class OvikProxyLocal;
class SeepromProxyLocal;
class StorageManagerProxyLocal;
class SysStatProxyLocal;
class SystemInfoProxyLocal;

/**
 * The backend that loads the platform's library "libOVIK.so" into the process and calls its
 * objects. It has no service manager and no plug-in modules.
 *
 * Used on the application thread only.
 */
class OVIKInterfaceLocal : public IOvikInterface
{
    Q_OBJECT
public:
    OVIKInterfaceLocal();
    ~OVIKInterfaceLocal() override;

    /**
     * Loads the library from the dynamic linker's search path and creates the proxies.
     * Also replaces the proxies of an earlier call that found facilities missing, unless this call
     * fails. A replaced proxy lives until the event loop's next turn, as the caller may still use
     * its pointer.
     *
     * @return false when there is no such library or it has no factory
     */
    bool init() override;
    /// The library stays loaded for the life of the process.
    bool shutdown() override;
    bool isValid() const override;

public Q_SLOTS:
    ISystemInfoProxy* systemInfoProxy() override;
    IBuzzerProxy* buzzerProxy() override;
    IBacklightProxy* backlightProxy() override;
    // Not virtual on purpose: in the virtual table, ovikProxy() follows backlightProxy().
    ISeepromProxy* seepromProxy();
    virtual IOvikProxy* ovikProxy();
    virtual IMainOsProxy* mainOsProxy();
    virtual IStorageManagerProxy* storageManagerProxy();
    virtual ISysStatProxy* sysStatProxy();
    virtual INetworkManagerProxy* networkManagerProxy();

private:
    /// Loads the library. @return null, after a message, when it is missing or has no factory
    OvikPluginFactory_getInstance_function loadFactory();

    void* m_soHandle = nullptr; // never closed: the library's objects live as long as the process
    std::unique_ptr<SystemInfoProxyLocal> m_systemInfo;
    std::unique_ptr<BuzzerProxyLocal> m_buzzer;
    std::unique_ptr<BacklightProxyLocal> m_backlight;
    std::unique_ptr<SeepromProxyLocal> m_seeprom;
    std::unique_ptr<OvikProxyLocal> m_ovik;
    std::unique_ptr<MainOsProxyLocal> m_mainOs;
    std::unique_ptr<StorageManagerProxyLocal> m_storageManager;
    std::unique_ptr<SysStatProxyLocal> m_sysStat;
    std::unique_ptr<NetworkManagerProxyLocal> m_networkManager;
};
