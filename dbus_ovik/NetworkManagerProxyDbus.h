#pragma once

#include "IProxy/INetworkManagerProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

#include "ComWenuOVIKNetworkManagerInterface.h"

class NetworkManagerProxyDbus
    : public DbusProxy<INetworkManagerProxy, ComWenuOVIKNetworkManagerInterface>
{
    Q_OBJECT
public:
    static QString path() { return QStringLiteral("/NetworkManager"); }

    explicit NetworkManagerProxyDbus(QDBusConnection& connection,
                                     const PlatformIntrospection& known = {})
        : DbusProxy(path(), connection, known)
    {
    }

public Q_SLOTS:
    status_t getConfigJson(QString& json) override
    {
        return ask(m_dbusObject, &Client::getConfigJSON, json);
    }
    status_t setInterfaceConfigJson(const QString& interface, const QString& config,
                                    int& resp) override
    {
        return ask(m_dbusObject, &Client::setInterfaceConfigJSON, resp, interface, config);
    }
    status_t applyNewConfiguration(int& resp) override
    {
        return ask(m_dbusObject, &Client::applyNewConfiguration, resp);
    }
};
