#pragma once

#include "IProxy/ISystemInfoProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

class SystemInfoProxyDbus : public ISystemInfoProxy
{
    Q_OBJECT
    using Client = ComWenuOVIKSystemInfoInterface;

public:
    explicit SystemInfoProxyDbus(QDBusConnection& connection)
        : m_dbusObject(makeClient<Client>(QStringLiteral("/SystemInfo"), connection))
    {
    }

    bool isValid() const override { return m_dbusObject && m_dbusObject->isValid(); }

public Q_SLOTS:
    status_t getSystemInfo(systemInfo& resp) override
    {
        return ask(m_dbusObject, &Client::info, resp);
    }

private:
    std::unique_ptr<Client> m_dbusObject;
};
