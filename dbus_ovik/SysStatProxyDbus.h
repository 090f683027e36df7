#pragma once

#include "IProxy/ISysStatProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

#include "ComWenuOVIKSysStatInterface.h"

class SysStatProxyDbus : public DbusProxy<ISysStatProxy, ComWenuOVIKSysStatInterface>
{
    Q_OBJECT
public:
    static QString path() { return QStringLiteral("/SysStat"); }

    explicit SysStatProxyDbus(QDBusConnection& connection, const PlatformIntrospection& known = {})
        : DbusProxy(path(), connection, known)
    {
    }

public Q_SLOTS:
    status_t availableMemory(qulonglong& available) override
    {
        return ask(m_dbusObject, &Client::getAvailableMemory, available);
    }
};
