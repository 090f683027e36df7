#pragma once

#include "IProxy/INetworkManagerProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

class NetworkManagerProxyDbus : public INetworkManagerProxy
{
    Q_OBJECT
    using Client = ComWenuOVIKNetworkManagerInterface;

public:
    explicit NetworkManagerProxyDbus(QDBusConnection& connection)
        : m_dbusObject(makeClient<Client>(QStringLiteral("/NetworkManager"), connection))
    {
    }

    bool isValid() const override { return m_dbusObject && m_dbusObject->isValid(); }

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

private:
    std::unique_ptr<Client> m_dbusObject;
};
