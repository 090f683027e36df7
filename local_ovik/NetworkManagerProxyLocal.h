#pragma once

#include "IProxy/INetworkManagerProxy.h"
#include "local_ovik/LocalProxy.h"

class NetworkManagerProxyLocal : public LocalProxy<INetworkManagerProxy, INetworkManager>
{
    Q_OBJECT
public:
    explicit NetworkManagerProxyLocal(OvikPluginFactory_getInstance_function factory)
        : LocalProxy("NetworkManager", factory)
    {
    }

public Q_SLOTS:
    status_t getConfigJson(QString& json) override
    {
        const QString wholeConfiguration; // a null key
        return ask(m_platformObject, &Platform::getConfigJSON, json, wholeConfiguration);
    }
    status_t setInterfaceConfigJson(const QString& interface, const QString& config,
                                    int& resp) override
    {
        return ask(m_platformObject, &Platform::setInterfaceConfigJSON, resp, interface, config);
    }
    status_t applyNewConfiguration(int& resp) override
    {
        constexpr bool async = false;
        return ask(m_platformObject, &Platform::applyNewConfiguration, resp, async);
    }
};
