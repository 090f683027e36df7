#pragma once

#include "IProxy/ISysStatProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

class SysStatProxyDbus : public ISysStatProxy
{
    Q_OBJECT
    using Client = ComWenuOVIKSysStatInterface;

public:
    explicit SysStatProxyDbus(QDBusConnection& connection)
        : m_dbusObject(makeClient<Client>(QStringLiteral("/SysStat"), connection))
    {
    }

    bool isValid() const override { return m_dbusObject && m_dbusObject->isValid(); }

public Q_SLOTS:
    status_t availableMemory(qulonglong& available) override
    {
        return ask(m_dbusObject, &Client::getAvailableMemory, available);
    }

private:
    std::unique_ptr<Client> m_dbusObject;
};
