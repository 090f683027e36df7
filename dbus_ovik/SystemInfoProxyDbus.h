#pragma once

#include "IProxy/ISystemInfoProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

#include "ComWenuOVIKSystemInfoInterface.h"

class SystemInfoProxyDbus : public DbusProxy<ISystemInfoProxy, ComWenuOVIKSystemInfoInterface>
{
    Q_OBJECT
public:
    static QString path() { return QStringLiteral("/SystemInfo"); }

    explicit SystemInfoProxyDbus(QDBusConnection& connection,
                                 const PlatformIntrospection& known = {})
        : DbusProxy(path(), connection, known)
    {
    }

public Q_SLOTS:
    status_t getSystemInfo(systemInfo& resp) override
    {
        return ask(m_dbusObject, &Client::info, resp);
    }
};
