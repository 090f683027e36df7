#pragma once

#include "IProxy/IMainOsProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

class MainOsProxyDbus : public DbusProxy<IMainOsProxy, ComWenuOVIKPartitionInfoInterface>
{
    Q_OBJECT
public:
    explicit MainOsProxyDbus(QDBusConnection& connection)
        : DbusProxy(QStringLiteral("/MainOSInfo"), connection)
    {
    }

public Q_SLOTS:
    status_t version(QByteArray& version) override
    {
        return ask(m_dbusObject, &Client::version, version);
    }
};
