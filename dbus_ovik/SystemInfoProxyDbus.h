#pragma once

#include "IProxy/ISystemInfoProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

class SystemInfoProxyDbus : public DbusProxy<ISystemInfoProxy, ComWenuOVIKSystemInfoInterface>
{
    Q_OBJECT
public:
    explicit SystemInfoProxyDbus(QDBusConnection& connection)
        : DbusProxy(QStringLiteral("/SystemInfo"), connection)
    {
    }

public Q_SLOTS:
    status_t getSystemInfo(systemInfo& resp) override
    {
        return ask(m_dbusObject, &Client::info, resp);
    }
};
