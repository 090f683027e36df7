#pragma once

#include "IProxy/ISysStatProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

class SysStatProxyDbus : public DbusProxy<ISysStatProxy, ComWenuOVIKSysStatInterface>
{
    Q_OBJECT
public:
    explicit SysStatProxyDbus(QDBusConnection& connection)
        : DbusProxy(QStringLiteral("/SysStat"), connection)
    {
    }

public Q_SLOTS:
    status_t availableMemory(qulonglong& available) override
    {
        return ask(m_dbusObject, &Client::getAvailableMemory, available);
    }
};
