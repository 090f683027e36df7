#pragma once

#include "IProxy/INetworkManagerProxy.h"
#include "local_ovik/LocalProxy.h"

class NetworkManagerProxyLocal : public INetworkManagerProxy
{
    Q_OBJECT
public:
    explicit NetworkManagerProxyLocal(OvikPluginFactory_getInstance_function factory)
        : m_NetworkManager(instance<INetworkManager>(factory, "NetworkManager"))
    {
    }

    bool isValid() const override { return m_NetworkManager != nullptr; }

public Q_SLOTS:
    status_t getConfigJson(QString& json) override
    {
        const QString wholeConfiguration; // a null key
        return ask(m_NetworkManager, &INetworkManager::getConfigJSON, json, wholeConfiguration);
    }
    status_t setInterfaceConfigJson(const QString& interface, const QString& config,
                                    int& resp) override
    {
        return ask(m_NetworkManager, &INetworkManager::setInterfaceConfigJSON, resp, interface,
                   config);
    }
    status_t applyNewConfiguration(int& resp) override
    {
        constexpr bool async = false;
        return ask(m_NetworkManager, &INetworkManager::applyNewConfiguration, resp, async);
    }

private:
    INetworkManager* const m_NetworkManager; // the platform library's
};
