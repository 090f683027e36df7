#pragma once

#include "IProxy/IOvikInterface.h"

#include <QDBusConnection>
#include <QVector>

#include <memory>

class BacklightProxyDbus;
class BuzzerProxyDbus;
class ComWenuOVIKInterface;
class HWPluginInstanceProxyDbus;
class IMainOsProxy;
class INetworkManagerProxy;
class IOvikProxy;
class ISeepromProxy;
class IServiceManagerProxy;
class IStorageManagerProxy;
class ISysStatProxy;
class MainOsProxyDbus;
class NetworkManagerProxyDbus;
class OvikProxyDbus;
class PlatformIntrospection;
class SeepromProxyDbus;
class ServiceManagerProxyDbus;
class StorageManagerProxyDbus;
class SysStatProxyDbus;
class SystemInfoProxyDbus;

/**
 * The backend that reaches the platform's service over the system bus.
 *
 * Used on the application thread only.
 */
class OVIKInterfaceDbus : public IOvikInterface
{
    Q_OBJECT
public:
    /// Does not connect.
    OVIKInterfaceDbus();
    ~OVIKInterfaceDbus() override;

    /**
     * Connects to the bus, asks all objects at once whether they are present, and creates the
     * proxies. Takes at most 5 s, unless the bus itself does not answer.
     *
     * Also replaces the proxies of an earlier call that found facilities missing, unless this call
     * fails. A replaced proxy lives until the event loop's next turn, as the caller may still use
     * its pointer.
     *
     * @return false when the bus cannot be reached, or the service is missing, does not answer for
     *         its base object, or changes its owner meanwhile. The next call then opens its own
     *         connection: the shared one stays failed for the life of the process.
     */
    bool init() override;
    bool shutdown() override;
    bool isValid() const override;

    ISystemInfoProxy* systemInfoProxy() override;
    IBuzzerProxy* buzzerProxy() override;
    IBacklightProxy* backlightProxy() override;
    Q_INVOKABLE virtual ISeepromProxy* seepromProxy();
    Q_INVOKABLE virtual IOvikProxy* ovikProxy();
    Q_INVOKABLE virtual IMainOsProxy* mainOsProxy();
    Q_INVOKABLE virtual IStorageManagerProxy* storageManagerProxy();
    Q_INVOKABLE virtual ISysStatProxy* sysStatProxy();
    Q_INVOKABLE virtual INetworkManagerProxy* networkManagerProxy();
    /// The modules found, in slot order; owned by the backend until its shutdown().
    Q_INVOKABLE virtual QVector<HWPluginInstanceProxyDbus*> HWPluginInstanceProxy();
    Q_INVOKABLE virtual IServiceManagerProxy* serviceManagerProxy();

private:
    bool connectToBus();
    bool createProxies();
    template <class Proxy>
    void create(std::unique_ptr<Proxy>& member, const char* warning,
                const PlatformIntrospection& known);
    void findPlugins(const PlatformIntrospection& known);

    std::unique_ptr<QDBusConnection> m_connection;
    std::unique_ptr<ComWenuOVIKInterface> m_ovik;
    std::unique_ptr<SystemInfoProxyDbus> m_systemInfo;
    std::unique_ptr<BuzzerProxyDbus> m_buzzer;
    std::unique_ptr<BacklightProxyDbus> m_backlight;
    QVector<HWPluginInstanceProxyDbus*> m_HWPluginInstances; // owned
    std::unique_ptr<SeepromProxyDbus> m_seeprom;
    std::unique_ptr<OvikProxyDbus> m_ovikProxy;
    std::unique_ptr<MainOsProxyDbus> m_mainOs;
    std::unique_ptr<StorageManagerProxyDbus> m_storageManager;
    std::unique_ptr<SysStatProxyDbus> m_sysStat;
    std::unique_ptr<NetworkManagerProxyDbus> m_networkManager;
    std::unique_ptr<ServiceManagerProxyDbus> m_serviceManager;
};
