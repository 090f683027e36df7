#pragma once

#include "IProxy/IBacklightProxy.h"
#include "local_ovik/LocalProxy.h"

class BacklightProxyLocal : public LocalProxy<IBacklightProxy, IBacklight>
{
    Q_OBJECT
public:
    explicit BacklightProxyLocal(OvikPluginFactory_getInstance_function factory)
        : LocalProxy("Backlight", factory)
    {
    }

public Q_SLOTS:
    status_t getBrightness(int& resp) override
    {
        return ask(m_platformObject, &Platform::getBrightness, resp);
    }
    status_t saveBrightness(int value, int& resp) override
    {
        return ask(m_platformObject, &Platform::saveBrightness, resp, value);
    }
};
