#pragma once

#include "IProxy/IBacklightProxy.h"
#include "local_ovik/LocalProxy.h"

class BacklightProxyLocal : public IBacklightProxy
{
    Q_OBJECT
public:
    explicit BacklightProxyLocal(OvikPluginFactory_getInstance_function factory)
        : m_backlight(instance<IBacklight>(factory, "Backlight"))
    {
    }

    bool isValid() const override { return m_backlight != nullptr; }

public Q_SLOTS:
    status_t getBrightness(int& resp) override
    {
        return ask(m_backlight, &IBacklight::getBrightness, resp);
    }
    status_t saveBrightness(int value, int& resp) override
    {
        return ask(m_backlight, &IBacklight::saveBrightness, resp, value);
    }

private:
    IBacklight* const m_backlight; // the platform library's
};
