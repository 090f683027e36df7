#pragma once

#include "IProxy/IBuzzerProxy.h"
#include "local_ovik/LocalProxy.h"

class BuzzerProxyLocal : public LocalProxy<IBuzzerProxy, IBuzzer>
{
    Q_OBJECT
public:
    explicit BuzzerProxyLocal(OvikPluginFactory_getInstance_function factory)
        : LocalProxy("Buzzer", factory)
    {
    }

public Q_SLOTS:
    status_t setBuzzerMode(int mode, int& resp) override
    {
        return ask(m_platformObject, &Platform::SetBuzzerMode, resp, mode);
    }
    status_t getBuzzerMode(int& resp) override
    {
        return ask(m_platformObject, &Platform::GetBuzzerMode, resp);
    }
    status_t setBuzzerUserControl(int control, int& resp) override
    {
        return ask(m_platformObject, &Platform::SetBuzzerUserControl, resp, control);
    }
    status_t setBuzzerOnTime(int time, int& resp) override
    {
        return ask(m_platformObject, &Platform::SetBuzzerOnTime, resp, time);
    }
    status_t setBuzzerOffTime(int time, int& resp) override
    {
        return ask(m_platformObject, &Platform::SetBuzzerOffTime, resp, time);
    }
};
