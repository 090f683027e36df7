#pragma once

#include "IProxy/IMainOsProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

class MainOsProxyDbus : public IMainOsProxy
{
    Q_OBJECT
    using Client = ComWenuOVIKPartitionInfoInterface;

public:
    explicit MainOsProxyDbus(QDBusConnection& connection)
        : m_dbusObject(makeClient<Client>(QStringLiteral("/MainOSInfo"), connection))
    {
    }

    bool isValid() const override { return m_dbusObject && m_dbusObject->isValid(); }

public Q_SLOTS:
    status_t version(QByteArray& version) override
    {
        return ask(m_dbusObject, &Client::version, version);
    }

private:
    std::unique_ptr<Client> m_dbusObject;
};
