#pragma once

#include "IProxy/IMainOsProxy.h"
#include "local_ovik/LocalProxy.h"

class MainOsProxyLocal : public LocalProxy<IMainOsProxy, IMainOSInfo>
{
    Q_OBJECT
public:
    explicit MainOsProxyLocal(OvikPluginFactory_getInstance_function factory)
        : LocalProxy("MainOSInfo", factory)
    {
    }

public Q_SLOTS:
    status_t version(QByteArray& version) override
    {
        return ask(m_platformObject, &Platform::version, version);
    }
};
